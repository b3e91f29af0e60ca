// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A file that is made beside its place under another name and gets its own name only when it is
// complete: whatever fails before, and if the program is killed, an older file of the name is as
// it was and nothing that bears the name is half written.
#pragma once

#include <cassert>
#include <string>
#include <string_view>

namespace tarnwick::platform {

// What follows a file's name while the file is being made, so that no dialog lists it.
inline constexpr std::string_view kUnfinished = ".unfinished";

class StagedFile {
 public:
  // path: where the file is made, on the file system that it will stay on. Nothing is written yet;
  // what a killed run left there is removed.
  explicit StagedFile(std::string path);
  // Removes the file unless it has got its name.
  ~StagedFile();
  StagedFile(const StagedFile&) = delete;
  StagedFile& operator=(const StagedFile&) = delete;

  // Where to write. REQUIRES: !IsInPlace().
  const std::string& Path() const {
    assert(!IsInPlace());
    return path_;
  }

  // Gives the complete file its name, in place of an older file. Both the bytes and the name are
  // on the disk afterwards. IsInPlace() may be true even if this throws: the name could not be
  // flushed.
  void Replace(const std::string& place);
  // Gives it a name that nothing has yet; false when something has it. No older file can be lost,
  // so flushing is left to the caller: for thousands of small files it would take most of the time.
  bool TakeName(const std::string& place);

  bool IsInPlace() const { return path_.empty(); }

 private:
  std::string path_;  // "" once the file has its name
};

}  // namespace tarnwick::platform
