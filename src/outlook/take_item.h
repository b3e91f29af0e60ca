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

#include "intake/prepared_message.h"
#include "intake/raw_message.h"
#include "intake/text_reader.h"
#include "outlook/item_reading.h"
#include "outlook/message_of_letter.h"
#include "outlook/object_model.h"

namespace tarnwick::outlook {

// Reads it, and hands the bytes of mail as an Internet message to sink. budget: see WriteMime.
// Throws what reading and writing throw.
ItemReading ReadItem(PropertyItem& item, uint64_t& budget, const intake::ReadingRules& rules,
                     const std::function<void(std::string_view)>& sink);

struct TakenItem {
  std::string type;  // as ItemReading has it; where it is not mail, nothing else is filled in
  intake::PreparedMessage prepared;
  intake::RawMessage raw{""};
  std::string name;  // for the account of the load
  std::string damage;
};

// Fills in where the item lies, what stands in what was signed and, in its notes, what is damaged;
// the sender of sent mail is noted as one of the user's own addresses, from the application.
// raw: its Internet message. REQUIRES: it is mail.
TakenItem SettleItem(ItemReading reading, intake::RawMessage raw, const FolderPlace& place,
                     const std::string& application, intake::TextReader& texts);

// Reads the item and settles it.
TakenItem TakeItem(Item& item, const FolderPlace& place, const std::string& application,
                   uint64_t& budget, const intake::ReadingRules& rules, intake::TextReader& texts);

}  // namespace tarnwick::outlook
