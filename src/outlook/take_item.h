// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A mail item on its way into the repository: read, which asks nothing of the repository and so can
// be done in another process, and settled.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "intake/header_parser.h"
#include "intake/prepared_message.h"
#include "intake/text_reader.h"
#include "outlook/message_of_letter.h"
#include "outlook/object_model.h"

namespace tarnwick::outlook {

// What is read of an item.
struct ItemReading {
  intake::PreparedMessage prepared;
  bool isDraft = false;
  bool isSigned = false;    // or encrypted, as a whole: its texts lie in what was signed
  intake::AddressPair own;  // who wrote it
  std::string damage;       // what of it is missing or not as it was written; "" for a sound one
};

// Reads it, and hands its bytes as an Internet message to sink. budget: see WriteMime. Throws what
// reading and writing throw. REQUIRES: item is a MailItem.
ItemReading ReadItem(Item& item, uint64_t& budget, const intake::ReadingRules& rules,
                     const std::function<void(std::string_view)>& sink);

struct TakenItem {
  intake::PreparedMessage prepared;
  std::string name;  // for the account of the load
  std::string damage;
};

// Fills in where the item lies, what stands in what was signed and, in its notes, what is damaged;
// the sender of sent mail is noted as one of the user's own addresses, from the application.
// REQUIRES: its Internet message stands in TempMessageFile.
TakenItem SettleItem(ItemReading reading, const FolderPlace& place, const std::string& application,
                     intake::TextReader& texts);

// Both, with the Internet message written to TempMessageFile.
TakenItem TakeItem(Item& item, const FolderPlace& place, const std::string& application,
                   uint64_t& budget, const intake::ReadingRules& rules, intake::TextReader& texts);

}  // namespace tarnwick::outlook
