// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/layout_store.h"

#include <gmock/gmock.h>

#include "repository/parameter_store.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

using LayoutStore = testing::ProgramFixture;
using ::testing::ElementsAre;
using ::testing::Pair;

TEST_F(LayoutStore, WidthsOfAGroupSurviveAreReplacedWholeAndHaveLimits) {
  EXPECT_TRUE(repository::ReadGridLayout(kGridGroup, 3).empty());
  repository::SaveGridLayout("Other's", {15});
  repository::SaveGridLayout(kGridGroup, {300, 1500, 0});
  EXPECT_THAT(repository::ReadGridLayout(kGridGroup, 3),
              ElementsAre(Pair(0, 300), Pair(1, 1500), Pair(2, 0)));
  repository::SaveGridLayout(kGridGroup, {450});
  for (const auto& [key, width] : {std::pair{"1", -5}, {"2", 2000000000}, {"12", 300}, {"3", 30}}) {
    repository::SetParameter(kGridGroup, key, repository::kAmountColumn, width);
  }
  EXPECT_THAT(repository::ReadGridLayout(kGridGroup, 4), ElementsAre(Pair(0, 450), Pair(3, 30)));
  EXPECT_THAT(repository::ReadGridLayout("Other's", 7), ElementsAre(Pair(0, 15)));
}

TEST_F(LayoutStore, PlaceComesBackAndIsAppliedWhereItFits) {
  EXPECT_EQ(ReadWindowPlace().left, 0);
  SaveWindowPlace({1500, 750, 15000, 9000});
  auto [left, top, width, height] = ReadWindowPlace();
  EXPECT_THAT((std::vector{left, top, width, height}), ElementsAre(1500, 750, 15000, 9000));

  EXPECT_EQ(FittingEdge(1500, 15000, 19200), 1500);
  EXPECT_EQ(FittingEdge(0, 15000, 19200), std::nullopt) << "0 is what was never stored";
  EXPECT_EQ(FittingEdge(4200, 15000, 19200), std::nullopt) << "it would touch the far edge";
  EXPECT_EQ(FittingEdge(-3000, 15000, 19200), std::nullopt) << "a screen that is gone";
}

}  // namespace
}  // namespace tarnwick::board
