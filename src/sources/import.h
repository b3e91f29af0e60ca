// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Mail of programs other than Outlook Express 5 and 6 and Outlook (mailbox.h) as a source of a
// load. Sent mail is read first, so that the user's own addresses are known when the rest is
// judged. Drafts, deleted mail and the outbox are left out, as of Outlook Express, unless they are
// asked for.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "intake/ahead_pace.h"
#include "intake/source.h"
#include "sources/letter_walk.h"
#include "sources/mailbox.h"

namespace tarnwick::sources {

// As people are asked about it, and its option.
inline constexpr const char* kName = "Other mail programs";
inline constexpr const char* kOption = "OtherMail";
inline constexpr const char* kLeftOutReason = "drafts, deleted mail and the outbox are not read";
inline constexpr const char* kDeletedReason = "letters that were deleted are not read";

// Reads a letter that is a record, not a text (an Outlook message file): writes it to
// TempMessageFile as an Internet message and gives the record, its key left empty. Throws Error.
using RecordReader = std::function<intake::PreparedMessage(
    const std::string& file, const intake::SourceDescriptor& place, bool isSent,
    const intake::ReadingRules& rules)>;

// The mailboxes of the profile folder.
std::unique_ptr<intake::Source> MakeSource(RecordReader readRecord,
                                           const intake::ReadingRules& rules);
// These mailboxes, all of them.
std::unique_ptr<intake::Source> MakeSource(RecordReader readRecord,
                                           const intake::ReadingRules& rules,
                                           std::vector<Mailbox> mailboxes);

// The letters of a mailbox as a load takes them.
class MailboxFolder : public intake::SourceFolder {
 public:
  // isOneOfMany: there are other accounts, so that the folder's name begins with its own.
  // REQUIRES: readRecord and rules last as long as the folder.
  MailboxFolder(Mailbox mailbox, const RecordReader& readRecord, const intake::ReadingRules& rules,
                bool isOneOfMany);

  std::string Place() const override { return mailbox_.path; }
  intake::SourceDescriptor Descriptor() const override;
  std::string Identity() const override { return mailbox_.identity; }
  const intake::ReadingRules& Rules() const override { return rules_; }
  bool Next(intake::SourceMessage& message) override;
  void Ended(const intake::SourceMessage& message, const intake::Ending& ending) override;

 private:
  void Read(LetterReading& letter, intake::SourceMessage& message);
  void ReadText(LetterReading& letter, intake::SourceMessage& message);
  bool IsKnown(const LetterSays& says, intake::SourceMessage& message) const;
  void ReadRecord(const std::string& file, intake::SourceMessage& message);
  void LearnSender(const LetterSays& says);

  Mailbox mailbox_;
  const RecordReader& readRecord_;
  const intake::ReadingRules& rules_;
  bool isOneOfMany_;
  std::unique_ptr<LetterWalk> letters_;
  bool wantsText_ = false;
  intake::AheadPace pace_;
  intake::AddressPair lastSender_;  // learnt last
};

}  // namespace tarnwick::sources
