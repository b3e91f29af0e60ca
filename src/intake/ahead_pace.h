// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// When the texts of a folder's messages are worth reading ahead of their turn (reader_link.h):
// while the messages are new. Of those that are stored already little is read.
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
