// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A message while it is being read: the texts of MailMessage as MixedText, because the charset of
// their plain bytes is known only when the last part has been read.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "intake/mail_message.h"
#include "intake/message_state.h"
#include "intake/mixed_text.h"

namespace tarnwick::intake {

struct DraftAddress {
  MixedText name;
  MixedText address;
};

struct MessageDraft {
  MixedText subject;
  DraftAddress from;
  std::vector<DraftAddress> to;
  std::vector<DraftAddress> cc;
  std::vector<MixedText> attachments;   // at most kMaxAttachments
  std::vector<std::string> boundaries;  // at most kMaxBoundaries, none empty
  MixedText body;
  MixedText html;
  std::string importance;
  StateHeaders state;
  std::string timeText;
  std::string timeShift;

  // As the last text or HTML part that declares them has them.
  std::string charset;
  std::string encoding;
  std::string htmlCharset;
  // The charset of the first part that can give one to the header texts.
  std::string headerCharset;
  bool hasTextPart = false;

  // These say so in a box when the list is full, and drop the entry.
  void AddBoundary(std::string boundary);
  bool AddAttachment(const MixedText& name);  // false when it was dropped
  // Shows one of the boxes about full lists. After ten thousand of one message there are no more:
  // the log would grow far beyond the message.
  void ShowLimit(std::string_view kind, const std::string& text);

  // Of the texts that no part of the message declares otherwise.
  const std::string& CharsetOfHeaders() const {
    return headerCharset.empty() ? charset : headerCharset;
  }

  // What the key of a message without one is made of, where that is not what the message is stored
  // with: both readings (reading_rules.h) make the same.
  std::optional<MixedText> keySubject;
  std::optional<DateTime> keyTime;

  int limitsShown = 0;
};

// Converts every text and puts it into the message, whose other fields stay as they are.
void FinishDraft(const MessageDraft& draft, MailMessage& message);

}  // namespace tarnwick::intake
