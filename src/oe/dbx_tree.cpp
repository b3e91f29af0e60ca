// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a load, and the passes before it, do with the messages of a file.
#include <algorithm>
#include <memory>
#include <utility>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/ahead_pace.h"
#include "intake/load_account.h"
#include "intake/source.h"
#include "oe/dbx_read.h"
#include "oe/import.h"
#include "oe/state.h"
#include "oe/store_link.h"
#include "oe/store_walk.h"
#include "platform/files.h"

namespace tarnwick::oe {

namespace {

// What the account tells of a file that is not read whole; only a load asks for it.
void Note(const std::string& fileName, std::string_view operation, const std::string& reason) {
  if (operation == kMsgToDb) intake::Account().AddReason(fileName, reason);
}

// Bounds what a walk reports, taken down however it ends.
class WalkScope {
 public:
  WalkScope() {
    State().ReportsLeft = kMostReports;
    State().IsWalking = true;
  }
  ~WalkScope() { State().IsWalking = false; }
  WalkScope(const WalkScope&) = delete;
  WalkScope& operator=(const WalkScope&) = delete;
};

// The messages of a file, in the order in which its tree is walked.
class MessageFile : public intake::SourceFolder {
 public:
  MessageFile(const std::string& fileName, std::string_view operation, const FolderRecord& folder,
              const intake::ReadingRules& rules)
      : fileName_(fileName), operation_(operation), folder_(folder), rules_(rules) {}

  // Begin a walk: from the root, or of one node alone.
  void EnterRoot(uint32_t offset);
  void EnterNode(uint32_t offset);

  std::string Place() const override { return fileName_; }
  intake::SourceDescriptor Descriptor() const override {
    return {folder_.label, folder_.fullName, kApplication};
  }
  std::string Identity() const override { return folder_.userName; }
  const intake::ReadingRules& Rules() const override { return rules_; }
  bool Next(intake::SourceMessage& message) override;
  void Ended(const intake::SourceMessage& message, const intake::Ending& ending) override;
  // Who sent the message come to, where the reader said so.
  const std::optional<SenderLines>& Sender() const { return sender_; }
  // Before somebody else takes the scratch file.
  void LetGoOfScratch() { files_.scratch.reset(); }

 private:
  std::unique_ptr<StoreReading> ReadHere();
  void Tell(const core::Telling& telling) const;
  std::string NameOf(ReadMessage& read) const;

  const std::string& fileName_;
  std::string_view operation_;
  const FolderRecord& folder_;
  const intake::ReadingRules& rules_;
  std::unique_ptr<StoreWalk> walk_;
  uint32_t offset_ = 0;  // of the message come to
  std::optional<SenderLines> sender_;
  WalkFiles files_;
  bool wantsText_ = false;
  intake::AheadPace pace_;
};

std::unique_ptr<StoreReading> MessageFile::ReadHere() {
  return std::make_unique<StoreReading>(fileName_, rules_,
                                        [this](const core::Telling& telling) { Tell(telling); });
}

void MessageFile::EnterRoot(uint32_t offset) {
  // No block belongs to two messages; twice the file leaves room for a store that is a little out
  // of order.
  files_.chainBudget = 2 * platform::FileSize(fileName_);
  walk_ = OpenStoreLink(fileName_, offset, rules_, operation_ == kMeAddress);
  if (walk_) return;
  std::unique_ptr<StoreReading> reading = ReadHere();
  reading->EnterRoot(offset);
  walk_ = std::move(reading);
}

void MessageFile::EnterNode(uint32_t offset) {
  std::unique_ptr<StoreReading> reading = ReadHere();
  reading->EnterNode(offset);
  walk_ = std::move(reading);
}

void MessageFile::Tell(const core::Telling& telling) const {
  if (telling.kind == core::Telling::Kind::kPlace) {
    Note(fileName_, operation_, telling.text);
  } else if (telling.kind == core::Telling::Kind::kUnknownFile) {
    if (MayReport()) core::ReportUnknownFormat(fileName_);
  } else {
    core::Tell(telling);
  }
}

std::string MessageFile::NameOf(ReadMessage& read) const {
  if (read.info.subject.empty()) return "at " + std::to_string(offset_);
  return read.name.empty() ? DatedSubject(read.info) : std::move(read.name);
}

bool MessageFile::Next(intake::SourceMessage& message) {
  if (IsStopped()) return false;
  MessageReading reading = walk_->Next(wantsText_);
  for (const core::Telling& telling : reading.tellings) Tell(telling);
  if (reading.isEnd && reading.fault) throw Error(reading.fault.number, reading.fault.reason);
  if (reading.isEnd || IsStopped()) return false;
  offset_ = reading.infoOffset;
  ReadMessage read;
  if (TakeMessage(*walk_, reading, fileName_, read, files_)) {
    message.key = std::move(read.entryKey);
    message.isKeyNew = true;
    message.facts = read.facts;
    message.raw = std::move(read.raw);
    message.prepared = std::move(read.prepared);
    sender_ = std::move(read.sender);
  } else {
    message.ending = read.ending;
  }
  if (message.ending.outcome != intake::Outcome::kAlreadyStored) message.name = NameOf(read);
  return true;
}

void MessageFile::Ended(const intake::SourceMessage& message, const intake::Ending& ending) {
  // A text that looks back at the message before has to wait for its turn.
  bool mayWait = rules_.indexedText && rules_.anyDate && operation_ == kMsgToDb;
  intake::AheadPace::Turn turn = pace_.Note(message.ending.outcome == intake::Outcome::kNone);
  if (turn != intake::AheadPace::Turn::kNone) {
    wantsText_ = mayWait && turn == intake::AheadPace::Turn::kBegin;
  }
  if (ending.outcome != intake::Outcome::kUnreadable || !MayReport()) return;
  core::LogProgress("Unreadable = " + core::OneLogLine(fileName_) + " " + std::to_string(offset_) +
                    "\r\n" + core::OneLogLine(ending.reason));
}

// Performs the operation on every message that the walk comes to.
void Perform(MessageFile& file, std::string_view operation) {
  if (operation == kMsgToDb) return intake::ReadFolder(file);
  for (intake::SourceMessage message; !IsStopped() && file.Next(message); message = {}) {
    if (message.ending.outcome != intake::Outcome::kNone) {
      file.Ended(message, message.ending);
    } else {
      file.LetGoOfScratch();
      if (operation == kMeAddress) dbxFileMeAddress(file.Sender());
      if (operation == kMsgToFiles) MsgToFiles();
    }
    core::YieldEvents();
  }
}

}  // namespace

void ReadMessageTree(const std::string& fileName, std::string_view operation,
                     const FolderRecord& folder, const intake::ReadingRules& rules) {
  bool ended = core::GuardedRun("ReadMessageTree", [&] {
    if (IsStopped()) return;
    core::LogProgress("Reads = " + core::OneLogLine(folder.label) + "\r\n" +
                      core::OneLogLine(fileName));
    // A folder that was never opened has no file.
    if (!platform::FileExists(fileName)) return;
    if (!platform::MayRead(fileName)) {
      Note(fileName, operation, kMayNotBeRead);
      return;
    }
    ReadDbxHeader(fileName);
    uint32_t root = State().Header.messageRoot;
    if (root == 0) return Note(fileName, operation, reason::kNoTree);
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), folder.label);
    WalkScope scope;
    MessageFile file(fileName, operation, folder, rules);
    file.EnterRoot(root);
    Perform(file, operation);
  });
  if (operation != kMsgToDb) return;
  if (!ended) intake::Account().AddReason(fileName, reason::kCannotRead);
  if (!IsStopped()) intake::Account().Finish(fileName);
}

void ReadTreeNode(const std::string& fileName, uint32_t nodeOffset, std::string_view operation,
                  const FolderRecord& folder) {
  core::GuardedRun("ReadTreeNode", [&] {
    MessageFile file(fileName, operation, folder, intake::kDesigned);
    file.EnterNode(nodeOffset);
    Perform(file, operation);
  });
}

}  // namespace tarnwick::oe
