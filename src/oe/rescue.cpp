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
#include "oe/lost_walk.h"
#include "oe/state.h"
#include "platform/charset.h"
#include "platform/files.h"
#include "platform/registry.h"

namespace tarnwick::oe {

namespace {

constexpr const char* kNoHeaders = "the headers of its text are missing";

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

// Writes a text to TempMessageFile, and makes a key of it.
class ScratchText {
 public:
  void Add(std::string_view text) {
    file_.Write(text);
    length_ += text.size();
    hash_ = Hash(text, hash_);
    second_ = Hash(text, second_);
  }
  std::string Close() {
    file_.Close();
    return "recovered_" + std::to_string(length_) + "_" + HexText(hash_) + HexText(second_);
  }

 private:
  platform::OutputFile file_{core::State().TempMessageFile,
                             platform::OutputFile::Replace::kInPlace};
  uint64_t length_ = 0;
  uint64_t hash_ = Hash("");
  uint64_t second_ = 0x9AE16A3B2F90404FULL;
};

// The lost messages of a file as a folder of a load.
class RecoveredFolder : public intake::SourceFolder {
 public:
  RecoveredFolder(const std::string& fileName, const FolderRecord& folder, LostWalk& walk,
                  const intake::ReadingRules& rules)
      : fileName_(fileName), folder_(folder), walk_(walk), rules_(rules) {}

  std::string Place() const override { return fileName_ + ": lost messages"; }
  // The parent tells which way the mail of a folder went.
  intake::SourceDescriptor Descriptor() const override {
    std::string parent = folder_.fullName.empty() ? folder_.label : folder_.fullName;
    return {"Recovered from " + folder_.label, parent, kApplication};
  }
  std::string Identity() const override { return folder_.userName; }
  const intake::ReadingRules& Rules() const override { return rules_; }

  bool Next(intake::SourceMessage& message) override {
    LostReading reading = walk_.Next();
    if (IsStopped()) return false;
    for (const std::string& remark : reading.remarks) {
      intake::Account().Note(fileName_ + ": " + remark);
    }
    if (reading.isEnd && reading.fault) throw Error(reading.fault.number, reading.fault.reason);
    if (reading.isEnd) return false;
    if (reading.fault) {
      message.name = "a message";
      message.ending = {intake::Outcome::kUnreadable, reading.fault.reason};
    } else {
      message.name = NameOf(reading.message);
      Read(reading.message, message);
    }
    return true;
  }

 private:
  static std::string NameOf(const LostMessage& lost);
  void Read(const LostMessage& lost, intake::SourceMessage& message);
  void TakeText(const LostMessage& lost, TextReading& text, const std::string& key,
                intake::SourceMessage& message);

  const std::string& fileName_;
  const FolderRecord& folder_;
  LostWalk& walk_;
  const intake::ReadingRules& rules_;
};

std::string RecoveredFolder::NameOf(const LostMessage& lost) {
  if (!lost.index) return "at " + std::to_string(lost.place);
  return DatedSubject(lost.index->info);
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
  ScratchText scratch;
  TextReading text = walk_.ReadText(lost, [&](std::string_view piece) { scratch.Add(piece); });
  if (text.fault.kind == Fault::Kind::kError) throw Error(text.fault.number, text.fault.reason);
  if (text.fault) {
    message.ending = {Outcome::kUnreadable, text.fault.reason};
    return;
  }
  if (text.held) scratch.Add(*text.held);
  std::string textKey = scratch.Close();
  if (isKnown(textKey)) return;
  TakeText(lost, text, lost.isWhole && !key.empty() ? key : textKey, message);
}

void RecoveredFolder::TakeText(const LostMessage& lost, TextReading& text, const std::string& key,
                               intake::SourceMessage& message) {
  const std::string& file = core::State().TempMessageFile;
  message.raw = text.held ? intake::RawMessage(file, std::move(*text.held)) : file;
  if (text.prepared) {
    intake::TellOf(*text.prepared);
  } else {
    intake::StoreFacts facts = lost.index ? lost.index->facts : intake::StoreFacts();
    text.prepared =
        std::make_unique<intake::PreparedMessage>(intake::ReadMessage(*message.raw, rules_, facts));
  }
  intake::PreparedMessage& prepared = *text.prepared;
  intake::MailMessage& mail = prepared.message;
  if (!intake::SettleMessage(prepared, Descriptor(), intake::IsFromMe, key)) {
    message.ending = {intake::Outcome::kUnreadable, kNoHeaders};
  } else if (intake::IsStoredFile(mail.ReceivedTime, file)) {
    message.ending = {intake::Outcome::kAlreadyStored, {}};
  } else {
    if (mail.Encoding.empty()) mail.Encoding = "NOT";
    intake::SetNotes(prepared, NoteOf(lost, fileName_));
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), mail.Subject);
    message.message = std::move(mail);
    message.prepared = std::move(text.prepared);
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

}  // namespace

void ReadLostMessages(const std::string& fileName, const FolderRecord& folder, bool isCopy,
                      const intake::ReadingRules& rules) {
  core::GuardedRun("ReadLostMessages", [&] {
    if (!platform::FileExists(fileName) || !platform::MayRead(fileName)) return;
    if (platform::ReadDbxContent(fileName) == platform::DbxContent::kFolderList) return;
    core::LogProgress("Looks for lost messages = " + core::OneLogLine(fileName));
    auto goOn = [&](int percent) { return GoOn(folder, percent); };
    std::unique_ptr<LostWalk> walk = OpenLostWalk(fileName, isCopy, rules, goOn);
    RecoveredFolder recovered(fileName, folder, *walk, rules);
    intake::ReadFolder(recovered);
  });
}

}  // namespace tarnwick::oe
