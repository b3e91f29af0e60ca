// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The rows of three characters that a text is made of, folded as a search folds them and hashed. A
// text that holds another holds all of its trigrams. Internal to the database; the hash is embedded
// in every repository's text index.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace tarnwick::jet {

inline constexpr int kTrigramBits = 18;

// Gathers the distinct trigrams of one message's texts. Texts of different columns have different
// salts, and their trigrams nothing in common.
class TrigramSet {
 public:
  TrigramSet();
  void Add(std::string_view text, uint32_t salt);
  // Hands out what was gathered, in ascending order, and begins anew.
  std::vector<uint32_t> Take();

 private:
  static constexpr size_t kWords = (size_t{1} << kTrigramBits) / 64;

  // Neither asks what is there already: texts decide that in no order that a processor could guess.
  void Put(uint32_t hash) {
    seen_[hash / 64] |= uint64_t{1} << hash % 64;
    touched_[hash / 64 / 64] |= uint64_t{1} << hash / 64 % 64;
  }

  std::vector<uint64_t> seen_;                   // a bit for each trigram
  std::array<uint64_t, kWords / 64> touched_{};  // and for each word of these
  std::vector<uint32_t> hashes_;                 // while they are taken
};

// What every text has that matches: as Like does, where % and _ stand for others, or as InStr does.
// Empty when nothing can be said.
std::vector<uint32_t> TrigramsOf(std::string_view wanted, bool isPattern, uint32_t salt);

}  // namespace tarnwick::jet
