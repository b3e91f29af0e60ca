// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The accounts of the last loads, in a file of their own (LogEvent/Loads.log) that no start clears:
// what each load did, and of everything that it did not store, where it lies and why. The newest
// stands first. What the file holds is bounded.
#pragma once

#include <string>

namespace tarnwick::board {

std::string LoadLogFile();

// Takes room on the disk for an account, so that a load that fills the disk can still be told of.
void ReserveLoadLog();
// Puts an account in front of the others. Nothing is reported: what can't be written is lost.
void KeepInLoadLog(const std::string& account);

// The command "Last Load Account": opens the file with the desktop's program for texts.
void ShowLoadLog();

}  // namespace tarnwick::board
