// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The error convention: each public routine of a room is wrapped once by Guarded, which traps
// everything that its body throws, reports "Error: number description routine" and returns the
// routine's failure value.
//
//   bool twSomething(...) {
//     return Guarded("twSomething", false, [&] { ...; return true; });
//   }
#pragma once

#include <string_view>
#include <utility>

#include "platform/error.h"

namespace tarnwick::core {

enum class Report {
  kShow,  // box and log
  kLog,   // log only
};

// Reports the exception being handled; detail is added to the entry. A full disk is told once, at
// the end, by what runs (run_state.h). REQUIRES: called from a catch block.
void ReportCurrentException(std::string_view routine, Report report, std::string_view detail = {});
// No room on the disk, whoever says so: the system or the engine.
bool IsDiskFull(const Error& error);
// The same exception as an Error (anything that is none becomes ErrorNumber::kUnexpected).
Error CurrentError();

template <typename Result, typename Body>
Result Guarded(std::string_view routine, Result failure, Body&& body,
               Report report = Report::kShow) {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    ReportCurrentException(routine, report);
    return failure;
  }
}

// For routines that return nothing; true when the body ran to its end.
template <typename Body>
bool GuardedRun(std::string_view routine, Body&& body, Report report = Report::kShow) {
  try {
    std::forward<Body>(body)();
    return true;
  } catch (...) {
    ReportCurrentException(routine, report);
    return false;
  }
}

}  // namespace tarnwick::core
