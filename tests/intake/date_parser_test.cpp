// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/date_parser.h"

#include "core/run_state.h"
#include "support/testing.h"

namespace tarnwick::intake {
namespace {

class DateParser : public ::testing::Test {
 protected:
  DateParser() {
    SetNow(DateTime::FromDate(2020, 6, 15).WithTime(12, 0, 0));
    core::State().LocalZoneHours = 3;
  }
  ~DateParser() override {
    platform::SetClockOverride({});
    platform::SetLocaleOverride("");
    core::ResetState();
  }
};

// Date, time and zone.
std::string Parsed(const std::string& text, bool move) {
  DateTime date;
  std::string time;
  std::string zone;
  twParseDate(date, time, zone, text, move);
  return date.ToIso() + "|" + time + "|" + zone;
}

TEST_F(DateParser, DatesAreMovedFromTheSendersZone) {
  const Case rows[] = {
      {"usual", "Mon, 5 Jan 2004 10:20:30 +0200", "2004-01-05 11:20:30|10:20:30|+0200"},
      {"west is not moved", "Mon, 5 Jan 2004 10:20:30 -0500", "2004-01-05 10:20:30|10:20:30|-0500"},
      {"zone name", "Mon, 5 Jan 2004 10:20:30 GMT", "2004-01-05 10:20:30|10:20:30|0"},
      {"comment behind the zone", "Thu, 22 Aug 2002 12:36:23 +0100 (IST)",
       "2002-08-22 14:36:23|12:36:23|+0100"},
      {"two-digit year", "5 Jan 04 10:20:30 GMT", "2004-01-05 10:20:30|10:20:30|0"},
      {"two-digit year of the last century", "5 Jan 98 10:20:30 GMT",
       "1998-01-05 10:20:30|10:20:30|0"},
      {"the year 102", "Mon, 5 Jan 102 10:20:30 +0000", "0102-01-05 10:20:30|10:20:30|+0000"},
      {"the year 0002", "Mon, 5 Jan 0002 10:20:30 +0000", "2002-01-05 10:20:30|10:20:30|+0000"},
      {"year last", "Mon Jan 5 10:20:30 2004", "2004-01-05 10:20:30|10:20:30|0"},
      {"no time", "5 Jan 2004", "2004-01-05 12:00:00|12:00:00|0"},
      {"no seconds", "5 Jan 2004 7:05 +0300", "2004-01-05 07:05:00|7:05|+0300"},
      {"afternoon", "5 Jan 2004 7:05:00PM", "2004-01-05 19:05:00|7:05:00PM|0"},
      {"past noon", "5 Jan 2004 12:05PM", "2004-01-05 12:05:00|12:05PM|0"},
      {"past midnight", "5 Jan 2004 12:05am", "2004-01-05 00:05:00|12:05am|0"},
      {"half-hour zone", "5 Jan 2004 10:00:00 +0530", "2004-01-05 08:00:00|10:00:00|+0530"},
      {"half rounds to even", "5 Jan 2004 10:00:00 +0550", "2004-01-05 07:00:00|10:00:00|+0550"},
      {"double sign", "5 Jan 2004 10:00:00 +-0300", "2004-01-05 10:00:00|10:00:00|-0300"},
      {"other double sign", "5 Jan 2004 10:00:00 x -+0100", "2004-01-05 12:00:00|10:00:00|+0100"},
      {"day beyond the month", "31 Feb 2004 10:00:00", "2004-03-02 10:00:00|10:00:00|0"},
      {"no day", "Jan 32 2004", "2004-01-15 12:00:00|12:00:00|0"},
      {"nothing", "", "2020-06-15 12:00:00|12:00:00|0"},
      {"words", "some day soon", "2020-06-15 12:00:00|12:00:00|0"},
      {"tabs and commas", "\tMon,\t5 Jan, 2004\t10:20:30\t+0300 ",
       "2004-01-05 10:20:30|10:20:30|+0300"},
      {"full month name", "5 September 2004 10:00:00", "2004-09-05 10:00:00|10:00:00|0"},
  };
  for (const Case& row : rows) EXPECT_EQ(Parsed(row.given, true), row.expected) << row.what;
}

TEST_F(DateParser, TimesOfTwelveHoursAreReadInTheUsersLanguage) {
  const struct {
    const char *locale, *text, *date;
  } rows[] = {
      {"C", "Monday, January 5, 2004 10:20 PM", "2004-01-05 22:20:00"},
      {"en_US", "Monday, January 05, 2004 12:20 AM", "2004-01-05 00:20:00"},
      {"en_US", "5 Jan 2004 7:05:00 p.m. +0300", "2004-01-05 19:05:00"},
      {"en_US", "5 Jan 2004 7:05:00\u202FPM", "2004-01-05 19:05:00"},
      {"es_MX", "5 Jan 2004 7:05:00 p. m.", "2004-01-05 19:05:00"},
      {"el_GR", "5 Jan 2004 7:05:00 μ.μ.", "2004-01-05 19:05:00"},
      {"ko_KR", "5 Jan 2004 오후 7:05:00", "2004-01-05 19:05:00"},
      {"en_US", "5 Jan 2004 22:05 PM", "2004-01-05 22:05:00"},
      {"en_US", "5 Jan 2004 7:05 PDT", "2004-01-05 07:05:00"},
  };
  for (const auto& row : rows) {
    platform::SetLocaleOverride(row.locale);
    EXPECT_EQ(Parsed(row.text, false).substr(0, 19), row.date) << row.text;
  }
}

TEST_F(DateParser, ReceivedDatesStayWhereTheyAre) {
  EXPECT_EQ(Parsed("Mon, 5 Jan 2004 10:20:30 +0200", false), "2004-01-05 10:20:30|10:20:30|+0200");
}

TEST_F(DateParser, AnErrorKeepsWhatWasSet) {
  const Case rows[] = {
      {"eleven words", "1 2 3 4 5 6 7 8 9 10 11", "1970-01-01 00:00:00||"},
      {"ten words and no time", "a b c d e f g h i j", "1970-01-01 00:00:00||"},
      {"hour 25", "5 Jan 2004 25:00:00", "2004-01-05 00:00:00|25:00:00|"},
      {"no time with a colon", "5 Jan 2004 10:20:30 (at:home)", "2004-01-05 00:00:00|(at:home)|"},
      {"year too large", "5 Jan 99999 10:00:00", "1970-01-01 00:00:00||"},
      {"year beyond all numbers", "5 Jan 999999999999999999999999 10:00:00",
       "1970-01-01 00:00:00||"},
      {"negative year", "5 Jan -5 10:00:00", "1970-01-01 00:00:00||"},
      {"zone too large", "5 Jan 2004 10:00:00 +99999999", "2004-01-05 10:00:00|10:00:00|+99999999"},
  };
  for (const Case& row : rows) EXPECT_EQ(Parsed(row.given, true), row.expected) << row.what;
}

TEST_F(DateParser, AnOverlongDateIsLoggedUnderOneName) {
  testing::TempFolder folder;
  core::State().LogFile = folder.File("log");
  EXPECT_FALSE(NamesDate("1 2 3 4 5 6 7 8 9 10 11"));
  EXPECT_NE(platform::ReadFile(core::State().LogFile).find("out of range twParseDate; \r\n"),
            std::string::npos);
}

TEST_F(DateParser, MonthsAreKnownInEnglishAndInTheUsersLanguage) {
  core::State().LocalMonthNames = {"января", "февраля", "марта",    "апреля",  "мая",    "июня",
                                   "июля",   "августа", "сентября", "октября", "ноября", "декабря"};
  const std::pair<const char*, int> kNames[] = {{"jAnuary", 1}, {"DEC", 12},    {"МАРТ", 3},
                                                {"мая", 5},     {"ок", 0},      {"Ja", 0},
                                                {"", 0},        {"\xFF\xFE", 0}};
  for (const auto& [name, number] : kNames) EXPECT_EQ(MonthNumber(name), number) << name;
  core::State().LocalMonthNames = {};
  EXPECT_EQ(MonthNumber("x"), 0);
}

}  // namespace
}  // namespace tarnwick::intake
