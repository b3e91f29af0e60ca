// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the sources behind files.h share: the seam where tests let an operation fail, and the
// system's error codes as Errors. Internal to them.
#pragma once

#include <string>

#include "platform/files.h"

namespace tarnwick::platform {

// Calls the hook of SetFileFault, which may throw.
void PassFileFault(FileOperation operation, const std::string& path);

// code is an errno value.
[[noreturn]] void ThrowSystemError(int code, const std::string& path);

}  // namespace tarnwick::platform
