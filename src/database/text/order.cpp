// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/text/order.h"

#include <unicode/uchar.h>
#include <unicode/ucol.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstring>

#include "platform/error.h"
#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

// Our own part of the order: to be raised when its rules change.
constexpr uint8_t kOrderRules = 1;

class Collator {
 public:
  Collator() {
    UErrorCode status = U_ZERO_ERROR;
    handle_ = ucol_open("", &status);
    if (U_SUCCESS(status)) {
      ucol_setStrength(handle_, UCOL_SECONDARY);
      ucol_setAttribute(handle_, UCOL_NORMALIZATION_MODE, UCOL_ON, &status);
    }
    if (U_FAILURE(status)) throw Error(ErrorNumber::kUnexpected, "no collation for text");
    RankAscii();
  }
  ~Collator() { ucol_close(handle_); }
  Collator(const Collator&) = delete;
  Collator& operator=(const Collator&) = delete;

  int Compare(std::string_view a, std::string_view b) const {
    UErrorCode status = U_ZERO_ERROR;
    UCollationResult result =
        ucol_strcollUTF8(handle_, a.data(), LengthOf(a), b.data(), LengthOf(b), &status);
    return U_SUCCESS(status) ? static_cast<int>(result) : 0;
  }

  // The place of an ASCII character among them, a letter's the same in both cases; 0 for one that
  // can't be compared by itself.
  uint8_t Rank(char character) const {
    auto byte = static_cast<unsigned char>(character);
    return byte < 0x80 ? ranks_[byte] : 0;
  }

  void Version(UVersionInfo version) const { ucol_getVersion(handle_, version); }

 private:
  static int32_t LengthOf(std::string_view text) {
    return static_cast<int32_t>(std::min<size_t>(text.size(), INT_MAX));
  }

  // Ranks the printable characters by asking the collation itself; one that it ignores or that
  // equals another gets none.
  void RankAscii() {
    std::array<char, 0x7F - 0x20> order{};
    size_t count = 0;
    for (char c = 0x20; c < 0x7F; c++) {
      bool upper = c >= 'A' && c <= 'Z';
      if (!upper && Compare({&c, 1}, {}) > 0) order[count++] = c;
    }
    auto end = order.begin() + static_cast<std::ptrdiff_t>(count);
    std::sort(order.begin(), end, [&](char a, char b) { return Compare({&a, 1}, {&b, 1}) < 0; });
    for (size_t i = 0; i < count; i++) {
      bool single = (i == 0 || Compare({&order[i - 1], 1}, {&order[i], 1}) != 0) &&
                    (i + 1 == count || Compare({&order[i], 1}, {&order[i + 1], 1}) != 0);
      if (single) ranks_[static_cast<unsigned char>(order[i])] = static_cast<uint8_t>(i + 1);
    }
    for (int c = 'A'; c <= 'Z'; c++)
      ranks_[static_cast<size_t>(c)] = ranks_[static_cast<size_t>(c) + 32];
  }

  UCollator* handle_ = nullptr;
  std::array<uint8_t, 128> ranks_{};
};

const Collator& TheCollator() {
  static const Collator collator;
  return collator;
}

int Sign(int value) {
  return (value > 0) - (value < 0);
}

}  // namespace

int CompareTextFully(std::string_view a, std::string_view b) {
  std::string foldedA = platform::FoldCase(a);
  std::string foldedB = platform::FoldCase(b);
  int result = TheCollator().Compare(foldedA, foldedB);
  // Bytes of UTF-8 stand in the order of their code points.
  return result != 0 ? result : Sign(foldedA.compare(foldedB));
}

int CompareText(std::string_view a, std::string_view b) {
  const Collator& collator = TheCollator();
  size_t shorter = std::min(a.size(), b.size());
  size_t i = 0;
  uint8_t rankA = 0;
  uint8_t rankB = 0;
  for (; i < shorter; i++) {
    rankA = collator.Rank(a[i]);
    rankB = collator.Rank(b[i]);
    if (rankA == 0 || rankA != rankB) break;
  }
  if (i == shorter) {
    if (a.size() == b.size()) return 0;
    // What follows may change the last common character only when it is no ASCII.
    std::string_view longer = a.size() > b.size() ? a : b;
    bool settled = collator.Rank(longer[i]) != 0 &&
                   (i + 1 == longer.size() || collator.Rank(longer[i + 1]) != 0);
    if (settled) return a.size() > b.size() ? 1 : -1;
  } else if (rankA != 0 && rankB != 0) {
    // Likewise for the two that differ: an accent or another mark may follow them.
    bool settled = (i + 1 == a.size() || collator.Rank(a[i + 1]) != 0) &&
                   (i + 1 == b.size() || collator.Rank(b[i + 1]) != 0);
    if (settled) return rankA < rankB ? -1 : 1;
  }
  if (a == b) return 0;
  return CompareTextFully(a, b);
}

int32_t TextOrderVersion() {
  UVersionInfo collation;
  UVersionInfo unicode;
  TheCollator().Version(collation);
  u_getUnicodeVersion(unicode);
  // FNV-1a, 32 bits.
  uint32_t hash = 2166136261u;
  auto add = [&hash](uint8_t byte) { hash = (hash ^ byte) * 16777619u; };
  for (uint8_t byte : collation) add(byte);
  for (uint8_t byte : unicode) add(byte);
  add(kOrderRules);
  int32_t version;
  std::memcpy(&version, &hash, sizeof version);
  return version;
}

}  // namespace tarnwick::jet
