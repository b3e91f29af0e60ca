// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What is read of a mailbox, without asking the repository or the person: its letters one after the
// other, and what each says. The program reads so through tarnwick-reader (letters_link.h), or by
// itself where there is none; what either gives is the same.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "intake/message_state.h"
#include "intake/prepared_message.h"
#include "sources/letter_key.h"
#include "sources/letter_reader.h"
#include "sources/mailbox.h"

namespace tarnwick::sources {

// The longest letter that is kept in memory.
inline constexpr size_t kMostKept = size_t{1} << 20;

// What is told by a letter's text before it is parsed.
struct LetterSays {
  std::string key;      // letter_key.h
  std::string subject;  // decoded
  intake::MessageState state;
  // Of its From header, "" where that has no address.
  std::string senderAddress;
  std::string senderName;
  uint64_t size = 0;
};

// Takes in a letter's bytes, in any pieces.
class LetterListener {
 public:
  void Add(std::string_view piece);
  LetterSays Finish();
  // All that was taken in, or the beginning of a letter that is longer than kMostKept.
  std::string& Begin() { return begin_; }

 private:
  LetterKey key_;
  std::string begin_;
  uint64_t size_ = 0;
};

struct LetterReading {
  bool isEnd = false;
  LetterEntry entry;
  LetterSpan span;                       // of its text
  std::optional<core::Telling> failure;  // of its text, or of all behind the letters before
  std::optional<LetterSays> says;        // of a text that could be read
  std::string damage;                    // of the mailbox, at its end
  std::optional<std::string> held;       // the text, where it is in memory
  std::unique_ptr<intake::PreparedMessage> prepared;  // where it was made elsewhere
};

class LetterWalk {
 public:
  virtual ~LetterWalk() = default;

  // The next letter. wantsText: it is likely to be taken in.
  virtual LetterReading Next(bool wantsText) = 0;
  // The text of a letter, to sink piece by piece; held and prepared are filled in where they can
  // be and are not yet. Throws Error. REQUIRES: the last letter that Next gave.
  virtual void ReadText(LetterReading& letter, const Sink& sink) = 0;
};

// The text of the letter that a reader has come to, as far as what it says.
void Listen(LetterReader& letters, LetterReading& reading);
// The error being handled, kept.
core::Telling CurrentFailure();

// Through the reader, or here.
std::unique_ptr<LetterWalk> OpenLetters(const Mailbox& mailbox, const intake::ReadingRules& rules);

}  // namespace tarnwick::sources
