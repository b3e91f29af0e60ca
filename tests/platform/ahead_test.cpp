// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/ahead.h"

#include <atomic>
#include <memory>

#include "support/testing.h"

namespace tarnwick::platform {
namespace {

struct Thing {
  int number = 0;
  size_t cost = 0;
  size_t Cost() const { return cost; }
};

TEST(Ahead, GivesEveryThingInOrderAndRunsNoFurtherAheadThanItsMemory) {
  for (size_t cost : {size_t{0}, size_t{1} << 10, size_t{1} << 20, size_t{100} << 20}) {
    std::atomic<int> made = 0;
    Ahead<Thing> ahead([&]() -> std::optional<Thing> {
      if (made == 500) return std::nullopt;
      return Thing{made++, cost};
    });
    for (int i = 0; i < 500; ++i) {
      std::optional<Thing> thing = ahead.Take();
      ASSERT_TRUE(thing);
      ASSERT_EQ(thing->number, i);
      ahead.GiveBack(*thing);
      // What waits, what is taken and what is being made.
      if (cost >= size_t{1} << 20) {
        ASSERT_LE(made - i, 9);
      }
    }
    EXPECT_FALSE(ahead.Take());
    EXPECT_FALSE(ahead.Take());
  }
}

TEST(Ahead, CanBeLeftAtAnyTime) {
  for (int taken : {0, 1, 30}) {
    Ahead<Thing> ahead([] { return std::optional<Thing>({1, 50'000}); });
    for (int i = 0; i < taken; ++i) EXPECT_TRUE(ahead.Take());
  }
}

}  // namespace
}  // namespace tarnwick::platform
