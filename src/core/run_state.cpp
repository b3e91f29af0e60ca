// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/run_state.h"

#include "core/messages.h"

namespace tarnwick::core {

RunState& State() {
  static RunState state;
  return state;
}

void ResetState() {
  CloseLog();
  UserInterface* ui = State().Ui;
  State() = RunState();
  State().Ui = ui;
}

void BeginLoadState() {
  RunState& state = State();
  state.StopFlag = false;
  state.ImportCancelFlag = false;
  state.NewMessageFlag = false;
  state.RunWideAnswer = SenderAnswer::kCancel;
  state.LatestReceivedTime.reset();
  state.Counts = LoadCounts();
  state.RepeatedBoxes.clear();
  state.DiskIsFull = false;
  state.EndTellsOfFullDisk = false;
  state.LoadIsRunning = true;
}

void EndLoadState() {
  CloseLog();
  RunState& state = State();
  state.LoadIsRunning = false;
  state.RepeatedBoxes.clear();
  state.ImportCancelFlag = false;
  state.StopFlag = false;
  state.RunWideAnswer = SenderAnswer::kCancel;
  state.RefuseUnknownSenders = false;
  state.EndTellsOfFullDisk = false;
}

bool IsLoadStopped() {
  const RunState& state = State();
  return state.StopFlag || state.ImportCancelFlag || state.DiskIsFull;
}

}  // namespace tarnwick::core
