// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Where the program keeps its things, and the database files that a new home begins with.
#pragma once

#include <string>

namespace tarnwick::repository {

// Where AppFolder is: TARNWICK_HOME, else the program's own folder when it can be written and holds
// a parameter or repository file or "portable.txt" (a portable program), else "tarnwick" under the
// user's data folder (XDG_DATA_HOME, ~/.local/share). Throws Error where the user has no home
// folder.
std::string ChooseAppFolder(const std::string& programFolder);

// Makes the folder and, where it is a new home, puts the three database files into it, from the
// program's folder, from share/tarnwick in it or from where it was installed (../share/tarnwick).
// New is a home that holds none of the three, or one whose making was interrupted. In any other a
// repository or parameter file that is missing has been lost: it is not replaced by an empty one,
// and opening the repository fails. The template, which holds nothing of the person's, is put back.
// Throws Error.
void SeedAppFolder(const std::string& appFolder, const std::string& programFolder);

// Whether a program runs on the folder already; true also where that can't be told.
bool IsInUse(const std::string& appFolder);

}  // namespace tarnwick::repository
