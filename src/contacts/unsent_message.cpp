// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "contacts/unsent_message.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "core/documents.h"
#include "core/guard.h"
#include "core/text.h"
#include "intake/mail_message.h"
#include "platform/charset.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "repository/repository.h"

namespace tarnwick::contacts {

namespace {

constexpr std::string_view kFold = "\r\n        ";
// A line of a message holds at most 998 bytes; a mailbox also has its address and the header's
// name.
constexpr size_t kLongestQuoted = 500;
// An encoded word has at most 75 characters: 12 of frame and 60 that stand for 45 bytes.
constexpr size_t kEncodedBytes = 45;

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
}

std::string CleanName(std::string_view name) {
  std::string clean;
  bool afterControl = false;
  for (char c : platform::EnsureUtf8(name)) {
    bool control = IsControl(c);
    if (!control) clean += c;
    if (control && !afterControl) clean += ' ';
    afterControl = control;
  }
  return std::string(core::Trim(clean));
}

std::string Base64(std::string_view bytes) {
  constexpr std::string_view kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    size_t count = std::min<size_t>(3, bytes.size() - i);
    uint32_t group = 0;
    for (size_t j = 0; j < 3; ++j) {
      group = group << 8 | (j < count ? static_cast<unsigned char>(bytes[i + j]) : 0U);
    }
    for (size_t j = 0; j < 4; ++j) {
      text += j <= count ? kDigits[group >> (18 - 6 * j) & 63] : '=';
    }
  }
  return text;
}

// REQUIRES: valid UTF-8. No character is divided between two words.
std::string EncodedWords(std::string_view text) {
  std::string words;
  while (!text.empty()) {
    size_t length = std::min(text.size(), kEncodedBytes);
    while (length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0) == 0x80) {
      --length;
    }
    if (!words.empty()) words += kFold;
    words += "=?UTF-8?B?" + Base64(text.substr(0, length)) + "?=";
    text.remove_prefix(length);
  }
  return words;
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string CleanAddress(std::string_view address) {
  constexpr std::string_view kNotInAddress = " <>()\",;\\";
  std::string clean = platform::EnsureUtf8(core::Trim(address));
  for (char& c : clean) {
    if (IsControl(c) || kNotInAddress.find(c) != std::string_view::npos) c = '_';
  }
  // Line ends outside ASCII, for readers that know them: U+0085, U+2028, U+2029.
  for (std::string_view lineEnd : {"\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"}) {
    for (size_t at; (at = clean.find(lineEnd)) != std::string::npos;) {
      clean.replace(at, lineEnd.size(), "_");
    }
  }
  return clean;
}

bool WriteAndOpen(const std::string& recipients) {
  std::string date = InternetDate(platform::Now(), platform::UtcOffsetMinutes());
  std::string text = UnsentMessage(LatestSender(), recipients, date);
  std::string path = core::NewDocumentPath(".eml");
  platform::WriteFile(path, text);
  return core::OpenDocument(path);
}

}  // namespace

std::string MailboxText(std::string_view name, std::string_view address) {
  std::string mailbox = '<' + CleanAddress(address) + '>';
  if (name == intake::kNoName) return mailbox;
  std::string clean = CleanName(name);
  bool plain = platform::IsAscii(clean) && clean.size() <= kLongestQuoted;
  return (plain ? Quoted(clean) : EncodedWords(clean)) + ' ' + mailbox;
}

std::string GetAllEmailAddress(std::string_view name,
                               const std::vector<ContactAddress>& addresses) {
  std::string recipients;
  for (const ContactAddress& address : addresses) {
    if (address.Address.empty() || address.Address == intake::kNoAddress) continue;
    if (!recipients.empty()) recipients += kFold;
    recipients += MailboxText(name, address.Address);
  }
  return recipients;
}

std::string LatestSender() {
  return core::Guarded("LatestSender", std::string(), [] {
    jet::Recordset sent;
    sent.Open(
        "SELECT AddressFrom, NameFrom, gwTimeShift \r\n"
        "From Email Where Direction = 'Out' ORDER BY CreationTime DESC",
        repository::RepositoryDb());
    if (sent.Eof()) return std::string();
    std::string address = sent.Field("AddressFrom").AsText();
    if (address.empty() || address == intake::kNoAddress) return std::string();
    return MailboxText(sent.Field("NameFrom").AsText(), address);
  });
}

std::string InternetDate(DateTime local, int utcOffsetMinutes) {
  constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  CivilTime civil = local.ToCivil();
  int offset = std::abs(utcOffsetMinutes);
  char text[64];
  std::snprintf(text, sizeof text, "%s, %d %s %04d %02d:%02d:%02d %c%02d%02d",
                kDays[local.Weekday()], civil.day, kMonths[civil.month - 1], civil.year, civil.hour,
                civil.minute, civil.second, utcOffsetMinutes < 0 ? '-' : '+', offset / 60 % 100,
                offset % 60);
  return text;
}

std::string UnsentMessage(const std::string& sender, const std::string& recipients,
                          const std::string& date) {
  // Mail programs have been fed exactly these lines for years; their odd blanks are kept.
  return "From: " + sender + "\r\nTo: " + recipients + "\r\nSubject: \r\nDate: " + date +
         "\r\n"
         "MIME-Version: 1.0\r\n"
         "Content-Type: text/plain; charset=\"us - ascii\"; format=flowed\r\n"
         "X-Priority: 3\r\n"
         "X -MSMail - Priority: Normal\r\n"
         "X-Unsent: 1\r\n"
         "X-MimeOLE: Produced By Microsoft MimeOLE V6.00.2600.0000\r\n";
}

bool SendToOne(std::string_view name, const ContactAddress* selected) {
  if (selected == nullptr) {
    ShowNothingSelected();
    return false;
  }
  return core::Guarded("mctSendToOne_Click", false,
                       [&] { return WriteAndOpen(MailboxText(name, selected->Address)); });
}

bool SendToAll(std::string_view name, const std::vector<ContactAddress>& addresses) {
  return core::Guarded("mctSendToAll_Click", false,
                       [&] { return WriteAndOpen(GetAllEmailAddress(name, addresses)); });
}

}  // namespace tarnwick::contacts
