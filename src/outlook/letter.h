// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a mail item says, put in order: one sender, recipients with Internet addresses where the
// item carries them, times, and the two bodies as text. From it the import makes both the record
// that is stored (message_of_letter.h) and the Internet message beside it (mime_message.h).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "intake/mail_message.h"
#include "intake/message_state.h"
#include "outlook/object_model.h"

namespace tarnwick::outlook {

struct LetterRecipient {
  int64_t type = RecipientType::kTo;
  intake::AddressPair pair;
};

// Texts are UTF-8.
struct Letter {
  std::string messageClass;
  std::string subject;
  intake::AddressPair from;  // "no name" and "no address" where the item has none
  std::string ownAddress;    // of who wrote it, where that may be another than from
  std::vector<LetterRecipient> recipients;
  std::optional<int64_t> sent;      // seconds since 1970-01-01 UTC
  std::optional<int64_t> received;  // likewise
  std::optional<int64_t> created;   // likewise
  std::string importance;           // "High", "Low" or ""
  bool isDraft = false;
  intake::MessageState state;
  std::string plainBody;
  std::string htmlBody;
  std::string charset;  // the one that the bodies were written in, "" where it is not known
  std::string transportHeaders;  // as the letter came; "" for one that was never on its way
  std::string messageId;
  std::string inReplyTo;
  std::string references;
};

// REQUIRES: item is a MailItem. Throws what reading the item throws.
Letter ReadLetter(PropertyItem& item);

// What Outlook knew of it, as its properties say.
intake::MessageState StateOf(const PropertySet& properties);

// The name that an attachment goes by; never empty.
std::string AttachmentName(const PropertySet& attachment);

// HTML bytes of a store as text: in the code page the item names, else what the bytes declare.
std::string HtmlFromBytes(std::string_view bytes, int64_t codepage);

}  // namespace tarnwick::outlook
