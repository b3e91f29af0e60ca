// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/message_of_letter.h"

#include "core/messages.h"
#include "core/text.h"
#include "platform/clock.h"

namespace tarnwick::outlook {

namespace {

using intake::MailMessage;

constexpr const char* kNoEncoding = "NOT";
constexpr const char* kNothingToShift = "0";

void SetTimes(const Letter& letter, MailMessage& message) {
  auto sent = letter.sent ? letter.sent : letter.received ? letter.received : letter.created;
  message.SentTime = sent ? platform::LocalFromUnix(*sent) : DateTime::FromDate(1990, 1, 1);
  message.ReceivedTime = message.SentTime;
  if (letter.received) {
    DateTime received = platform::LocalFromUnix(*letter.received);
    if (received <= platform::Now().AddDays(1)) message.ReceivedTime = received;
  }
  message.TimeShift = kNothingToShift;
}

void AddTo(const intake::AddressPair& pair, MailMessage& message) {
  if (message.ToCount >= intake::kMaxRecipients) return;
  message.To[static_cast<size_t>(message.ToCount++)] = pair;
}

void AddCc(const intake::AddressPair& pair, MailMessage& message) {
  if (pair.Address == intake::kNoAddress) return;
  if (message.CcCount >= intake::kMaxRecipients) {
    core::ShowRepeatedMessage("Cc limit",
                              "CC account is great than " + std::to_string(intake::kMaxRecipients));
    return;
  }
  message.Cc[static_cast<size_t>(message.CcCount++)] = pair;
}

void AddAttachment(const std::string& name, MailMessage& message) {
  if (message.AttachCount >= intake::kMaxAttachments) {
    core::ShowRepeatedMessage(
        "Attachment limit", "Attachment is great than " + std::to_string(intake::kMaxAttachments));
    return;
  }
  message.Attachments[static_cast<size_t>(message.AttachCount++)] = core::CleanTrim(name);
}

std::string DirectionOf(const Letter& letter, const FolderPlace& place,
                        bool (*isFromMe)(const std::string& address)) {
  if (place.inSentItems) return "Out";
  if (place.inInbox) return "In";
  // What was never sent was written here, whatever sender it names or lacks.
  if (letter.isDraft) return "Out";
  return isFromMe(letter.from.Address) ? "Out" : "In";
}

}  // namespace

MailMessage MessageOf(const Letter& letter, Item& item, const FolderPlace& place,
                      bool (*isFromMe)(const std::string& address)) {
  MailMessage message;
  message.MessageKey = item.EntryID();
  message.Subject = letter.subject;
  message.FromName = letter.from.Name;
  message.FromAddress = letter.from.Address;
  SetTimes(letter, message);
  for (const LetterRecipient& recipient : letter.recipients) {
    if (recipient.type == RecipientType::kTo) AddTo(recipient.pair, message);
    if (recipient.type == RecipientType::kCc) AddCc(recipient.pair, message);
  }
  for (const PropertySet& attachment : item.Attachments()) {
    AddAttachment(AttachmentName(attachment), message);
  }
  message.Importance = letter.importance;
  message.State = intake::StoredState(letter.state);
  message.Body = letter.plainBody;
  message.HTMLBody = letter.htmlBody;
  intake::SettleBody(message);
  message.Charset = letter.charset;
  message.HTMLCharset = letter.charset;
  message.Encoding = kNoEncoding;
  message.Folder = place.name;
  message.Parent = place.parentPath;
  message.Direction = DirectionOf(letter, place, isFromMe);
  intake::SetCorrespondent(message);
  return message;
}

}  // namespace tarnwick::outlook
