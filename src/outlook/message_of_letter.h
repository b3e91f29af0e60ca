// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The record of a letter, as the storing step takes it.
#pragma once

#include <string>

#include "intake/mail_message.h"
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

// The record, complete but for what it is stored as. Times are local civil ones: a sent time that
// is missing is the received one, else when the item was made; a received time that is missing or
// lies more than a day ahead is the sent one. Recipients beyond the record's room are dropped, with
// a box for Cc and attachments. isFromMe answers whether an address is the user's own.
intake::MailMessage MessageOf(const Letter& letter, Item& item, const FolderPlace& place,
                              bool (*isFromMe)(const std::string& address));

}  // namespace tarnwick::outlook
