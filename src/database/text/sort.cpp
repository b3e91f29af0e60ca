// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/text/sort.h"

#include <algorithm>

#include "database/text/order.h"

namespace tarnwick::jet {

namespace {

// Ranks take seven bits each.
constexpr size_t kCharsPerNumber = 9;
constexpr size_t kAbridged = 2 * kCharsPerNumber;

}  // namespace

void TextSorter::Abridge(std::string_view text, Entry& entry) {
  size_t count = std::min(text.size(), kAbridged);
  entry.isDecisive = true;
  for (size_t i = 0; i < kAbridged; i++) {
    uint64_t rank = 0;
    if (i < count) {
      rank = AsciiRank(text[i]);
      // What follows a character may change its place only when it is no ASCII.
      bool settled = rank != 0 && (i + 1 == text.size() || AsciiRank(text[i + 1]) != 0);
      if (!settled) {
        entry.isDecisive = false;
        return;
      }
    }
    uint64_t& number = i < kCharsPerNumber ? entry.head : entry.next;
    number = number << 7 | rank;
  }
  entry.isWhole = text.size() <= kAbridged;
}

void TextSorter::Add(int64_t key, std::optional<std::string_view> text) {
  Entry entry;
  entry.key = key;
  entry.isNull = !text;
  if (text) {
    Abridge(*text, entry);
    entry.offset = texts_.size();
    entry.size = static_cast<uint32_t>(text->size());
    texts_.append(*text);
  }
  entries_.push_back(entry);
}

int TextSorter::Compare(const Entry& a, const Entry& b) const {
  if (a.isNull || b.isNull) return static_cast<int>(b.isNull) - static_cast<int>(a.isNull);
  if (a.isDecisive && b.isDecisive) {
    if (a.head != b.head) return a.head < b.head ? -1 : 1;
    if (a.next != b.next) return a.next < b.next ? -1 : 1;
    if (a.isWhole && b.isWhole) return 0;
  }
  std::string_view texts = texts_;
  return CompareText(texts.substr(a.offset, a.size), texts.substr(b.offset, b.size));
}

std::vector<int64_t> TextSorter::Sorted(bool descending) {
  std::sort(entries_.begin(), entries_.end(), [&](const Entry& a, const Entry& b) {
    int order = Compare(a, b);
    if (order == 0) order = a.key < b.key ? -1 : a.key > b.key;
    return descending ? order > 0 : order < 0;
  });
  std::vector<int64_t> keys;
  keys.reserve(entries_.size());
  for (const Entry& entry : entries_) keys.push_back(entry.key);
  return keys;
}

}  // namespace tarnwick::jet
