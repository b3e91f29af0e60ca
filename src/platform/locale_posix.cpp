// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <cstdlib>

#include "platform/locale_names.h"

namespace tarnwick::platform {

std::string SystemLocaleName() {
  for (const char* variable : {"LC_ALL", "LC_TIME", "LANG"}) {
    const char* value = std::getenv(variable);
    if (value == nullptr || *value == '\0') continue;
    std::string name(value);
    return name.substr(0, name.find_first_of(".@"));
  }
  return "C";
}

}  // namespace tarnwick::platform
