// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/object_scan.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <optional>
#include <unordered_map>

#include "intake/header_parser.h"
#include "oe/byte_reader.h"
#include "oe/info_index.h"
#include "platform/charset.h"
#include "platform/files.h"

namespace tarnwick::oe {

namespace {

constexpr size_t kPiece = size_t{1} << 20;
constexpr size_t kRealRoom = 512;
constexpr size_t kMostRoom = size_t{32} * 1024;
constexpr size_t kMostInfo = size_t{32} * 1024;
constexpr size_t kOverlap = kBlockHead + kMostRoom;
constexpr size_t kWord = 4;

// In real files no two objects begin closer than this on the average; a few may in a small one.
constexpr uint64_t kLeastSpacing = 128;
constexpr uint64_t kMoreObjects = 1024;

// A freed object's third word is the bytes that it takes with all its heads.
constexpr uint32_t kMostHeads = 64;

// Get32 without its check, for the words that every byte of a file goes through.
uint32_t WordAt(std::string_view bytes, size_t place) {
  const auto* at = reinterpret_cast<const unsigned char*>(bytes.data()) + place;
  return at[0] | uint32_t{at[1]} << 8 | uint32_t{at[2]} << 16 | uint32_t{at[3]} << 24;
}

// Whether one of sixteen words may be its own offset; the first one's is expected. Most of a file
// goes by with no more than this.
constexpr size_t kStride = 16;
bool MayHoldObject(std::string_view bytes, size_t place, uint32_t expected) {
  if constexpr (std::endian::native != std::endian::little) return true;
  std::array<uint32_t, kStride> words;
  std::memcpy(words.data(), bytes.data() + place, sizeof words);
  uint32_t any = 0;
  for (uint32_t i = 0; i < kStride; ++i) {
    any |= static_cast<uint32_t>(words[i] == expected + uint32_t{kWord} * i);
  }
  return any != 0;
}

bool IsControl(char c) {
  auto byte = static_cast<unsigned char>(c);
  constexpr unsigned char kEndOfFile = 0x1A;  // some programs of old ended a text with it
  constexpr unsigned char kEscape = 0x1B;
  return byte < 0x20 && c != '\t' && c != '\n' && c != '\r' && c != '\f' && byte != kEndOfFile &&
         byte != kEscape;
}

// Mail holds hardly a control character; anything else that was written over it does, but another
// text.
bool IsText(std::string_view text) {
  auto controls = static_cast<size_t>(std::count_if(text.begin(), text.end(), IsControl));
  return controls * 64 <= text.size();
}

std::optional<FoundBlock> ReadBlock(std::string_view bytes, uint32_t offset, bool isFilesEnd) {
  FoundBlock block{offset, Get32(bytes, 12), Get32(bytes, 4), Get32(bytes, 8)};
  if (block.size == 0 || block.size > kMostRoom || block.size % kWord != 0) return std::nullopt;
  if (block.next % kWord != 0 || block.next == offset) return std::nullopt;
  block.isFreed = block.length > block.size;
  if (block.isFreed) {
    if (block.size != kRealRoom || block.length > block.size + kMostHeads) return std::nullopt;
    block.length = block.size;
  }
  // The file ends before it does.
  if (isFilesEnd && bytes.size() < kBlockHead + block.length) return std::nullopt;
  return block;
}

// The entries of a freed object, whose second is overwritten: as long as their numbers grow.
int CountEntries(std::string_view bytes, uint32_t bodyLength) {
  constexpr uint8_t kLastKnown = 0x1C;
  int count = 2;
  for (uint8_t former = 1;; ++count) {
    size_t place = kInfoHead + kWord * static_cast<size_t>(count);
    if (place + kWord > bytes.size()) return count;
    uint8_t number = Get8(bytes, place) & ~kDirectFlag;
    bool isDirect = (Get8(bytes, place) & kDirectFlag) != 0;
    if (number <= former || number > kLastKnown) return count;
    if (!isDirect && Get24(bytes, place + 1) >= bodyLength) return count;
    former = number;
  }
}

std::optional<FoundInfo> ReadInfoObject(std::string_view bytes, uint32_t offset) {
  constexpr size_t kLeastEntries = 3;
  constexpr size_t kCountPlace = 10;
  FoundInfo info;
  info.offset = offset;
  uint32_t bodyLength = Get32(bytes, 4);
  if (bytes.size() < kInfoHead + kLeastEntries * kWord || bodyLength > kMostInfo ||
      bodyLength < kLeastEntries * kWord) {
    return std::nullopt;
  }
  int count = Get8(bytes, kCountPlace);
  uint32_t room = Get32(bytes, 8);
  bool isFreed =
      count == 0 && room >= bodyLength + kInfoHead && room <= bodyLength + kInfoHead + kMostHeads;
  if (isFreed) info.entryCount = static_cast<uint8_t>(CountEntries(bytes, bodyLength));
  if (isFreed) count = info.entryCount;
  if (count < static_cast<int>(kLeastEntries) || kWord * static_cast<size_t>(count) > bodyLength) {
    return std::nullopt;
  }
  int former = -1;
  for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
    size_t place = kInfoHead + kWord * i;
    if (place + kWord > bytes.size()) return std::nullopt;
    int number = Get8(bytes, place) & ~kDirectFlag;
    if (isFreed && i == 1) continue;
    if (number <= former) return std::nullopt;
    former = number;
    if (number != kFirstBlock) continue;
    info.firstBlock = Get24(bytes, place + 1);
    if ((Get8(bytes, place) & kDirectFlag) == 0) {
      size_t value = kInfoHead + kWord * static_cast<size_t>(count) + info.firstBlock;
      info.firstBlock = value + kWord <= bytes.size() ? Get32(bytes, value) : 0;
    }
  }
  if (info.firstBlock == 0) return std::nullopt;
  return info;
}

// The pass: what lies at the words that are their own offsets.
class Scan {
 public:
  Scan(const std::string& path, int64_t origin, const std::function<bool(int)>& goOn)
      : file_(path), goOn_(goOn) {
    objects_.origin = origin;
  }

  FoundObjects Run() {
    std::string bytes;
    for (uint64_t start = 0; start < file_.Size() && !objects_.isCut; start += kPiece) {
      if (!goOn_(static_cast<int>(start * 100 / file_.Size()))) {
        objects_.isWhole = false;
        break;
      }
      bytes.resize(std::min<uint64_t>(kPiece + kOverlap, file_.Size() - start));
      bytes.resize(file_.ReadAt(start, bytes.data(), bytes.size()));
      LookThrough(bytes, start);
    }
    return std::move(objects_);
  }

 private:
  void LookThrough(std::string_view bytes, uint64_t start);
  void Take(std::string_view bytes, uint32_t offset, bool isFilesEnd);

  platform::InputFile file_;
  const std::function<bool(int)>& goOn_;
  FoundObjects objects_;
  // The object taken last: the bytes from its beginning on must hold no other.
  uint64_t lastEnd_ = 0;
  bool lastIsBlock_ = false;
};

void Scan::LookThrough(std::string_view bytes, uint64_t start) {
  size_t most = std::min(kPiece, bytes.size() - bytes.size() % kWord);
  auto expected = static_cast<uint32_t>(start + static_cast<uint64_t>(objects_.origin));
  constexpr size_t kBytes = kStride * kWord;
  for (size_t place = 0; place + kWord <= most; place += kWord, expected += kWord) {
    while (place % kBytes == 0 && place + kBytes <= most &&
           !MayHoldObject(bytes, place, expected)) {
      place += kBytes;
      expected += uint32_t{kBytes};
    }
    if (place + kWord > most) return;
    uint32_t word = WordAt(bytes, place);
    if (word != expected || word == 0) continue;
    std::string_view object = bytes.substr(place, kOverlap);
    if (object.size() < kBlockHead) return;
    Take(object, Get32(object, 0), start + bytes.size() == file_.Size());
    if (objects_.isCut) return;
  }
}

void Scan::Take(std::string_view bytes, uint32_t offset, bool isFilesEnd) {
  if (offset < lastEnd_ && lastIsBlock_) objects_.blocks.back().isOverlaid = true;
  if (offset < lastEnd_ && !lastIsBlock_) objects_.infos.back().isOverlaid = true;
  auto info = ReadInfoObject(bytes, offset);
  auto block = info ? std::nullopt : ReadBlock(bytes, offset, isFilesEnd);
  if (!info && !block) return;
  uint64_t most = file_.Size() / kLeastSpacing + kMoreObjects;
  objects_.isCut = objects_.blocks.size() + objects_.infos.size() >= most;
  if (objects_.isCut) return;
  lastIsBlock_ = block.has_value();
  if (info) {
    objects_.infos.push_back(*info);
    lastEnd_ = offset + kInfoHead + Get32(bytes, 4);
  } else {
    objects_.blocks.push_back(*block);
    lastEnd_ = offset + kBlockHead + block->length;
  }
}

// The origins that three blocks of a file or more agree on, those of most first.
std::vector<int64_t> FindOrigins(const std::string& path, const std::function<bool(int)>& goOn) {
  constexpr size_t kMostOrigins = 4096;
  constexpr int kEnough = 3;
  std::unordered_map<int64_t, int> agreed;
  platform::InputFile file(path);
  std::string bytes;
  for (uint64_t start = 0; start < file.Size() && goOn(0); start += kPiece) {
    bytes.resize(std::min<uint64_t>(kPiece + kBlockHead, file.Size() - start));
    bytes.resize(file.ReadAt(start, bytes.data(), bytes.size()));
    for (size_t place = 0; place + kBlockHead <= bytes.size() && place < kPiece; place += kWord) {
      if (WordAt(bytes, place + 4) != kRealRoom) continue;
      uint32_t self = Get32(bytes, place);
      uint32_t length = Get32(bytes, place + 8);
      uint32_t next = Get32(bytes, place + 12);
      bool isBlock = self % kWord == 0 && self != 0 && length != 0 && length <= kRealRoom &&
                     next % kWord == 0 && next != self && (next == 0 || length == kRealRoom);
      if (!isBlock) continue;
      int64_t origin = static_cast<int64_t>(self) - static_cast<int64_t>(start + place);
      auto found = agreed.find(origin);
      if (found != agreed.end()) {
        ++found->second;
      } else if (agreed.size() < kMostOrigins) {
        agreed[origin] = 1;
      }
    }
  }
  std::vector<std::pair<int, int64_t>> sorted;
  for (const auto& [origin, blocks] : agreed) {
    if (blocks >= kEnough) sorted.emplace_back(-blocks, origin);
  }
  std::sort(sorted.begin(), sorted.end());
  std::vector<int64_t> origins;
  origins.reserve(sorted.size());
  for (const auto& [blocks, origin] : sorted) origins.push_back(origin);
  return origins;
}

// Where the next object in the file is of another piece, nothing tells whether the one before it
// still ends in its own.
void PartPieces(std::vector<FoundObjects>& pieces) {
  struct Beginning {
    int64_t place = 0;  // in the file
    size_t piece = 0;
    bool* isOverlaid = nullptr;
  };
  std::vector<Beginning> all;
  for (size_t piece = 0; piece < pieces.size(); ++piece) {
    int64_t origin = pieces[piece].origin;
    for (FoundBlock& block : pieces[piece].blocks) {
      all.push_back({block.offset - origin, piece, &block.isOverlaid});
    }
    for (FoundInfo& info : pieces[piece].infos) {
      all.push_back({info.offset - origin, piece, &info.isOverlaid});
    }
  }
  std::sort(all.begin(), all.end(),
            [](const Beginning& a, const Beginning& b) { return a.place < b.place; });
  for (size_t i = 0; i + 1 < all.size(); ++i) {
    if (all[i].piece != all[i + 1].piece) *all[i].isOverlaid = true;
  }
}

}  // namespace

bool BeginsMessage(std::string_view text) {
  // Headers that every message has some of.
  static constexpr std::array<std::string_view, 14> kKnown = {
      "from",         "date",   "received",        "return-path",     "message-id",
      "subject",      "to",     "reply-to",        "mime-version",    "x-mailer",
      "delivered-to", "x-uidl", "x-apparently-to", "x-originating-ip"};
  constexpr size_t kFirst = 5;
  size_t known = 0;
  bool hasFirst = false;
  for (bool isFirstLine = true; !text.empty(); isFirstLine = false) {
    size_t end = text.find('\n');
    bool isLast = end == std::string_view::npos;
    std::string_view line = text.substr(0, isLast ? text.size() : end);
    text.remove_prefix(isLast ? text.size() : end + 1);
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.empty() && !isFirstLine) break;
    if (!isFirstLine && (line.starts_with(' ') || line.starts_with('\t'))) continue;
    if (!intake::BeginsHeader(line)) {
      // The last line may be cut within its name.
      if (isLast && !isFirstLine) break;
      return false;
    }
    std::string name = platform::AsciiLower(line.substr(0, line.find(':')));
    auto found = std::find(kKnown.begin(), kKnown.end(), name);
    if (found != kKnown.end()) ++known;
    hasFirst = hasFirst || found < kKnown.begin() + kFirst;
  }
  return hasFirst && known >= 2;
}

void InspectText(ByteReader& file, FoundBlock& block) {
  std::string text(file.Read(uint64_t{block.offset} + kBlockHead, block.length));
  if (text.size() < block.length) return;
  // Where the text of a freed block ended is not known: zeros fill what it left of the room.
  if (block.isFreed) text.resize(text.find_last_not_of('\0') + 1);
  std::string_view first = std::string_view(text).substr(0, kWord);
  block.lacksFirstWord = block.isFreed || std::any_of(first.begin(), first.end(), IsControl);
  if (block.lacksFirstWord) text.replace(0, first.size(), first.size(), 'X');
  block.isText = IsText(text);
  block.beginsMessage = block.isText && BeginsMessage(text);
}

std::vector<FoundObjects> FindObjects(const std::string& path,
                                      const std::function<bool(int)>& goOn) {
  constexpr size_t kMostPieces = 16;  // each is a pass over the file
  FoundObjects own = Scan(path, 0, goOn).Run();
  if (!own.isWhole || !own.blocks.empty() || !own.infos.empty()) return {std::move(own)};
  std::vector<int64_t> origins = FindOrigins(path, goOn);
  std::vector<FoundObjects> pieces;
  for (size_t i = 0; i < std::min(origins.size(), kMostPieces); ++i) {
    pieces.push_back(Scan(path, origins[i], goOn).Run());
    if (!pieces.back().isWhole) break;
  }
  if (pieces.empty()) return {std::move(own)};
  pieces.back().isMore = origins.size() > kMostPieces;
  PartPieces(pieces);
  return pieces;
}

}  // namespace tarnwick::oe
