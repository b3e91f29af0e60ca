// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The walk of a message tree. Section "Tree node".
#include <algorithm>
#include <optional>
#include <utility>

#include "core/guard.h"
#include "oe/announced.h"
#include "oe/byte_reader.h"
#include "oe/state.h"
#include "oe/store_walk.h"

namespace tarnwick::oe {

namespace {

bool HasChildren(const TreeNode& node) {
  return std::any_of(node.entries.begin(), node.entries.end(),
                     [](const TreeEntry& entry) { return entry.child != 0; });
}

}  // namespace

StoreReading::StoreReading(const std::string& fileName, const intake::ReadingRules& rules,
                           Teller tell)
    : fileName_(fileName), rules_(rules), tell_(std::move(tell)) {}

void StoreReading::EnterRoot(uint32_t offset) {
  root_ = offset;
}

void StoreReading::Begin(uint32_t root) {
  infoBudget_ = 2 * File().Size();
  if (rules_.everyTreeLevel) {
    walk_.emplace(fileName_, root, [this] { ReportBadNode(); });
    return;
  }
  std::optional<TreeNode> top = ReadNodeOnce(root);
  if (!top) return;
  if (top->leftChild == 0) {
    if (HasChildren(*top)) Note(reason::kRootChildren);
    for (const TreeEntry& entry : top->entries) steps_.push_back({.offset = entry.value});
    return;
  }
  steps_.push_back({.offset = top->leftChild, .isNode = true});
  for (const TreeEntry& entry : top->entries) {
    steps_.push_back({.offset = entry.child, .isNode = true});
    steps_.push_back({.offset = entry.value, .isEmpty = entry.value == 0});
  }
}

void StoreReading::ReportBadNode() {
  if (reportsLeft_-- > 0) tell_({.kind = core::Telling::Kind::kUnknownFile});
  Note(reason::kBadNode);
}

void StoreReading::Note(const char* reason) {
  if (noted_.insert(reason).second) tell_({.kind = core::Telling::Kind::kPlace, .text = reason});
}

// nullopt after a report. Each is read once in a walk, so that a tree that leads back to itself
// ends.
std::optional<TreeNode> StoreReading::ReadNodeOnce(uint32_t offset) {
  std::optional<TreeNode> node = ReadNode(File(), offset);
  if (!node || !nodesRead_.insert(offset).second) {
    ReportBadNode();
    return std::nullopt;
  }
  if (node->isCut) Note(reason::kBadNode);
  return node;
}

void StoreReading::EnterSecondLevel(uint32_t offset) {
  bool isRead = core::GuardedRun("ReadTreeNode", [&] {
    std::optional<TreeNode> node = ReadNodeOnce(offset);
    if (!node) return;
    if (node->leftChild != 0 || HasChildren(*node)) Note(reason::kThirdLevel);
    entries_ = std::move(node->entries);
    entriesDone_ = 0;
  });
  if (!isRead) Note(reason::kCannotRead);
}

std::optional<uint32_t> StoreReading::NextOffset() {
  if (root_) Begin(*std::exchange(root_, std::nullopt));
  while (walk_) {
    std::optional<uint32_t> value = walk_->Next();
    if (!value || *value != 0) return value;
    Note(reason::kEmptyEntry);
  }
  for (;;) {
    if (entriesDone_ < entries_.size()) return entries_[entriesDone_++].value;
    if (stepsDone_ == steps_.size()) return std::nullopt;
    const WalkStep& step = steps_[stepsDone_++];
    if (step.isNode) {
      EnterSecondLevel(step.offset);
    } else if (step.isEmpty) {
      Note(reason::kEmptyEntry);
    } else {
      return step.offset;
    }
  }
}

MessageReading StoreReading::Next(bool /*wantsText*/) {
  if (std::optional<uint32_t> offset = NextOffset()) return ReadAt(*offset);
  MessageReading end;
  end.isEnd = true;
  return end;
}

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

}  // namespace tarnwick::oe
