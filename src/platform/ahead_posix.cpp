// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/ahead.h"

namespace tarnwick::platform {

int ProcessorCount() {
  return static_cast<int>(std::thread::hardware_concurrency());
}

}  // namespace tarnwick::platform
