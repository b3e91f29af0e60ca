// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/steps.h"

#include "core/messages.h"
#include "core/run_state.h"
#include "platform/clock.h"

namespace tarnwick::board {

namespace {

// The window's events have a turn after so many steps, or after so many milliseconds where the
// steps are long ones.
constexpr int64_t kStepsToTurn = 64;
constexpr int64_t kMillisecondsToTurn = 30;

}  // namespace

Steps::Steps(int64_t total) : total_(total), turnedAt_(platform::TickMilliseconds()) {
  core::State().ImportCancelFlag = false;
}

Steps::~Steps() {
  core::State().ImportCancelFlag = false;
  if (shown_) core::State().Ui->ShowProgress(total_, total_);
}

bool Steps::Next() {
  ++done_;
  if (core::State().Ui == nullptr) return true;
  int64_t now = platform::TickMilliseconds();
  if (done_ % kStepsToTurn != 0 && now - turnedAt_ < kMillisecondsToTurn) return true;
  turnedAt_ = now;
  shown_ = true;
  core::State().Ui->ShowProgress(done_, total_);
  core::YieldEvents();
  return !core::State().ImportCancelFlag;
}

}  // namespace tarnwick::board
