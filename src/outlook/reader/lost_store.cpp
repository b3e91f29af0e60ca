// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/reader/lost_store.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "outlook/mapi.h"
#include "outlook/reader/heap.h"
#include "outlook/reader/layout.h"
#include "outlook/reader/store_scan.h"

namespace tarnwick::outlook::reader {

namespace {

// Of nodes that this reader makes up; no store has them.
constexpr uint32_t kLoneKind = 0x1E;
constexpr uint32_t kNodeStep = kKindMask + 1;
constexpr uint8_t kBlockList = 1;
}  // namespace

LostStore::LostStore(platform::InputFile& file, const std::function<void(int)>& tell)
    : NodeStore(file, ScanStore(file, tell)), input_(file) {
  FindLoneMail();
}

// The numbers of all blocks that a node or a list names, sorted.
std::vector<uint64_t> LostStore::NamedBlocks() {
  const FoundStore& found = File().Found();
  const size_t width = LayoutOf(found.variant).idSize;
  std::vector<uint64_t> named;
  for (const FoundNode& node : found.nodes) named.insert(named.end(), {node.data, node.sub});
  for (const BlockPlace& block : found.blocks) {
    if ((block.id & kInternal) == 0) continue;
    std::string list = File().Read(block);
    if (list.size() < 8) continue;
    // Of blocks; or of nodes, each with its data and, at the lowest level, its own nodes.
    bool isOfBlocks = list[0] == kBlockList;
    size_t step = isOfBlocks ? 1 : list[1] == 0 ? 3 : 2;
    size_t head = isOfBlocks ? 8 : width;
    for (size_t at = head; at + step * width <= list.size(); at += step * width) {
      for (size_t i = isOfBlocks ? 0 : 1; i < step; ++i) {
        named.push_back(PlainId(NumberAt(list, at + i * width, width)));
      }
    }
  }
  std::sort(named.begin(), named.end());
  named.erase(std::unique(named.begin(), named.end()), named.end());
  return named;
}

// Whether the data are the properties of a mail.
bool LostStore::IsMail(uint64_t data) {
  try {
    Heap properties(File(), data, 0, kPropertiesHeap);
    auto field = FindProperty(properties, Prop::kMessageClass);
    return field && IsMailClass(ShortValue(properties, *field), field->type);
  } catch (const ReadError&) {
    return false;
  }
}

void LostStore::FindLoneMail() {
  const std::vector<uint64_t> named = NamedBlocks();
  std::vector<FoundNode> lone;
  for (const BlockPlace& block : File().Found().blocks) {
    uint64_t data = PlainId(block.id);
    if (std::binary_search(named.begin(), named.end(), data) || !IsMail(data)) continue;
    lone.push_back({0, 0, data, 0, 0});
  }
  // Above all numbers that were found.
  const auto& nodes = File().Found().nodes;
  uint64_t number = nodes.empty() ? 0 : nodes.back().number / kNodeStep + 1;
  std::erase_if(lone, [&](FoundNode& node) {
    uint64_t its = number++ * kNodeStep + kLoneKind;
    node.number = static_cast<uint32_t>(its);
    return its > UINT32_MAX;
  });
  File().AddFound(lone);
}

std::vector<FoundItem> LostStore::FindLost() {
  std::unique_ptr<NodeFile> index;
  try {
    index = std::make_unique<NodeFile>(input_);
  } catch (const ReadError&) {
    // It is lost.
  }
  auto howFound = [&](uint32_t number) {
    if (!index) return LostHow::kIndexLost;
    try {
      return index->FindNode(number) ? LostHow::kUnlisted : LostHow::kDeleted;
    } catch (const ReadError&) {
      return LostHow::kIndexLost;
    }
  };
  std::vector<FoundItem> items;
  auto add = [&](const FoundNode& node, LostHow how) {
    items.push_back({node.number, node.parent, how, node.data});
  };
  const std::vector<FoundNode>& nodes = File().Found().nodes;
  for (size_t i = 0; i < nodes.size(); ++i) {
    if (i > 0 && nodes[i - 1].number == nodes[i].number) continue;
    uint32_t kind = nodes[i].number & kKindMask;
    if (kind == kLoneKind) add(nodes[i], LostHow::kAlone);
    if (kind == kMessageKind) add(nodes[i], howFound(nodes[i].number));
  }
  return items;
}

std::unique_ptr<StoreFile> OpenLostStore(platform::InputFile& file,
                                         const std::function<void(int)>& tell) {
  int told = -1;
  return std::make_unique<LostStore>(file, [&](int percent) {
    if (percent != std::exchange(told, percent)) tell(percent);
  });
}

}  // namespace tarnwick::outlook::reader
