// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One message of the open repository, read back whole. Failures throw Error.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "intake/mail_message.h"
#include "intake/message_state.h"
#include "platform/date_time.h"

namespace tarnwick::takeout {

struct StoredMessage {
  int64_t id = 0;
  std::string subject;
  std::string fromName;
  std::string fromAddress;
  std::optional<DateTime> sent;
  std::optional<DateTime> received;
  std::string direction;
  std::string folder;
  std::string application;
  std::string body;
  std::string htmlBody;
  std::vector<intake::AddressPair> to;
  std::vector<intake::AddressPair> cc;
  std::vector<std::string> attachments;
  intake::MessageState state;

  // What the text window shows: the body, else the HTML as it stands.
  const std::string& Text() const { return body.empty() ? htmlBody : body; }
};

// nullopt when there is no message of this number.
std::optional<StoredMessage> ReadStoredMessage(int64_t id);

}  // namespace tarnwick::takeout
