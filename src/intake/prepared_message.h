// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A message as far as it can be made without asking the repository or the person: read, and the
// long values of its rows packed. What is here uses nothing but what it is given, so that it can be
// done on any thread, ahead of the message's turn.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "intake/mail_message.h"
#include "intake/raw_message.h"
#include "intake/reading_rules.h"
#include "platform/date_time.h"

namespace tarnwick::intake {

// What the rows of a message hold, in the form in which it lies in the file.
struct PackedRows {
  struct Text {
    std::string_view column;
    std::string packed;
  };
  std::vector<Text> texts;          // the long ones of Email
  std::vector<uint32_t> trigrams;   // for the text index
  std::vector<std::string> pieces;  // of the raw message
  std::string thread;               // Email.Thread
};

struct PreparedMessage {
  // Without key, direction, correspondent and what the source says of it.
  MailMessage message;
  bool hasSender = false;
  // What the key of a message without one is made of, where that is not what it is stored with.
  std::optional<std::string> keySubject;
  std::optional<DateTime> keyTime;
  std::optional<PackedRows> rows;

  size_t Cost() const;  // memory, roughly
};

// Reads the message. Throws Error for a file that can't be read.
PreparedMessage ReadMessage(const RawMessage& raw, const ReadingRules& rules,
                            const StoreFacts& facts);

// The same with the rows packed; nullptr where the reading would tell or leave something behind (a
// limit, a file that stands in the text), which has to wait for the message's turn.
std::unique_ptr<PreparedMessage> PrepareAhead(const RawMessage& raw, const ReadingRules& rules,
                                              const StoreFacts& facts);

}  // namespace tarnwick::intake
