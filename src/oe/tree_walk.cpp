// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/tree_walk.h"

#include <utility>

namespace tarnwick::oe {

TreeWalk::TreeWalk(const std::string& fileName, uint32_t root, std::function<void()> onBadNode)
    : file_(fileName), onBadNode_(std::move(onBadNode)), budget_(file_.Size()) {
  Enter(root);
}

bool TreeWalk::Load(uint32_t offset) {
  if (loaded_ == offset) return true;
  std::optional<TreeNode> node = ReadNode(file_, offset);
  if (!node) return false;
  node_ = std::move(*node);
  loaded_ = offset;
  return true;
}

void TreeWalk::Enter(uint32_t offset) {
  bool isSound = met_.insert(offset).second && Load(offset);
  uint64_t size = isSound ? kNodeHead + kEntrySize * uint64_t{node_.entries.size()} : 0;
  // Nodes that do not overlap are no longer together than their file.
  if (!isSound || size > budget_) return onBadNode_();
  budget_ -= size;
  if (node_.isCut) onBadNode_();
  way_.push_back({offset, 0});
}

std::optional<uint32_t> TreeWalk::Next() {
  while (!way_.empty()) {
    Place& place = way_.back();
    if (!Load(place.node)) {
      onBadNode_();
      way_.pop_back();
      continue;
    }
    size_t step = place.stepsDone++;
    if (step > 2 * node_.entries.size()) {
      way_.pop_back();
    } else if (step % 2 == 1) {
      return node_.entries[step / 2].value;
    } else {
      uint32_t child = step == 0 ? node_.leftChild : node_.entries[step / 2 - 1].child;
      if (child != 0) Enter(child);
    }
  }
  return std::nullopt;
}

}  // namespace tarnwick::oe
