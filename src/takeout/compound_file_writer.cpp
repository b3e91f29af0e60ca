// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/compound_file_writer.h"

#include <algorithm>
#include <map>
#include <string_view>

#include "platform/error.h"

namespace tarnwick::takeout {

namespace {

constexpr size_t kSector = 512;
constexpr size_t kSmallSector = 64;
constexpr size_t kSmallLimit = 4096;  // streams below it lie in small sectors
constexpr size_t kInSector = kSector / 4;
constexpr size_t kInHeader = 109;  // of the table's sectors, those that the header names
constexpr uint64_t kMostBytes = uint64_t{1} << 31;

constexpr uint32_t kTableSector = 0xFFFFFFFD;
constexpr uint32_t kListSector = 0xFFFFFFFC;  // of the list of the table's sectors
constexpr uint32_t kEnd = 0xFFFFFFFE;
constexpr uint32_t kNone = 0xFFFFFFFF;

void Put(std::string& bytes, uint64_t number, size_t width) {
  for (size_t i = 0; i < width; ++i) bytes.push_back(static_cast<char>(number >> (8 * i) & 0xFF));
}

struct Node {
  std::string name;
  bool isStorage = false;
  std::string_view bytes;
  std::vector<size_t> children;
  uint32_t start = kEnd;
  uint64_t size = 0;
  // In the tree of its storage's children.
  uint32_t left = kNone;
  uint32_t right = kNone;
  uint32_t child = kNone;
};

// Names are ordered by their length, then without regard to case.
bool ComesBefore(const std::string& a, const std::string& b) {
  if (a.size() != b.size()) return a.size() < b.size();
  auto upper = [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c; };
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [&](char x, char y) { return upper(x) < upper(y); });
}

// Sectors of one size, and the table of which follows which.
class Sectors {
 public:
  explicit Sectors(size_t size) : size_(size) {}

  // The first of the sectors that hold the bytes; kEnd when there are none.
  uint32_t Add(std::string_view bytes) {
    if (bytes.empty()) return kEnd;
    if (bytes_.size() + bytes.size() > kMostBytes) {
      throw Error(ErrorNumber::kPathAccess, "The message is too large for a file of this kind.");
    }
    auto first = static_cast<uint32_t>(next_.size());
    bytes_ += bytes;
    size_t count = (bytes.size() + size_ - 1) / size_;
    bytes_.resize((next_.size() + count) * size_);
    for (size_t i = 1; i < count; ++i) next_.push_back(static_cast<uint32_t>(next_.size() + 1));
    next_.push_back(kEnd);
    return first;
  }
  void Mark(size_t count, uint32_t mark) { next_.insert(next_.end(), count, mark); }

  const std::string& Bytes() const { return bytes_; }
  const std::vector<uint32_t>& Table() const { return next_; }
  size_t Count() const { return next_.size(); }

 private:
  size_t size_;
  std::string bytes_;
  std::vector<uint32_t> next_;
};

// Words as sectors full of them, filled up with kNone.
std::string WordBytes(const std::vector<uint32_t>& words) {
  std::string bytes;
  for (uint32_t word : words) Put(bytes, word, 4);
  bytes.resize((bytes.size() + kSector - 1) / kSector * kSector, '\xFF');
  return bytes;
}

class Writer {
 public:
  explicit Writer(const std::vector<CompoundStream>& streams) {
    nodes_.push_back({"Root Entry", true, {}, {}});
    for (const auto& [path, bytes] : streams) AddStream(path, bytes);
    for (Node& node : nodes_) {
      std::sort(node.children.begin(), node.children.end(),
                [&](size_t a, size_t b) { return ComesBefore(nodes_[a].name, nodes_[b].name); });
      node.child = Balance(node.children, 0, node.children.size());
    }
  }

  std::string Bytes(const std::array<uint8_t, 16>& rootClass) {
    for (Node& node : nodes_) {
      if (node.isStorage) continue;
      node.size = node.bytes.size();
      node.start = (node.size < kSmallLimit ? small_ : sectors_).Add(node.bytes);
    }
    nodes_[0].start = sectors_.Add(small_.Bytes());
    nodes_[0].size = small_.Bytes().size();
    uint32_t smallTable = sectors_.Add(WordBytes(small_.Table()));
    uint32_t directory = sectors_.Add(DirectoryBytes(rootClass));
    return Finish(smallTable, directory);
  }

 private:
  void AddStream(const std::string& path, const std::string& bytes) {
    size_t above = 0;
    size_t begin = 0;
    for (size_t slash = path.find('/'); slash != std::string::npos; slash = path.find('/', begin)) {
      auto [known, isNew] = storages_.try_emplace(path.substr(0, slash), nodes_.size());
      if (isNew) AddNode(above, {path.substr(begin, slash - begin), true, {}, {}});
      above = known->second;
      begin = slash + 1;
    }
    if (begin < path.size()) AddNode(above, {path.substr(begin), false, bytes, {}});
  }

  void AddNode(size_t above, Node node) {
    nodes_[above].children.push_back(nodes_.size());
    nodes_.push_back(std::move(node));
  }

  // The middle of sorted children above those before and behind it.
  uint32_t Balance(const std::vector<size_t>& children, size_t from, size_t to) {
    if (from == to) return kNone;
    size_t middle = from + (to - from) / 2;
    Node& node = nodes_[children[middle]];
    node.left = Balance(children, from, middle);
    node.right = Balance(children, middle + 1, to);
    return static_cast<uint32_t>(children[middle]);
  }

  std::string DirectoryBytes(const std::array<uint8_t, 16>& rootClass) const {
    constexpr char kBlack = 1;
    constexpr size_t kEntry = 128;
    std::string bytes;
    for (const Node& node : nodes_) {
      size_t begin = bytes.size();
      bool isRoot = begin == 0;
      for (char c : node.name) bytes += {c, '\0'};
      bytes.resize(begin + 64);
      Put(bytes, 2 * node.name.size() + 2, 2);
      bytes += {static_cast<char>(isRoot ? 5 : node.isStorage ? 1 : 2), kBlack};
      for (uint32_t word : {node.left, node.right, node.child}) Put(bytes, word, 4);
      for (uint8_t byte : rootClass) bytes.push_back(static_cast<char>(isRoot ? byte : 0));
      bytes.resize(begin + 116);
      Put(bytes, node.isStorage && !isRoot ? 0 : node.start, 4);
      Put(bytes, node.size, 8);
    }
    // Entries that are free.
    while (bytes.size() % kSector != 0) {
      size_t begin = bytes.size();
      bytes.resize(begin + 68);
      for (int i = 0; i < 3; ++i) Put(bytes, kNone, 4);
      bytes.resize(begin + kEntry);
    }
    return bytes;
  }

  // Header, sectors, and the table with the list of its own sectors, which stand in it too.
  std::string Finish(uint32_t smallTable, uint32_t directory) {
    size_t tables = 1;
    size_t lists = 0;
    while (tables * kInSector < sectors_.Count() + tables + lists) {
      ++tables;
      // A sector of the list names one table sector less than it has room for: the next follows.
      lists = tables <= kInHeader ? 0 : (tables - kInHeader + kInSector - 2) / (kInSector - 1);
    }
    auto firstTable = static_cast<uint32_t>(sectors_.Count());
    auto firstList = static_cast<uint32_t>(firstTable + tables);
    sectors_.Mark(tables, kTableSector);
    sectors_.Mark(lists, kListSector);

    std::string file("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
    file.resize(0x18);
    for (uint64_t word : {0x3E, 3, 0xFFFE, 9, 6}) Put(file, word, 2);
    file.resize(0x2C);
    size_t smallTables = (small_.Count() + kInSector - 1) / kInSector;
    Put(file, tables, 4);
    Put(file, directory, 4);
    Put(file, 0, 4);
    Put(file, kSmallLimit, 4);
    Put(file, smallTable, 4);
    Put(file, smallTables, 4);
    Put(file, lists == 0 ? kEnd : firstList, 4);
    Put(file, lists, 4);
    for (size_t i = 0; i < kInHeader; ++i) Put(file, i < tables ? firstTable + i : kNone, 4);
    file += sectors_.Bytes();
    file += WordBytes(sectors_.Table());
    size_t named = kInHeader;
    for (size_t i = 0; i < lists; ++i) {
      for (size_t k = 0; k + 1 < kInSector; ++k, ++named) {
        Put(file, named < tables ? firstTable + named : kNone, 4);
      }
      Put(file, i + 1 < lists ? firstList + i + 1 : kEnd, 4);
    }
    return file;
  }

  std::vector<Node> nodes_;
  std::map<std::string, size_t> storages_;
  Sectors sectors_{kSector};
  Sectors small_{kSmallSector};
};

}  // namespace

std::string CompoundFileBytes(const std::vector<CompoundStream>& streams,
                              const std::array<uint8_t, 16>& rootClass) {
  return Writer(streams).Bytes(rootClass);
}

}  // namespace tarnwick::takeout
