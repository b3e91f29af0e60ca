// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "contacts/unsent_message.h"

#include "core/documents.h"
#include "core/guard.h"
#include "core/text.h"
#include "intake/header_writer.h"
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
constexpr intake::HeaderForm kForm = {.charset = "UTF-8",
                                      .bytesPerWord = 45,
                                      .fold = kFold,
                                      .longestPlain = 500,
                                      .mergesControls = true};

std::string CleanAddress(std::string_view address) {
  constexpr std::string_view kNotInAddress = " <>()\",;\\";
  // Line ends outside ASCII, for readers that know them: U+0085, U+2028, U+2029.
  constexpr std::string_view kLineEnds[] = {"\xC2\x85", "\xE2\x80\xA8", "\xE2\x80\xA9"};
  std::string given = platform::EnsureUtf8(core::Trim(address));
  std::string clean;
  for (std::string_view rest = given; !rest.empty();) {
    size_t length = 1;
    for (std::string_view lineEnd : kLineEnds) {
      if (rest.starts_with(lineEnd)) length = lineEnd.size();
    }
    bool isControl = static_cast<unsigned char>(rest[0]) < ' ' || rest[0] == '\x7F';
    bool isOut = length > 1 || isControl || kNotInAddress.find(rest[0]) != std::string_view::npos;
    clean += isOut ? '_' : rest[0];
    rest.remove_prefix(length);
  }
  return clean;
}

bool WriteAndOpen(const std::string& recipients) {
  std::string date = intake::InternetDate(platform::Now(), platform::UtcOffsetMinutes());
  std::string text = UnsentMessage(LatestSender(), recipients, date);
  std::string path = core::NewDocumentPath(".eml");
  platform::WriteFile(path, text);
  return core::OpenDocument(path);
}

}  // namespace

std::string MailboxText(std::string_view name, std::string_view address) {
  std::string mailbox = '<' + CleanAddress(address) + '>';
  if (name == intake::kNoName) return mailbox;
  std::string clean = intake::OneLine(name, kForm);
  bool isPlain = platform::IsAscii(clean) && clean.size() <= kForm.longestPlain;
  return (isPlain ? intake::QuotedString(clean) : intake::EncodedWords(clean, kForm)) + ' ' +
         mailbox;
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
