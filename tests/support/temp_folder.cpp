// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "support/temp_folder.h"

#include <algorithm>
#include <filesystem>
#include <random>

#include "platform/files.h"

namespace tarnwick::testing {

TempFolder::TempFolder() {
  std::string place = platform::WithSeparator(std::filesystem::temp_directory_path().string());
  std::random_device random;
  do {
    path_ = place + "tarnwick-test-" + std::to_string(random()) + platform::kSeparator;
  } while (platform::FolderExists(path_));
  platform::MakeFolder(path_);
}

TempFolder::~TempFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path_, ignored);
}

std::string TempFolder::File(std::string name) const {
  std::replace(name.begin(), name.end(), '/', platform::kSeparator);
  return path_ + name;
}

}  // namespace tarnwick::testing
