// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The first steps of a start: where the program keeps its things, the log, the machine's facts.
#pragma once

#include <string>

namespace tarnwick::core {

// Where AppFolder is: TARNWICK_HOME, else the program's own folder when it can be written and holds
// a parameter or repository file (a portable program), else "tarnwick" under the user's data folder
// (XDG_DATA_HOME, ~/.local/share). Throws Error where the user has no home folder.
std::string ChooseAppFolder(const std::string& programFolder);

// Makes the folder and, where it is a new home, puts the three database files into it, from the
// program's folder or from where it was installed (../share/tarnwick). New is a home that holds
// none of the three, or one whose making was interrupted. In any other a repository or parameter
// file that is missing has been lost: it is not replaced by an empty one, and opening the
// repository fails. The template, which holds nothing of the person's, is put back. Throws Error.
void SeedAppFolder(const std::string& appFolder, const std::string& programFolder);

// Fixes the folders under appFolder (created as needed, failures ignored), resets the counters,
// computes LocalZoneHours, removes the old log (unless it is that of a program that runs on the
// same folder), fills the month names and the user's name, and logs the start. REQUIRES: State().Ui
// is set.
void PrepareRun(const std::string& appFolder);

// |bias| / 60 to the nearest whole hour, halves to even.
int ZoneHours(int biasMinutes);

}  // namespace tarnwick::core
