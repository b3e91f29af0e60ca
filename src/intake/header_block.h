// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Reads the headers of a message, line by line, into a draft and the dates of the message. A header
// ends where the next line begins that is no part of it; what part a following line is differs by
// header: see header_block.cpp. Of each kind but Content-Type and Received the first counts.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "intake/content_type.h"
#include "intake/header_parser.h"
#include "intake/line_cursor.h"
#include "intake/mail_message.h"
#include "intake/message_draft.h"
#include "intake/reading_rules.h"

namespace tarnwick::intake {

class HeaderBlock {
 public:
  HeaderBlock(LineCursor& cursor, MessageDraft& draft, MailMessage& message,
              const ReadingRules& rules)
      : cursor_(cursor), draft_(draft), message_(message), rules_(rules) {}

  // Sets the dates and IsMultipart of the message. The first line of the body becomes current: the
  // one behind the empty line, or the line with "--" that ended the headers without one. times:
  // what the message's store knows of them.
  void Read(const StoreFacts& facts);

  // What the headers declare about a body that is not multipart.
  const PartDescription& Content() const { return content_; }
  bool HasSender() const { return WasSeen(HeaderCode::kFrom); }

 private:
  // Acts on the current line; the line behind what belongs to it becomes current. False at the end
  // of the headers.
  bool ReadOne();
  void ReadSubject(std::string_view value);
  void ReadDateHeader(std::string value);
  void ReadFrom(std::string_view value);
  void ReadAddresses(std::string value, bool isCc);
  void ReadReceived(std::string value);
  void ReadBcc(std::string_view value);
  void ReadContent();
  void TakeItems(std::string_view list, bool isCc);
  void AddAddress(std::string_view item, bool isCc);
  void AppendFolded(std::string& value);

  bool WasSeen(HeaderCode code) const { return (seen_ >> static_cast<int>(code) & 1U) != 0; }
  bool FirstOf(HeaderCode code);
  void SettleDates(const StoreFacts& facts);

  LineCursor& cursor_;
  MessageDraft& draft_;
  MailMessage& message_;
  const ReadingRules& rules_;
  PartDescription content_;
  unsigned seen_ = 0;
  std::optional<DateTime> sent_;  // as the Date header has it
  std::optional<DateTime> latestReceived_;
};

}  // namespace tarnwick::intake
