// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The walk of a message tree. Section "Tree node".
#include <algorithm>
#include <optional>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/load_account.h"
#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "oe/import.h"
#include "oe/state.h"
#include "oe/tree_node.h"
#include "platform/files.h"
#include "platform/locale.h"

namespace tarnwick::oe {

namespace {

// What a walk is given and every entry of it needs.
struct Walk {
  const std::string& fileName;
  std::string_view operation;
  const FolderRecord& folder;

  bool IsCounted() const { return operation == kMsgToDb; }
  void Note(const char* reason) const {
    if (IsCounted()) intake::Account().AddReason(fileName, reason);
  }
};

// How the person knows the message read last.
std::string NameOfMessage(uint32_t value) {
  const MessageInfo& info = State().Info;
  if (info.subject.empty()) return "at " + std::to_string(value);
  return platform::FormatDate(info.date, "General Date") + " " + core::LoggedMailText(info.subject);
}

void CountMessage(const Walk& walk, uint32_t value) {
  using intake::Outcome;
  const MessageEnding& ending = State().Ending;
  bool isNamed = ending.outcome != Outcome::kStored && ending.outcome != Outcome::kAlreadyStored;
  intake::LoadAccount& account = intake::Account();
  account.Count(walk.fileName, ending.outcome, ending.reason,
                isNamed ? NameOfMessage(value) : std::string());
  if (core::State().Ui != nullptr) {
    core::State().Ui->ShowProgress(account.Visited(), core::State().Counts.found);
  }
}

// One entry's message. False when the load was stopped.
bool TakeEntry(const Walk& walk, uint32_t value) {
  if (dbxMessageToFile(value, walk.fileName)) {
    State().Ending = {PerformOperation(walk.operation, walk.folder), {}};
  }
  if (State().Ending.outcome == intake::Outcome::kUnreadable) {
    core::LogProgress("Unreadable = " + core::OneLogLine(walk.fileName) + " " +
                      std::to_string(value) + "\r\n" + core::OneLogLine(State().Ending.reason));
  }
  if (walk.IsCounted()) CountMessage(walk, value);
  core::YieldEvents();
  return !IsStopped();
}

// The node, or nullopt after a report. Each is read once in a walk, so that a tree that leads back
// to itself ends.
std::optional<TreeNode> Enter(const Walk& walk, uint32_t offset) {
  ByteReader file(walk.fileName);
  std::optional<TreeNode> node = ReadNode(file, offset);
  if (!node || !State().NodesRead.insert(offset).second) {
    core::ReportUnknownFormat(walk.fileName);
    walk.Note(reason::kBadNode);
    return std::nullopt;
  }
  if (node->isCut) walk.Note(reason::kBadNode);
  return node;
}

bool HasChildren(const TreeNode& node) {
  return std::any_of(node.entries.begin(), node.entries.end(),
                     [](const TreeEntry& entry) { return entry.child != 0; });
}

// False when the load was stopped.
bool TakeSecondLevel(const Walk& walk, uint32_t offset) {
  std::optional<TreeNode> node = Enter(walk, offset);
  if (!node) return true;
  if (node->leftChild != 0 || HasChildren(*node)) walk.Note(reason::kThirdLevel);
  for (const TreeEntry& entry : node->entries) {
    if (!TakeEntry(walk, entry.value)) return false;
  }
  return true;
}

void TakeRoot(const Walk& walk, uint32_t offset) {
  std::optional<TreeNode> root = Enter(walk, offset);
  if (!root) return;
  if (root->leftChild == 0) {
    if (HasChildren(*root)) walk.Note(reason::kRootChildren);
    for (const TreeEntry& entry : root->entries) {
      if (!TakeEntry(walk, entry.value)) return;
    }
    return;
  }
  ReadTreeNode(walk.fileName, root->leftChild, walk.operation, walk.folder);
  for (const TreeEntry& entry : root->entries) {
    if (IsStopped()) return;
    ReadTreeNode(walk.fileName, entry.child, walk.operation, walk.folder);
    if (IsStopped()) return;
    if (entry.value == 0) {
      walk.Note(reason::kEmptyEntry);
    } else if (!TakeEntry(walk, entry.value)) {
      return;
    }
  }
}

// The bounds of one walk, taken down however it ends.
class WalkScope {
 public:
  explicit WalkScope(const std::string& fileName) {
    // No block belongs to two messages; twice the file leaves room for a store that is a little
    // out of order.
    State().ChainBudget = 2 * platform::FileSize(fileName);
    State().NodesRead.clear();
    State().IsWalking = true;
  }
  ~WalkScope() { State().IsWalking = false; }
  WalkScope(const WalkScope&) = delete;
  WalkScope& operator=(const WalkScope&) = delete;
};

}  // namespace

std::optional<TreeNode> ReadNode(ByteReader& file, uint32_t offset) {
  constexpr size_t kNodeHead = 24;
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
                     const FolderRecord& folder) {
  bool ended = core::GuardedRun("ReadMessageTree", [&] {
    if (IsStopped()) return;
    core::LogProgress("Reads = " + core::OneLogLine(folder.label) + "\r\n" +
                      core::OneLogLine(fileName));
    // A folder that was never opened has no file.
    if (!platform::FileExists(fileName)) return;
    if (!platform::MayRead(fileName)) {
      if (operation == kMsgToDb) intake::Account().AddReason(fileName, kMayNotBeRead);
      return;
    }
    ReadDbxHeader(fileName);
    Walk walk{fileName, operation, folder};
    uint32_t root = State().Header.messageRoot;
    if (root == 0) {
      walk.Note(reason::kNoTree);
      return;
    }
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), folder.label);
    WalkScope scope(fileName);
    TakeRoot(walk, root);
  });
  if (operation != kMsgToDb) return;
  if (!ended) intake::Account().AddReason(fileName, reason::kCannotRead);
  if (!IsStopped()) intake::Account().Finish(fileName);
}

void ReadTreeNode(const std::string& fileName, uint32_t nodeOffset, std::string_view operation,
                  const FolderRecord& folder) {
  bool ended = core::GuardedRun("ReadTreeNode", [&] {
    TakeSecondLevel(Walk{fileName, operation, folder}, nodeOffset);
  });
  if (!ended && operation == kMsgToDb) {
    intake::Account().AddReason(fileName, reason::kCannotRead);
  }
}

}  // namespace tarnwick::oe
