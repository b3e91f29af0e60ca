// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/list_query.h"

#include "board_rows.h"
#include "database/connection_impl.h"
#include "database/engine/packing.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

ListFilter March2005() {
  ListFilter filter;
  filter.DateFrom = DateTime::FromDate(2005, 3, 7);
  filter.DateTo = DateTime::FromDate(2005, 3, 7);
  return filter;
}

TEST(ListTexts, DatesAreMonthFirstInAnyLocaleAndCountsNeverContradictEachOther) {
  EXPECT_EQ(CountsText(120, 75), "120; 75 In; 45 Out");
  EXPECT_EQ(CountsText(12, 15), "12; 12 In; 0 Out");

  platform::SetLocaleOverride("de_DE");
  EXPECT_EQ(FormatFilterDate(DateTime::FromDate(2005, 3, 7), true), "#03/07/2005 00:00:00#");
  EXPECT_EQ(FormatFilterDate(DateTime::FromDate(2005, 3, 7), false), "#03/07/2005 23:59:59#");
  EXPECT_EQ(FormatFilterDate(DateTime::FromDate(102, 11, 30), true), "#11/30/0102 00:00:00#");
  platform::SetLocaleOverride("");
}

TEST(ListTexts, WhatAPersonTypesStaysAText) {
  const Case kRows[] = {
      {"an apostrophe becomes an underscore", "it's", "it_s"},
      {"SQL", "x%' OR '1'='1\"; DELETE", "x%_ OR _1_=_1_; DELETE"},
      {"a long text is cut", std::string(300, 'x'), std::string(255, 'x')},
      {"blanks alone are a condition too", "  ", ""},
  };
  for (const Case& row : kRows) {
    ListFilter filter = March2005();
    filter.Subject = filter.MailText = row.given;
    EXPECT_EQ(BuildListWhere(filter),
              "WHERE ReceivedTime BETWEEN #03/07/2005 00:00:00# AND #03/07/2005 23:59:59# AND "
              "INSTR(Email.Subject, '" +
                  row.expected + "') <> 0 AND Email.Body Like '%" + row.expected + "%'")
        << row.what;
  }
}

class ListQuery : public testing::ProgramFixture {
 protected:
  ~ListQuery() override { ResetBoard(); }

  // What a filter lists of what was added.
  static std::vector<std::string> Listed(const std::function<void(ListFilter&)>& change) {
    Board().Filter = EveryMessage();
    change(Board().Filter);
    EXPECT_TRUE(OpenEmailList(BuildListWhere(Board().Filter)));
    return ListedSubjects();
  }
};

TEST_F(ListQuery, FiltersFindWhatTheyName) {
  AddListed({.subject = "Budget", .name = "O_Neill", .direction = "Out", .body = "the figures"});
  AddListed({.subject = "Re: budget", .files = {"plan.xls", "PLAN2.XLS"}, .hot = true});
  AddListed({.subject = "Привет", .body = "100% sure"});
  const struct {
    const char* what;
    std::function<void(ListFilter&)> change;
    std::vector<std::string> listed;
  } kRows[] = {
      {"a subject", [](ListFilter& f) { f.Subject = "BUDGET"; }, {"Re: budget", "Budget"}},
      {"Cyrillic", [](ListFilter& f) { f.Subject = "пРи"; }, {"Привет"}},
      {"a name", [](ListFilter& f) { f.FromTo = "o'neill"; }, {"Budget"}},
      {"a file", [](ListFilter& f) { f.FileName = "plan"; }, {"Re: budget"}},
      {"with files", [](ListFilter& f) { f.AttachedFile = true; }, {"Re: budget"}},
      {"hot", [](ListFilter& f) { f.Active = true; }, {"Re: budget"}},
      {"a text", [](ListFilter& f) { f.MailText = "Figures"; }, {"Budget"}},
      {"sent", [](ListFilter& f) { f.Direction = ListDirection::kOut; }, {"Budget"}},
      {"received",
       [](ListFilter& f) { f.Direction = ListDirection::kIn; },
       {"Привет", "Re: budget"}},
      {"by name upwards",
       [](ListFilter& f) {
         f.Subject = "budget";
         f.SortBy = ListSort::kFromTo;
         f.SortOrder = ListOrder::kAscending;
       },
       {"Re: budget", "Budget"}},
  };
  for (const auto& row : kRows) {
    EXPECT_THAT(Listed(row.change), ::testing::UnorderedElementsAreArray(row.listed)) << row.what;
  }
}

TEST_F(ListQuery, OneDayIsListedToItsLastSecond) {
  DateTime day = DateTime::FromDate(2005, 3, 7);
  AddListed({.subject = "before", .received = day.AddSeconds(-1)});
  AddListed({.subject = "first", .received = day});
  AddListed({.subject = "last", .received = day.WithTime(23, 59, 59)});
  AddListed({.subject = "after", .received = day.AddDays(1)});
  EXPECT_THAT(Listed([&](ListFilter& f) { f.DateFrom = f.DateTo = day; }),
              ElementsAre("last", "first"));
}

TEST_F(ListQuery, AMessageWithThreeFilesIsListedOnceAndCountedThrice) {
  AddListed({.subject = "files", .files = {"a", "b", "c"}});
  ASSERT_TRUE(ListEvery());
  EXPECT_EQ(CountListed(), 1);
  EXPECT_EQ(CountIncoming(), 3);
  EXPECT_EQ(CountsText(CountListed(), CountIncoming()), "1; 1 In; 0 Out");
}

TEST_F(ListQuery, NothingFoundOrLeftListsThePlaceholderOfToday) {
  AddListed({.subject = "one"});
  ASSERT_TRUE(ListEvery());
  Run("DELETE * FROM Email");
  ASSERT_TRUE(RequeryEmailList());
  EXPECT_TRUE(Board().ListIsPlaceholder);
  AddListed({.subject = "one"});
  EXPECT_THAT(Listed([](ListFilter& f) { f.Subject = "none"; }), ElementsAre());
  EXPECT_TRUE(Board().ListIsPlaceholder);
  jet::Recordset& list = Board().ListRecordset;
  EXPECT_EQ(list.RecordCount(), 1);
  EXPECT_EQ(list.FieldName(0), "Sent");
  EXPECT_EQ(list.FieldCount(), repository::ListIndex("ReceivedTime"));
  EXPECT_TRUE(list.Field("Sent").AsText().starts_with("6/15/2020")) << list.Field(0).AsText();
  EXPECT_EQ(CountsText(CountListed(), CountIncoming()), "0; 0 In; 0 Out");
}

TEST_F(ListQuery, AFailingQueryLeavesTheListAsItWas) {
  AddListed({.subject = "one"});
  ASSERT_TRUE(ListEvery());
  std::string where = Board().LastWhere;
  EXPECT_FALSE(OpenEmailList("WHERE NoSuchColumn = 1"));
  EXPECT_THAT(ui_.Shown("error"), ElementsAre(EndsWith(" OpenEmailList")));
  EXPECT_EQ(Board().LastWhere, where);
  EXPECT_THAT(ListedSubjects(), ElementsAre("one"));
}

// What the engine does for a look at the list, whatever the machine.
struct Work {
  int64_t rows = 0;
  int64_t pages = 0;
  int64_t statements = 0;
  int64_t texts = 0;
};

Work WorkSince(const Work& before) {
  const jet::Database& engine = repository::RepositoryDb().GetImpl().session.Engine();
  return {engine.StepsRun() - before.rows, engine.PagesVisited() - before.pages,
          engine.StatementsPrepared() - before.statements,
          static_cast<int64_t>(jet::UnpackCount()) - before.texts};
}

class ListWork : public testing::ProgramFixture {
 protected:
  void AddMany(int from, int to) {
    jet::CommitGroup group(repository::RepositoryDb());
    std::string filler = "a text that is long enough to be packed when it is stored, as most are. ";
    for (int i = from; i < to; i++) {
      ListedEmail email{"plan " + std::to_string(i * 7919), "Person " + std::to_string(i % 40)};
      email.received = DateTime::FromSeconds(email.received.Seconds() + i * 3000);
      email.direction = i % 4 == 0 ? "Out" : "In";
      email.body = filler + filler + std::to_string(i * 104729);
      if (i < 500 && i % 100 == 0) email.body += " quetzal", email.subject += " quetzal";
      if (i % 5 == 0) email.files = {"a.doc"};
      email.hot = i % 50 == 0;
      AddListed(email);
      repository::RepositoryDb().EndUnit();
    }
  }

  static Work Look(const std::function<void(ListFilter&)>& change) {
    ListFilter filter = EveryMessage();
    change(filter);
    Board().Filter = filter;
    Work before = WorkSince({});
    EXPECT_TRUE(OpenEmailList(BuildListWhere(filter)));
    EXPECT_FALSE(Board().ListIsPlaceholder);
    jet::Recordset& list = Board().ListRecordset;
    int64_t total = CountListed();
    CountIncoming();
    for (int64_t first : {int64_t{1}, std::max<int64_t>(total / 2, 1)}) {
      for (int64_t row = first; row < first + 30 && row <= total; row++) {
        list.SetAbsolutePosition(row);
        for (int field = 0; field < static_cast<int>(repository::kListColumnCount); field++)
          list.Field(field).AsText();
      }
    }
    return WorkSince(before);
  }
};

// Four times the messages are no more work; a pass over them would be.
TEST_F(ListWork, DoesNotGrowWithTheRepository) {
  const struct {
    const char* what;
    std::function<void(ListFilter&)> change;
  } kLooks[] = {
      {"everything", [](ListFilter&) {}},
      {"incoming", [](ListFilter& f) { f.Direction = ListDirection::kIn; }},
      {"hot", [](ListFilter& f) { f.Active = true; }},
      {"with files", [](ListFilter& f) { f.AttachedFile = true; }},
      {"of some days", [](ListFilter& f) { f.DateTo = f.DateFrom; }},
      {"by correspondent", [](ListFilter& f) { f.SortBy = ListSort::kFromTo; }},
      {"by direction", [](ListFilter& f) { f.SortBy = ListSort::kDirection; }},
      {"of a correspondent", [](ListFilter& f) { f.FromTo = "person 7"; }},
      {"part of a subject", [](ListFilter& f) { f.Subject = "QUETZAL"; }},
      {"part of a text", [](ListFilter& f) { f.MailText = "QUETZAL"; }},
  };
  std::vector<Work> little;
  AddMany(0, 2000);
  for (const auto& look : kLooks) {
    Look(look.change);
    little.push_back(Look(look.change));
  }
  AddMany(2000, 8000);
  Work first = Look([](ListFilter&) {});
  // The column cache is brought up to date by a pass over the list's index, or message by message.
  EXPECT_LT(first.rows, 14000);
  EXPECT_LT(first.pages, 330);
  for (size_t i = 0; i < std::size(kLooks); i++) {
    Work now = Look(kLooks[i].change);
    EXPECT_LE(now.rows, little[i].rows * 5 / 4 + 40) << kLooks[i].what;
    EXPECT_LE(now.pages, little[i].pages * 3 / 2 + 60) << kLooks[i].what;
    EXPECT_LE(now.statements, little[i].statements + 2) << kLooks[i].what;
    EXPECT_LE(now.texts, 10) << kLooks[i].what;
  }
}

}  // namespace
}  // namespace tarnwick::board
