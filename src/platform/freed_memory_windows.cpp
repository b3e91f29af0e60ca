// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/freed_memory.h"

namespace tarnwick::platform {

// The system's own way is to keep it.
FreedMemoryKept::FreedMemoryKept() = default;
FreedMemoryKept::~FreedMemoryKept() = default;

}  // namespace tarnwick::platform
