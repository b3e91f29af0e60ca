// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/layout_store.h"

#include <gmock/gmock.h>

#include "database/recordset.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

using LayoutStore = testing::ProgramFixture;
using ::testing::ElementsAre;
using ::testing::Pair;

int64_t StoredRows() {
  jet::Recordset rows;
  rows.Open("SELECT * FROM Parameter WHERE ParameterGroup = 'EmailGrid'", repository::ParameterDb(),
            jet::CursorType::kKeyset);
  return rows.RecordCount();
}

TEST_F(LayoutStore, WidthsSurviveAndAreReplacedWhole) {
  EXPECT_TRUE(repository::ReadGridLayout(kGridGroup, 3).empty());
  repository::SaveGridLayout(kGridGroup, {300, 1500, 0});
  EXPECT_THAT(repository::ReadGridLayout(kGridGroup, 3),
              ElementsAre(Pair(0, 300), Pair(1, 1500), Pair(2, 0)));
  repository::SaveGridLayout(kGridGroup, {450});
  EXPECT_THAT(repository::ReadGridLayout(kGridGroup, 3), ElementsAre(Pair(0, 450)));
  EXPECT_EQ(StoredRows(), 1);
}

TEST_F(LayoutStore, WidthsThatNoScreenHasAreLeftOut) {
  for (const auto& [key, width] : {std::pair{"0", -5}, {"1", 2000000000}, {"12", 300}, {"2", 30}}) {
    repository::SetParameter("EmailGrid", key, repository::kAmountColumn, width);
  }
  EXPECT_THAT(repository::ReadGridLayout(kGridGroup, 3), ElementsAre(Pair(2, 30)));
}

TEST_F(LayoutStore, PlaceComesBackAndIsAppliedWhereItFits) {
  EXPECT_EQ(ReadWindowPlace().left, 0);
  SaveWindowPlace({1500, 750, 15000, 9000});
  WindowPlace place = ReadWindowPlace();
  EXPECT_EQ(place.left, 1500);
  EXPECT_EQ(place.top, 750);
  EXPECT_EQ(place.width, 15000);
  EXPECT_EQ(place.height, 9000);

  EXPECT_EQ(FittingEdge(1500, 15000, 19200), 1500);
  EXPECT_EQ(FittingEdge(0, 15000, 19200), std::nullopt) << "0 is what was never stored";
  EXPECT_EQ(FittingEdge(4200, 15000, 19200), std::nullopt) << "it would touch the far edge";
  EXPECT_EQ(FittingEdge(-3000, 15000, 19200), std::nullopt) << "a screen that is gone";
}

}  // namespace
}  // namespace tarnwick::board
