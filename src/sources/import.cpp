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
#include "core/text.h"
#include "intake/encoded_word.h"
#include "intake/late_state.h"
#include "intake/load_account.h"
#include "intake/mixed_text.h"
#include "intake/sender_rules.h"
#include "intake/store_message.h"
#include "platform/charset.h"
#include "platform/files.h"
#include "repository/parameter_store.h"
#include "sources/letter_key.h"

namespace tarnwick::sources {

namespace {

using intake::Account;

// The first header of a name (lower case), with the lines that continue it; "" for none.
std::string HeaderOf(std::string_view letter, std::string_view name) {
  std::string value;
  bool isFound = false;
  while (!letter.empty()) {
    size_t end = std::min(letter.find('\n'), letter.size());
    std::string_view line = letter.substr(0, end);
    letter.remove_prefix(std::min(end + 1, letter.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.empty()) break;
    if (isFound && line[0] != ' ' && line[0] != '\t') break;
    if (isFound) {
      value += core::CleanTrim(line).insert(0, " ");
    } else if (line.size() > name.size() && line[name.size()] == ':' &&
               platform::SameWord(line.substr(0, name.size()), name)) {
      value = core::CleanTrim(line.substr(name.size() + 1));
      isFound = true;
    }
  }
  return value;
}

std::string Decoded(const std::string& header) {
  intake::MixedText text;
  intake::Decode(header, text);
  return text.Finish("");
}

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
      for (const Mailbox& mailbox : mailboxes_) AnnounceOne(mailbox);
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

  void AnnounceOne(const Mailbox& mailbox) const {
    if (!GoOn()) return;
    try {
      Account().Announce(mailbox.path, CountLetters(mailbox).letters);
      Account().SetReason(mailbox.path, IsWanted(mailbox) ? "" : kLeftOutReason);
    } catch (const Error& error) {
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
      reader_(OpenMailbox(mailbox_)) {}

intake::SourceDescriptor MailboxFolder::Descriptor() const {
  std::string prefix = isOneOfMany_ ? mailbox_.identity + "_" : "";
  return {prefix + mailbox_.name, mailbox_.fullName, mailbox_.application};
}

bool MailboxFolder::Next(intake::SourceMessage& message) {
  for (LetterEntry letter; reader_->Next(letter); letter = {}) {
    ++done_;
    std::optional<LetterAhead> ahead = ahead_ ? ahead_->Take(letter.name) : std::nullopt;
    if (letter.state.isDeleted) {
      Account().AddReason(mailbox_.path, kDeletedReason);
      core::YieldEvents();
      if (core::IsLoadStopped()) return false;
      continue;
    }
    message.name = letter.name;
    message.facts.state = letter.state;
    try {
      Read(letter, std::move(ahead), message);
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
  std::string damage = reader_->Damage();
  if (!damage.empty()) Account().AddReason(mailbox_.path, damage);
  return false;
}

void MailboxFolder::Ended(const intake::SourceMessage& message, const intake::Ending& /*ending*/) {
  intake::AheadPace::Turn turn = pace_.Note(message.ending.outcome == intake::Outcome::kNone);
  if (turn == intake::AheadPace::Turn::kEnd) ahead_.reset();
  if (turn == intake::AheadPace::Turn::kBegin && !ahead_) {
    ahead_ = LettersAhead::Begin(mailbox_, rules_, done_);
  }
}

void MailboxFolder::Read(const LetterEntry& letter, std::optional<LetterAhead> ahead,
                         intake::SourceMessage& message) {
  if (!letter.fault.empty()) {
    message.ending = {intake::Outcome::kUnreadable, letter.fault};
  } else if (letter.recordFile.empty()) {
    ReadText(message, std::move(ahead));
  } else {
    ReadRecord(letter.recordFile, message);
  }
}

void MailboxFolder::ReadText(intake::SourceMessage& message, std::optional<LetterAhead> ahead) {
  std::string own;  // the beginning of the letter: all of it but for a large one
  uint64_t size = 0;
  if (ahead) {
    message.key = std::move(ahead->key);
    size = ahead->raw->Held()->size();
  } else {
    LetterKey key;
    reader_->Copy([&](std::string_view piece) {
      size += piece.size();
      if (size <= kMostKept || own.empty()) own.append(piece);
      key.Add(piece);
    });
    message.key = key.Finish();
  }
  std::string_view begin = ahead ? *ahead->raw->Held() : own;
  message.name += ": " + core::LoggedMailText(Decoded(HeaderOf(begin, "subject")));
  if (IsKnown(begin, message)) return;
  message.isKeyNew = true;
  platform::OutputFile scratch(core::State().TempMessageFile,
                               platform::OutputFile::Replace::kInPlace);
  if (size == begin.size()) {
    scratch.Write(begin);
  } else {
    reader_->Copy([&](std::string_view piece) { scratch.Write(piece); });
  }
  scratch.Close();
  if (mailbox_.role == MailboxRole::kSent) LearnSender(begin);
  if (ahead) {
    message.raw = std::move(ahead->raw);
    message.prepared = std::move(ahead->prepared);
  } else if (size == own.size()) {
    message.raw.emplace(core::State().TempMessageFile, std::move(own));
  }
}

// Whether the letter is stored or ignored for good; then its beginning may tell what is not known
// of it yet.
bool MailboxFolder::IsKnown(std::string_view begin, intake::SourceMessage& message) const {
  if (!intake::IsEmailExist(message.key)) return false;
  message.ending.outcome = intake::OutcomeOfKnown(message.key);
  const intake::MessageState& known = message.facts.state;
  intake::FillState(message.key, known.isKnown ? known : intake::StateOfHeaders(begin));
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
  message.message = readRecord_(file, Descriptor(), mailbox_.role == MailboxRole::kSent, rules_);
  message.message->MessageKey = message.key;
}

// The sender of a sent letter is one of the user's own addresses.
void MailboxFolder::LearnSender(std::string_view headers) {
  std::string from = HeaderOf(headers, "from");
  if (from.empty() || from == lastSender_) return;
  lastSender_ = from;
  intake::AddressPair sender = intake::SplitAddress(from);
  if (sender.Address == intake::kNoAddress) return;
  intake::dbSaveMeAddress(platform::EnsureUtf8(sender.Address), Decoded(sender.Name),
                          mailbox_.application);
}

}  // namespace tarnwick::sources
