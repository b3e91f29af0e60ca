// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/pst_builder.h"

#include <zlib.h>

#include <algorithm>
#include <array>
#include <cstddef>

#include "outlook/reader/cipher.h"
#include "samples/hive_builder.h"

namespace tarnwick::samples {

using outlook::reader::Layout;
using outlook::reader::Variant;

namespace {

constexpr uint32_t kStoreNode = 0x21;
constexpr uint32_t kNamesNode = 0x61;
constexpr uint32_t kRootNode = 0x122;
constexpr uint32_t kRecipientsNode = 0x692;
constexpr uint32_t kAttachmentsNode = 0x671;
constexpr uint32_t kFirstAttachmentNode = 0x8025;
constexpr uint16_t kClass = 0x001A;
constexpr uint32_t kEmbeddedNode = 0x4000024;
constexpr uint32_t kFirstValueNode = 0x1007F;  // of the kind for values too large for the heap
constexpr size_t kFirstPage = 34;              // behind the header and the maps, which are left out
constexpr size_t kInHeap = 200;                // longer values get a node of their own
constexpr size_t kStoreKeySize = 16;

constexpr uint16_t kInt32 = 0x0003;
constexpr uint16_t kString8 = 0x001E;
constexpr uint16_t kUnicode = 0x001F;
constexpr uint16_t kTime = 0x0040;
constexpr uint16_t kBinary = 0x0102;

uint32_t Crc(const std::string& bytes) {
  uint32_t crc = 0;
  for (char c : bytes) {
    crc ^= static_cast<unsigned char>(c);
    for (int bit = 0; bit < 8; ++bit) crc = (crc >> 1) ^ ((crc & 1) != 0 ? 0xEDB88320u : 0u);
  }
  return crc;
}

uint64_t Signature(uint64_t offset, uint64_t id) {
  auto value = static_cast<uint32_t>(offset ^ id);
  return (value >> 16) ^ (value & 0xFFFF);
}

void PutNumber(std::string& text, uint64_t value, size_t count) {
  for (size_t i = 0; i < count; ++i) text.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

// The bytes that the reader's way of undoing the cipher turns into data.
std::string Enciphered(uint8_t cipher, uint32_t block, std::string data) {
  if (cipher == 2) {
    outlook::reader::Decipher(cipher, block, data);  // its own inverse
  } else if (cipher == 1) {
    std::string all;
    for (int i = 0; i < 256; ++i) all.push_back(static_cast<char>(i));
    std::string decoded = all;
    outlook::reader::Decipher(cipher, block, decoded);
    for (char& c : data) c = all[decoded.find(c)];
  }
  return data;
}

// As it is, where it would be no shorter.
std::string Packed(const std::string& data) {
  uLongf size = compressBound(static_cast<uLong>(data.size()));
  std::string packed(size, '\0');
  compress(reinterpret_cast<Bytef*>(packed.data()), &size,
           reinterpret_cast<const Bytef*>(data.data()), static_cast<uLong>(data.size()));
  packed.resize(size);
  return packed.size() < data.size() ? packed : data;
}

// A heap ([MS-PST] 2.3.1): blocks of values, each with a list of where they begin. The first block
// has room for the head that is added last.
class Heap {
 public:
  Heap(uint8_t client, const Layout& layout)
      : client_(client), maxBlock_(layout.blockSlot - layout.trailer), idBits_(layout.valueBits) {}

  uint32_t Add(std::string value) {
    constexpr size_t kHeadRoom = 2200;
    size_t room = maxBlock_ - (blocks_.size() == 1 ? kHeadRoom : 0);
    if (Used() + value.size() + 4 > room || blocks_.back().size() >= 2000) {
      blocks_.emplace_back();
    }
    blocks_.back().push_back(std::move(value));
    return Id(blocks_.size() - 1);
  }
  // Into the first block.
  uint32_t AddHead(std::string value) {
    blocks_.front().push_back(std::move(value));
    return Id(0);
  }
  size_t MaxValue() const { return 3500; }

  // One text a block.
  std::vector<std::string> Build(uint32_t root) const {
    std::vector<std::string> built;
    for (size_t i = 0; i < blocks_.size(); ++i) {
      std::string head;
      if (i == 0) {
        PutNumber(head, 0xEC, 1);
        PutNumber(head, client_, 1);
        PutNumber(head, root, 4);
        PutNumber(head, 0, 4);
      } else if (i % 128 == 8) {
        head.assign(64, '\0');  // how full the blocks around it are
      }
      std::string body;
      std::string places;
      for (const std::string& value : blocks_[i]) {
        PutNumber(places, 2 + head.size() + body.size(), 2);
        body += value;
      }
      PutNumber(places, 2 + head.size() + body.size(), 2);
      if (body.size() % 2 != 0) body.push_back('\0');
      std::string block;
      PutNumber(block, 2 + head.size() + body.size(), 2);
      block += head + body;
      PutNumber(block, blocks_[i].size(), 2);
      PutNumber(block, 0, 2);
      built.push_back(block + places);
    }
    return built;
  }

 private:
  uint32_t Id(size_t block) const {
    return static_cast<uint32_t>(block << (5 + idBits_) | blocks_[block].size() << 5);
  }
  size_t Used() const {
    size_t used = 80;
    for (const std::string& value : blocks_.back()) used += value.size() + 2;
    return used;
  }

  uint8_t client_;
  size_t maxBlock_;
  int idBits_;
  std::vector<std::vector<std::string>> blocks_{1};
};

// The head of a tree of records inside a heap, of as many levels as it takes.
uint32_t AddRecords(Heap& heap, size_t keySize, size_t entrySize, const std::string& records) {
  size_t size = keySize + entrySize;
  std::string level = records;
  uint32_t first = 0;
  size_t levels = 0;
  for (; !level.empty(); ++levels) {
    size_t piece = heap.MaxValue() / size * size;
    std::string above;
    for (size_t i = 0; i < level.size(); i += piece) {
      first = heap.Add(level.substr(i, piece));
      above += level.substr(i, keySize);
      PutNumber(above, first, 4);
    }
    if (level.size() <= piece) break;
    level = above;
    size = keySize + 4;
  }
  std::string head;
  PutNumber(head, 0xB5, 1);
  PutNumber(head, keySize, 1);
  PutNumber(head, entrySize, 1);
  PutNumber(head, levels, 1);
  PutNumber(head, first, 4);
  return heap.AddHead(head);
}

}  // namespace

PstBuilder::PstBuilder(Variant variant, std::string displayName)
    : layout_(outlook::reader::LayoutOf(variant)) {
  file_.assign(kFirstPage * layout_.pageSize, '\0');
  std::string key = displayName;
  key.resize(kStoreKeySize, '-');
  store_.bytes[0x0FF9] = key;
  store_.texts[0x3001] = std::move(displayName);
  std::string top(4, '\0');
  top += key;
  PutNumber(top, kTop, 4);
  store_.bytes[0x35E0] = top;
  store_.numbers[0x67FF] = 0;
  folders_[kRootNode].parent = kRootNode;
  folders_[kRootNode].folders = {kTop};
  folders_[kTop].parent = kRootNode;
  folders_[kTop].properties.texts[0x3001] = "Top of Personal Folders";
}

uint32_t PstBuilder::AddFolder(uint32_t parent, const std::string& name) {
  uint32_t node = nextFolder_;
  nextFolder_ += 0x20;
  folders_[parent].folders.push_back(node);
  folders_[node].parent = parent;
  folders_[node].properties.texts[0x3001] = name;
  folders_[node].properties.texts[0x3613] = "IPF.Note";
  return node;
}

void PstBuilder::SetStoreNumber(uint16_t property, int32_t number) {
  store_.numbers[property] = number;
}

std::string PstBuilder::Stored(const std::string& text) const {
  return IsUnicode() ? ToUtf16(text) : text;
}

uint64_t PstBuilder::WriteBlock(const std::string& data, bool isInternal) {
  uint64_t id = nextBlock_ | (isInternal ? 2 : 0);
  nextBlock_ += 4;
  size_t offset = (file_.size() + layout_.blockUnit - 1) / layout_.blockUnit * layout_.blockUnit;
  file_.resize(offset, '\0');
  std::string stored = isInternal ? data : Enciphered(cipher_, static_cast<uint32_t>(id), data);
  if (IsLarge() && !isInternal) stored = Packed(stored);
  file_ += stored;
  size_t whole = outlook::reader::WholeSize(stored.size(), layout_);
  file_.append(whole - layout_.trailer - stored.size(), '\0');
  PutNumber(file_, stored.size(), 2);
  PutNumber(file_, Signature(offset, id), 2);
  if (IsUnicode()) {
    PutNumber(file_, Crc(stored), 4);
    PutNumber(file_, id, 8);
  } else {
    PutNumber(file_, id, 4);
    PutNumber(file_, Crc(stored), 4);
  }
  if (IsLarge()) {
    PutNumber(file_, 2, 2);
    PutNumber(file_, data.size(), 2);
    PutNumber(file_, 0, 4);
  }
  blocks_[id] = {id, offset, static_cast<uint16_t>(stored.size()),
                 static_cast<uint16_t>(data.size())};
  return id;
}

uint64_t PstBuilder::WriteTree(std::vector<uint64_t> blocks, size_t total, bool isPart) {
  if (blocks.size() == 1 && !isPart) return blocks[0];
  constexpr size_t kMost = 1000;
  bool isTwoLevels = blocks.size() > kMost;
  if (isTwoLevels) {
    std::vector<uint64_t> lists;
    for (size_t i = 0; i < blocks.size(); i += kMost) {
      size_t end = std::min(blocks.size(), i + kMost);
      lists.push_back(WriteTree({blocks.begin() + static_cast<std::ptrdiff_t>(i),
                                 blocks.begin() + static_cast<std::ptrdiff_t>(end)},
                                (end - i) * MaxBlock(), true));
    }
    blocks = lists;
  }
  std::string tree;
  PutNumber(tree, 1, 1);
  PutNumber(tree, isTwoLevels ? 2 : 1, 1);
  PutNumber(tree, blocks.size(), 2);
  PutNumber(tree, total, 4);
  for (uint64_t block : blocks) PutNumber(tree, block, IdSize());
  return WriteBlock(tree, true);
}

uint64_t PstBuilder::WriteData(const std::string& data) {
  std::vector<uint64_t> blocks;
  for (size_t i = 0; i == 0 || i < data.size(); i += MaxBlock()) {
    blocks.push_back(WriteBlock(data.substr(i, MaxBlock()), false));
  }
  return WriteTree(blocks, data.size());
}

uint64_t PstBuilder::WriteHeap(const std::vector<std::string>& heap) {
  std::vector<uint64_t> blocks;
  size_t total = 0;
  for (size_t i = 0; i < heap.size(); ++i) {
    blocks.push_back(WriteBlock(heap[i], false));
    total += heap[i].size();
  }
  return WriteTree(blocks, total);
}

uint64_t PstBuilder::WriteRows(const std::vector<std::string>& rows) {
  std::vector<uint64_t> blocks;
  std::string data;
  size_t total = 0;
  for (size_t i = 0; i < rows.size(); ++i) {
    data += rows[i];
    bool isLast = i + 1 == rows.size();
    if (!isLast && data.size() + rows[i].size() <= MaxBlock()) continue;
    if (!isLast) data.resize(MaxBlock());
    total += data.size();
    blocks.push_back(WriteBlock(data, false));
    data.clear();
  }
  return WriteTree(blocks, total);
}

uint64_t PstBuilder::WriteSubNodes(const SubNodes& nodes) {
  if (nodes.empty()) return 0;
  constexpr size_t kMost = 300;
  if (nodes.size() > kMost) {
    std::string lists;
    size_t count = 0;
    for (auto begin = nodes.begin(); begin != nodes.end(); ++count) {
      SubNodes part;
      uint32_t first = begin->first;
      for (; begin != nodes.end() && part.size() < kMost; ++begin) part.insert(*begin);
      PutNumber(lists, first, IdSize());
      PutNumber(lists, WriteSubNodes(part), IdSize());
    }
    std::string list;
    PutNumber(list, 2, 1);
    PutNumber(list, 1, 1);
    PutNumber(list, count, 2);
    if (IsUnicode()) PutNumber(list, 0, 4);
    return WriteBlock(list + lists, true);
  }
  std::string list;
  PutNumber(list, 2, 1);
  PutNumber(list, 0, 1);
  PutNumber(list, nodes.size(), 2);
  if (IsUnicode()) PutNumber(list, 0, 4);
  for (const auto& [node, sub] : nodes) {
    PutNumber(list, node, IdSize());
    PutNumber(list, sub.data, IdSize());
    PutNumber(list, sub.sub, IdSize());
  }
  return WriteBlock(list, true);
}

// A property context: records of number, type and either the value or where it lies.
// object: a node of sub that is the attachment's data.
uint64_t PstBuilder::WriteContext(const PstProperties& properties, SubNodes& sub, uint32_t object) {
  Heap heap(0xBC, layout_);
  std::map<uint16_t, std::string> records;
  auto place = [&](const std::string& value) -> uint32_t {
    if (value.empty()) return 0;
    if (value.size() <= kInHeap) return heap.Add(value);
    auto node = static_cast<uint32_t>(kFirstValueNode + 0x20 * sub.size());
    sub[node] = {WriteData(value), 0};
    return node;
  };
  auto record = [&](uint16_t number, uint16_t type, uint32_t value) {
    std::string& text = records[number];
    PutNumber(text, number, 2);
    PutNumber(text, type, 2);
    PutNumber(text, value, 4);
  };
  for (const auto& [number, text] : properties.texts) {
    record(number, IsUnicode() ? kUnicode : kString8, place(Stored(text)));
  }
  for (const auto& [number, bytes] : properties.bytes) record(number, kBinary, place(bytes));
  for (const auto& [number, value] : properties.numbers) {
    record(number, kInt32, static_cast<uint32_t>(value));
  }
  for (const auto& [number, ticks] : properties.times) {
    std::string value;
    PutNumber(value, static_cast<uint64_t>(ticks), 8);
    record(number, kTime, heap.Add(value));
  }
  if (object != 0) {
    std::string value;
    PutNumber(value, object, 4);
    PutNumber(value, 0, 4);
    record(0x3701, 0x000D, heap.Add(value));
  }
  std::string all;
  for (const auto& [number, text] : records) all += text;
  uint32_t root = AddRecords(heap, 2, 6, all);
  return WriteHeap(heap.Build(root));
}

// A table context whose columns are those of all rows; its rows lie in a node of their own where
// they are many.
uint64_t PstBuilder::WriteTable(const std::vector<Row>& rows, SubNodes& sub) {
  struct Column {
    uint16_t number;
    uint16_t type;
    size_t place = 0;
  };
  std::vector<Column> columns = {{0x67F2, kInt32}, {0x67F3, kInt32}};
  auto add = [&](uint16_t number, uint16_t type) {
    bool isKnown = std::any_of(columns.begin(), columns.end(),
                               [&](const Column& column) { return column.number == number; });
    if (!isKnown) columns.push_back({number, type});
  };
  for (const Row& row : rows) {
    for (const auto& [number, value] : row.values.texts) {
      add(number, IsUnicode() ? kUnicode : kString8);
    }
    for (const auto& [number, value] : row.values.numbers) add(number, kInt32);
  }
  for (size_t i = 0; i < columns.size(); ++i) columns[i].place = 4 * i;
  size_t fixed = 4 * columns.size();
  size_t rowSize = fixed + (columns.size() + 7) / 8;

  Heap heap(0x7C, layout_);
  std::string index;
  std::vector<std::string> lines;
  for (size_t i = 0; i < rows.size(); ++i) {
    PutNumber(index, rows[i].id, 4);
    PutNumber(index, i, IsUnicode() ? 4 : 2);
    std::string line;
    std::string present((columns.size() + 7) / 8, '\0');
    for (size_t c = 0; c < columns.size(); ++c) {
      uint32_t value = 0;
      bool has = true;
      auto text = rows[i].values.texts.find(columns[c].number);
      auto number = rows[i].values.numbers.find(columns[c].number);
      if (c == 0) {
        value = rows[i].id;
      } else if (text != rows[i].values.texts.end()) {
        value = text->second.empty() ? 0 : heap.Add(Stored(text->second));
      } else if (number != rows[i].values.numbers.end()) {
        value = static_cast<uint32_t>(number->second);
      } else {
        has = c == 1;
      }
      PutNumber(line, value, 4);
      if (has) present[c / 8] = static_cast<char>(present[c / 8] | 0x80 >> (c % 8));
    }
    lines.push_back(line + present);
  }
  uint32_t rowIndex = AddRecords(heap, 4, IsUnicode() ? 4 : 2, index);
  uint32_t rowsPlace = 0;
  if (!lines.empty()) {
    auto node = static_cast<uint32_t>(kFirstValueNode + 0x20 * sub.size());
    sub[node] = {WriteRows(lines), 0};
    rowsPlace = node;
  }
  std::sort(columns.begin(), columns.end(), [](const Column& a, const Column& b) {
    return std::pair(a.number, a.type) < std::pair(b.number, b.type);
  });
  std::string info;
  PutNumber(info, 0x7C, 1);
  PutNumber(info, columns.size(), 1);
  for (size_t end : {fixed, fixed, fixed, rowSize}) PutNumber(info, end, 2);
  PutNumber(info, rowIndex, 4);
  PutNumber(info, rowsPlace, 4);
  PutNumber(info, 0, 4);
  for (const Column& column : columns) {
    PutNumber(info, column.type, 2);
    PutNumber(info, column.number, 2);
    PutNumber(info, column.place, 2);
    PutNumber(info, 4, 1);
    PutNumber(info, column.place / 4, 1);
  }
  uint32_t root = heap.AddHead(info);
  return WriteHeap(heap.Build(root));
}

PstBuilder::SubNode PstBuilder::WriteMessage(const PstMessage& message) {
  SubNodes sub;
  std::vector<Row> recipients;
  for (size_t i = 0; i < message.recipients.size(); ++i) {
    recipients.push_back({static_cast<uint32_t>(i), message.recipients[i]});
  }
  SubNodes tableSub;
  uint64_t table = WriteTable(recipients, tableSub);
  sub[kRecipientsNode] = {table, WriteSubNodes(tableSub)};
  std::vector<Row> attachments;
  for (size_t i = 0; i < message.attachments.size(); ++i) {
    auto attachmentNode = static_cast<uint32_t>(kFirstAttachmentNode + 0x20 * i);
    const PstAttachment& attachment = message.attachments[i];
    bool isMessage = !attachment.embedded.empty();
    Row row{attachmentNode, {}};
    row.values.numbers[0x3705] = isMessage ? 5 : 1;
    attachments.push_back(row);
    PstProperties properties = attachment.properties;
    properties.numbers[0x3705] = isMessage ? 5 : 1;
    properties.numbers[0x0E20] = static_cast<int32_t>(attachment.data.size());
    SubNodes attachmentSub;
    uint32_t object = 0;
    if (isMessage) {
      object = kEmbeddedNode;
      attachmentSub[object] = WriteMessage(attachment.embedded[0]);
    } else {
      properties.bytes[0x3701] = attachment.data;
    }
    uint64_t context = WriteContext(properties, attachmentSub, object);
    sub[attachmentNode] = {context, WriteSubNodes(attachmentSub)};
  }
  if (!attachments.empty()) {
    SubNodes rowsSub;
    uint64_t attachmentTable = WriteTable(attachments, rowsSub);
    sub[kAttachmentsNode] = {attachmentTable, WriteSubNodes(rowsSub)};
  }
  uint64_t context = WriteContext(message.properties, sub);
  return {context, WriteSubNodes(sub)};
}

uint32_t PstBuilder::AddMessage(uint32_t folder, const PstMessage& message) {
  uint32_t node = nextMessage_;
  nextMessage_ += 0x20;
  SubNode written = WriteMessage(message);
  nodes_[node] = {written.data, written.sub, folder};
  folders_[folder].messages.push_back(node);
  auto itsClass = message.properties.texts.find(kClass);
  if (itsClass != message.properties.texts.end()) classes_[node] = itsClass->second;
  return node;
}

void PstBuilder::WriteFolder(uint32_t node, const FolderContent& folder) {
  PstProperties properties = folder.properties;
  properties.numbers[0x3602] = static_cast<int32_t>(folder.messages.size());
  properties.numbers[0x3603] = 0;
  SubNodes sub;
  uint64_t context = WriteContext(properties, sub);
  nodes_[node] = {context, WriteSubNodes(sub), folder.parent};
  std::vector<Row> folders;
  for (uint32_t below : folder.folders) folders.push_back({below, {}});
  std::vector<Row> messages;
  for (uint32_t message : folder.messages) {
    messages.push_back({message, {}});
    if (classes_.count(message) > 0) messages.back().values.texts[kClass] = classes_[message];
  }
  // Folders in it, its messages, and messages of the folder's own.
  constexpr std::array<uint32_t, 3> kTables = {0x0B, 0x0C, 0x0D};
  const std::array<std::vector<Row>, 3> kRows = {folders, messages, {}};
  for (size_t i = 0; i < kTables.size(); ++i) {
    SubNodes tableSub;
    uint64_t table = WriteTable(kRows[i], tableSub);
    nodes_[node + kTables[i]] = {table, WriteSubNodes(tableSub), 0};
  }
}

uint64_t PstBuilder::WritePage(uint8_t type, const std::string& entries, size_t entrySize,
                               uint8_t level) {
  AlignToPage();
  uint64_t offset = file_.size();
  uint64_t id = nextPage_;
  nextPage_ += 1;
  std::string page = entries;
  page.resize(layout_.pageInfo, '\0');
  PutNumber(page, entries.size() / entrySize, layout_.countSize);
  PutNumber(page, layout_.pageInfo / entrySize, layout_.countSize);
  PutNumber(page, entrySize, 1);
  PutNumber(page, level, 1);
  page.resize(layout_.pageSize - layout_.trailer, '\0');
  std::string trailer;
  PutNumber(trailer, type, 1);
  PutNumber(trailer, type, 1);
  PutNumber(trailer, Signature(offset, id), 2);
  if (IsUnicode()) {
    PutNumber(trailer, Crc(page), 4);
    PutNumber(trailer, id, 8);
  } else {
    PutNumber(trailer, id, 4);
    PutNumber(trailer, Crc(page), 4);
  }
  trailer.resize(layout_.trailer, '\0');
  file_ += page + trailer;
  pageIds_[offset] = id;
  return offset;
}

// A tree of pages over sorted entries of one size, each beginning with its key; gives the top page.
uint64_t PstBuilder::WriteIndex(uint8_t type, const std::vector<std::string>& entries,
                                size_t keySize) {
  std::vector<std::string> level = entries;
  for (uint8_t height = 0;; ++height) {
    size_t entrySize = level[0].size();
    size_t perPage = layout_.pageInfo / entrySize;
    std::vector<std::string> above;
    uint64_t offset = 0;
    for (size_t i = 0; i < level.size(); i += perPage) {
      std::string page;
      for (size_t j = i; j < std::min(level.size(), i + perPage); ++j) page += level[j];
      offset = WritePage(type, page, entrySize, height);
      std::string entry = level[i].substr(0, keySize);
      PutNumber(entry, pageIds_[offset], IdSize());
      PutNumber(entry, offset, IdSize());
      above.push_back(entry);
    }
    if (above.size() == 1) return offset;
    level = above;
  }
}

std::string PstBuilder::Header(uint64_t nodePage, uint64_t blockPage) {
  std::string root;
  PutNumber(root, 0, 4);
  PutNumber(root, file_.size(), IdSize());
  PutNumber(root, 0, IdSize());
  PutNumber(root, 0, IdSize());
  PutNumber(root, 0, IdSize());
  for (uint64_t page : {nodePage, blockPage}) {
    PutNumber(root, pageIds_[page], IdSize());
    PutNumber(root, page, IdSize());
  }
  PutNumber(root, 0, 4);
  std::string body;  // from offset 8 on
  PutNumber(body, 0x4D53, 2);
  PutNumber(body, IsLarge() ? 36 : IsUnicode() ? 23 : 14, 2);
  PutNumber(body, 19, 2);
  PutNumber(body, 0x0101, 2);
  PutNumber(body, 0, 8);
  if (IsUnicode()) {
    PutNumber(body, 0, 8);
    PutNumber(body, nextPage_, 8);
  } else {
    PutNumber(body, nextBlock_, 4);
    PutNumber(body, nextPage_, 4);
  }
  PutNumber(body, 1, 4);
  for (int i = 0; i < 32; ++i) PutNumber(body, 0x400, 4);
  if (IsUnicode()) PutNumber(body, 0, 8);
  body += root;
  if (IsUnicode()) PutNumber(body, 0, 4);
  body.append(256, '\xFF');
  PutNumber(body, 0x80, 1);
  PutNumber(body, cipher_, 1);
  PutNumber(body, 0, 2);
  if (IsUnicode()) PutNumber(body, nextBlock_, 8);
  if (!IsUnicode()) body.resize(504, '\0');
  std::string header = "!BDN";
  PutNumber(header, Crc(body.substr(0, 471)), 4);
  header += body;
  if (IsUnicode()) PutNumber(header, Crc(body.substr(0, 516)), 4);
  return header;
}

void PstBuilder::DeleteMessage(uint32_t node) {
  std::erase(folders_[nodes_[node].parent].messages, node);
  nodes_.erase(node);
}

void PstBuilder::Checkpoint() {
  for (const auto& [node, folder] : folders_) WriteFolder(node, folder);
  WriteIndexes();
  AlignToPage();
}

std::string PstBuilder::Build() {
  SubNodes sub;
  uint64_t context = WriteContext(store_, sub);
  nodes_[kStoreNode] = {context, WriteSubNodes(sub), 0};
  PstProperties names;
  names.numbers[0x0001] = 251;
  names.bytes[0x0002] = std::string(16, '\0');
  names.bytes[0x0003] = std::string(8, '\0');
  names.bytes[0x0004] = std::string(4, '\0');
  SubNodes namesSub;
  uint64_t namesContext = WriteContext(names, namesSub);
  nodes_[kNamesNode] = {namesContext, WriteSubNodes(namesSub), 0};
  for (const auto& [node, folder] : folders_) WriteFolder(node, folder);
  auto [nodePage, blockPage] = WriteIndexes();
  std::string header = Header(nodePage, blockPage);
  file_.replace(0, header.size(), header);
  return file_;
}

// The top pages of the two trees.
std::pair<uint64_t, uint64_t> PstBuilder::WriteIndexes() {
  std::vector<std::string> nodeEntries;
  for (const auto& [id, node] : nodes_) {
    std::string entry;
    PutNumber(entry, id, IdSize());
    PutNumber(entry, node.data, IdSize());
    PutNumber(entry, node.sub, IdSize());
    PutNumber(entry, node.parent, 4);
    if (IsUnicode()) PutNumber(entry, 0, 4);
    nodeEntries.push_back(entry);
  }
  std::vector<std::string> blockEntries;
  for (const auto& [id, block] : blocks_) {
    std::string entry;
    PutNumber(entry, id, IdSize());
    PutNumber(entry, block.offset, IdSize());
    PutNumber(entry, block.size, 2);
    if (IsLarge()) PutNumber(entry, block.plainSize, 2);
    PutNumber(entry, 2, 2);
    if (IsUnicode()) entry.resize(layout_.blockEntry, '\0');
    blockEntries.push_back(entry);
  }
  uint64_t nodePage = WriteIndex(0x81, nodeEntries, IdSize());
  uint64_t blockPage = WriteIndex(0x80, blockEntries, IdSize());
  return {nodePage, blockPage};
}

}  // namespace tarnwick::samples
