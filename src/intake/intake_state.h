// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the intake keeps from message to message.
#pragma once

#include <string>
#include <vector>

#include "intake/header_parser.h"

namespace tarnwick::intake {

struct IntakeState {
  Outcome LastOutcome = Outcome::kNone;
  std::vector<std::string> AttachFiles;  // written by MakeAttachFile, not yet removed
};

IntakeState& State();
void ResetState();

}  // namespace tarnwick::intake
