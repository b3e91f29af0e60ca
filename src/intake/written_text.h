// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The texts of a message as they are written into its rows.
#pragma once

#include <string>

#include "intake/mail_message.h"
#include "intake/message_fields.h"

namespace tarnwick::intake {

// Subjects, names, addresses and the like are stored up to so many characters; the stored file has
// all of them.
inline constexpr size_t kMostShortText = 32767;

// The key as it is stored in Email.EntryID, cut to so many characters: what tells two messages
// apart has to stand before.
inline constexpr size_t kMostKeyText = 255;
std::string StoredKey(const std::string& messageKey);

// Text for a column: whatever an importer handed over, the database never holds invalid UTF-8.
std::string CleanText(const std::string& text);
// The same for a column that is shown in a list, and lies in indexes besides: what is longer than
// any such text was ever meant to be is cut.
std::string ShortText(const std::string& text);
// The text of a column of Email.
std::string WrittenText(const MessageField& field, const std::string& text);

// Makes the body of a message that has none but HTML.
void TakeBodyFromHtml(MailMessage& message);

}  // namespace tarnwick::intake
