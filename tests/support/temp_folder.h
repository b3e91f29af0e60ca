// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A folder of a test's own, removed with everything in it when the test ends.
#pragma once

#include <string>

namespace tarnwick::testing {

class TempFolder {
 public:
  TempFolder();
  ~TempFolder();
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::string& Path() const { return path_; }  // ends with the separator
  std::string File(const std::string& name) const { return path_ + name; }

 private:
  std::string path_;
};

}  // namespace tarnwick::testing
