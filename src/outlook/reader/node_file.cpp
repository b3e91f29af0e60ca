// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/reader/node_file.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "outlook/reader/checksum.h"
#include "outlook/reader/cipher.h"
#include "outlook/reader/store_file.h"
#include "outlook/reader/unpack.h"
#include "platform/error.h"

namespace tarnwick::outlook::reader {

namespace {

constexpr size_t kHeaderSize = 564;
constexpr int kMaxLevel = 8;                    // of a tree of pages; 20 entries a page make 10^10
constexpr size_t kPageBytes = size_t{2} << 20;  // of the pages that are kept
constexpr size_t kPieces = 32;
constexpr size_t kPieceSize = size_t{64} * 1024;

}  // namespace

uint64_t NumberAt(std::string_view bytes, size_t offset, size_t count) {
  if (offset > bytes.size() || count > bytes.size() - offset) throw ReadError("number");
  uint64_t value = 0;
  for (size_t i = 0; i < count; ++i) {
    value |= static_cast<uint64_t>(static_cast<unsigned char>(bytes[offset + i])) << (8 * i);
  }
  return value;
}

NodeFile::NodeFile(platform::InputFile& file) : file_(file), pieces_(kPieces) {
  if (file_.Size() < kHeaderSize) throw ReadError("it is no Outlook store");
  std::string header = ReadAt(0, kHeaderSize);
  if (header.compare(0, 4, "!BDN") != 0) throw ReadError("it is no Outlook store");
  auto variant = VariantOf(NumberAt(header, 10, 2));
  if (!variant) throw OtherVariant("variant");
  layout_ = &LayoutOf(*variant);
  idSize_ = layout_->idSize;
  pages_.resize(kPageBytes / layout_->pageSize);
  nodeRoot_ = PageRefIn(header, layout_->nodeRoot);
  blockRoot_ = PageRefIn(header, layout_->blockRoot);
  cipher_ = static_cast<uint8_t>(header[layout_->cipher]);
  if (!IsKnownCipher(cipher_)) throw OtherVariant("cipher");
  try {
    ReadPage(nodeRoot_, kNodePages, -1);
    ReadPage(blockRoot_, kBlockPages, -1);
  } catch (const ReadError&) {
    throw ReadError("its index is damaged");
  }
}

NodeFile::NodeFile(platform::InputFile& file, FoundStore found)
    : file_(file),
      found_(std::move(found)),
      layout_(&LayoutOf(found_->variant)),
      idSize_(layout_->idSize),
      cipher_(found_->cipher),
      pieces_(kPieces) {}

void NodeFile::AddFound(const std::vector<FoundNode>& nodes) {
  assert(found_ && (nodes.empty() || found_->nodes.empty() ||
                    found_->nodes.back().number < nodes.front().number));
  found_->nodes.insert(found_->nodes.end(), nodes.begin(), nodes.end());
}

std::string NodeFile::ReadAt(uint64_t offset, size_t count) {
  if (offset > Size() || count > Size() - offset) throw ReadError("place outside the file");
  std::string bytes;
  while (bytes.size() < count) {
    uint64_t at = offset + bytes.size();
    uint64_t number = at / kPieceSize;
    Piece& piece = pieces_[number % kPieces];
    if (piece.number != number) {
      piece.number = UINT64_MAX;
      piece.bytes.resize(kPieceSize);
      try {
        piece.bytes.resize(file_.ReadAt(number * kPieceSize, piece.bytes.data(), kPieceSize));
      } catch (const Error&) {
        throw ReadError("file");
      }
      piece.number = number;
    }
    size_t from = at % kPieceSize;
    if (from >= piece.bytes.size()) throw ReadError("file");  // it shrank
    bytes += std::string_view(piece.bytes).substr(from, count - bytes.size());
  }
  return bytes;
}

NodeFile::PageRef NodeFile::PageRefIn(std::string_view bytes, size_t offset) const {
  return {NumberAt(bytes, offset, idSize_), NumberAt(bytes, offset + idSize_, idSize_)};
}

// Fills all of page but its offset. REQUIRES: page.type is set.
void NodeFile::TakePage(Page& page, std::string bytes) const {
  const Layout& layout = *layout_;
  size_t trailer = layout.pageSize - layout.trailer;
  bool isOfType =
      static_cast<uint8_t>(bytes[trailer]) == page.type && bytes[trailer] == bytes[trailer + 1];
  bool isWhole = Checksum(std::string_view(bytes).substr(0, trailer)) ==
                 NumberAt(bytes, trailer + layout.trailerChecksum, 4);
  if (!isOfType && !isWhole) throw ReadError("page");
  page.isSound = isOfType && isWhole;
  page.id = NumberAt(bytes, trailer + layout.trailerId, idSize_);
  page.count = NumberAt(bytes, layout.pageInfo, layout.countSize);
  page.entrySize = NumberAt(bytes, layout.pageInfo + 2 * layout.countSize, 1);
  page.level = static_cast<int>(NumberAt(bytes, layout.pageInfo + 2 * layout.countSize + 1, 1));
  size_t least = 3 * idSize_;
  if (page.level == 0) least = page.type == kNodePages ? layout.nodeEntry : layout.blockEntry;
  if (page.level > kMaxLevel || page.entrySize < least ||
      page.count * page.entrySize > layout.pageInfo) {
    throw ReadError("page");
  }
  bytes.resize(page.count * page.entrySize);
  page.entries = std::move(bytes);
}

// level: the one that the page above asks for, -1 for a root.
const NodeFile::Page& NodeFile::ReadPage(const PageRef& ref, uint8_t type, int level) {
  Page& page = pages_[(ref.offset / layout_->pageSize) % pages_.size()];
  if (page.offset != ref.offset || page.type != type) {
    page.offset = UINT64_MAX;
    page.type = type;
    TakePage(page, ReadAt(ref.offset, layout_->pageSize));
    page.offset = ref.offset;
  }
  if (level >= 0 && page.level != level) throw ReadError("page");
  return page;
}

// Damage above the lowest level may hide an entry, but gives no wrong one.
NodeFile::Entry NodeFile::FindEntry(const PageRef& root, uint8_t type, uint64_t key) {
  const Page* page = &ReadPage(root, type, -1);
  uint64_t id = root.id;
  // Block numbers bear a mark that is not theirs; of node numbers only 32 bits count.
  uint64_t mask = type == kBlockPages ? ~uint64_t{1} : 0xFFFFFFFF;
  while (true) {
    size_t low = 0;
    size_t high = page->count;
    while (low < high) {  // the first entry behind the key
      size_t middle = (low + high) / 2;
      if ((NumberAt(page->entries, middle * page->entrySize, idSize_) & mask) <= key) {
        low = middle + 1;
      } else {
        high = middle;
      }
    }
    if (low == 0) return {};
    auto entry = std::string_view(page->entries).substr((low - 1) * page->entrySize);
    if (page->level == 0) {
      if ((NumberAt(entry, 0, idSize_) & mask) != key) return {};
      return {entry, page->isSound && page->id == id};
    }
    PageRef below = PageRefIn(entry, idSize_);
    id = below.id;
    page = &ReadPage(below, type, page->level - 1);
  }
}

NodeFile::Node NodeFile::NodeOf(std::string_view entry) const {
  return {NumberAt(entry, idSize_, idSize_), NumberAt(entry, 2 * idSize_, idSize_),
          static_cast<uint32_t>(NumberAt(entry, 3 * idSize_, 4))};
}

bool NodeFile::HasBlocks(uint64_t data, uint64_t sub) {
  try {
    return !BlocksOf(data).empty() && (sub == 0 || !SubNodesOf(sub).empty());
  } catch (const ReadError&) {
    return false;
  }
}

// Of the entries that were found with the number the newest whose bytes are there.
std::optional<NodeFile::Node> NodeFile::FindFound(uint32_t number) {
  auto first =
      std::lower_bound(found_->nodes.begin(), found_->nodes.end(), number,
                       [](const FoundNode& node, uint32_t wanted) { return node.number < wanted; });
  if (first == found_->nodes.end() || first->number != number) return std::nullopt;
  auto best = first;
  constexpr int kMostTried = 64;
  for (auto each = first;
       each != found_->nodes.end() && each->number == number && each - first < kMostTried; ++each) {
    if (HasBlocks(each->data, each->sub)) {
      best = each;
      break;
    }
    if (!HasBlocks(best->data, 0) && HasBlocks(each->data, 0)) best = each;
  }
  return Node{best->data, best->sub, best->parent};
}

std::optional<NodeFile::Node> NodeFile::FindNode(uint32_t number) {
  if (found_) return FindFound(number);
  Entry entry = FindEntry(nodeRoot_, kNodePages, number);
  if (entry.bytes.empty()) return std::nullopt;
  Node node = NodeOf(entry.bytes);
  node.isSound = entry.isSound;
  isDamaged_ = isDamaged_ || !entry.isSound;
  return node;
}

void NodeFile::ForEachNode(const std::function<void(uint32_t, const Node&)>& visit) {
  if (found_) {
    for (size_t i = 0; i < found_->nodes.size(); ++i) {
      const FoundNode& node = found_->nodes[i];
      if (i > 0 && found_->nodes[i - 1].number == node.number) continue;
      visit(node.number, {node.data, node.sub, node.parent});
    }
    return;
  }
  uint64_t left = Size() / layout_->pageSize;
  VisitPages(nodeRoot_, -1, left, visit);
}

void NodeFile::VisitPages(const PageRef& ref, int level, uint64_t& left,
                          const std::function<void(uint32_t, const Node&)>& visit) {
  if (left == 0) return;
  --left;
  Page page = ReadPage(ref, kNodePages, level);
  for (size_t i = 0; i < page.count; ++i) {
    auto entry = std::string_view(page.entries).substr(i * page.entrySize);
    if (page.level == 0) {
      visit(static_cast<uint32_t>(NumberAt(entry, 0, 4)), NodeOf(entry));
      continue;
    }
    try {
      VisitPages(PageRefIn(entry, idSize_), page.level - 1, left, visit);
    } catch (const ReadError&) {
      // What lies below is lost, the rest is not.
    }
  }
}

bool NodeFile::TakeDamage() {
  return std::exchange(isDamaged_, false);
}

NodeFile::Block NodeFile::FindBlock(uint64_t id) {
  if (found_) {
    auto block = std::lower_bound(
        found_->blocks.begin(), found_->blocks.end(), PlainId(id),
        [](const Block& each, uint64_t wanted) { return PlainId(each.id) < wanted; });
    if (block == found_->blocks.end() || PlainId(block->id) != PlainId(id)) {
      throw ReadError("block");
    }
    return *block;
  }
  std::string_view entry = FindEntry(blockRoot_, kBlockPages, PlainId(id)).bytes;
  if (entry.empty()) throw ReadError("block");
  size_t size = NumberAt(entry, 2 * idSize_, 2);
  size_t plainSize = layout_->entryPlainSize != 0 ? NumberAt(entry, layout_->entryPlainSize, 2) : 0;
  Block block =
      PlaceOfBlock(NumberAt(entry, 0, idSize_), NumberAt(entry, idSize_, idSize_), size, plainSize);
  if (block.size == 0 || block.size > MaxBlock()) throw ReadError("block");
  return block;
}

// Behind a block's bytes, at the end of its units, stand their number, their checksum, a
// signature of its place and its own number. A block that bears neither its number nor its
// signature has been overwritten by another.
std::string NodeFile::ReadStored(const Block& block) {
  const Layout& layout = *layout_;
  size_t whole = WholeSize(block.size, layout);
  std::string bytes = ReadAt(block.offset, whole);
  size_t trailer = whole - layout.trailer;
  size_t size = NumberAt(bytes, trailer, 2);
  uint64_t checksum = NumberAt(bytes, trailer + layout.trailerChecksum, 4);
  uint64_t id = NumberAt(bytes, trailer + layout.trailerId, idSize_);
  bool isOther = PlainId(id) != PlainId(block.id);
  if (isOther && NumberAt(bytes, trailer + 2, 2) != SignatureOf(block.offset, block.id))
    throw ReadError("block");
  bytes.resize(block.size);
  if (size != block.size || Checksum(bytes) != checksum) isDamaged_ = true;
  return bytes;
}

std::string NodeFile::ReadPlain(const Block& block) {
  std::string bytes = ReadStored(block);
  if (!block.IsPacked()) return bytes;
  std::string plain = Unpacked(bytes, block.plainSize);
  if (plain.size() != block.plainSize) throw ReadError("block");
  return plain;
}

std::string NodeFile::Read(const Block& block) {
  std::string bytes = ReadPlain(block);
  if ((block.id & kInternal) == 0) Decipher(cipher_, static_cast<uint32_t>(block.id), bytes);
  return bytes;
}

size_t NodeFile::CountOf(const std::string& list, uint64_t type, uint64_t level) const {
  if (NumberAt(list, 0, 1) != type || NumberAt(list, 1, 1) != level) throw ReadError("list");
  return NumberAt(list, 2, 2);
}

std::vector<NodeFile::Block> NodeFile::BlocksOf(uint64_t data) {
  std::vector<Block> blocks;
  if (data == 0) return blocks;
  Block first = FindBlock(data);
  if ((data & kInternal) == 0) return {first};
  std::string list = ReadPlain(first);
  uint64_t total = 0;
  AppendBlocks(list, NumberAt(list, 1, 1) == 2 ? 2 : 1, blocks, total);
  return blocks;
}

void NodeFile::AppendBlocks(const std::string& list, int level, std::vector<Block>& blocks,
                            uint64_t& total) {
  constexpr size_t kHead = 8;
  size_t count = CountOf(list, 1, static_cast<uint64_t>(level));
  for (size_t i = 0; i < count; ++i) {
    uint64_t id = NumberAt(list, kHead + i * idSize_, idSize_);
    if (((id & kInternal) != 0) != (level == 2)) throw ReadError("list");
    Block block = FindBlock(id);
    total += WholeSize(block.size, *layout_);
    // No block serves twice.
    if (total > Size()) throw ReadError("list");
    if (level == 2) {
      AppendBlocks(ReadPlain(block), 1, blocks, total);
    } else {
      blocks.push_back(block);
    }
  }
}

std::vector<NodeFile::SubNode> NodeFile::SubNodesOf(uint64_t sub) {
  std::vector<SubNode> nodes;
  if (sub == 0) return nodes;
  std::string list = ReadPlain(FindBlock(sub));
  if (NumberAt(list, 1, 1) == 0) {
    AppendSubNodes(list, nodes);
  } else {
    size_t count = CountOf(list, 2, 1);
    for (size_t i = 0; i < count; ++i) {
      uint64_t id = NumberAt(list, ListHead() + i * 2 * idSize_ + idSize_, idSize_);
      AppendSubNodes(ReadPlain(FindBlock(id)), nodes);
      if (nodes.size() > Size() / idSize_) throw ReadError("list");
    }
  }
  std::stable_sort(nodes.begin(), nodes.end(),
                   [](const SubNode& a, const SubNode& b) { return a.number < b.number; });
  return nodes;
}

void NodeFile::AppendSubNodes(const std::string& list, std::vector<SubNode>& nodes) {
  size_t count = CountOf(list, 2, 0);
  for (size_t i = 0; i < count; ++i) {
    size_t at = ListHead() + i * 3 * idSize_;
    nodes.push_back({static_cast<uint32_t>(NumberAt(list, at, 4)),
                     NumberAt(list, at + idSize_, idSize_),
                     NumberAt(list, at + 2 * idSize_, idSize_)});
  }
}

}  // namespace tarnwick::outlook::reader
