// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/hash_groups.h"

#include <algorithm>
#include <bit>
#include <numeric>
#include <tuple>

namespace tarnwick::search {

namespace {

// A megabyte in each of ten million messages.
constexpr int kPartBits = 8;

}  // namespace

void HashGroups::Add(uint64_t hash, uint32_t number, uint8_t marks) {
  // Odd, so that different hashes stay different; the upper bits come to depend on all.
  uint64_t mixed = hash * 0x9E3779B97F4A7C15ULL;
  if (parts_.empty()) parts_.resize(size_t{1} << kPartBits);
  Part& part = parts_[mixed >> (64 - kPartBits)];
  part.pairs.push_back({static_cast<uint32_t>(mixed >> 32), static_cast<uint32_t>(mixed),
                        number & kHighestNumber, marks & uint32_t{kBothMarks}});
  unseen_ += part.isUnseen ? 0 : 1;
  part.isUnseen = true;
}

// By the bits that are next to those of the part first, about as many as tell the pairs apart.
void HashGroups::Sort(const std::deque<Pair>& pairs) {
  const int bits = std::clamp(static_cast<int>(std::bit_width(pairs.size())), 1, 32 - kPartBits);
  auto runOf = [bits](const Pair& pair) {
    return static_cast<size_t>(pair.high << kPartBits >> (32 - bits));
  };
  ends_.assign(size_t{1} << bits, 0);
  for (const Pair& pair : pairs) ends_[runOf(pair)]++;
  std::partial_sum(ends_.begin(), ends_.end(), ends_.begin());
  sorted_.resize(pairs.size());
  // Each end becomes the beginning.
  for (const Pair& pair : pairs) sorted_[--ends_[runOf(pair)]] = pair;
  for (size_t run = 0; run < ends_.size(); run++) {
    size_t end = run + 1 < ends_.size() ? ends_[run + 1] : sorted_.size();
    if (end - ends_[run] < 2) continue;
    std::sort(sorted_.data() + ends_[run], sorted_.data() + end, [](const Pair& a, const Pair& b) {
      return std::tuple(a.high, a.low, uint32_t{a.number}) <
             std::tuple(b.high, b.low, uint32_t{b.number});
    });
  }
}

void HashGroups::Join(int64_t pairs, const std::function<void(uint32_t a, uint32_t b)>& join) {
  for (; unseen_ > 0 && pairs > 0; next_ = (next_ + 1) % parts_.size()) {
    Part& part = parts_[next_];
    if (!part.isUnseen) continue;
    pairs -= static_cast<int64_t>(part.pairs.size());
    Sort(part.pairs);
    auto kept = part.pairs.begin();
    for (auto first = sorted_.begin(); first != sorted_.end();) {
      auto end = first;
      uint32_t marks = 0;
      for (; end != sorted_.end() && end->IsSameHash(*first); ++end) marks |= end->marks;
      if (marks == kBothMarks) {
        for (auto each = first + 1; each != end; ++each) join(first->number, each->number);
        first->marks = kBothMarks;
        *kept++ = *first;
      } else {
        kept = std::copy(first, end, kept);
      }
      first = end;
    }
    part.pairs.erase(kept, part.pairs.end());
    part.isUnseen = false;
    unseen_--;
  }
}

}  // namespace tarnwick::search
