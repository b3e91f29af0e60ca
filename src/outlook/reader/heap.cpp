// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/reader/heap.h"

#include <algorithm>

#include "outlook/reader/store_file.h"

namespace tarnwick::outlook::reader {

namespace {

constexpr uint8_t kHeapMark = 0xEC;
constexpr uint8_t kRecordsMark = 0xB5;
constexpr int kMaxRecordLevel = 8;

// An identifier names a value in its heap, or else a node.
bool IsInHeap(uint32_t id) {
  return (id & 0x1F) == 0;
}

// Bytes of a value that stands where its identifier would; 0 for one that does not.
size_t InlineSize(uint16_t type) {
  switch (type) {
    case PropType::kInt16:
      return 2;
    case PropType::kBoolean:
      return 1;
    case PropType::kInt32:
    case 0x0004:  // a short floating number
    case 0x000A:  // an error
      return 4;
    default:
      return 0;
  }
}

// Whether a row holds such a value whole, as it does what has 8 bytes.
bool IsEightBytes(uint16_t type) {
  return type == PropType::kInt64 || type == PropType::kTime || (type >= 0x0005 && type <= 0x0007);
}

}  // namespace

Heap::Heap(NodeFile& file, uint64_t data, uint64_t sub, uint8_t purpose)
    : file_(file), sub_(sub), blocks_(file.BlocksOf(data)), read_(blocks_.size()) {
  if (blocks_.empty()) throw ReadError("heap");
  for (const NodeFile::Block& block : blocks_) size_ += block.plainSize;
  const std::string& first = BlockAt(0);
  if (NumberAt(first, 2, 1) != kHeapMark || NumberAt(first, 3, 1) != purpose) {
    throw ReadError("heap");
  }
  root_ = static_cast<uint32_t>(NumberAt(first, 4, 4));
}

const std::string& Heap::BlockAt(size_t index) {
  if (index >= blocks_.size()) throw ReadError("heap");
  if (read_[index].empty()) read_[index] = file_.Read(blocks_[index]);
  return read_[index];
}

std::string_view Heap::Value(uint32_t id) {
  if (id == 0) return {};
  const int bits = file_.Shape().valueBits;
  size_t place = id >> 5 & ((1U << bits) - 1);
  if (!IsInHeap(id) || place == 0) throw ReadError("heap value");
  std::string_view block = BlockAt(id >> (5 + bits));
  // A block's first two bytes say where the list of its values' places is.
  size_t map = NumberAt(block, 0, 2);
  if (place > NumberAt(block, map, 2)) throw ReadError("heap value");
  size_t begin = NumberAt(block, map + 4 + 2 * (place - 1), 2);
  size_t end = NumberAt(block, map + 4 + 2 * place, 2);
  if (begin > end || end > block.size()) throw ReadError("heap value");
  return block.substr(begin, end - begin);
}

const std::vector<NodeFile::SubNode>& Heap::SubNodes() {
  if (!subNodes_) subNodes_ = file_.SubNodesOf(sub_);
  return *subNodes_;
}

std::optional<NodeFile::SubNode> Heap::FindSubNode(uint32_t number) {
  const auto& nodes = SubNodes();
  auto found = std::lower_bound(
      nodes.begin(), nodes.end(), number,
      [](const NodeFile::SubNode& node, uint32_t wanted) { return node.number < wanted; });
  if (found == nodes.end() || found->number != number) return std::nullopt;
  return *found;
}

void Heap::Stream(uint32_t id, const Begin& begin, const Piece& piece) {
  if (IsInHeap(id)) {
    std::string_view value = Value(id);
    begin(value.size());
    piece(value);
    return;
  }
  auto node = FindSubNode(id);
  if (!node) throw ReadError("value");
  uint64_t size = 0;
  std::vector<NodeFile::Block> blocks = file_.BlocksOf(node->data);
  for (const NodeFile::Block& block : blocks) size += block.plainSize;
  begin(size);
  for (const NodeFile::Block& block : blocks) piece(file_.Read(block));
}

void Heap::ForEachRecord(uint32_t head, size_t keySize, size_t leastData,
                         const std::function<void(std::string_view)>& visit) {
  std::string_view header = Value(head);
  size_t dataSize = NumberAt(header, 2, 1);
  auto levels = static_cast<int>(NumberAt(header, 3, 1));
  if (NumberAt(header, 0, 1) != kRecordsMark || NumberAt(header, 1, 1) != keySize ||
      dataSize < leastData || levels > kMaxRecordLevel) {
    throw ReadError("records");
  }
  // Each record has bytes of its own.
  uint64_t left = size_ / keySize;
  VisitRecords(static_cast<uint32_t>(NumberAt(header, 4, 4)), levels, keySize, dataSize, left,
               visit);
}

void Heap::VisitRecords(uint32_t id, int level, size_t keySize, size_t dataSize, uint64_t& left,
                        const std::function<void(std::string_view)>& visit) {
  std::string_view records = Value(id);
  size_t size = keySize + (level > 0 ? 4 : dataSize);
  for (; records.size() >= size; records.remove_prefix(size)) {
    if (left-- == 0) throw ReadError("records");
    if (level > 0) {
      auto below = static_cast<uint32_t>(NumberAt(records, keySize, 4));
      VisitRecords(below, level - 1, keySize, dataSize, left, visit);
    } else {
      visit(records.substr(0, size));
    }
  }
}

void StreamField(Heap& heap, const Field& field, const Heap::Begin& begin,
                 const Heap::Piece& piece) {
  size_t size = InlineSize(field.type);
  if (field.value.size() > 4) size = field.value.size();
  if (size == 0) {
    return heap.Stream(static_cast<uint32_t>(NumberAt(field.value, 0, 4)), begin, piece);
  }
  begin(std::min(size, field.value.size()));
  piece(field.value.substr(0, size));
}

void ForEachProperty(Heap& heap, const std::function<void(const Field&)>& visit) {
  heap.ForEachRecord(heap.Root(), 2, 6, [&](std::string_view record) {
    visit({static_cast<uint16_t>(NumberAt(record, 0, 2)),
           static_cast<uint16_t>(NumberAt(record, 2, 2)), record.substr(4, 4)});
  });
}

Table::Table(NodeFile& file, uint64_t data, uint64_t sub) : heap_(file, data, sub, kTableHeap) {
  constexpr size_t kHead = 22;
  constexpr size_t kColumn = 8;
  std::string_view info = heap_.Value(heap_.Root());
  if (NumberAt(info, 0, 1) != kTableHeap) throw ReadError("table");
  size_t count = NumberAt(info, 1, 1);
  bitsOffset_ = NumberAt(info, 6, 2);
  rowSize_ = NumberAt(info, 8, 2);
  auto index = static_cast<uint32_t>(NumberAt(info, 10, 4));
  rows_ = static_cast<uint32_t>(NumberAt(info, 14, 4));
  for (size_t i = 0; i < count; ++i) {
    size_t at = kHead + i * kColumn;
    Column column{static_cast<uint16_t>(NumberAt(info, at, 2)),
                  static_cast<uint16_t>(NumberAt(info, at + 2, 2)), NumberAt(info, at + 4, 2),
                  NumberAt(info, at + 6, 1), NumberAt(info, at + 7, 1)};
    bool fits =
        column.offset + column.size <= bitsOffset_ && bitsOffset_ + column.bit / 8 < rowSize_;
    if (fits) columns_.push_back(column);
  }
  struct Row {
    size_t place;
    uint32_t id;
  };
  std::vector<Row> rows;
  if (index != 0) {
    heap_.ForEachRecord(index, 4, 2, [&](std::string_view record) {
      size_t width = std::min<size_t>(record.size() - 4, 4);
      rows.push_back({NumberAt(record, 4, width), static_cast<uint32_t>(NumberAt(record, 0, 4))});
    });
  }
  std::stable_sort(rows.begin(), rows.end(),
                   [](const Row& a, const Row& b) { return a.place < b.place; });
  for (const Row& row : rows) {
    rowIds_.push_back(row.id);
    places_.push_back(row.place);
  }
}

std::string_view Table::RowAt(size_t row) {
  if (rowSize_ == 0 || row >= places_.size()) throw ReadError("row");
  size_t place = places_[row];
  if (IsInHeap(rows_)) {
    std::string_view all = heap_.Value(rows_);
    if (place >= all.size() / rowSize_) throw ReadError("row");
    return all.substr(place * rowSize_, rowSize_);
  }
  if (!rowBlocks_) {
    auto node = heap_.FindSubNode(rows_);
    if (!node) throw ReadError("rows");
    rowBlocks_ = heap_.File().BlocksOf(node->data);
  }
  // No row lies in two blocks.
  size_t perBlock = heap_.File().MaxBlock() / rowSize_;
  if (perBlock == 0 || place / perBlock >= rowBlocks_->size()) throw ReadError("row");
  if (rowBlockIndex_ != place / perBlock) {
    rowBlockIndex_ = SIZE_MAX;
    rowBlock_ = heap_.File().Read((*rowBlocks_)[place / perBlock]);
    rowBlockIndex_ = place / perBlock;
  }
  size_t offset = place % perBlock * rowSize_;
  if (offset + rowSize_ > rowBlock_.size()) throw ReadError("row");
  return std::string_view(rowBlock_).substr(offset, rowSize_);
}

std::optional<Field> Table::CellOf(std::string_view row, const Column& column) const {
  auto bits = static_cast<unsigned char>(row[bitsOffset_ + column.bit / 8]);
  if ((bits & (0x80 >> (column.bit % 8))) == 0) return std::nullopt;
  size_t wanted = IsEightBytes(column.type) ? 8 : InlineSize(column.type);
  if (wanted == 0) wanted = 4;
  if (column.size < wanted) return std::nullopt;
  return Field{column.number, column.type, row.substr(column.offset, wanted)};
}

void Table::ForEachCell(size_t row, const std::function<void(const Field&)>& visit) {
  std::string_view bytes = RowAt(row);
  for (const Column& column : columns_) {
    if (auto cell = CellOf(bytes, column)) visit(*cell);
  }
}

std::optional<Field> Table::FindCell(size_t row, uint16_t number) {
  for (const Column& column : columns_) {
    if (column.number == number) return CellOf(RowAt(row), column);
  }
  return std::nullopt;
}

std::optional<Field> FindProperty(Heap& heap, Prop property) {
  std::optional<Field> found;
  ForEachProperty(heap, [&](const Field& field) {
    if (field.number == static_cast<uint16_t>(property)) found = field;
  });
  return found;
}

std::string ShortValue(Heap& heap, const Field& field) {
  constexpr size_t kMaxShort = 4096;
  std::string bytes;
  try {
    StreamField(
        heap, field, [](uint64_t) {},
        [&](std::string_view piece) { bytes += piece.substr(0, kMaxShort - bytes.size()); });
  } catch (const ReadError&) {
    bytes.clear();
  }
  return bytes;
}

}  // namespace tarnwick::outlook::reader
