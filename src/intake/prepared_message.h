// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A message as far as it can be made without asking the repository or the person: read, and the
// long values of its rows packed. What is here uses nothing but what it is given, so that it can be
// done elsewhere (reader_link.h), ahead of the message's turn.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "core/tellings.h"
#include "intake/mail_message.h"
#include "intake/raw_message.h"
#include "intake/reading_rules.h"
#include "platform/date_time.h"

namespace tarnwick::intake {

// What the rows of a message hold, in the form in which it lies in the file. What is missing is
// made when the message is stored.
struct PackedRows {
  struct Text {
    std::string_view column;
    std::string packed;
  };
  std::vector<Text> texts;                        // the long ones of Email, in their order
  std::optional<std::vector<uint32_t>> trigrams;  // for the text index
  std::vector<std::string> pieces;                // of the raw message
  std::string thread;                             // Email.Thread
};

struct PreparedMessage {
  // Without key, direction, correspondent and what the source says of it.
  MailMessage message;
  bool hasSender = false;
  // What the key of a message without one is made of, where that is not what it is stored with.
  std::optional<std::string> keySubject;
  std::optional<DateTime> keyTime;
  // Once Body has what HTMLBody alone had.
  std::optional<PackedRows> rows;
  // What is to be told of it when it is taken in, and the error that its reading ended with.
  std::vector<core::Telling> tellings;
  std::optional<core::Telling> fault;
};

// Reads the message. Throws Error for a file that can't be read.
PreparedMessage ReadMessage(const RawMessage& raw, const ReadingRules& rules,
                            const StoreFacts& facts);

// The same for a message that another process takes in: with all that is to be told and, unless it
// is too long to be held (kMostHeld), what its rows are made of; packed, or for the other to pack.
std::unique_ptr<PreparedMessage> PrepareElsewhere(const RawMessage& raw, const ReadingRules& rules,
                                                  const StoreFacts& facts, bool packs = true);

// The same of a text in memory, which is as it was afterwards.
std::unique_ptr<PreparedMessage> PrepareElsewhere(std::string& text, const ReadingRules& rules,
                                                  const StoreFacts& facts, bool packs = true);

// What both are made of, for what else is read into a record in another process: reads, with what
// is to be told and the error that ended it kept; and makes what the rows are made of. begin: the
// raw message, of one that is too long its first bytes; size: of all of it.
std::unique_ptr<PreparedMessage> ReadElsewhere(const std::function<void(PreparedMessage&)>& read);
void PackElsewhere(PreparedMessage& prepared, const RawMessage& begin, uint64_t size,
                   bool packs = true);

// Whether rows that another process packed can be those of the message: nothing in them can harm
// the repository. What they unpack to is not looked at. rawSize: bytes of its text.
bool MayBeRowsOf(const PreparedMessage& prepared, uint64_t rawSize);

// Tells it as ReadMessage would have; throws what it would have thrown.
void TellOf(const PreparedMessage& prepared);
// Tells what a message leaves to be told, a file that stood in it as well.
void Tell(const core::Telling& telling);

// Gives it notes, which are no part of its text.
void SetNotes(PreparedMessage& prepared, std::string notes);

// The columns of PackedRows::texts, all or none of which are packed but for notes set since.
const std::vector<std::string_view>& PackedColumns();

}  // namespace tarnwick::intake
