// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What becomes of a message that is taken in.
#pragma once

#include <string>

namespace tarnwick::intake {

enum class Outcome {
  kNone,  // it has not been dealt with yet
  kStored,
  kAlreadyStored,
  kRefused,     // by the sender rules
  kIgnored,     // the person chose never to take it
  kUnreadable,  // no message, or an error on the way: it is not stored, or only by half
  kStopped,     // the stop flag was set, or the person cancelled
};

struct Ending {
  Outcome outcome = Outcome::kNone;
  std::string reason;  // in words for the account of a load; "" where the outcome says it all
};

}  // namespace tarnwick::intake
