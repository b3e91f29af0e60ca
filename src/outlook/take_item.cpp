// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/take_item.h"

#include "core/messages.h"
#include "core/run_state.h"
#include "intake/header_parser.h"
#include "intake/store_message.h"
#include "outlook/letter.h"
#include "outlook/mime_message.h"
#include "platform/files.h"
#include "platform/locale.h"

namespace tarnwick::outlook {

namespace {

// The texts of a signed letter lie in what was signed.
void TakeBodiesOfRawText(const std::string& file, const intake::SourceDescriptor& place,
                         intake::MailMessage& message) {
  intake::MailMessage parsed;
  if (!intake::ParseMessageFile(file, place, intake::IsFromMe, parsed)) return;
  message.Body = parsed.Body;
  message.HTMLBody = parsed.HTMLBody;
  message.Attachments = parsed.Attachments;
  message.AttachCount = parsed.AttachCount;
}

}  // namespace

TakenItem TakeItem(Item& item, const FolderPlace& place, const std::string& application,
                   uint64_t& budget, const intake::ReadingRules& rules) {
  Letter letter = ReadLetter(item);
  TakenItem taken;
  taken.message = MessageOf(letter, item, place, intake::IsFromMe, rules);
  intake::MailMessage& message = taken.message;
  taken.name = platform::FormatDate(message.SentTime, "General Date") + " " +
               core::LoggedMailText(message.Subject);
  const std::string& file = core::State().TempMessageFile;
  {
    platform::OutputFile output(file, platform::OutputFile::Replace::kInPlace);
    MimeResult written =
        WriteMime(item, letter, budget, [&](std::string_view bytes) { output.Write(bytes); });
    output.Close();
    taken.damage = item.Damage();
    if (taken.damage.empty() && written.attachmentsLost > 0) taken.damage = "an attachment";
  }
  if (letter.plainBody.empty() && letter.htmlBody.empty() && IsSecured(letter, item)) {
    TakeBodiesOfRawText(file, {place.name, place.parentPath, application}, message);
  }
  if (!taken.damage.empty()) {
    message.Notes = "This message is damaged in its Outlook store (" + taken.damage +
                    "). Parts of it may be missing or not as they were written.";
  }
  if (place.inSentItems && letter.ownAddress != intake::kNoAddress) {
    intake::dbSaveMeAddress(letter.ownAddress, letter.from.Name, application);
  }
  return taken;
}

}  // namespace tarnwick::outlook
