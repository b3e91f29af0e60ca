// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Some of the rows of the column cache, by their places in it: a bit for each row of a range.
// Internal to the database.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarnwick::jet {

class RowPlaces {
 public:
  // Of the rows from one place on to another, which is the end. None of them is in yet.
  RowPlaces(size_t from, size_t to) : from_(from), all_(to - from), words_((to - from + 63) / 64) {}

  size_t Size() const { return size_; }
  void AddAll() {
    for (uint64_t& word : words_) word = ~uint64_t{0};
    if (size_t rest = all_ % 64; rest != 0) words_.back() = (uint64_t{1} << rest) - 1;
    size_ = all_;
  }
  // REQUIRES: within the range, and not in yet.
  void Add(size_t place) {
    words_[(place - from_) / 64] |= uint64_t{1} << (place - from_) % 64;
    size_++;
  }
  // Keeps those that hold; these are asked in their order.
  template <typename Holds>
  void Keep(const Holds& holds) {
    for (size_t i = 0; i < words_.size(); i++) {
      for (uint64_t left = words_[i]; left != 0; left &= left - 1) {
        if (holds(PlaceOf(i, left))) continue;
        words_[i] &= ~(left & -left);
        size_--;
      }
    }
  }
  // Ascending.
  template <typename Use>
  void ForEach(const Use& use) const {
    for (size_t i = 0; i < words_.size(); i++) {
      for (uint64_t left = words_[i]; left != 0; left &= left - 1) use(PlaceOf(i, left));
    }
  }

 private:
  size_t PlaceOf(size_t word, uint64_t bits) const {
    return from_ + 64 * word + static_cast<size_t>(std::countr_zero(bits));
  }

  size_t from_;
  size_t all_;
  std::vector<uint64_t> words_;
  size_t size_ = 0;
};

}  // namespace tarnwick::jet
