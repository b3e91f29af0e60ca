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
  // "/" in the name is what the system has between names.
  std::string File(std::string name) const;

 private:
  std::string path_;
};

}  // namespace tarnwick::testing
