// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The upper half of a .pst file ([MS-PST] 2.3): a node's data as a heap of values, and the two
// things kept in heaps: the properties of an object and a table of rows. Errors are those of
// node_file.h; each object reads its blocks when they are needed and keeps them as long as it
// lives.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "outlook/mapi.h"
#include "outlook/reader/node_file.h"

namespace tarnwick::outlook::reader {

// What a heap is for, as its first bytes say.
inline constexpr uint8_t kPropertiesHeap = 0xBC;
inline constexpr uint8_t kTableHeap = 0x7C;

class Heap {
 public:
  // Throws ReadError unless data is a heap for that purpose.
  Heap(NodeFile& file, uint64_t data, uint64_t sub, uint8_t purpose);

  NodeFile& File() { return file_; }
  uint32_t Root() const { return root_; }
  // A value in the heap, valid as long as the heap; "" for 0.
  std::string_view Value(uint32_t id);
  // The nodes that belong to this one.
  const std::vector<NodeFile::SubNode>& SubNodes();
  std::optional<NodeFile::SubNode> FindSubNode(uint32_t number);

  // The bytes that an identifier leads to, in the heap or in a node: first their size (what it is
  // in a sound file), then their pieces.
  using Begin = std::function<void(uint64_t size)>;
  using Piece = std::function<void(std::string_view bytes)>;
  void Stream(uint32_t id, const Begin& begin, const Piece& piece);

  // The records of a tree inside the heap, in order: key and data as they stand.
  void ForEachRecord(uint32_t head, size_t keySize, size_t leastData,
                     const std::function<void(std::string_view record)>& visit);

 private:
  const std::string& BlockAt(size_t index);
  void VisitRecords(uint32_t id, int level, size_t keySize, size_t dataSize, uint64_t& left,
                    const std::function<void(std::string_view)>& visit);

  NodeFile& file_;
  uint64_t sub_;
  std::vector<NodeFile::Block> blocks_;
  uint64_t size_ = 0;              // of all of them
  std::vector<std::string> read_;  // by block; "" is not read yet
  std::optional<std::vector<NodeFile::SubNode>> subNodes_;
  uint32_t root_ = 0;
};

// One property of an object or cell of a row. value holds its bytes, or where they lie.
struct Field {
  uint16_t number = 0;
  uint16_t type = 0;
  std::string_view value;
};
// Hands a field's bytes on, wherever they lie.
void StreamField(Heap& heap, const Field& field, const Heap::Begin& begin,
                 const Heap::Piece& piece);

// A short value's bytes; "" when it can't be read.
std::string ShortValue(Heap& heap, const Field& field);

// The properties of an object. REQUIRES: heap is a kPropertiesHeap.
void ForEachProperty(Heap& heap, const std::function<void(const Field& field)>& visit);
std::optional<Field> FindProperty(Heap& heap, Prop property);

class Table {
 public:
  Table(NodeFile& file, uint64_t data, uint64_t sub);

  Heap& Values() { return heap_; }
  // The number that each row goes by, in the order of the rows.
  const std::vector<uint32_t>& RowIds() const { return rowIds_; }
  // The cells that the row has; the views last as long as visit runs.
  void ForEachCell(size_t row, const std::function<void(const Field& field)>& visit);
  // The row's cell of that number, valid until the next row is asked for.
  std::optional<Field> FindCell(size_t row, uint16_t number);

 private:
  struct Column {
    uint16_t type = 0;
    uint16_t number = 0;
    size_t offset = 0;
    size_t size = 0;
    size_t bit = 0;
  };
  std::string_view RowAt(size_t row);
  std::optional<Field> CellOf(std::string_view row, const Column& column) const;

  Heap heap_;
  std::vector<Column> columns_;
  size_t bitsOffset_ = 0;
  size_t rowSize_ = 0;
  uint32_t rows_ = 0;
  std::vector<uint32_t> rowIds_;
  std::vector<size_t> places_;  // of the rows, sorted
  std::optional<std::vector<NodeFile::Block>> rowBlocks_;
  std::string rowBlock_;
  size_t rowBlockIndex_ = SIZE_MAX;
};

}  // namespace tarnwick::outlook::reader
