// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What is read of an item of Outlook's.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "intake/letter_record.h"
#include "intake/mail_message.h"
#include "intake/message_state.h"
#include "intake/prepared_message.h"

namespace tarnwick::outlook {

struct ItemReading {
  std::string type;  // "MailItem", "ContactItem", ... (type_name.h); "" where nothing tells
  // What follows, of mail alone.
  intake::PreparedMessage prepared;
  bool isDraft = false;
  bool isSigned = false;    // or encrypted, as a whole: its texts lie in what was signed
  intake::AddressPair own;  // who wrote it
  std::string damage;       // what of it is missing or not as it was written; "" for a sound one
};
template <typename Archive>
void Pass(Archive& archive, ItemReading& r) {
  archive(r.type, r.prepared, r.isDraft, r.isSigned, r.own, r.damage);
}

// What is told of an item without its texts.
struct ItemFacts {
  intake::MessageState state;
  std::optional<int64_t> time;  // when it came, else when it was sent: seconds since 1970-01-01 UTC
};
template <typename Archive>
void Pass(Archive& archive, ItemFacts& f) {
  archive(f.state, f.time);
}

}  // namespace tarnwick::outlook
