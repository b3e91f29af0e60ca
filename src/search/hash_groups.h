// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Which numbers belong together because they were added under the same hash: twelve bytes for each
// pair of the two, and one pair for all that are joined.
//
// A table would be looked at in places all over memory. Here the pairs are kept in parts by their
// hashes, and each part is sorted by itself, which the processor's cache has room for however many
// there are. Hashes that a file has chosen cost no more than others.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

namespace tarnwick::search {

class HashGroups {
 public:
  // A pair has two marks. The numbers of a hash are joined as soon as each mark is on one of them.
  static constexpr uint8_t kBothMarks = 3;
  static constexpr uint32_t kHighestNumber = (uint32_t{1} << 30) - 1;

  // REQUIRES: number is not above the highest.
  void Add(uint64_t hash, uint32_t number, uint8_t marks);

  // True when there is nothing that Join has not seen.
  bool IsJoined() const { return unseen_ == 0; }
  // Goes over some of what was added, at least so many pairs where there are as many, and tells
  // of the numbers that are to be joined.
  void Join(int64_t pairs, const std::function<void(uint32_t a, uint32_t b)>& join);

 private:
  struct Pair {
    uint32_t high;  // of the hash
    uint32_t low;
    uint32_t number : 30;
    uint32_t marks : 2;
    bool IsSameHash(const Pair& other) const { return high == other.high && low == other.low; }
  };
  static_assert(sizeof(Pair) == 12);
  // Grows without a copy of what is in it.
  struct Part {
    std::deque<Pair> pairs;
    bool isUnseen = false;
  };

  void Sort(const std::deque<Pair>& pairs);

  std::vector<Part> parts_;
  size_t unseen_ = 0;  // parts
  size_t next_ = 0;    // where to look for one
  // Of the part that is looked at.
  std::vector<Pair> sorted_;
  std::vector<uint32_t> ends_;
};

}  // namespace tarnwick::search
