// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// How an operation of this room ended. Whatever the person has to know has been shown by then.
#pragma once

namespace tarnwick::maintenance {

enum class Result {
  kDone,
  kDeclined,  // refused, or a question was answered with No: nothing was changed
  kStopped,   // by the stop command
  kFailed,
};

}  // namespace tarnwick::maintenance
