// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "support/real_data.h"

#include <cstdlib>

#include "platform/files.h"

namespace tarnwick::testing {

std::string RealData(const std::string& name) {
  const char* folder = std::getenv("TARNWICK_DATA");
  std::string path = platform::WithSeparator(
      folder != nullptr ? folder : std::string(TARNWICK_SOURCE) + "/../shared/data");
  path += name;
  return platform::FileExists(path) || platform::FolderExists(path) ? path : std::string();
}

}  // namespace tarnwick::testing
