// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/compound_file.h"

#include <algorithm>

#include "platform/error.h"

namespace tarnwick::outlook {

namespace {

constexpr std::string_view kMark = "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1";
constexpr size_t kHeaderSize = 512;
constexpr size_t kShiftPlace = 0x1E;
constexpr size_t kDirectoryPlace = 0x30;
constexpr size_t kMiniTablePlace = 0x3C;
constexpr size_t kTableListPlace = 0x44;
constexpr size_t kTablePlaces = 0x4C;
constexpr size_t kTablesInHeader = 109;
constexpr uint32_t kLastSector = 0xFFFFFFFA;  // higher numbers are marks

constexpr unsigned kMiniShift = 6;
constexpr uint64_t kMiniLimit = 4096;  // shorter streams lie in small sectors

constexpr size_t kNodeSize = 128;
constexpr size_t kNameSize = 64;
constexpr uint32_t kNoNode = 0xFFFFFFFF;
constexpr char kStorage = 1;
constexpr char kStream = 2;
constexpr char kRootStorage = 5;

// A file is read this many times over at most: storages may share sectors in no sound one.
constexpr uint64_t kBudgetFactor = 4;
constexpr uint64_t kBudgetFloor = uint64_t{1} << 20;

uint32_t Number(std::string_view bytes, size_t place) {
  uint32_t number = 0;
  for (size_t i = 4; i-- > 0;) {
    number =
        number << 8 | static_cast<unsigned char>(place + i < bytes.size() ? bytes[place + i] : 0);
  }
  return number;
}

[[noreturn]] void Fail(const char* what) {
  throw Error(ErrorNumber::kPathAccess, what);
}

std::vector<uint32_t> Numbers(std::string_view bytes) {
  std::vector<uint32_t> numbers(bytes.size() / 4);
  for (size_t i = 0; i < numbers.size(); ++i) numbers[i] = Number(bytes, 4 * i);
  return numbers;
}

}  // namespace

CompoundFile::CompoundFile(std::string bytes) : bytes_(std::move(bytes)) {
  if (bytes_.size() < kHeaderSize || !bytes_.starts_with(kMark)) {
    Fail("the file is no Outlook message");
  }
  sectorShift_ = static_cast<unsigned char>(bytes_[kShiftPlace]);
  if (sectorShift_ != 9 && sectorShift_ != 12) Fail("the file's sectors have no sound size");
  sectors_ = static_cast<uint32_t>(std::min<uint64_t>(bytes_.size() >> sectorShift_, kLastSector));
  budget_ = kBudgetFloor + kBudgetFactor * bytes_.size();
  for (uint32_t sector : TableSectors()) {
    std::vector<uint32_t> part = Numbers(Sector(sector));
    next_.insert(next_.end(), part.begin(), part.end());
  }
  ReadDirectory(Number(bytes_, kDirectoryPlace));
  miniNext_ = Numbers(ReadChain(Number(bytes_, kMiniTablePlace), UINT64_MAX));
  const Node& root = nodes_.front();
  miniBytes_ = ReadChain(root.start, root.entry.size);
}

// The bytes of a sector, fewer at the end of a file that was cut.
std::string_view CompoundFile::Sector(uint32_t number) const {
  uint64_t place = (uint64_t{number} + 1) << sectorShift_;
  if (number >= sectors_ || place >= bytes_.size()) Fail("a chain leads out of the file");
  return std::string_view(bytes_).substr(static_cast<size_t>(place), size_t{1} << sectorShift_);
}

// The sectors of the table of chains: the first of them in the header, more in sectors of their
// own.
std::vector<uint32_t> CompoundFile::TableSectors() const {
  std::vector<uint32_t> tables;
  auto add = [&](std::string_view list, size_t count) {
    for (size_t i = 0; i < count; ++i) {
      uint32_t sector = Number(list, 4 * i);
      if (sector < kLastSector && tables.size() <= sectors_) tables.push_back(sector);
    }
  };
  add(std::string_view(bytes_).substr(kTablePlaces), kTablesInHeader);
  uint32_t list = Number(bytes_, kTableListPlace);
  for (uint32_t steps = 0; list < kLastSector; ++steps) {
    if (steps > sectors_) Fail("a chain returns to itself");
    std::string_view sector = Sector(list);
    size_t count = (size_t{1} << sectorShift_) / 4 - 1;
    add(sector, count);
    list = Number(sector, 4 * count);
  }
  return tables;
}

void CompoundFile::Spend(uint64_t bytes) {
  if (bytes > budget_) Fail("its streams lie over one another");
  budget_ -= bytes;
}

// The bytes of a chain of sectors, at most size of them.
std::string CompoundFile::ReadChain(uint32_t start, uint64_t size) {
  std::string bytes;
  uint32_t sector = start;
  for (uint32_t steps = 0; sector < kLastSector && bytes.size() < size; ++steps) {
    if (steps > sectors_) Fail("a chain returns to itself");
    std::string_view piece = Sector(sector);
    piece =
        piece.substr(0, static_cast<size_t>(std::min<uint64_t>(piece.size(), size - bytes.size())));
    Spend(piece.size());
    bytes += piece;
    if (sector >= next_.size()) Fail("a chain leads out of its table");
    sector = next_[sector];
  }
  return bytes;
}

std::string CompoundFile::ReadMiniChain(uint32_t start, uint64_t size) const {
  std::string bytes;
  uint32_t sector = start;
  while (sector < kLastSector && bytes.size() < size) {
    uint64_t place = uint64_t{sector} << kMiniShift;
    if (place >= miniBytes_.size() || sector >= miniNext_.size()) {
      Fail("a chain of small sectors leads out of the file");
    }
    uint64_t piece = std::min<uint64_t>(size - bytes.size(), uint64_t{1} << kMiniShift);
    bytes.append(miniBytes_, static_cast<size_t>(place), static_cast<size_t>(piece));
    sector = miniNext_[sector];
  }
  return bytes;
}

void CompoundFile::ReadDirectory(uint32_t start) {
  std::string bytes = ReadChain(start, UINT64_MAX);
  for (size_t place = 0; place + kNodeSize <= bytes.size(); place += kNodeSize) {
    std::string_view raw = std::string_view(bytes).substr(place, kNodeSize);
    Node node;
    size_t nameBytes = std::min<size_t>(Number(raw, kNameSize) & 0xFFFF, kNameSize);
    for (size_t i = 0; i + 2 < nameBytes; i += 2) {
      bool isAscii = raw[i + 1] == 0 && raw[i] >= 0x20 && raw[i] < 0x7F;
      node.entry.name.push_back(isAscii ? raw[i] : '?');
    }
    char type = raw[0x42];
    bool isUsed = type == kStorage || type == kStream || type == kRootStorage;
    node.entry.index = static_cast<uint32_t>(nodes_.size());
    node.entry.isStorage = type != kStream;
    node.left = isUsed ? Number(raw, 0x44) : kNoNode;
    node.right = isUsed ? Number(raw, 0x48) : kNoNode;
    node.child = isUsed && type != kStream ? Number(raw, 0x4C) : kNoNode;
    node.start = Number(raw, 0x74);
    node.entry.size = Number(raw, 0x78);
    nodes_.push_back(std::move(node));
  }
  if (nodes_.empty()) Fail("the file has no directory");
}

std::vector<CompoundFile::Entry> CompoundFile::Children(uint32_t storage) {
  std::vector<Entry> found;
  if (storage >= nodes_.size()) return found;
  // The tree in its order; a node that is met again leads nowhere.
  std::vector<bool> met(nodes_.size());
  Spend(nodes_.size() / 8);
  std::vector<std::pair<uint32_t, bool>> pending = {{nodes_[storage].child, false}};
  while (!pending.empty()) {
    auto [index, isOpened] = pending.back();
    pending.pop_back();
    if (index >= nodes_.size() || (!isOpened && met[index])) continue;
    const Node& node = nodes_[index];
    if (isOpened) {
      found.push_back(node.entry);
      continue;
    }
    met[index] = true;
    Spend(kNodeSize);
    pending.emplace_back(node.right, false);
    pending.emplace_back(index, true);
    pending.emplace_back(node.left, false);
  }
  return found;
}

std::string CompoundFile::Read(const Entry& stream) {
  if (stream.size > bytes_.size()) Fail("a stream is longer than its file");
  uint32_t start = nodes_.at(stream.index).start;
  if (stream.size >= kMiniLimit) return ReadChain(start, stream.size);
  Spend(stream.size);
  return ReadMiniChain(start, stream.size);
}

}  // namespace tarnwick::outlook
