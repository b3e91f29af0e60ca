// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/hive.h"

#include <algorithm>

#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/utf8.h"

namespace tarnwick::platform {

namespace {

constexpr uint64_t kMaxHive = 512ULL << 20;  // real ones have a few megabytes
constexpr size_t kBaseBlock = 4096;          // cells are counted from its end
constexpr size_t kRootPlace = 0x24;
constexpr size_t kCellHead = 4;
constexpr uint32_t kNone = 0xFFFFFFFF;

// Places in a key's cell.
constexpr size_t kKeyFlags = 2;
constexpr size_t kSubKeyCount = 20;
constexpr size_t kSubKeyList = 28;
constexpr size_t kValueCount = 36;
constexpr size_t kValueList = 40;
constexpr size_t kKeyNameLength = 72;
constexpr size_t kKeyName = 76;
constexpr uint64_t kIsLatinKey = 0x20;

// Places in a value's cell.
constexpr size_t kValueNameLength = 2;
constexpr size_t kDataLength = 4;
constexpr size_t kDataPlace = 8;
constexpr size_t kValueType = 12;
constexpr size_t kValueFlags = 16;
constexpr size_t kValueName = 20;
constexpr uint64_t kIsLatinValue = 1;
constexpr uint32_t kIsInline = 0x80000000;

constexpr size_t kMaxName = 256;  // characters, of a key
constexpr size_t kListHead = 4;
constexpr size_t kDataSegment = 16344;  // longer data lies in segments of this size

// 0 where the bytes end before.
uint32_t NumberAt(std::string_view bytes, size_t place, size_t width) {
  if (place > bytes.size() || width > bytes.size() - place) return 0;
  uint32_t number = 0;
  for (size_t i = 0; i < width; ++i) {
    number |= static_cast<uint32_t>(static_cast<unsigned char>(bytes[place + i])) << (8 * i);
  }
  return number;
}

std::string DecodeName(std::string_view bytes, bool isLatin) {
  if (!isLatin) return Utf16ToUtf8(bytes);
  std::string name;
  for (char c : bytes) {
    auto byte = static_cast<unsigned char>(c);
    if (byte >= 0x80) name += static_cast<char>(0xC0 | byte >> 6);
    name += static_cast<char>(byte >= 0x80 ? 0x80 | (byte & 0x3F) : byte);
  }
  return name;
}

}  // namespace

Hive::Hive(const std::string& file) : bytes_(ReadFile(file, kMaxHive)) {
  root_ = NumberAt(bytes_, kRootPlace, 4);
  if (!bytes_.starts_with("regf") || KeyCellAt(root_).empty()) {
    throw Error(ErrorNumber::kPathAccess, "The registry file is damaged: " + file);
  }
}

std::string_view Hive::CellAt(uint32_t place) const {
  size_t start = kBaseBlock + size_t{place};
  if (place == kNone || place % 8 != 0 || start + kCellHead > bytes_.size()) return {};
  // A used cell has the negative of its size; one that is free again may hold anything.
  int64_t size = -static_cast<int64_t>(static_cast<int32_t>(NumberAt(bytes_, start, 4)));
  if (size < int64_t{kCellHead}) return {};
  return std::string_view(bytes_).substr(start, static_cast<size_t>(size)).substr(kCellHead);
}

std::string_view Hive::KeyCellAt(uint32_t place) const {
  std::string_view cell = CellAt(place);
  bool isKey = cell.starts_with("nk") && cell.size() >= kKeyName &&
               NumberAt(cell, kKeyNameLength, 2) <= 2 * kMaxName;
  return isKey ? cell : std::string_view();
}

std::string Hive::NameOf(std::string_view key) const {
  std::string_view name = key.substr(kKeyName, NumberAt(key, kKeyNameLength, 2));
  return DecodeName(name, (NumberAt(key, kKeyFlags, 2) & kIsLatinKey) != 0);
}

// A list can name the same keys, or lists, again and again: it yields no more than the key says.
void Hive::AddListed(uint32_t list, bool mayHoldLists, size_t most, std::vector<Key>& keys) const {
  std::string_view cell = CellAt(list);
  std::string_view mark = cell.substr(0, 2);
  bool isOfLists = mark == "ri";
  if (!isOfLists && mark != "li" && mark != "lf" && mark != "lh") return;
  if (isOfLists && !mayHoldLists) return;
  size_t entrySize = isOfLists || mark == "li" ? 4 : 8;
  size_t room = (std::max(cell.size(), kListHead) - kListHead) / entrySize;
  size_t count = std::min<size_t>(NumberAt(cell, 2, 2), room);
  for (size_t i = 0; i < count && keys.size() < most; ++i) {
    uint32_t place = NumberAt(cell, kListHead + i * entrySize, 4);
    if (isOfLists) {
      AddListed(place, false, most, keys);
    } else if (!KeyCellAt(place).empty()) {
      keys.push_back(place);
    }
  }
}

std::vector<Hive::Key> Hive::Children(Key key) const {
  std::string_view cell = KeyCellAt(key);
  size_t most = std::min<size_t>(NumberAt(cell, kSubKeyCount, 4), bytes_.size() / kKeyName);
  std::vector<Key> keys;
  AddListed(NumberAt(cell, kSubKeyList, 4), true, most, keys);
  return keys;
}

std::optional<Hive::Key> Hive::Find(const std::vector<std::string>& path) const {
  Key key = root_;
  for (const std::string& name : path) {
    std::string wanted = AsciiLower(name);
    std::vector<Key> children = Children(key);
    auto found = std::find_if(children.begin(), children.end(), [&](Key child) {
      return AsciiLower(NameOf(KeyCellAt(child))) == wanted;
    });
    if (found == children.end()) return std::nullopt;
    key = *found;
  }
  return key;
}

std::vector<std::string> Hive::SubKeys(Key key) const {
  std::vector<std::string> names;
  size_t total = 0;
  for (Key child : Children(key)) {
    names.push_back(NameOf(KeyCellAt(child)));
    // The same long name can stand for many keys of a made-up hive.
    total += names.back().size();
    if (total > bytes_.size()) break;
  }
  return names;
}

std::string Hive::BytesOf(std::string_view value) const {
  uint32_t length = NumberAt(value, kDataLength, 4);
  if ((length & kIsInline) != 0) {
    return std::string(value.substr(kDataPlace, std::min(length & ~kIsInline, 4U)));
  }
  std::string_view data = CellAt(NumberAt(value, kDataPlace, 4));
  if (length <= kDataSegment || !data.starts_with("db")) return std::string(data.substr(0, length));
  std::string_view segments = CellAt(NumberAt(data, 4, 4));
  size_t count = std::min<size_t>(NumberAt(data, 2, 2), segments.size() / 4);
  std::string bytes;
  for (size_t i = 0; i < count && bytes.size() < length && bytes.size() < bytes_.size(); ++i) {
    std::string_view segment = CellAt(NumberAt(segments, i * 4, 4));
    bytes += segment.substr(0, std::min(kDataSegment, length - bytes.size()));
  }
  return bytes;
}

std::optional<Hive::Value> Hive::FindValue(Key key, std::string_view name) const {
  std::string_view cell = KeyCellAt(key);
  std::string_view list = CellAt(NumberAt(cell, kValueList, 4));
  size_t count = std::min<size_t>(NumberAt(cell, kValueCount, 4), list.size() / 4);
  std::string wanted = AsciiLower(name);
  for (size_t i = 0; i < count; ++i) {
    std::string_view value = CellAt(NumberAt(list, i * 4, 4));
    if (!value.starts_with("vk") || value.size() < kValueName) continue;
    std::string_view bytes = value.substr(kValueName, NumberAt(value, kValueNameLength, 2));
    bool isLatin = (NumberAt(value, kValueFlags, 2) & kIsLatinValue) != 0;
    // What is too long to be it is not decoded: many entries may name the one value.
    if (bytes.size() > 2 * wanted.size() || AsciiLower(DecodeName(bytes, isLatin)) != wanted) {
      continue;
    }
    return Value{NumberAt(value, kValueType, 4), BytesOf(value)};
  }
  return std::nullopt;
}

}  // namespace tarnwick::platform
