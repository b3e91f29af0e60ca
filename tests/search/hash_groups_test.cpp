// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/hash_groups.h"

#include <map>
#include <numeric>
#include <random>

#include "support/testing.h"

namespace tarnwick::search {
namespace {

// Sets of numbers, joined without a thought of speed.
class PlainSets {
 public:
  explicit PlainSets(size_t numbers) : of_(numbers) { std::iota(of_.begin(), of_.end(), 0U); }
  void Join(uint32_t a, uint32_t b) {
    uint32_t from = std::max(of_[a], of_[b]);
    std::replace(of_.begin(), of_.end(), from, std::min(of_[a], of_[b]));
  }
  friend bool operator==(const PlainSets&, const PlainSets&) = default;

 private:
  std::vector<uint32_t> of_;
};

// In one go or as they come, and whatever the hashes are: all over, next to each other, or the same
// but for their upper or lower half.
TEST(HashGroups, JoinsWhatSharesAHashAndHasBothMarks) {
  constexpr uint32_t kNumbers = 3000;
  const uint64_t kFactors[] = {0x123456789ABCDEF1ULL, 1, uint64_t{1} << 32, uint64_t{1} << 52};
  for (uint64_t factor : kFactors) {
    for (uint32_t atOnce : {kNumbers, 700U, 1U}) {
      std::mt19937 random(atOnce);
      HashGroups groups;
      PlainSets sets(kNumbers);
      PlainSets expected(kNumbers);
      std::map<uint64_t, std::pair<uint8_t, std::vector<uint32_t>>> plain;
      for (uint32_t number = 0; number < kNumbers; ++number) {
        for (int i = 0; i < 2; ++i) {
          uint64_t hash = random() % 2500 * factor;
          auto marks = static_cast<uint8_t>(random() % 8 == 0 ? 3 : random() % 3);
          groups.Add(hash, number, marks);
          plain[hash].first |= marks;
          plain[hash].second.push_back(number);
        }
        EXPECT_FALSE(groups.IsJoined());
        if ((number + 1) % atOnce != 0 && number + 1 < kNumbers) continue;
        while (!groups.IsJoined()) {
          groups.Join(100, [&](uint32_t a, uint32_t b) { sets.Join(a, b); });
        }
      }
      for (const auto& [hash, group] : plain) {
        if (group.first != HashGroups::kBothMarks) continue;
        for (uint32_t number : group.second) expected.Join(group.second[0], number);
      }
      EXPECT_TRUE(sets == expected) << factor << ", " << atOnce;
    }
  }
}

}  // namespace
}  // namespace tarnwick::search
