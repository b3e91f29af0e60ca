// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The keys of a recordset's rows in their order: four bytes each while they all fit. Internal to
// the database.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

namespace tarnwick::jet {

class RowKeys {
 public:
  size_t Size() const { return isWide_ ? wide_.size() : narrow_.size(); }
  bool IsEmpty() const { return Size() == 0; }
  int64_t operator[](size_t index) const {
    return isWide_ ? wide_[index] : int64_t{narrow_[index]};
  }
  int64_t Back() const { return (*this)[Size() - 1]; }

  void Clear() { *this = {}; }
  // Makes room for as many keys in all, if they fit into four bytes.
  void Reserve(size_t keys) { narrow_.reserve(keys); }
  void Assign(std::vector<uint32_t> keys) {
    Clear();
    narrow_ = std::move(keys);
  }
  void Add(int64_t key) {
    if (!isWide_ && !Fits(key)) Widen();
    if (isWide_) {
      wide_.push_back(key);
    } else {
      narrow_.push_back(static_cast<uint32_t>(key));
    }
  }
  void Erase(size_t index) {
    auto offset = static_cast<std::ptrdiff_t>(index);
    if (isWide_) {
      wide_.erase(wide_.begin() + offset);
    } else {
      narrow_.erase(narrow_.begin() + offset);
    }
  }

  // Each to its place. REQUIRES: each place once.
  void Arrange(const std::vector<uint32_t>& places) {
    ArrangeIn(narrow_, places);
    ArrangeIn(wide_, places);
  }

  // The place of a key, or Size(). ascending: the keys are known to ascend.
  size_t Find(int64_t key, bool ascending) const {
    return isWide_ ? FindIn(wide_, key, ascending) : FindIn(narrow_, key, ascending);
  }

 private:
  static bool Fits(int64_t key) {
    return key >= 0 && key <= int64_t{std::numeric_limits<uint32_t>::max()};
  }
  void Widen() {
    wide_.assign(narrow_.begin(), narrow_.end());
    narrow_ = {};
    isWide_ = true;
  }
  template <typename Key>
  static void ArrangeIn(std::vector<Key>& keys, const std::vector<uint32_t>& places) {
    std::vector<Key> arranged(keys.size());
    for (size_t i = 0; i < keys.size(); i++) arranged[places[i]] = keys[i];
    keys = std::move(arranged);
  }
  template <typename Key>
  static size_t FindIn(const std::vector<Key>& keys, int64_t key, bool ascending) {
    if (sizeof(Key) < sizeof key && !Fits(key)) return keys.size();
    auto sought = static_cast<Key>(key);
    auto found = keys.end();
    if (ascending) found = std::lower_bound(keys.begin(), keys.end(), sought);
    if (found == keys.end() || *found != sought)
      found = std::find(keys.begin(), keys.end(), sought);
    return static_cast<size_t>(found - keys.begin());
  }

  bool isWide_ = false;
  std::vector<uint32_t> narrow_;
  std::vector<int64_t> wide_;
};

}  // namespace tarnwick::jet
