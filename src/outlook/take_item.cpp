// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/take_item.h"

#include <utility>

#include "core/messages.h"
#include "core/run_state.h"
#include "intake/store_message.h"
#include "outlook/letter.h"
#include "outlook/mime_message.h"
#include "platform/files.h"
#include "platform/locale.h"

namespace tarnwick::outlook {

namespace {

void TakeBodiesOfSigned(intake::TextReader& texts, intake::PreparedMessage& prepared) {
  intake::MailMessage parsed =
      texts.Read(core::State().TempMessageFile, intake::kDesigned, {}).message;
  intake::MailMessage& message = prepared.message;
  message.Body = std::move(parsed.Body);
  message.HTMLBody = std::move(parsed.HTMLBody);
  message.Attachments = std::move(parsed.Attachments);
  message.AttachCount = parsed.AttachCount;
  prepared.rows.reset();
}

}  // namespace

ItemReading ReadItem(Item& item, uint64_t& budget, const intake::ReadingRules& rules,
                     const std::function<void(std::string_view)>& sink) {
  Letter letter = ReadLetter(item);
  ItemReading reading;
  reading.prepared.message = MessageOf(letter, item, rules);
  MimeResult written = WriteMime(item, letter, budget, sink);
  reading.damage = item.Damage();
  if (reading.damage.empty() && written.attachmentsLost > 0) reading.damage = "an attachment";
  reading.isDraft = letter.isDraft;
  reading.isSigned = letter.plainBody.empty() && letter.htmlBody.empty() && IsSecured(letter, item);
  reading.own = {letter.from.Name, letter.ownAddress};
  return reading;
}

TakenItem SettleItem(ItemReading reading, const FolderPlace& place, const std::string& application,
                     intake::TextReader& texts) {
  TakenItem taken{std::move(reading.prepared), {}, std::move(reading.damage)};
  intake::MailMessage& message = taken.prepared.message;
  SetPlace(place, reading.isDraft, intake::IsFromMe, message);
  taken.name = platform::FormatDate(message.SentTime, "General Date") + " " +
               core::LoggedMailText(message.Subject);
  if (reading.isSigned) TakeBodiesOfSigned(texts, taken.prepared);
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
  ItemReading reading;
  {
    platform::OutputFile output(core::State().TempMessageFile,
                                platform::OutputFile::Replace::kInPlace);
    reading = ReadItem(item, budget, rules, [&](std::string_view bytes) { output.Write(bytes); });
    output.Close();
  }
  return SettleItem(std::move(reading), place, application, texts);
}

}  // namespace tarnwick::outlook
