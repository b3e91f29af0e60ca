// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Runs a program of the build as a script would and keeps what it printed.
#pragma once

#include <string>
#include <vector>

namespace tarnwick::testing {

struct ProgramRun {
  int status = -1;  // exit status; 128 + the signal when it was killed
  std::string output;
  std::string errors;
};

// arguments[0] is the program's path. input is its standard input.
ProgramRun RunProgram(const std::vector<std::string>& arguments, const std::string& input = {});

}  // namespace tarnwick::testing
