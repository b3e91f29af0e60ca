// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/state.h"

#include "core/run_state.h"

namespace tarnwick::oe {

OeState& State() {
  static OeState state;
  return state;
}

void ResetState() {
  State() = OeState();
}

bool MayReport() {
  return !State().IsWalking || State().ReportsLeft-- > 0;
}

bool IsStopped() {
  return core::IsLoadStopped();
}

}  // namespace tarnwick::oe
