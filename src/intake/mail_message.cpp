// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/mail_message.h"

#include "core/text.h"
#include "platform/html.h"

namespace tarnwick::intake {

namespace {

// Mailers put hard blanks, marks of the byte order and blanks of no width into empty parts.
bool IsBlank(std::string_view text) {
  while (!text.empty()) {
    size_t length = 0;
    if (std::string_view(" \t\r\n\f").find(text[0]) != std::string_view::npos) length = 1;
    for (std::string_view blank : {"\xC2\xA0", "\xEF\xBB\xBF", "\xE2\x80\x8B"}) {
      if (core::BeginsWith(text, blank)) length = blank.size();
    }
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

}  // namespace

void SetCorrespondent(MailMessage& message) {
  if (message.Direction == "In") {
    message.FromToAddress = message.FromAddress;
    message.FromToName = message.FromName;
  } else if (message.ToCount > 0) {
    message.FromToAddress = message.To[0].Address;
    message.FromToName = message.To[0].Name;
  }
}

bool IsMarkup(const std::string& body) {
  return core::BeginsWith(body, "<!DOCTYPE") || core::BeginsWith(body, "<html");
}

void SettleBody(MailMessage& message) {
  bool isMarkup = IsMarkup(message.Body);
  if (isMarkup && message.HTMLBody.empty()) message.HTMLBody = message.Body;
  if (message.HTMLBody.empty() || (!isMarkup && !IsBlank(message.Body))) return;
  std::string text = platform::ShownText(message.HTMLBody);
  if (!text.empty()) message.Body = std::move(text);
}

}  // namespace tarnwick::intake
