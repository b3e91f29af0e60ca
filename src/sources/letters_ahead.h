// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Goes on ahead of the reading of a mailbox on a second thread: the letters that it is coming to
// are read, parsed and packed while those before them are stored. What is made ahead is a function
// of the mailbox's bytes alone; the reading asks, tells and stores in its own order as if this were
// not there.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "intake/prepared_message.h"
#include "intake/raw_message.h"
#include "intake/reading_rules.h"
#include "platform/ahead.h"
#include "sources/letter_reader.h"
#include "sources/mailbox.h"

namespace tarnwick::sources {

// The longest letter that is kept in memory.
inline constexpr size_t kMostKept = size_t{1} << 20;

struct LetterAhead {
  std::string name;                       // as LetterEntry has it
  std::optional<intake::RawMessage> raw;  // nothing: it has to be read in its turn
  std::string key;                        // letter_key.h
  std::unique_ptr<intake::PreparedMessage> prepared;

  size_t Cost() const;
};

class LettersAhead {
 public:
  // done: letters that the reading has come to. nullptr where nothing can be made ahead: without a
  // second thread, and by rules that look at more than the letter.
  static std::unique_ptr<LettersAhead> Begin(const Mailbox& mailbox,
                                             const intake::ReadingRules& rules, int64_t done);

  // The next letter, which the reading calls by this name; to be asked for each. nullopt where it
  // has to be read in its turn.
  std::optional<LetterAhead> Take(const std::string& name);

  // Letters that were read ahead and not in their turn, by all mailboxes: what was gained, for the
  // tests.
  static int64_t LettersTaken();

 private:
  struct Reader;
  explicit LettersAhead(std::shared_ptr<Reader> reader);

  platform::Ahead<LetterAhead> ahead_;
  bool isAstray_ = false;
};

}  // namespace tarnwick::sources
