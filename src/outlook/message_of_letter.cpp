// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/message_of_letter.h"

#include <optional>
#include <vector>

#include "core/messages.h"
#include "core/text.h"
#include "intake/date_parser.h"
#include "outlook/transport_headers.h"
#include "platform/clock.h"

namespace tarnwick::outlook {

namespace {

using intake::MailMessage;

constexpr const char* kNoEncoding = "NOT";
constexpr const char* kNothingToShift = "0";

std::optional<DateTime> DateHeaderOf(const Letter& letter) {
  for (const HeaderField& field : ReadTransportHeaders(letter.transportHeaders)) {
    std::string time;
    std::string zone;
    if (field.lowerName == "date") {
      return intake::ReadSoundDate(time, zone, field.Value(), true);
    }
  }
  return std::nullopt;
}

std::optional<DateTime> Local(std::optional<int64_t> seconds) {
  if (!seconds) return std::nullopt;
  return platform::LocalFromUnix(*seconds);
}

// The first time that is sound.
std::optional<DateTime> SoundTime(const Letter& letter) {
  std::optional<DateTime> sent = Local(letter.sent);
  if (!sent || !intake::IsSoundDate(*sent)) sent = DateHeaderOf(letter);
  for (const auto& seconds : {letter.received, letter.created}) {
    if (sent && intake::IsSoundDate(*sent)) return sent;
    sent = Local(seconds);
  }
  return sent && intake::IsSoundDate(*sent) ? sent : std::nullopt;
}

void SetTimes(const Letter& letter, const intake::ReadingRules& rules, MailMessage& message) {
  auto designed = letter.sent ? letter.sent : letter.received ? letter.received : letter.created;
  std::optional<DateTime> sent = rules.soundDates ? SoundTime(letter) : Local(designed);
  message.SentTime = sent.value_or(DateTime::FromDate(1990, 1, 1));
  message.ReceivedTime = message.SentTime;
  if (std::optional<DateTime> received = Local(letter.received)) {
    bool isSound =
        rules.soundDates ? intake::IsSoundDate(*received) : *received <= platform::Now().AddDays(1);
    if (isSound) message.ReceivedTime = *received;
  }
  message.TimeShift = kNothingToShift;
}

// False where there is no room for one more.
bool Add(const intake::AddressPair& pair, int16_t most, std::vector<intake::AddressPair>& list,
         int16_t& count) {
  if (count >= most) return false;
  auto place = static_cast<size_t>(count++);
  if (place >= list.size()) list.resize(place + 1);
  list[place] = pair;
  return true;
}

void AddTo(const intake::AddressPair& pair, const intake::ReadingRules& rules,
           MailMessage& message) {
  Add(pair, rules.mostRecipients, message.To, message.ToCount);
}

void AddCc(const intake::AddressPair& pair, const intake::ReadingRules& rules,
           MailMessage& message) {
  bool isKept = rules.bareAddresses && pair.Name != intake::kNoName;
  if (pair.Address == intake::kNoAddress && !isKept) return;
  if (Add(pair, rules.mostRecipients, message.Cc, message.CcCount)) return;
  core::ShowRepeatedMessage("Cc limit",
                            "CC account is great than " + std::to_string(rules.mostRecipients));
}

void AddAttachment(const std::string& name, MailMessage& message) {
  if (message.AttachCount >= intake::kMaxAttachments) {
    core::ShowRepeatedMessage(
        "Attachment limit", "Attachment is great than " + std::to_string(intake::kMaxAttachments));
    return;
  }
  message.Attachments[static_cast<size_t>(message.AttachCount++)] = core::CleanTrim(name);
}

}  // namespace

MailMessage MessageOf(const Letter& letter, PropertyItem& item, const intake::ReadingRules& rules) {
  MailMessage message;
  message.MessageKey = item.EntryID();
  message.Subject = letter.subject;
  message.FromName = letter.from.Name;
  message.FromAddress = letter.from.Address;
  SetTimes(letter, rules, message);
  for (const LetterRecipient& recipient : letter.recipients) {
    if (recipient.type == RecipientType::kTo) AddTo(recipient.pair, rules, message);
    if (recipient.type == RecipientType::kCc) AddCc(recipient.pair, rules, message);
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
  return message;
}

void SetPlace(const FolderPlace& place, bool isDraft, bool (*isFromMe)(const std::string& address),
              MailMessage& message) {
  message.Folder = place.name;
  message.Parent = place.parentPath;
  bool isOut = place.inSentItems;
  if (!isOut && !place.inInbox) {
    // What was never sent was written here, whatever sender it names or lacks.
    isOut = isDraft || isFromMe(message.FromAddress);
  }
  message.Direction = isOut ? "Out" : "In";
  intake::SetCorrespondent(message);
}

}  // namespace tarnwick::outlook
