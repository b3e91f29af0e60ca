// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the parser of one message keeps from its first line to its last: the open file with the
// current line, and the texts of the record while they may still hold undecoded bytes.
#pragma once

#include <string>
#include <vector>

#include "intake/mail_message.h"
#include "intake/mixed_text.h"
#include "platform/files.h"

namespace tarnwick::intake {

// The headers of one part, or of the whole message, as far as they say what its body is.
struct PartDescription {
  enum Kind { kNone = 0, kText = 1, kAttachment = 2, kHtml = 3, kOther = 4, kContainer = 5 };
  Kind kind = kNone;
  std::string charset;
  std::string encoding;
  std::string fileName;
};

struct ParseState {
  ParseState(const std::string& messageFile, MailMessage& message)
      : reader(messageFile), record(message) {}

  // Makes the next line the current one; at the end of the file the line is empty and atEnd is set.
  bool NextLine() {
    atEnd = !reader.Next(line);
    return !atEnd;
  }
  // The current line goes on the one before it.
  bool LineIsFolded() const {
    return !atEnd && !line.empty() && (line[0] == ' ' || line[0] == '\t');
  }

  struct Recipient {
    MixedText name;
    MixedText address;
  };

  platform::LineReader reader;
  std::string line;
  bool atEnd = false;

  MailMessage& record;
  MixedText subject;
  MixedText fromName;
  MixedText fromAddress;
  std::vector<Recipient> to;
  std::vector<Recipient> cc;
  MixedText body;
  MixedText htmlBody;

  PartDescription whole;  // what the message's own headers say
};

}  // namespace tarnwick::intake
