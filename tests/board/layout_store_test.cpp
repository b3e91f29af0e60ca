// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/layout_store.h"

#include "board/list_query.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

using LayoutStore = testing::ProgramFixture;

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

TEST_F(LayoutStore, WidthsGoByTheNamesOfTheColumns) {
  const std::vector<std::string_view> kFormer = {"Mark", "Subject", "ID"};
  const std::vector<std::string_view> kMoved = {"Mark", "ID", "Replied", "Subject"};
  repository::SaveGridLayout(kGridGroup, {300, 1500, 0});
  EXPECT_THAT(repository::ReadNamedLayout(kGridGroup, kFormer),
              ElementsAre(Pair(0, 300), Pair(1, 1500), Pair(2, 0)))
      << "a program that knew numbers alone stored these";
  repository::SaveNamedLayout(kGridGroup, kFormer, {300, 1500, 0});
  EXPECT_THAT(repository::ReadNamedLayout(kGridGroup, kMoved),
              ElementsAre(Pair(0, 300), Pair(1, 0), Pair(3, 1500)))
      << "a new column keeps its designed width";
  EXPECT_THAT(repository::ReadGridLayout(kGridGroup, 3),
              ElementsAre(Pair(0, 300), Pair(1, 1500), Pair(2, 0)));
  repository::SetParameter("EmailGrid", "1", repository::kAmountColumn, 1800);
  EXPECT_EQ(repository::ReadNamedLayout(kGridGroup, kMoved).at(3), 1800);
}

// What lies in people's settings as numbers and in their scripts as columns.
TEST(StoredNumbers, MeanWhatTheyMeant) {
  std::string columns;
  for (std::string_view name : kGridNames) columns += std::string(name) + " ";
  EXPECT_THAT(columns,
              StartsWith("Mark Received Subject FromTo Direction Active ID EmailImportance "
                         "Application ReceivedTime "));
  std::string printed;
  for (const auto& column : repository::kPrintedColumns) printed += std::string(column.name) + " ";
  EXPECT_THAT(printed, StartsWith("ID ReceivedTime Direction Active FromTo Subject "));
  const std::pair<ListSort, const char*> kSorts[] = {{ListSort{1}, "ORDER BY Email.ReceivedTime"},
                                                     {ListSort{2}, "ORDER BY Email.Subject"},
                                                     {ListSort{3}, "ORDER BY MeContact.Name"},
                                                     {ListSort{4}, "ORDER BY Email.Direction"},
                                                     {ListSort{0}, ""}};
  for (const auto& [sort, clause] : kSorts) {
    ListFilter filter;
    filter.SortBy = sort;
    filter.SortOrder = ListOrder{2};
    EXPECT_EQ(ListSortClause(filter), clause);
    filter.SortOrder = ListOrder{1};
    EXPECT_EQ(ListSortClause(filter), std::string(clause) + " DESC");
  }
  const std::pair<ListDirection, const char*> kDirections[] = {{ListDirection{2}, "'In'"},
                                                               {ListDirection{3}, "'Out'"}};
  for (const auto& [direction, word] : kDirections) {
    ListFilter filter;
    filter.Direction = direction;
    EXPECT_TRUE(BuildListWhere(filter).ends_with(word)) << word;
  }
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
