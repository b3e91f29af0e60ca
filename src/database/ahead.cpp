// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/ahead.h"

#include "database/engine/packing.h"
#include "database/index/text_index.h"
#include "database/index/trigrams.h"

namespace tarnwick::jet {

std::string PackAhead(std::string_view plain) {
  return std::string(Pack(plain));
}

std::vector<uint32_t> TrigramsAhead(const std::vector<std::string>& texts) {
  thread_local TrigramSet trigrams;
  trigrams.Clear();
  for (size_t i = 0; i < texts.size(); i++) TextIndex::AddTo(trigrams, i, texts[i]);
  return trigrams.Hashes();
}

bool MayBePacked(std::string_view packed, size_t plainSize) {
  return packed.empty() || (IsPacked(packed) && ToldSize(packed) == plainSize);
}

bool AreTrigrams(const std::vector<uint32_t>& numbers) {
  constexpr uint32_t kEnd = uint32_t{1} << kTrigramBits;
  thread_local std::vector<bool> isThere(kEnd);
  size_t passed = 0;
  while (passed < numbers.size() && numbers[passed] < kEnd && !isThere[numbers[passed]]) {
    isThere[numbers[passed++]] = true;
  }
  for (size_t i = 0; i < passed; ++i) isThere[numbers[i]] = false;
  return passed == numbers.size();
}

}  // namespace tarnwick::jet
