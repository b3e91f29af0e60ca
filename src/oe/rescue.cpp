// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/rescue.h"

#include <algorithm>
#include <utility>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/header_parser.h"
#include "intake/load_account.h"
#include "intake/sender_rules.h"
#include "intake/source.h"
#include "intake/store_message.h"
#include "intake/stored_file.h"
#include "oe/import.h"
#include "oe/lost_mail.h"
#include "oe/state.h"
#include "platform/charset.h"
#include "platform/files.h"
#include "platform/registry.h"

namespace tarnwick::oe {

namespace {

constexpr const char* kNoHeaders = "the headers of its text are missing";

std::string BytesText(uint64_t bytes) {
  return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
}

// "Found in Inbox.dbx at 60116: deleted. 512 of 1024 bytes are there: ..."
std::string NoteOf(const LostMessage& lost, const std::string& fileName) {
  std::string note = "Found in " + platform::EnsureUtf8(platform::FileNameOf(fileName)) + " at " +
                     std::to_string(lost.place) + ": " + lost.how + ".\r\n";
  if (lost.isWhole) {
    bool isProven = lost.index.has_value();
    note += isProven ? "It is whole: " : "It is whole as far as its text tells: ";
    note += BytesText(lost.length) + ".";
  } else if (lost.declared != 0) {
    note += std::to_string(lost.length) + " of its " + BytesText(lost.declared) +
            " are there: " + lost.why + ".";
  } else {
    note += "Of its text " + BytesText(lost.length) + " are there: " + lost.why + ".";
  }
  auto words = std::count_if(lost.text.begin(), lost.text.end(),
                             [](const TextPiece& piece) { return piece.lacksFirstWord; });
  if (words > 0) {
    note += "\r\nIn " + std::to_string(words) + " places four bytes were overwritten; \"" +
            std::string(kLostWord) + "\" stands for them.";
  }
  return note;
}

// The lost messages of a file as a folder of a load.
class RecoveredFolder : public intake::SourceFolder {
 public:
  RecoveredFolder(const std::string& fileName, const FolderRecord& folder, LostMail& mail,
                  const intake::ReadingRules& rules)
      : fileName_(fileName), folder_(folder), mail_(mail), rules_(rules) {}

  std::string Place() const override { return fileName_ + ": lost messages"; }
  // The parent tells which way the mail of a folder went.
  intake::SourceDescriptor Descriptor() const override {
    std::string parent = folder_.fullName.empty() ? folder_.label : folder_.fullName;
    return {"Recovered from " + folder_.label, parent, kApplication};
  }
  std::string Identity() const override { return folder_.userName; }
  const intake::ReadingRules& Rules() const override { return rules_; }

  bool Next(intake::SourceMessage& message) override {
    std::optional<LostMessage> lost = mail_.Next();
    if (!lost) return false;
    message.name = NameOf(*lost);
    Read(*lost, message);
    return true;
  }

 private:
  std::string NameOf(const LostMessage& lost) const;
  void Read(const LostMessage& lost, intake::SourceMessage& message);
  std::string Copy(const LostMessage& lost);

  const std::string& fileName_;
  const FolderRecord& folder_;
  LostMail& mail_;
  const intake::ReadingRules& rules_;
};

std::string RecoveredFolder::NameOf(const LostMessage& lost) const {
  if (!lost.index) return "at " + std::to_string(lost.place);
  return DatedSubject(lost.index->info);
}

// Writes the text to TempMessageFile; gives a key made of it.
std::string RecoveredFolder::Copy(const LostMessage& lost) {
  constexpr uint64_t kSecondBasis = 0x9AE16A3B2F90404FULL;
  platform::OutputFile scratch(core::State().TempMessageFile,
                               platform::OutputFile::Replace::kInPlace);
  uint64_t hash = Hash("");
  uint64_t second = kSecondBasis;
  for (const TextPiece& piece : lost.text) {
    std::string text(mail_.File().Read(piece.offset, piece.length));
    if (text.size() < piece.length) {
      throw Error(ErrorNumber::kPathAccess, "the file became shorter");
    }
    size_t words = std::min<size_t>(piece.lacksFirstWord ? kLostWord.size() : 0, text.size());
    text.replace(0, words, kLostWord.substr(0, words));
    scratch.Write(text);
    hash = Hash(text, hash);
    second = Hash(text, second);
  }
  scratch.Close();
  return "recovered_" + std::to_string(lost.length) + "_" + HexText(hash) + HexText(second);
}

void RecoveredFolder::Read(const LostMessage& lost, intake::SourceMessage& message) {
  using intake::Outcome;
  auto isKnown = [&](const std::string& key) {
    if (!intake::IsEmailExist(key)) return false;
    message.ending = {intake::OutcomeOfKnown(key), {}};
    return true;
  };
  // Of a part nothing must stand for the message, which may come whole from elsewhere.
  std::string key =
      lost.index ? MakeEntryKey(lost.index->info.keyText, lost.index->info.date) : std::string();
  if (isKnown(key)) return;
  if (lost.text.empty()) {
    message.ending = {Outcome::kUnreadable, lost.why};
    return;
  }
  std::string textKey = Copy(lost);
  if (isKnown(textKey)) return;
  const std::string& file = core::State().TempMessageFile;
  intake::MailMessage mail;
  mail.MessageKey = lost.isWhole && !key.empty() ? key : textKey;
  intake::StoreFacts facts = lost.index ? lost.index->facts : intake::StoreFacts();
  if (!intake::ParseMessageFile(file, Descriptor(), intake::IsFromMe, mail, rules_, facts)) {
    message.ending = {Outcome::kUnreadable, kNoHeaders};
  } else if (intake::IsStoredFile(mail.ReceivedTime, file)) {
    message.ending = {Outcome::kAlreadyStored, {}};
  } else {
    if (mail.Encoding.empty()) mail.Encoding = "NOT";
    mail.Notes = NoteOf(lost, fileName_);
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), mail.Subject);
    message.message = std::move(mail);
  }
}

// Says how far the look has come, and lets the window answer.
bool GoOn(const FolderRecord& folder, int percent) {
  core::SetStatus(
      static_cast<int>(core::StatusPanel::kProgress),
      "Looking for lost messages: " + folder.label + ", " + std::to_string(percent) + " %");
  core::YieldEvents();
  return !IsStopped();
}

void Tell(const LostMail& mail, const std::string& fileName) {
  if (IsStopped()) return;
  if (!mail.Remark().empty()) intake::Account().Note(fileName + ": it holds " + mail.Remark());
  LostMail::Rest rest = mail.CountRest();
  if (rest.blocks == 0) return;
  intake::Account().Note(fileName + ": " + BytesText(rest.bytes) +
                         " of lost texts whose beginnings were overwritten are not stored");
}

}  // namespace

void ReadLostMessages(const std::string& fileName, const FolderRecord& folder, bool isCopy,
                      const intake::ReadingRules& rules) {
  core::GuardedRun("ReadLostMessages", [&] {
    if (!platform::FileExists(fileName) || !platform::MayRead(fileName)) return;
    if (platform::ReadDbxContent(fileName) == platform::DbxContent::kFolderList) return;
    core::LogProgress("Looks for lost messages = " + core::OneLogLine(fileName));
    auto goOn = [&](int percent) { return GoOn(folder, percent); };
    for (FoundObjects& piece : FindObjects(fileName, goOn)) {
      if (IsStopped()) return;
      LostMail mail(fileName, std::move(piece), isCopy, goOn);
      RecoveredFolder recovered(fileName, folder, mail, rules);
      intake::ReadFolder(recovered);
      Tell(mail, fileName);
    }
  });
}

}  // namespace tarnwick::oe
