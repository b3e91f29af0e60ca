// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/import.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "intake/late_state.h"
#include "intake/load_account.h"
#include "intake/sender_rules.h"
#include "intake/store_message.h"
#include "platform/files.h"
#include "repository/parameter_store.h"
#include "sources/letter_key.h"
#include "sources/sample.h"

namespace tarnwick::sources {

namespace {

using intake::Account;

std::set<std::string> IdentitiesOf(const std::vector<Mailbox>& mailboxes) {
  std::set<std::string> identities;
  for (const Mailbox& mailbox : mailboxes) identities.insert(mailbox.identity);
  return identities;
}

bool GoOn() {
  core::YieldEvents();
  return !core::IsLoadStopped();
}

bool MayRead(MailboxRole role, const intake::ReadingRules& rules) {
  switch (role) {
    case MailboxRole::kDrafts:
      return rules.drafts;
    case MailboxRole::kDeleted:
      return rules.deletedItems;
    case MailboxRole::kOutbox:
      return rules.outbox;
    case MailboxRole::kOther:
    case MailboxRole::kSent:
      break;
  }
  return true;
}

class OtherMail : public intake::Source {
 public:
  OtherMail(RecordReader readRecord, const intake::ReadingRules& rules,
            std::optional<std::vector<Mailbox>> mailboxes)
      : readRecord_(std::move(readRecord)), rules_(rules), chosen_(std::move(mailboxes)) {}

  std::string Name() const override { return kName; }
  const char* Option() const override { return kOption; }
  std::string Files() const override { return "other mail"; }
  bool IsIn(const std::string& folder) override { return chosen_ || HoldsMailbox(folder); }

  bool Announce(bool /*whole*/) override {
    return core::GuardedRun("LoadOtherMail", [&] {
      if (chosen_) {
        mailboxes_ = *chosen_;
      } else {
        MailboxSearch search = FindMailboxes(repository::GetProfileFolder(), GoOn);
        mailboxes_ = std::move(search.mailboxes);
        for (const std::string& folder : search.forbidden) {
          Account().Note(folder + ": it may not be read");
        }
      }
      MailboxSampler sampler;
      for (const Mailbox& mailbox : mailboxes_) AnnounceOne(mailbox, sampler);
    });
  }

  bool Read(bool /*whole*/) override {
    bool done = true;
    bool isOneOfMany = IdentitiesOf(mailboxes_).size() > 1;
    for (bool isSentsTurn : {true, false}) {
      for (const Mailbox& mailbox : mailboxes_) {
        bool isSent = mailbox.role == MailboxRole::kSent;
        if (isSent != isSentsTurn || !IsWanted(mailbox) || core::IsLoadStopped()) continue;
        core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), mailbox.name);
        done = ReadOne(mailbox, isOneOfMany) && done;
      }
    }
    core::GuardedRun("LoadOtherMail", [] {
      platform::RemoveFile(core::State().TempMessageFile);
      core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), "");
    });
    return done;
  }

 private:
  // What was chosen by itself is wanted, whatever its role.
  bool IsWanted(const Mailbox& mailbox) const { return chosen_ || MayRead(mailbox.role, rules_); }

  void AnnounceOne(const Mailbox& mailbox, MailboxSampler& sampler) const {
    if (!GoOn()) return;
    try {
      Account().Announce(mailbox.path, sampler.Count(mailbox));
      Account().SetReason(mailbox.path, IsWanted(mailbox) ? "" : kLeftOutReason);
    } catch (const Error& error) {
      if (core::IsLoadStopped()) return;  // over its reader
      Account().Note(mailbox.path + ": " + error.Description());
    }
  }

  // What can't be read of one mailbox keeps no other from being read.
  bool ReadOne(const Mailbox& mailbox, bool isOneOfMany) const {
    return core::GuardedRun("LoadOtherMail", [&] {
      MailboxFolder folder(mailbox, readRecord_, rules_, isOneOfMany);
      intake::ReadFolder(folder);
    });
  }

  RecordReader readRecord_;
  intake::ReadingRules rules_;
  std::optional<std::vector<Mailbox>> chosen_;
  std::vector<Mailbox> mailboxes_;
};

}  // namespace

std::unique_ptr<intake::Source> MakeSource(RecordReader readRecord,
                                           const intake::ReadingRules& rules) {
  return std::make_unique<OtherMail>(std::move(readRecord), rules, std::nullopt);
}

std::unique_ptr<intake::Source> MakeSource(RecordReader readRecord,
                                           const intake::ReadingRules& rules,
                                           std::vector<Mailbox> mailboxes) {
  return std::make_unique<OtherMail>(std::move(readRecord), rules, std::move(mailboxes));
}

MailboxFolder::MailboxFolder(Mailbox mailbox, const RecordReader& readRecord,
                             const intake::ReadingRules& rules, bool isOneOfMany)
    : mailbox_(std::move(mailbox)),
      readRecord_(readRecord),
      rules_(rules),
      isOneOfMany_(isOneOfMany),
      letters_(OpenLetters(mailbox_, rules_)) {}

intake::SourceDescriptor MailboxFolder::Descriptor() const {
  std::string prefix = isOneOfMany_ ? mailbox_.identity + "_" : "";
  return {prefix + mailbox_.name, mailbox_.fullName, mailbox_.application};
}

bool MailboxFolder::Next(intake::SourceMessage& message) {
  for (;;) {
    LetterReading letter = letters_->Next(wantsText_);
    if (letter.isEnd && letter.failure) throw Error(letter.failure->number, letter.failure->text);
    if (letter.isEnd) {
      if (!letter.damage.empty()) Account().AddReason(mailbox_.path, letter.damage);
      return false;
    }
    if (letter.entry.state.isDeleted) {
      Account().AddReason(mailbox_.path, kDeletedReason);
      core::YieldEvents();
      if (core::IsLoadStopped()) return false;
      continue;
    }
    message.name = letter.entry.name;
    message.facts.state = letter.entry.state;
    try {
      Read(letter, message);
    } catch (...) {
      if (core::IsLoadStopped()) return false;  // not reached
      Error error = core::CurrentError();
      if (core::IsDiskFull(error)) {
        core::ReportCurrentException("LoadOtherMail", core::Report::kShow);
      }
      message.ending = {intake::Outcome::kUnreadable, error.Description()};
    }
    return true;
  }
}

void MailboxFolder::Ended(const intake::SourceMessage& message, const intake::Ending& /*ending*/) {
  intake::AheadPace::Turn turn = pace_.Note(message.ending.outcome == intake::Outcome::kNone);
  if (turn != intake::AheadPace::Turn::kNone) {
    wantsText_ = turn == intake::AheadPace::Turn::kBegin;
  }
}

void MailboxFolder::Read(LetterReading& letter, intake::SourceMessage& message) {
  if (!letter.entry.fault.empty()) {
    message.ending = {intake::Outcome::kUnreadable, letter.entry.fault};
  } else if (!letter.entry.recordFile.empty()) {
    ReadRecord(letter.entry.recordFile, message);
  } else if (letter.failure) {
    throw Error(letter.failure->number, letter.failure->text);
  } else {
    ReadText(letter, message);
  }
}

void MailboxFolder::ReadText(LetterReading& letter, intake::SourceMessage& message) {
  const LetterSays& says = *letter.says;
  message.key = says.key;
  message.name += ": " + core::LoggedMailText(says.subject);
  if (IsKnown(says, message)) return;
  message.isKeyNew = true;
  platform::OutputFile scratch(core::State().TempMessageFile,
                               platform::OutputFile::Replace::kInPlace);
  letters_->ReadText(letter, [&](std::string_view piece) { scratch.Write(piece); });
  scratch.Close();
  if (mailbox_.role == MailboxRole::kSent) LearnSender(says);
  if (letter.held) message.raw.emplace(core::State().TempMessageFile, std::move(*letter.held));
  message.prepared = std::move(letter.prepared);
}

// Whether the letter is stored or ignored for good; then its beginning may tell what is not known
// of it yet.
bool MailboxFolder::IsKnown(const LetterSays& says, intake::SourceMessage& message) const {
  if (!intake::IsEmailExist(message.key)) return false;
  message.ending.outcome = intake::OutcomeOfKnown(message.key);
  const intake::MessageState& known = message.facts.state;
  intake::FillState(message.key, known.isKnown ? known : says.state);
  return true;
}

void MailboxFolder::ReadRecord(const std::string& file, intake::SourceMessage& message) {
  if (!readRecord_) throw Error(ErrorNumber::kPathAccess, "its format is not known");
  LetterKey key;
  platform::InputFile bytes(file);
  std::string piece(kMostKept, '\0');
  for (uint64_t place = 0; place < bytes.Size(); place += piece.size()) {
    piece.resize(bytes.ReadAt(place, piece.data(), piece.size()));
    if (piece.empty()) break;
    key.Add(piece);
  }
  message.key = key.Finish();
  if (intake::IsEmailExist(message.key)) {
    message.ending.outcome = intake::OutcomeOfKnown(message.key);
    return;
  }
  message.prepared = std::make_unique<intake::PreparedMessage>(
      readRecord_(file, Descriptor(), mailbox_.role == MailboxRole::kSent, rules_));
  message.message = std::move(message.prepared->message);
  message.message->MessageKey = message.key;
}

// The sender of a sent letter is one of the user's own addresses.
void MailboxFolder::LearnSender(const LetterSays& says) {
  if (says.senderAddress.empty()) return;
  if (says.senderAddress == lastSender_.Address && says.senderName == lastSender_.Name) return;
  lastSender_ = {says.senderName, says.senderAddress};
  intake::dbSaveMeAddress(says.senderAddress, says.senderName, mailbox_.application);
}

}  // namespace tarnwick::sources
