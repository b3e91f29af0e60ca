// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The command "Help Topics".
#pragma once

#include <string>
#include <vector>

namespace tarnwick::board {

// The handbook's files that there are, the one to try first in front: twHelp.chm, then the pages
// for a web browser; beside the program before the installed ones. programFolder ends with the
// separator.
std::vector<std::string> FindHelp(const std::string& programFolder);

// Opens the first of them that the desktop has a viewer for, and tells the person when it has none.
// False then.
bool ShowHelp(const std::string& programFolder);

}  // namespace tarnwick::board
