// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/version.h"

namespace tarnwick::core {

std::string_view Version() {
  return TARNWICK_VERSION;
}

}  // namespace tarnwick::core
