// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The walk of a message tree. Section "Tree node".
#include <algorithm>
#include <memory>
#include <optional>
#include <set>
#include <utility>
#include <vector>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/ahead_pace.h"
#include "intake/load_account.h"
#include "intake/source.h"
#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "oe/import.h"
#include "oe/state.h"
#include "oe/tree_walk.h"
#include "oe/walk_ahead.h"
#include "platform/files.h"

namespace tarnwick::oe {

namespace {

// What the account tells of a file that is not read whole; only a load asks for it.
void Note(const std::string& fileName, std::string_view operation, const std::string& reason) {
  if (operation == kMsgToDb) intake::Account().AddReason(fileName, reason);
}

// The bounds of one walk, taken down however it ends.
class WalkScope {
 public:
  explicit WalkScope(const std::string& fileName) {
    // No block belongs to two messages; twice the file leaves room for a store that is a little
    // out of order.
    State().ChainBudget = State().InfoBudget = 2 * platform::FileSize(fileName);
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

  // Begin a walk: of the two upper levels or, by rules that say so, of all; or of one node alone.
  void EnterRoot(uint32_t offset);
  void EnterNode(uint32_t offset) { steps_ = {{.offset = offset, .isNode = true}}; }

  std::string Place() const override { return fileName_; }
  intake::SourceDescriptor Descriptor() const override {
    return {folder_.label, folder_.fullName, kApplication};
  }
  std::string Identity() const override { return folder_.userName; }
  const intake::ReadingRules& Rules() const override { return rules_; }
  bool Next(intake::SourceMessage& message) override;
  void Ended(const intake::SourceMessage& message, const intake::Ending& ending) override;
  void TakeBack(intake::SourceMessage& message) override;
  // Before somebody else takes the scratch file.
  void LetGoOfScratch() { files_.scratch.reset(); }

 private:
  // A step of the walk: a message, or a node of the second level.
  struct Step {
    uint32_t offset = 0;
    bool isNode = false;
    bool isEmpty = false;  // an entry that has no message
  };
  std::optional<uint32_t> NextOffset();
  std::optional<TreeNode> ReadNodeOnce(uint32_t offset);
  void EnterSecondLevel(uint32_t offset);
  std::string NameOf(ReadMessage& read) const;
  void KeepAhead(bool wasNew);
  void Note(const char* reason) const { oe::Note(fileName_, operation_, reason); }
  void ReportBadNode() const;

  const std::string& fileName_;
  std::string_view operation_;
  const FolderRecord& folder_;
  const intake::ReadingRules& rules_;
  std::optional<TreeWalk> walk_;  // of every level; the rest is of two
  std::set<uint32_t> nodesRead_;
  std::vector<Step> steps_;
  size_t stepsDone_ = 0;
  std::vector<TreeEntry> entries_;  // of the node of the second level that is being read
  size_t entriesDone_ = 0;
  uint32_t offset_ = 0;  // of the message come to
  WalkFiles files_;
  std::unique_ptr<WalkAhead> ahead_;
  intake::AheadPace pace_;
};

bool HasChildren(const TreeNode& node) {
  return std::any_of(node.entries.begin(), node.entries.end(),
                     [](const TreeEntry& entry) { return entry.child != 0; });
}

void MessageFile::EnterRoot(uint32_t offset) {
  if (rules_.everyTreeLevel) {
    walk_.emplace(fileName_, offset, [this] { ReportBadNode(); });
    return;
  }
  std::optional<TreeNode> root = ReadNodeOnce(offset);
  if (!root) return;
  if (root->leftChild == 0) {
    if (HasChildren(*root)) Note(reason::kRootChildren);
    for (const TreeEntry& entry : root->entries) steps_.push_back({.offset = entry.value});
    return;
  }
  steps_.push_back({.offset = root->leftChild, .isNode = true});
  for (const TreeEntry& entry : root->entries) {
    steps_.push_back({.offset = entry.child, .isNode = true});
    steps_.push_back({.offset = entry.value, .isEmpty = entry.value == 0});
  }
}

void MessageFile::ReportBadNode() const {
  if (MayReport()) core::ReportUnknownFormat(fileName_);
  Note(reason::kBadNode);
}

// nullopt after a report. Each is read once in a walk, so that a tree that leads back to itself
// ends.
std::optional<TreeNode> MessageFile::ReadNodeOnce(uint32_t offset) {
  ByteReader file(fileName_);
  std::optional<TreeNode> node = ReadNode(file, offset);
  if (!node || !nodesRead_.insert(offset).second) {
    ReportBadNode();
    return std::nullopt;
  }
  if (node->isCut) Note(reason::kBadNode);
  return node;
}

void MessageFile::EnterSecondLevel(uint32_t offset) {
  bool isRead = core::GuardedRun("ReadTreeNode", [&] {
    std::optional<TreeNode> node = ReadNodeOnce(offset);
    if (!node) return;
    if (node->leftChild != 0 || HasChildren(*node)) Note(reason::kThirdLevel);
    entries_ = std::move(node->entries);
    entriesDone_ = 0;
  });
  if (!isRead) Note(reason::kCannotRead);
}

std::optional<uint32_t> MessageFile::NextOffset() {
  while (walk_ && !IsStopped()) {
    std::optional<uint32_t> value = walk_->Next();
    if (!value || *value != 0) return value;
    Note(reason::kEmptyEntry);
  }
  for (;;) {
    if (entriesDone_ < entries_.size()) return entries_[entriesDone_++].value;
    if (stepsDone_ == steps_.size() || IsStopped()) return std::nullopt;
    const Step& step = steps_[stepsDone_++];
    if (step.isNode) {
      EnterSecondLevel(step.offset);
    } else if (step.isEmpty) {
      Note(reason::kEmptyEntry);
    } else {
      return step.offset;
    }
  }
}

std::string MessageFile::NameOf(ReadMessage& read) const {
  if (read.info.subject.empty()) return "at " + std::to_string(offset_);
  return read.name.empty() ? DatedSubject(read.info) : std::move(read.name);
}

bool MessageFile::Next(intake::SourceMessage& message) {
  std::optional<uint32_t> offset = NextOffset();
  if (!offset) return false;
  offset_ = *offset;
  ReadMessage read;
  std::optional<AheadMessage> ahead = ahead_ ? ahead_->Take(offset_) : std::nullopt;
  if (dbxMessageToFile(offset_, fileName_, read, rules_, files_, std::move(ahead))) {
    message.key = std::move(read.entryKey);
    message.isKeyNew = true;
    message.facts = read.facts;
    message.raw = std::move(read.raw);
    message.prepared = std::move(read.prepared);
  } else {
    message.ending = read.ending;
  }
  if (message.ending.outcome != intake::Outcome::kAlreadyStored) message.name = NameOf(read);
  return true;
}

void MessageFile::KeepAhead(bool wasNew) {
  intake::AheadPace::Turn turn = pace_.Note(wasNew);
  if (turn == intake::AheadPace::Turn::kEnd) ahead_.reset();
  bool mayBegin = walk_ && !ahead_ && operation_ == kMsgToDb;
  if (turn == intake::AheadPace::Turn::kBegin && mayBegin) {
    ahead_ = WalkAhead::Begin(fileName_, *walk_, rules_);
  }
}

void MessageFile::Ended(const intake::SourceMessage& message, const intake::Ending& ending) {
  KeepAhead(message.ending.outcome == intake::Outcome::kNone);
  if (ending.outcome != intake::Outcome::kUnreadable || !MayReport()) return;
  core::LogProgress("Unreadable = " + core::OneLogLine(fileName_) + " " + std::to_string(offset_) +
                    "\r\n" + core::OneLogLine(ending.reason));
}

void MessageFile::TakeBack(intake::SourceMessage& message) {
  if (!ahead_ || !message.prepared) return;
  AheadMessage used;
  used.message.raw = std::move(message.raw);
  used.message.prepared = std::move(message.prepared);
  ahead_->GiveBack(std::move(used));
}

// Performs the operation on every message that the walk comes to.
void Perform(MessageFile& file, std::string_view operation) {
  if (operation == kMsgToDb) return intake::ReadFolder(file);
  for (intake::SourceMessage message; !IsStopped() && file.Next(message); message = {}) {
    if (message.ending.outcome != intake::Outcome::kNone) {
      file.Ended(message, message.ending);
    } else {
      file.LetGoOfScratch();
      if (operation == kMeAddress) dbxFileMeAddress();
      if (operation == kMsgToFiles) MsgToFiles();
    }
    core::YieldEvents();
  }
}

}  // namespace

std::optional<TreeNode> ReadNode(ByteReader& file, uint32_t offset) {
  constexpr size_t kMaxEntries = 255;
  std::string_view bytes = file.Read(offset, kNodeHead + kMaxEntries * kEntrySize);
  if (bytes.size() < kNodeHead || Get32(bytes, 0) != offset) return std::nullopt;
  TreeNode node;
  node.leftChild = Get32(bytes, 8);
  size_t count = Get8(bytes, 17);
  for (size_t i = 0; i < count; ++i) {
    size_t place = kNodeHead + i * kEntrySize;
    if (place + kEntrySize > bytes.size()) {
      node.isCut = true;
      break;
    }
    node.entries.push_back({Get32(bytes, place), Get32(bytes, place + 4)});
  }
  return node;
}

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
    WalkScope scope(fileName);
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
