// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/state.h"

namespace tarnwick::oe {

OeState& State() {
  static OeState state;
  return state;
}

void ResetState() {
  State() = OeState();
}

}  // namespace tarnwick::oe
