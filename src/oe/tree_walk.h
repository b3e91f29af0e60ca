// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Goes over a tree of a store file in its order: what is left of a node's first entry, the entry,
// what lies between it and the next, and so on down to any depth. Of a damaged node, one that was
// met before and one that overlaps others everything below it is passed over and nothing else. Time
// and memory stay in proportion to the file.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

#include "oe/byte_reader.h"
#include "oe/tree_node.h"

namespace tarnwick::oe {

class TreeWalk {
 public:
  // onBadNode is called for each node that is passed over, whole or in part. Throws Error for a
  // file that can't be read, as Next does.
  TreeWalk(const std::string& fileName, uint32_t root, std::function<void()> onBadNode);

  // The value of the next entry, 0 for an entry that has none; nullopt at the end.
  std::optional<uint32_t> Next();

 private:
  // A node on the way from the root, and how far it is done: its left child, its first entry, that
  // entry's child, its second entry, ... Its entries are read again when the walk comes back to it,
  // so that a tree as deep as its file is long takes no more memory than that.
  struct Place {
    uint32_t node = 0;
    uint32_t stepsDone = 0;
  };
  void Enter(uint32_t offset);
  bool Load(uint32_t offset);

  ByteReader file_;
  std::function<void()> onBadNode_;
  std::vector<Place> way_;
  uint32_t loaded_ = 0;
  TreeNode node_;  // at loaded_
  std::unordered_set<uint32_t> met_;
  uint64_t budget_;  // bytes of nodes that may still be entered
};

}  // namespace tarnwick::oe
