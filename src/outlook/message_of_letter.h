// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The record of a letter, as the storing step takes it.
#pragma once

#include <string>

#include "intake/mail_message.h"
#include "intake/reading_rules.h"
#include "outlook/letter.h"
#include "outlook/object_model.h"

namespace tarnwick::outlook {

// Where a letter lies. Texts are UTF-8.
struct FolderPlace {
  std::string name;
  std::string parentPath;    // "\\Personal Folders\Projects", without the folder itself
  bool inSentItems = false;  // it or a folder above it
  bool inInbox = false;
};

// The record, complete but for its place and what it is stored as. Times are local civil ones: a
// sent time that is missing is the received one, else when the item was made; a received time that
// is missing or lies more than a day ahead is the sent one. Where the rules ask for sound dates,
// one that is not counts as missing, and before the received time comes that of the Date header.
// Recipients beyond what the rules have are dropped, with a box for Cc; attachments beyond the
// record's room likewise.
intake::MailMessage MessageOf(const Letter& letter, PropertyItem& item,
                              const intake::ReadingRules& rules = intake::kDesigned);

// Says where it lies and, by that, which way it went. isFromMe answers whether an address is the
// user's own.
void SetPlace(const FolderPlace& place, bool isDraft, bool (*isFromMe)(const std::string& address),
              intake::MailMessage& message);

}  // namespace tarnwick::outlook
