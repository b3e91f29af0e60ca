// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A mail item on its way into the repository.
#pragma once

#include <cstdint>
#include <string>

#include "intake/mail_message.h"
#include "outlook/message_of_letter.h"
#include "outlook/object_model.h"

namespace tarnwick::outlook {

struct TakenItem {
  intake::MailMessage message;
  std::string name;    // for the account of the load
  std::string damage;  // what of it is missing or not as it was written; "" for a sound one
};

// Writes the item to TempMessageFile as an Internet message and gives its record; what is damaged
// of it stands in its notes. The sender of
// sent mail is noted as one of the user's own addresses, from the application. budget: see
// WriteMime. Throws what reading and writing throw. REQUIRES: item is a MailItem.
TakenItem TakeItem(Item& item, const FolderPlace& place, const std::string& application,
                   uint64_t& budget, const intake::ReadingRules& rules);

}  // namespace tarnwick::outlook
