// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The first steps of a start: the working folders, the log, the machine's facts.
#pragma once

#include <string>

namespace tarnwick::core {

// Fixes the folders under appFolder (created as needed, failures ignored), resets the counters,
// computes LocalZoneHours, removes the old log (unless keepsLog says that a program that runs on
// the same folder writes it), fills the month names and the user's name, and logs the start.
// REQUIRES: State().Ui is set.
void PrepareRun(const std::string& appFolder, bool keepsLog = false);

// |bias| / 60 to the nearest whole hour, halves to even.
int ZoneHours(int biasMinutes);

}  // namespace tarnwick::core
