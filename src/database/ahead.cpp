// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/ahead.h"

#include <algorithm>
#include <functional>

#include "database/engine/packing.h"
#include "database/index/text_index.h"
#include "database/index/trigrams.h"

namespace tarnwick::jet {

std::string PackAhead(std::string_view plain) {
  return std::string(Pack(plain));
}

std::vector<uint32_t> TrigramsAhead(const std::vector<std::string>& texts) {
  thread_local TrigramSet trigrams;
  for (size_t i = 0; i < texts.size(); i++) TextIndex::AddTo(trigrams, i, texts[i]);
  return trigrams.Take();
}

bool MayBePacked(std::string_view packed, size_t plainSize) {
  return packed.empty() || (IsPacked(packed) && ToldSize(packed) == plainSize);
}

bool AreTrigrams(const std::vector<uint32_t>& numbers) {
  bool isAscending =
      std::ranges::adjacent_find(numbers, std::ranges::greater_equal()) == numbers.end();
  return isAscending && (numbers.empty() || numbers.back() >> kTrigramBits == 0);
}

}  // namespace tarnwick::jet
