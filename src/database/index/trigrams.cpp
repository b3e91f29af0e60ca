// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/index/trigrams.h"

#include <algorithm>
#include <bit>

#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

// The last three characters; complete once there have been three.
class Window {
 public:
  void Take(int32_t character) {
    first_ = second_;
    second_ = third_;
    third_ = static_cast<uint32_t>(character);
    count_++;
  }
  void Break() { count_ = 0; }
  bool IsComplete() const { return count_ >= 3; }
  uint32_t Hash(uint32_t salt) const {
    uint32_t mixed = first_ * 0x9E3779B1u + second_ * 0x85EBCA77u + third_ * 0xC2B2AE3Du;
    mixed = (mixed ^ (mixed >> 15)) * 0x27D4EB2Fu;
    return (mixed >> (32 - kTrigramBits)) ^ salt;
  }

 private:
  uint32_t first_ = 0;
  uint32_t second_ = 0;
  uint32_t third_ = 0;
  uint64_t count_ = 0;
};

template <typename Bits, typename Visit>
void ForEachBit(const Bits& words, Visit visit) {
  for (size_t i = 0; i < words.size(); i++) {
    for (uint64_t bits = words[i]; bits != 0; bits &= bits - 1) {
      visit(i * 64 + static_cast<size_t>(std::countr_zero(bits)));
    }
  }
}

}  // namespace

TrigramSet::TrigramSet() : seen_(kWords) {}

void TrigramSet::Add(std::string_view text, uint32_t salt) {
  Window window;
  for (size_t position = 0; position < text.size();) {
    auto byte = static_cast<unsigned char>(text[position]);
    if (byte < 0x80) {
      position++;
      window.Take(byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte);
    } else {
      window.Take(platform::FoldChar(platform::NextChar(text, position)));
    }
    if (window.IsComplete()) Put(window.Hash(salt));
  }
}

std::vector<uint32_t> TrigramSet::Take() {
  size_t words = 0;
  ForEachBit(touched_, [&](size_t) { ++words; });
  // As many as there could be; counting them would cost as much as reading them.
  if (hashes_.size() < words * 64) hashes_.resize(words * 64);
  uint32_t* next = hashes_.data();
  ForEachBit(touched_, [&](size_t word) {
    auto first = static_cast<uint32_t>(word * 64);
    for (uint64_t bits = seen_[word]; bits != 0; bits &= bits - 1) {
      *next++ = first + static_cast<uint32_t>(std::countr_zero(bits));
    }
    seen_[word] = 0;
  });
  touched_.fill(0);
  return {hashes_.data(), next};
}

std::vector<uint32_t> TrigramsOf(std::string_view wanted, bool isPattern, uint32_t salt) {
  std::vector<uint32_t> hashes;
  Window window;
  for (size_t position = 0; position < wanted.size();) {
    int32_t character = platform::NextChar(wanted, position);
    if (isPattern && (character == '%' || character == '_')) {
      window.Break();
      continue;
    }
    window.Take(platform::FoldChar(character));
    if (window.IsComplete()) hashes.push_back(window.Hash(salt));
  }
  std::sort(hashes.begin(), hashes.end());
  hashes.erase(std::unique(hashes.begin(), hashes.end()), hashes.end());
  return hashes;
}

}  // namespace tarnwick::jet
