// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/take_item.h"

#include <utility>

#include "core/messages.h"
#include "intake/store_message.h"
#include "outlook/letter.h"
#include "outlook/mime_message.h"
#include "outlook/type_name.h"
#include "platform/locale.h"

namespace tarnwick::outlook {

namespace {

void TakeBodiesOfSigned(const intake::RawMessage& raw, intake::TextReader& texts,
                        intake::PreparedMessage& prepared) {
  intake::MailMessage parsed = texts.Read(raw, intake::kDesigned, {}).message;
  intake::MailMessage& message = prepared.message;
  message.Body = std::move(parsed.Body);
  message.HTMLBody = std::move(parsed.HTMLBody);
  message.Attachments = std::move(parsed.Attachments);
  message.AttachCount = parsed.AttachCount;
  prepared.rows.reset();
}

}  // namespace

ItemFacts PropertyItem::Facts() {
  const PropertySet& properties = Properties();
  auto time = properties.Time(Prop::kDeliveryTime);
  return {StateOf(properties), time ? time : properties.Time(Prop::kClientSubmitTime)};
}

ItemReading PropertyItem::Read(uint64_t& budget, const intake::ReadingRules& rules,
                               intake::ScratchLetter& output) {
  return ReadItem(*this, budget, rules, [&](std::string_view bytes) { output.Add(bytes); });
}

ItemReading ReadItem(PropertyItem& item, uint64_t& budget, const intake::ReadingRules& rules,
                     const std::function<void(std::string_view)>& sink) {
  ItemReading reading;
  reading.type = item.TypeName();
  if (reading.type != kMailType) {
    if (item.Properties().Text(Prop::kMessageClass).empty()) reading.type.clear();
    return reading;
  }
  Letter letter = ReadLetter(item);
  reading.prepared.message = MessageOf(letter, item, rules);
  MimeResult written = WriteMime(item, letter, budget, sink);
  reading.damage = item.Damage();
  if (reading.damage.empty() && written.attachmentsLost > 0) reading.damage = "an attachment";
  reading.isDraft = letter.isDraft;
  reading.isSigned = letter.plainBody.empty() && letter.htmlBody.empty() && IsSecured(letter, item);
  reading.own = {letter.from.Name, letter.ownAddress};
  return reading;
}

TakenItem SettleItem(ItemReading reading, intake::RawMessage raw, const FolderPlace& place,
                     const std::string& application, intake::TextReader& texts) {
  TakenItem taken{std::move(reading.type),
                  std::move(reading.prepared),
                  std::move(raw),
                  {},
                  std::move(reading.damage)};
  intake::MailMessage& message = taken.prepared.message;
  SetPlace(place, reading.isDraft, intake::IsFromMe, message);
  taken.name = platform::FormatDate(message.SentTime, "General Date") + " " +
               core::LoggedMailText(message.Subject);
  if (reading.isSigned) TakeBodiesOfSigned(taken.raw, texts, taken.prepared);
  if (!taken.damage.empty()) {
    intake::SetNotes(taken.prepared, "This message is damaged in its Outlook store (" +
                                         taken.damage +
                                         "). Parts of it may be missing or not as they were "
                                         "written.");
  }
  if (place.inSentItems && reading.own.Address != intake::kNoAddress) {
    intake::dbSaveMeAddress(reading.own.Address, reading.own.Name, application);
  }
  return taken;
}

TakenItem TakeItem(Item& item, const FolderPlace& place, const std::string& application,
                   uint64_t& budget, const intake::ReadingRules& rules, intake::TextReader& texts) {
  intake::ScratchLetter output;
  ItemReading reading = item.Read(budget, rules, output);
  if (reading.type != kMailType) {
    TakenItem other;
    other.type = std::move(reading.type);
    return other;
  }
  return SettleItem(std::move(reading), output.Finish(), place, application, texts);
}

}  // namespace tarnwick::outlook
