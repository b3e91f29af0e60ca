// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Goes on ahead of a walk on a second thread: the messages that it is coming to are read, parsed
// and packed while those before them are stored. The walk itself asks, tells and stores in its own
// order as if this were not there; what is made ahead is a function of the store's bytes alone.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "intake/reading_rules.h"
#include "oe/dbx_read.h"
#include "oe/tree_walk.h"
#include "platform/ahead.h"

namespace tarnwick::oe {

class WalkAhead {
 public:
  // nullptr where nothing can be made ahead: without a second thread, and by rules that look back
  // at the message before. Goes on where the walk is.
  static std::unique_ptr<WalkAhead> Begin(const std::string& fileName, const TreeWalk& walk,
                                          const intake::ReadingRules& rules);

  // The message that the walk has come to; nullopt where it has to be read in its turn.
  std::optional<AheadMessage> Take(uint32_t infoOffset);

  // Of a message that was taken, when it is done with.
  void GiveBack(AheadMessage used) { ahead_.GiveBack({0, std::move(used)}); }

  // Messages that were read ahead and not in their turn, by all walks: what was gained, for the
  // tests.
  static int64_t MessagesTaken();

 private:
  struct Coming {
    uint32_t infoOffset = 0;
    std::optional<AheadMessage> message;
    size_t Cost() const { return message ? message->Cost() : sizeof *this; }
  };
  // What the second thread works with.
  struct Reader {
    Reader(const std::string& fileName, const TreeWalk& other, const intake::ReadingRules& by)
        : walk(fileName, other), file(fileName), rules(by) {}
    std::optional<Coming> Next() noexcept;

    TreeWalk walk;
    ByteReader file;
    intake::ReadingRules rules;
  };

  explicit WalkAhead(std::shared_ptr<Reader> reader)
      : ahead_([reader = std::move(reader)] { return reader->Next(); }) {}

  platform::Ahead<Coming> ahead_;
  bool isAstray_ = false;
};

}  // namespace tarnwick::oe
