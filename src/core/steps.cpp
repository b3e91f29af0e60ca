// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/steps.h"

#include "core/messages.h"
#include "core/run_state.h"
#include "platform/clock.h"

namespace tarnwick::core {

namespace {

// The window's events have a turn after so many steps, or after so many milliseconds where the
// steps are long ones.
constexpr int64_t kStepsToTurn = 64;
constexpr int64_t kMillisecondsToTurn = 30;

}  // namespace

Steps::Steps(int64_t total) : total_(total), turnedAt_(platform::TickMilliseconds()) {
  State().ImportCancelFlag = false;
}

Steps::~Steps() {
  State().ImportCancelFlag = false;
  if (shown_) State().Ui->ShowProgress(total_, total_);
}

bool Steps::Next() {
  ++done_;
  if (State().Ui == nullptr) return true;
  int64_t now = platform::TickMilliseconds();
  if (done_ % kStepsToTurn != 0 && now - turnedAt_ < kMillisecondsToTurn) return true;
  turnedAt_ = now;
  shown_ = true;
  State().Ui->ShowProgress(done_, total_);
  YieldEvents();
  return !State().ImportCancelFlag;
}

}  // namespace tarnwick::core
