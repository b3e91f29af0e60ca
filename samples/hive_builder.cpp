// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/hive_builder.h"

#include <algorithm>

namespace tarnwick::samples {

namespace {

constexpr uint32_t kNone = 0xFFFFFFFF;
constexpr size_t kPage = 4096;
constexpr size_t kBinHead = 32;
constexpr size_t kKeysInList = 100;
constexpr size_t kDataSegment = 16344;

void Put(std::string& bytes, size_t place, size_t width, uint64_t value) {
  for (size_t i = 0; i < width; ++i) bytes[place + i] = static_cast<char>(value >> (8 * i));
}

std::u32string Decode(const std::string& text) {
  std::u32string characters;
  for (size_t i = 0; i < text.size();) {
    auto lead = static_cast<unsigned char>(text[i++]);
    int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
    char32_t character = more == 0 ? lead : lead & (0x3F >> more);
    for (; more > 0 && i < text.size(); --more) {
      character = character << 6 | (static_cast<unsigned char>(text[i++]) & 0x3F);
    }
    characters += character;
  }
  return characters;
}

// A name as it lies in a cell, and whether it is in Latin-1.
std::pair<std::string, bool> NameBytes(const std::string& name) {
  std::u32string characters = Decode(name);
  bool isLatin =
      std::all_of(characters.begin(), characters.end(), [](char32_t c) { return c < 256; });
  if (!isLatin) return {ToUtf16(name), false};
  std::string bytes;
  for (char32_t c : characters) bytes += static_cast<char>(c);
  return {bytes, true};
}

}  // namespace

std::string ToUtf16(const std::string& text) {
  std::string bytes;
  auto unit = [&](char32_t u) {
    bytes += static_cast<char>(u & 0xFF);
    bytes += static_cast<char>(u >> 8 & 0xFF);
  };
  for (char32_t c : Decode(text)) {
    if (c >= 0x10000) {
      unit(0xD800 + ((c - 0x10000) >> 10));
      unit(0xDC00 + ((c - 0x10000) & 0x3FF));
    } else {
      unit(c);
    }
  }
  return bytes;
}

HiveBuilder::Key& HiveBuilder::KeyAt(const std::string& path) {
  Key* key = &root_;
  for (size_t start = 0; start < path.size();) {
    size_t end = std::min(path.find('\\', start), path.size());
    key = &key->keys[path.substr(start, end - start)];
    start = end + 1;
  }
  return *key;
}

void HiveBuilder::AddKey(const std::string& path) {
  KeyAt(path);
}

void HiveBuilder::AddRaw(const std::string& path, const std::string& name, uint32_t type,
                         const std::string& bytes) {
  KeyAt(path).values.push_back({name, type, bytes});
}

void HiveBuilder::AddText(const std::string& path, const std::string& name, const std::string& text,
                          bool expandable) {
  AddRaw(path, name, expandable ? 2 : 1, ToUtf16(text) + std::string(2, '\0'));
}

void HiveBuilder::AddNumber(const std::string& path, const std::string& name, uint32_t number) {
  std::string bytes(4, '\0');
  Put(bytes, 0, 4, number);
  AddRaw(path, name, 4, bytes);
}

// Lays out cells in the one bin. A cell's place is counted from the bin's start.
class HiveBuilder::Writer {
 public:
  Writer() : bin_(kBinHead, '\0') {}

  uint32_t WriteKey(const Key& key, const std::string& name, uint32_t parent) {
    auto [nameBytes, isLatin] = NameBytes(name);
    std::string node(76, '\0');
    node[0] = 'n';
    node[1] = 'k';
    Put(node, 2, 2, (isLatin ? 0x20U : 0U) | (parent == kNone ? 0x0CU : 0U));
    Put(node, 16, 4, parent);
    Put(node, 20, 4, key.keys.size());
    Put(node, 28, 4, kNone);
    Put(node, 32, 4, kNone);
    Put(node, 36, 4, key.values.size());
    Put(node, 40, 4, kNone);
    Put(node, 44, 4, kNone);
    Put(node, 48, 4, kNone);
    Put(node, 72, 2, nameBytes.size());
    uint32_t place = AddCell(node + nameBytes);
    if (!key.keys.empty()) Put(bin_, place + 4 + 28, 4, WriteSubKeys(key, place));
    if (!key.values.empty()) Put(bin_, place + 4 + 40, 4, WriteValues(key));
    return place;
  }

  std::string Finish(uint32_t root) {
    size_t used = bin_.size();
    size_t size = (used + 8 + kPage - 1) / kPage * kPage;
    bin_.resize(size);
    Put(bin_, used, 4, size - used);  // one free cell to the bin's end
    bin_.replace(0, 4, "hbin");
    Put(bin_, 8, 4, size);

    std::string base(kPage, '\0');
    base.replace(0, 4, "regf");
    Put(base, 4, 4, 1);
    Put(base, 8, 4, 1);
    Put(base, 20, 4, 1);  // version 1.5
    Put(base, 24, 4, 5);
    Put(base, 32, 4, 1);
    Put(base, 36, 4, root);
    Put(base, 40, 4, size);
    Put(base, 44, 4, 1);
    uint32_t sum = 0;
    for (size_t place = 0; place < 508; place += 4) {
      uint32_t word = 0;
      for (size_t i = 4; i-- > 0;) word = word << 8 | static_cast<unsigned char>(base[place + i]);
      sum ^= word;
    }
    Put(base, 508, 4, sum);
    return base + bin_;
  }

 private:
  uint32_t AddCell(const std::string& bytes) {
    auto place = static_cast<uint32_t>(bin_.size());
    size_t size = (4 + bytes.size() + 7) / 8 * 8;
    bin_.resize(place + size);
    Put(bin_, place, 4, static_cast<uint32_t>(-static_cast<int32_t>(size)));
    bin_.replace(place + 4, bytes.size(), bytes);
    return place;
  }

  // The keys of a large one are spread over lists of both other kinds, below a list of lists.
  uint32_t WriteSubKeys(const Key& key, uint32_t parent) {
    std::string lists;
    size_t count = 0;
    for (auto from = key.keys.begin(); from != key.keys.end(); ++count) {
      const char* mark = key.keys.size() <= kKeysInList ? "lf" : count % 2 == 0 ? "lh" : "li";
      std::string list(mark);
      list.resize(4);
      size_t size = 0;
      for (; from != key.keys.end() && size < kKeysInList; ++from, ++size) {
        std::string entry(list[1] == 'i' ? 4 : 8, '\0');
        Put(entry, 0, 4, WriteKey(from->second, from->first, parent));
        for (size_t i = 4; i < entry.size() && i - 4 < from->first.size(); ++i) {
          entry[i] = from->first[i - 4];
        }
        list += entry;
      }
      Put(list, 2, 2, size);
      AddPointer(lists, AddCell(list));
    }
    if (count == 1) return Number(lists);
    std::string head = "ri";
    head.resize(4);
    Put(head, 2, 2, count);
    return AddCell(head + lists);
  }

  static void AddPointer(std::string& list, uint32_t place) {
    list.resize(list.size() + 4);
    Put(list, list.size() - 4, 4, place);
  }

  static uint32_t Number(const std::string& bytes) {
    uint32_t number = 0;
    for (size_t i = 4; i-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes[i]);
    return number;
  }

  uint32_t AddData(const std::string& bytes) {
    if (bytes.size() <= kDataSegment) return AddCell(bytes);
    std::string segments;
    for (size_t at = 0; at < bytes.size(); at += kDataSegment) {
      AddPointer(segments, AddCell(bytes.substr(at, kDataSegment) + "rest"));
    }
    std::string head = "db";
    head.resize(8);
    Put(head, 2, 2, segments.size() / 4);
    Put(head, 4, 4, AddCell(segments));
    return AddCell(head);
  }

  uint32_t WriteValues(const Key& key) {
    std::string list;
    for (const Value& value : key.values) {
      auto [nameBytes, isLatin] = NameBytes(value.name);
      std::string cell(20, '\0');
      cell[0] = 'v';
      cell[1] = 'k';
      Put(cell, 2, 2, nameBytes.size());
      bool isInline = value.bytes.size() <= 4;
      Put(cell, 4, 4, value.bytes.size() | (isInline ? 0x80000000U : 0U));
      if (isInline) {
        for (size_t i = 0; i < value.bytes.size(); ++i) cell[8 + i] = value.bytes[i];
      } else {
        Put(cell, 8, 4, AddData(value.bytes));
      }
      Put(cell, 12, 4, value.type);
      Put(cell, 16, 2, isLatin ? 1 : 0);
      AddPointer(list, AddCell(cell + nameBytes));
    }
    return AddCell(list);
  }

  std::string bin_;
};

std::string HiveBuilder::Build() const {
  Writer writer;
  uint32_t root = writer.WriteKey(root_, "ROOT", kNone);
  return writer.Finish(root);
}

}  // namespace tarnwick::samples
