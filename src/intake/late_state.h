// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The state of messages that were stored before states were kept, or from a place that told none: a
// later load that comes to them again fills it in and touches nothing else. What is filled in once
// stays. Errors are logged.
#pragma once

#include <string>

#include "intake/message_state.h"

namespace tarnwick::intake {

// Whether a message with this key is stored and has no state.
bool LacksState(const std::string& key);

// Gives it to such a message, and counts that in the account of the load. Does nothing for a state
// that is not known, and for all other keys.
void FillState(const std::string& key, const MessageState& state);

}  // namespace tarnwick::intake
