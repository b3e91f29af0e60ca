// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/message_commands.h"

#include "board_rows.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

TEST(Related, OnlyTheFirstPrefixGoes) {
  const Case kRows[] = {
      {"no prefix", "Budget", "Budget"},
      {"a prefix", "Re: Budget", "Budget"},
      {"two prefixes", "Re: Fw: Budget", "Fw: Budget"},
      {"nothing behind it", "Budget: ", "Budget"},
      {"empty", "", ""},
  };
  for (const Case& row : kRows) EXPECT_EQ(RelatedSubject(row.given), row.expected) << row.what;
}

class MessageCommands : public testing::ProgramFixture {
 protected:
  ~MessageCommands() override { ResetBoard(); }
  static bool IsHot(int64_t id) {
    return Query("SELECT Active FROM Email WHERE ID=" + std::to_string(id)).AsText() == "+";
  }
};

TEST_F(MessageCommands, WithoutASelectionOrAMessageTheyOnlySaySo) {
  EXPECT_FALSE(DeleteMessages({}));
  EXPECT_FALSE(ToggleActive({}));
  EXPECT_THAT(ui_.Shown("box"),
              ElementsAre("There isn't selected row.", "There isn't selected row."));
  ASSERT_TRUE(ListEvery());
  ui_.yesNo = {true};
  EXPECT_FALSE(MarkAllNotHot()) << "the placeholder is no message";
  EXPECT_EQ(CountRows("ObjectList"), 0);
}

TEST_F(MessageCommands, DeletingAsksFirst) {
  int64_t id = AddListed({.subject = "keep"});
  ui_.yesNo = {false};
  EXPECT_FALSE(DeleteMessages({{id, "keep"}}));
  EXPECT_EQ(CountRows("Email"), 1);
  core::State().RepositoryIsEmpty = false;
  ui_.yesNo = {true};
  EXPECT_TRUE(DeleteMessages({{id, "keep"}}));
  EXPECT_TRUE(core::State().RepositoryIsEmpty) << "the next load is a first one";
  EXPECT_EQ(CountRows("Email"), 0);
  EXPECT_EQ(ui_.Shown("question")[0],
            "Are you realy want to delete the email with subject \r\nkeep");
}

TEST_F(MessageCommands, StopEndsALongDeletionBetweenTwoMessages) {
  std::vector<SelectedMessage> messages;
  for (int64_t id : testing::AddMany(300, {.subject = "many"})) messages.push_back({id, "many"});
  ui_.yesNo = {true};
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  EXPECT_TRUE(DeleteMessages(messages));
  EXPECT_GT(CountRows("Email"), 0);
  EXPECT_LT(CountRows("Email"), 300);
  EXPECT_FALSE(core::State().ImportCancelFlag);
}

TEST_F(MessageCommands, HotMarksToggleAloneAndAgreeInNumbers) {
  int64_t a = AddListed({.subject = "a"});
  int64_t b = AddListed({.subject = "b", .hot = true});
  for (bool isHot : {false, true}) {
    EXPECT_TRUE(ToggleActive({{b, ""}}));
    EXPECT_EQ(IsHot(b), isHot);
  }
  for (bool areHot : {true, false}) {
    EXPECT_TRUE(ToggleActive({{a, ""}, {b, ""}}));
    EXPECT_TRUE(IsHot(a) == areHot && IsHot(b) == areHot);
  }
  EXPECT_EQ(CountRows("Email WHERE Active Is Null"), 2);
}

TEST_F(MessageCommands, OnlyListedMessagesLoseTheirMark) {
  int64_t listed = AddListed({.subject = "listed", .hot = true});
  int64_t other = AddListed({.subject = "other", .hot = true});
  ASSERT_TRUE(ListEvery());
  Board().Filter.Subject = "listed";
  ASSERT_TRUE(OpenEmailList(BuildListWhere(Board().Filter)));
  ui_.yesNo = {false, true};
  EXPECT_FALSE(MarkAllNotHot());
  EXPECT_TRUE(IsHot(listed));
  EXPECT_TRUE(MarkAllNotHot());
  EXPECT_FALSE(IsHot(listed));
  EXPECT_TRUE(IsHot(other));
  EXPECT_EQ(ui_.Shown("question")[0], "Are you realy want to mark all emails as unactive?");
}

// What is searched for narrows as the filter does, also while there is more to find.
TEST_F(MessageCommands, CommandsOnTheListCompleteASearchAndKeepToIt) {
  std::vector<int64_t> wanted = testing::AddMany(300, {.subject = "wanted", .hot = true});
  int64_t other = AddListed({.subject = "other", .hot = true});
  Board().Found.text = "wanted";
  platform::ClockOverride clock;
  clock.tickStep = 1000;  // nothing is found at once
  platform::SetClockOverride(clock);
  ASSERT_TRUE(ListEvery());
  EXPECT_TRUE(IsListGrowing());
  auto ids = ListedIds();
  ASSERT_TRUE(ids.has_value());
  EXPECT_EQ(ids->size(), 300U);
  ASSERT_TRUE(ListEvery());
  ui_.yesNo = {true};
  EXPECT_TRUE(MarkAllNotHot());
  EXPECT_TRUE(IsHot(other));
  EXPECT_FALSE(IsHot(wanted.front()) || IsHot(wanted.back()));
  ASSERT_TRUE(ListEvery());
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  EXPECT_FALSE(ListedIds().has_value());
}

TEST_F(MessageCommands, StopEndsTheMarkingOfManyBetweenTwoLots) {
  testing::AddMany(1200, {.subject = "many", .hot = true});
  ASSERT_TRUE(ListEvery());
  auto hot = [&] { return CountRows("Email WHERE Active = '+'"); };
  ui_.yesNo = {true, true};
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  EXPECT_TRUE(MarkAllNotHot());
  EXPECT_TRUE(hot() > 0 && hot() < 1200) << hot();
  ui_.onYield = {};
  EXPECT_TRUE(MarkAllNotHot());
  EXPECT_EQ(hot(), 0);
}

}  // namespace
}  // namespace tarnwick::board
