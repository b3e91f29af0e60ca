// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The rows of three characters that a text is made of, folded as a search folds them and hashed. A
// text that holds another holds all of its trigrams. Internal to the database; the hash is embedded
// in every repository's text index.
#pragma once

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
  const std::vector<uint32_t>& Hashes() const { return hashes_; }
  void Clear();

 private:
  void Put(uint32_t hash);

  std::vector<uint64_t> seen_;
  std::vector<uint32_t> hashes_;
};

// What every text has that matches: as Like does, where % and _ stand for others, or as InStr does.
// Empty when nothing can be said.
std::vector<uint32_t> TrigramsOf(std::string_view wanted, bool isPattern, uint32_t salt);

}  // namespace tarnwick::jet
