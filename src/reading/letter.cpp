// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "reading/letter.h"

#include <algorithm>

#include "core/guard.h"
#include "database/recordset.h"
#include "platform/charset.h"
#include "platform/html.h"
#include "platform/utf8.h"
#include "repository/repository.h"
#include "takeout/stored_file.h"

namespace tarnwick::reading {

namespace {

constexpr size_t kLongestSource = 2000000;

bool HoldsText(const std::string& text) {
  return text.find_first_not_of(" \t\r\n") != std::string::npos;
}

bool LooksLikeHtml(const std::string& text) {
  std::string begin = platform::AsciiLower(std::string_view(text).substr(0, 2000));
  return begin.find("<html") != std::string::npos || begin.find("<body") != std::string::npos ||
         begin.find("<!doctype html") != std::string::npos;
}

// A message of old is in no charset that it names; its bytes are shown one by one then.
std::string AsText(std::string_view bytes) {
  return platform::IsValidUtf8(bytes) ? std::string(bytes)
                                      : platform::BytesToUtf8(bytes, "windows-1252");
}

std::string SourceBytes(int64_t id) {
  return core::Guarded("MessageSource", std::string(),
                       [&] { return takeout::ReadStoredFile(id).value_or(std::string()); });
}

}  // namespace

std::optional<Letter> ReadLetter(int64_t id) {
  using Result = std::optional<Letter>;
  return core::Guarded("ReadLetter", Result(), [&]() -> Result {
    std::optional<takeout::StoredMessage> message = takeout::ReadStoredMessage(id);
    if (!message) return std::nullopt;
    Letter letter;
    letter.message = std::move(*message);
    const takeout::StoredMessage& stored = letter.message;
    bool bodyIsHtml = !HoldsText(stored.htmlBody) && LooksLikeHtml(stored.body);
    const std::string& html = bodyIsHtml ? stored.body : stored.htmlBody;
    if (HoldsText(html)) letter.formatted = CleanHtml(html);
    letter.text = HoldsText(stored.body) && !bodyIsHtml ? stored.body : platform::ShownText(html);
    letter.files = takeout::OpenAttachments(id);
    return letter;
  });
}

std::optional<EmailText> ReadEmailText(int64_t id) {
  using Result = std::optional<EmailText>;
  return core::Guarded("ShowEmailText", Result(), [&]() -> Result {
    jet::Recordset email;
    email.Open("SELECT * FROM Email Where ID = " + std::to_string(id), repository::RepositoryDb());
    if (email.Eof()) return std::nullopt;
    EmailText shown{email.Field("Subject").AsText(), email.Field("Body").AsText(), id};
    if (!HoldsText(shown.text)) shown.text = email.Field("HTMLBody").AsText();
    return shown;
  });
}

std::string PersonText(const std::string& name, const std::string& address) {
  if (name.empty() || name == address) return address;
  return address.empty() ? name : name + " <" + address + ">";
}

std::string HeadersOf(int64_t id) {
  std::string source = SourceBytes(id);
  size_t end = std::min(source.find("\r\n\r\n"), source.find("\n\n"));
  return AsText(std::string_view(source).substr(0, std::min(end, kLongestSource)));
}

std::string SourceOf(int64_t id) {
  std::string source = SourceBytes(id);
  bool isCut = source.size() > kLongestSource;
  std::string text = AsText(std::string_view(source).substr(0, kLongestSource));
  return isCut ? text + "\r\n[...]" : text;
}

}  // namespace tarnwick::reading
