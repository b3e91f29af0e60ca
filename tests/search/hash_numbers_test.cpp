// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/hash_numbers.h"

#include <random>
#include <unordered_map>

#include "support/testing.h"

namespace tarnwick::search {
namespace {

// Through all growing each hash has its own number, those that lie close together too.
TEST(HashNumbers, EachHashKeepsItsNumber) {
  std::mt19937_64 random(1);
  std::unordered_map<uint64_t, uint32_t> known;
  HashNumbers numbers;
  for (uint32_t i = 0; i < 200000; i++) {
    uint64_t hash = i % 3 == 0 ? random() >> 44 << 40 : i % 3 == 1 ? random() : i;
    if (hash == 0) continue;
    numbers.Expect(hash);
    auto [place, isNew] = known.try_emplace(hash, i);
    uint32_t& number = numbers.At(hash);
    ASSERT_EQ(number, isNew ? HashNumbers::kNone : place->second) << hash;
    number = i;
    place->second = i;
  }
  for (const auto& [hash, number] : known) ASSERT_EQ(numbers.At(hash), number) << hash;
}

}  // namespace
}  // namespace tarnwick::search
