// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What tests ask of the system beyond what the program does. Where a system has no such thing
// (Windows knows no fork and no limit of a file's size) it fails, and
// packaging/windows/skipped-tests.txt names the tests.
#pragma once

#include <cstdint>
#include <string>

namespace tarnwick::testing {

// A path in the one form that all its spellings have, for comparisons.
std::string OneSpelling(std::string path);

[[noreturn]] void KillThisProcess();
void KillProcess(int64_t id);

// Both throw where they fail; where there are no pipes or one may not link, they do nothing.
void MakePipe(const std::string& path);
// path leads to target, relative to its own folder.
void MakeLink(const std::string& target, const std::string& path);
// Who else than the owner may do what is none; what the owner may is the octal digit's. False where
// the system can't be told so.
bool LetOwner(const std::string& path, unsigned digit);
// Whether somebody but the owner may open the file or folder.
bool IsOpenToOthers(const std::string& path);
// Whether others of the user may look into this program's memory (and, but on Windows, where the
// test framework sees to it, a crash leaves an image).
bool MayBeLookedInto();
// Whether nothing is forbidden to this user.
bool IsAdministrator();

// Holds, until it is destroyed, a lock on a database file as another program would that writes to
// it.
class HeldFile {
 public:
  explicit HeldFile(const std::string& path);
  ~HeldFile();
  HeldFile(const HeldFile&) = delete;
  HeldFile& operator=(const HeldFile&) = delete;

 private:
  intptr_t handle_;
};

}  // namespace tarnwick::testing
