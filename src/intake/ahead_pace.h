// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// When a folder is worth reading ahead (platform/ahead.h): while its messages are new. Of those
// that are stored already little is read in their turn.
#pragma once

namespace tarnwick::intake {

class AheadPace {
 public:
  enum class Turn { kNone, kBegin, kEnd };

  // What to do after a message.
  Turn Note(bool wasNew) {
    newInRow_ = wasNew ? newInRow_ + 1 : 0;
    knownInRow_ = wasNew ? 0 : knownInRow_ + 1;
    if (knownInRow_ == kKnownToEnd) return Turn::kEnd;
    return newInRow_ == kNewToBegin ? Turn::kBegin : Turn::kNone;
  }

 private:
  static constexpr int kNewToBegin = 2;
  static constexpr int kKnownToEnd = 32;
  int newInRow_ = 0;
  int knownInRow_ = 0;
};

}  // namespace tarnwick::intake
