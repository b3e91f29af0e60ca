// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Real mail to try the program on, where a machine has some: the folder TARNWICK_DATA, else
// ../shared/data beside the sources. It is read in place and no part of the project.
#pragma once

#include <string>

namespace tarnwick::testing {

// The path of a file or folder of it, "" where it is absent.
std::string RealData(const std::string& name);

}  // namespace tarnwick::testing
