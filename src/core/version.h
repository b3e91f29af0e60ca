// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The program's version, as the build knows it (project() in the root CMakeLists.txt is the one
// place where it is written).
#pragma once

#include <string_view>

namespace tarnwick::core {

// "MAJOR.MINOR.PATCH"; valid for the whole run.
std::string_view Version();

}  // namespace tarnwick::core
