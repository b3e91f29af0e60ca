// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers

#include "board/board_rows.h"
#include "board/timeline_scope.h"
#include "support/program_fixture.h"
#include "timeline/query.h"
#include "timeline/state.h"

namespace tarnwick::timeline {
namespace {

using board::Board;
using board::EveryMessage;
using board::ListDirection;
using board::ListFilter;
using board::TimelineScope;

int Day(int year, int month, int day) {
  return DayNumber(DateTime::FromDate(year, month, day));
}

TEST(TimelinePeriods, FollowTheCalendar) {
  using enum PeriodUnit;
  EXPECT_EQ(PeriodAround(Day(2004, 2, 29), kMonth), (DaySpan{Day(2004, 2, 1), Day(2004, 2, 29)}));
  EXPECT_EQ(PeriodAround(Day(1900, 2, 28), kMonth).Days(), 28);
  EXPECT_EQ(PeriodAround(Day(2003, 12, 31), kMonth),
            (DaySpan{Day(2003, 12, 1), Day(2003, 12, 31)}));
  EXPECT_EQ(PeriodAround(Day(2004, 12, 31), kYear).Days(), 366);
  EXPECT_EQ(PeriodAround(Day(1969, 12, 31), kYear), (DaySpan{-365, -1}));
  EXPECT_EQ(PeriodAround(Day(9999, 12, 31), kMonth).last, Day(9999, 12, 31));
  EXPECT_EQ(WholePeriods({Day(2004, 2, 29), Day(2004, 3, 1)}, kMonth),
            (DaySpan{Day(2004, 2, 1), Day(2004, 3, 31)}));
  EXPECT_EQ(DayNumber(DateTime::FromDate(1969, 12, 31).WithTime(23, 59, 59)), -1);
}

TEST(TimelinePeriods, AreCalledAsPeopleCallThem) {
  platform::SetLocaleOverride("en_US");
  const std::pair<DaySpan, const char*> kSpans[] = {
      {{Day(2004, 1, 1), Day(2004, 12, 31)}, "2004"},
      {{Day(2003, 1, 1), Day(2004, 12, 31)}, "2003 – 2004"},
      {{Day(2004, 2, 1), Day(2004, 2, 29)}, "February 2004"},
      {{Day(2004, 2, 1), Day(2004, 3, 31)}, "February 2004 – March 2004"},
      {{Day(2004, 2, 7), Day(2004, 2, 7)}, "7 February 2004"},
      {{Day(2004, 2, 1), Day(2004, 2, 28)}, "1 February 2004 – 28 February 2004"}};
  for (const auto& [span, name] : kSpans) EXPECT_EQ(SpanName(span), name);
  platform::SetLocaleOverride("");
}

class Counts {
 public:
  Counts& Put(int year, int month, int day, int64_t messages) {
    counts_.Add(Day(year, month, day), {messages, 0});
    return *this;
  }
  // A message a day.
  Counts& Fill(DaySpan span) {
    for (int day = span.first; day <= span.last; ++day) counts_.Add(day, {1, 0});
    return *this;
  }
  operator DayCounts() const { return counts_; }  // NOLINT: reads as the counts themselves

 private:
  DayCounts counts_;
};

TEST(TimelinePeriods, StrayDatesDoNotSqueezeTheRest) {
  const int kToday = Day(2026, 11, 21);
  DaySpan mail{Day(2001, 5, 3), Day(2005, 8, 9)};
  DayCounts strays = Counts()
                         .Fill(mail)
                         .Put(1970, 1, 1, 700)
                         .Put(1997, 3, 1, 2)
                         .Put(2036, 2, 7, 500)
                         .Put(9999, 12, 31, 1);
  EXPECT_EQ(strays.Main(kToday), mail);
  EXPECT_EQ(strays.Whole(), (DaySpan{0, Day(9999, 12, 31)}));
  // Two archives years apart are both mail; and what is all there is is not stray.
  DayCounts two = Counts().Fill(mail).Put(2015, 1, 1, 900);
  EXPECT_EQ(two.Main(kToday), (DaySpan{mail.first, Day(2015, 1, 1)}));
  DayCounts old = Counts().Put(1970, 1, 1, 3);
  EXPECT_EQ(old.Main(kToday), (DaySpan{0, 0}));
  EXPECT_FALSE(DayCounts().Main(kToday).has_value());
}

class State : public ::testing::Test {
 protected:
  State() {
    state_.SetRoom(100);
    state_.SetCounts(
        Counts().Fill({Day(2001, 5, 3), Day(2005, 8, 9)}).Put(1970, 1, 1, 2).Put(1970, 3, 5, 1),
        Day(2026, 1, 1));
    state_.SetChosen({0, Day(2026, 1, 1)});
  }
  TimelineState state_;
};

TEST_F(State, BarsCoverTheViewAndTheRestIsToldOf) {
  ASSERT_EQ(state_.Unit(), PeriodUnit::kMonth);
  EXPECT_EQ(state_.Bars().size(), 52U);
  EXPECT_EQ(state_.Bars().front().count.Total(), 29);  // 3 to 31 May
  EXPECT_EQ(state_.Before().Total(), 3);
  EXPECT_EQ(state_.After().Total(), 0);
  int64_t shown = 0;
  for (const TimelineState::Bar& bar : state_.Bars()) shown += bar.count.Total();
  EXPECT_EQ(shown + state_.Before().Total(), state_.Counts().Total().Total());
  state_.SetRoom(20);
  EXPECT_EQ(state_.Unit(), PeriodUnit::kYear);
  EXPECT_EQ(state_.Bars().size(), 5U);
  state_.SetRoom(2000);
  EXPECT_EQ(state_.Unit(), PeriodUnit::kDay);
}

TEST_F(State, HomeAtTheFirstBarShowsWhatLiesBeforeIt) {
  state_.MoveToEdge(false, false);
  ASSERT_EQ(state_.CursorBar(), 0);
  state_.MoveToEdge(false, false);
  EXPECT_EQ(state_.Shown(), (DaySpan{0, Day(1970, 3, 31)}));
  EXPECT_EQ(state_.CursorBar(), 0);
  EXPECT_EQ(state_.Before().Total(), 0);
  EXPECT_GT(state_.After().Total(), 1000);
  ASSERT_TRUE(state_.Back());
  EXPECT_EQ(state_.Bars().size(), 52U);
}

TEST_F(State, ZoomGoesInStepsAndBackByTheSame) {
  DaySpan march{Day(2003, 3, 1), Day(2003, 3, 31)};
  ASSERT_TRUE(state_.Choose(march));
  ASSERT_TRUE(state_.ZoomIn(march));
  EXPECT_EQ(state_.Unit(), PeriodUnit::kDay);
  EXPECT_FALSE(state_.ZoomIn({march.first, march.first}));  // a month is as near as it gets
  state_.PutCursor(0, false);
  state_.MoveCursor(-1, true);  // the view moves on, the selection keeps its end
  EXPECT_EQ(state_.Selected(), (DaySpan{march.first - 1, march.first}));
  ASSERT_TRUE(state_.ZoomOut());
  EXPECT_EQ(state_.Shown(), (DaySpan{Day(2003, 1, 1), Day(2003, 12, 31)}));
  ASSERT_TRUE(state_.ZoomOut());
  EXPECT_EQ(state_.Shown(), (DaySpan{Day(2001, 5, 1), Day(2005, 8, 31)}));
  ASSERT_TRUE(state_.ZoomOut());
  EXPECT_EQ(state_.Shown(), (DaySpan{0, Day(2005, 8, 31)}));
  EXPECT_FALSE(state_.ZoomOut());
  for (int i = 0; i < 4; ++i) {
    EXPECT_EQ(state_.Chosen(), march);
    ASSERT_TRUE(state_.Back());
  }
  EXPECT_EQ(state_.Chosen(), march);
  ASSERT_TRUE(state_.Back());
  EXPECT_TRUE(state_.ChoosesAll());
  EXPECT_FALSE(state_.Back());
}

class TimelineCounting : public testing::ProgramFixture {
 protected:
  TimelineCounting() {
    auto at = [](int year, int month, int day, int hour = 12) {
      return DateTime::FromDate(year, month, day).WithTime(hour, 59, 59);
    };
    AddListed({.subject = "Budget", .received = at(2004, 2, 29, 23), .files = {"a.doc", "b.doc"}});
    AddListed(
        {.subject = "Re: Budget", .name = "Bob", .direction = "Out", .received = at(2004, 2, 29)});
    AddListed({.subject = "Budget", .name = "O'Neil", .received = at(2004, 3, 1, 0), .hot = true});
    AddListed(
        {.subject = "Photos", .received = at(1970, 1, 1), .body = "holiday", .files = {"c.jpg"}});
    AddListed({.subject = "Plan", .name = "Anna", .received = at(1969, 12, 31)});
    AddListed({.subject = "Plan", .direction = "Out", .received = at(2036, 2, 7)});
  }
  ~TimelineCounting() override { board::ResetBoard(); }

  template <typename Reader>
  static const Reader& ReadAll(Reader& reader, const ListFilter& filter) {
    reader.Start(TimelineScope(filter));
    while (reader.Step()) {
    }
    return reader;
  }
  static MessageCount Count(const ListFilter& filter) {
    TimelineReader reader;
    return ReadAll(reader, filter).Counts().Total();
  }
  static std::vector<Correspondent> Top(const ListFilter& filter) {
    CorrespondentReader reader;
    return ReadAll(reader, filter).Top(20);
  }
};

TEST_F(TimelineCounting, AddsUpToTheListForEveryFilter) {
  const struct {
    const char* what;
    std::function<void(ListFilter&)> change;
  } kRows[] = {
      {"all", [](ListFilter&) {}},
      {"incoming", [](ListFilter& f) { f.Direction = ListDirection::kIn; }},
      {"outgoing", [](ListFilter& f) { f.Direction = ListDirection::kOut; }},
      {"hot", [](ListFilter& f) { f.Active = true; }},
      {"with files", [](ListFilter& f) { f.AttachedFile = true; }},
      {"a correspondent", [](ListFilter& f) { f.FromTo = "ann"; }},
      {"a file of which a message has two", [](ListFilter& f) { f.FileName = "doc"; }},
      {"a subject", [](ListFilter& f) { f.Subject = "budget"; }},
      {"a body", [](ListFilter& f) { f.MailText = "holi"; }},
      {"several", [](ListFilter& f) { f.FromTo = "Ann", f.FileName = "a", f.Subject = "B"; }},
      {"quotation marks", [](ListFilter& f) { f.FromTo = "'; DELETE", f.FileName = "\"'"; }},
      {"nothing", [](ListFilter& f) { f.Subject = "absent"; }},
  };
  for (const auto& row : kRows) {
    Board().Filter = EveryMessage();
    row.change(Board().Filter);
    ASSERT_TRUE(board::OpenEmailList(board::BuildListWhere(Board().Filter)));
    EXPECT_EQ(Count(Board().Filter).Total(), board::CountListed()) << row.what;
    Board().Filter.Direction = ListDirection::kOut;
    ASSERT_TRUE(board::OpenEmailList(board::BuildListWhere(Board().Filter)));
    EXPECT_EQ(Count(Board().Filter), (MessageCount{0, board::CountListed()})) << row.what;
  }
}

TEST_F(TimelineCounting, PutsEachMessageOnItsDay) {
  ListFilter narrow = EveryMessage();
  narrow.DateFrom = narrow.DateTo = DateTime::FromDate(2004, 3, 1);  // its dates don't matter
  TimelineReader reader;
  const DayCounts& counts = ReadAll(reader, narrow).Counts();
  const std::pair<int, MessageCount> kDays[] = {{Day(2004, 2, 29), {1, 1}},
                                                {Day(2004, 3, 1), {1, 0}},
                                                {Day(1969, 12, 31), {1, 0}},
                                                {Day(1970, 1, 1), {1, 0}},
                                                {Day(2036, 2, 7), {0, 1}}};
  for (const auto& [day, count] : kDays) EXPECT_EQ(counts.Within({day, day}), count) << day;

  // Counted once, it is there at once; until something changes.
  AddListed({.subject = "New"});
  reader.Start(TimelineScope(narrow));
  EXPECT_FALSE(reader.IsRunning());
  EXPECT_EQ(reader.Counts().Total().Total(), 6);
  reader.Forget();
  EXPECT_EQ(ReadAll(reader, narrow).Counts().Total().Total(), 7);
}

// The parts that the counting falls into leave no day out and count none twice.
TEST_F(TimelineCounting, CountsEveryDayOnceAcrossItsParts) {
  Run("DELETE * FROM Email");
  EXPECT_EQ(Count(EveryMessage()).Total(), 0);
  EXPECT_TRUE(Top(EveryMessage()).empty());
  constexpr int kDays = 200;
  const int last = DayNumber(platform::Now());  // where the first part, of 120 days, ends
  for (int day = last - kDays + 1; day <= last; ++day) {
    AddListed({.subject = "daily", .received = DayDate(day).WithTime(23, 59, 59)});
  }
  TimelineReader reader;
  ReadAll(reader, EveryMessage());
  for (int day = last - kDays + 1; day <= last; ++day) {
    EXPECT_EQ(reader.Counts().Within({day, day}), (MessageCount{1, 0})) << DayDate(day).ToIso();
  }
}

TEST_F(TimelineCounting, RanksCorrespondentsOfTheChosenDays) {
  ListFilter filter = EveryMessage();
  EXPECT_THAT(Top(filter), ElementsAre(Correspondent{"Ann", 3}, Correspondent{"Bob", 1},
                                       Correspondent{"O'Neil", 1}, Correspondent{"Anna", 1}));
  filter.FromTo = "Bob";  // the one who is filtered by doesn't hide the others
  filter.DateFrom = DateTime::FromDate(2004, 2, 29);
  filter.DateTo = DateTime::FromDate(2004, 2, 29);
  EXPECT_THAT(Top(filter), ElementsAre(Correspondent{"Ann", 1}, Correspondent{"Bob", 1}));
}

}  // namespace
}  // namespace tarnwick::timeline
