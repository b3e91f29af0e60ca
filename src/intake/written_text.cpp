// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/written_text.h"

#include "core/text.h"
#include "platform/charset.h"
#include "platform/html.h"

namespace tarnwick::intake {

std::string StoredKey(const std::string& messageKey) {
  return core::SanitizeFilterText(CleanText(messageKey));
}

std::string CleanText(const std::string& text) {
  return platform::EnsureUtf8(text);
}

std::string ShortText(const std::string& text) {
  return std::string(platform::FirstChars(CleanText(text), kMostShortText));
}

std::string WrittenText(const MessageField& field, const std::string& text) {
  if (field.writing == Writing::kKey) return StoredKey(text);
  if (IsLongText(field.column)) return CleanText(text);
  std::string written = ShortText(text);
  bool isHigh = field.writing == Writing::kImportance && platform::AsciiUpper(written) == "HIGH";
  return isHigh ? "HIGH" : written;
}

void TakeBodyFromHtml(MailMessage& message) {
  if (message.Body.empty() || IsMarkup(message.Body)) {
    message.Body = platform::HtmlToPlainText(CleanText(message.HTMLBody));
  }
}

}  // namespace tarnwick::intake
