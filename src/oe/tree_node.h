// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A node of either tree of a store file; docs/dbx-format.md, section "Tree node".
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tarnwick::oe {

class ByteReader;

inline constexpr size_t kNodeHead = 24;
inline constexpr size_t kEntrySize = 12;

struct TreeEntry {
  uint32_t value = 0;  // offset of an info object
  uint32_t child = 0;  // offset of the node that follows the entry, 0 for none
};

struct TreeNode {
  uint32_t leftChild = 0;  // offset of the node before the first entry, 0 for none
  std::vector<TreeEntry> entries;
  bool isCut = false;  // the file ends before the last entry
};

// nullopt when no node stands there: its self pointer tells.
std::optional<TreeNode> ReadNode(ByteReader& file, uint32_t offset);

}  // namespace tarnwick::oe
