// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The desktop itself, behind shell.h. Private to the platform room.
#pragma once

#include <functional>
#include <string>

#include "platform/shell.h"

namespace tarnwick::platform {

// OpenWithShell of a file that is there, without a hook.
ShellResult OpenOnDesktop(const std::string& path, const std::function<void()>& whileWaiting);

bool HasDesktopProgramFor(const std::string& extension);

}  // namespace tarnwick::platform
