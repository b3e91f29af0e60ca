// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/date_time.h"
#include "support/testing.h"

namespace tarnwick {
namespace {

std::string Made(int year, int month, int day) {
  try {
    return DateTime::FromDate(year, month, day).ToIso().substr(0, 10);
  } catch (const Error& error) {
    return "error " + std::to_string(error.Number());
  }
}

TEST(DateTime, MadeFromPartsRunsOnAndTakesTwoDigitYears) {
  const struct {
    int year, month, day;
    const char* made;
  } kRows[] = {
      {2004, 2, 30, "2004-03-01"},   {2003, 2, 29, "2003-03-01"},  {2004, 13, 1, "2005-01-01"},
      {2004, 0, 1, "2003-12-01"},    {2004, -12, 1, "2002-12-01"}, {2004, 1, 0, "2003-12-31"},
      {1900, 2, 29, "1900-03-01"},  // not a leap year
      {0, 1, 1, "2000-01-01"},       {29, 1, 1, "2029-01-01"},     {30, 1, 1, "1930-01-01"},
      {99, 1, 1, "1999-01-01"},      {102, 5, 6, "0102-05-06"},    {9999, 12, 31, "9999-12-31"},
      {9999, 12, 32, "error 13"},    {100, 1, 0, "error 13"},      {-1, 1, 1, "error 13"},
      {2147483647, 1, 1, "error 13"}};
  for (const auto& row : kRows) EXPECT_EQ(Made(row.year, row.month, row.day), row.made);
}

TEST(DateTime, CivilFieldsComeBackAndAreChecked) {
  for (const char* text : {"1969-12-31 23:59:59", "1970-01-01 00:00:00", "2004-02-29 12:30:45",
                           "0100-01-01 00:00:00", "9999-12-31 23:59:59"}) {
    auto value = DateTime::FromIso(text);
    ASSERT_TRUE(value) << text;
    EXPECT_EQ(value->ToIso(), text);
  }
  for (const char* text : {"2003-02-29", "2004-13-01", "2004-00-01", "2004-01-01 24:00:00",
                           "2004-01-01 12:60", "2004-01-01x", "2004-01-01 12:00:00 ", "04", ""}) {
    EXPECT_FALSE(DateTime::FromIso(text)) << text;
  }
  EXPECT_EQ(DateTime::FromDate(2004, 1, 5).Weekday(), 1);
  EXPECT_EQ(DateTime::FromDate(1969, 12, 28).Weekday(), 0);
  EXPECT_EQ(DateTime::FromDate(1960, 1, 1).WithTime(23, 0, 0).DatePart().ToKeyText(),
            "19600101000000");
}

class Locale : public ::testing::Test {
 protected:
  ~Locale() override { platform::SetLocaleOverride(""); }
  const DateTime moment_ = DateTime::FromDate(2005, 3, 7).WithTime(14, 5, 9);
};

TEST_F(Locale, PatternsFollowTheLocaleWithFourDigitYears) {
  const struct {
    const char *locale, *pattern, *text;
  } kRows[] = {{"en_US", "ddddd hh:mm", "3/7/2005 14:05"},
               {"en_US", "Short Date", "3/7/2005"},
               {"de_DE", "ddddd hh:mm", "07.03.2005 14:05"},
               {"de_DE", "general date", "07.03.2005 14:05:09"},
               {"C", "Short Date", "2005-03-07"},
               {"C", "mm\\/dd\\/yyyy", "03/07/2005"},
               {"C", "yyyymmddhhmmss", "20050307140509"},
               {"C", "d mmm yy", "7 Mar 05"}};
  for (const auto& row : kRows) {
    platform::SetLocaleOverride(row.locale);
    EXPECT_EQ(platform::FormatDate(moment_, row.pattern), row.text) << row.locale;
  }
}

TEST_F(Locale, WhatIsShownIsReadBack) {
  for (const char* locale : {"en_US", "en_GB", "de_DE", "fr_FR", "ru_RU", "hu_HU", "ja_JP", "C"}) {
    platform::SetLocaleOverride(locale);
    EXPECT_EQ(platform::ParseDate(platform::FormatDate(moment_, "ddddd")), moment_.DatePart())
        << locale;
    EXPECT_EQ(platform::ParseDate(platform::FormatDate(moment_, "ddddd hh:mm")),
              moment_.WithTime(14, 5, 0))
        << locale;
  }
  platform::SetLocaleOverride("en_US");
  EXPECT_EQ(platform::ParseDate("2005-03-07"), moment_.DatePart());
  EXPECT_EQ(platform::ParseDate(" 3.7.05 "), moment_.DatePart());
  EXPECT_EQ(platform::ParseDate("3/7/30"), DateTime::FromDate(1930, 3, 7));
  for (const char* text :
       {"", "March", "13/13/2005", "2/30/2005", "1/2", "1/2/3/4", "1/2/2005 25:00"}) {
    EXPECT_FALSE(platform::ParseDate(text)) << text;
  }
}

TEST_F(Locale, DatesAreReadAsPeopleWriteThem) {
  platform::SetLocaleOverride("en_US");
  for (const char* text : {"March 7, 2005", "mar 7 05", "7 MARCH 2005", "7-Mar-2005",
                           "Mon, 7th of March, 2005", "Monday, March 7, 2005", "2005 March 7"}) {
    EXPECT_EQ(platform::ParseDate(text), moment_.DatePart()) << text;
  }
  EXPECT_EQ(platform::ParseDate("March 7, 2005 14:05"), moment_.WithTime(14, 5, 0));
  for (const char* text : {"Ma 7 2005", "March 7 lunch 2005", "March April 2005", "7 March", "x",
                           "March 32, 2005", "1 2 March 2005", "3:7:2005"}) {
    EXPECT_FALSE(platform::ParseDate(text)) << text;
  }
  // Each with the weekday, as the locale's own long date.
  for (const char* locale :
       {"ar_EG", "bg_BG", "cs_CZ", "da_DK", "de_DE", "el_GR", "en_GB", "es_ES", "et_EE", "eu_ES",
        "fi_FI", "fr_FR", "he_IL", "hi_IN", "hr_HR", "hu_HU", "is_IS", "it_IT", "ja_JP", "ko_KR",
        "lt_LT", "lv_LV", "mk_MK", "nb_NO", "nl_NL", "pl_PL", "pt_BR", "ro_RO", "ru_RU", "sk_SK",
        "sl_SI", "sr_RS", "sv_SE", "tr_TR", "uk_UA", "vi_VN", "zh_CN", "zh_TW"}) {
    platform::SetLocaleOverride(locale);
    for (int month = 1; month <= 12; ++month) {
      DateTime date = DateTime::FromDate(2005, month, 17 - month);
      for (const char* form : {"Long Date", "Short Date"}) {
        std::string text = platform::FormatDate(date, form);
        EXPECT_EQ(platform::ParseDate(text), date) << locale << ": " << text;
      }
    }
  }
}

TEST_F(Locale, MonthNamesAreNamesAndNeverEmpty) {
  platform::SetLocaleOverride("en_US");
  EXPECT_EQ(platform::LongDateMonthNames()[4], "May");
  platform::SetLocaleOverride("de_DE");
  EXPECT_EQ(platform::LongDateMonthNames()[2], "M\u00E4rz");
  for (const char* locale : {"ru_RU", "ja_JP", "C", "zz_ZZ"}) {
    platform::SetLocaleOverride(locale);
    for (const std::string& name : platform::LongDateMonthNames()) EXPECT_FALSE(name.empty());
  }
  platform::SetLocaleOverride("ru_RU");
  EXPECT_EQ(platform::SystemCodePage(), "windows-1251");
}

}  // namespace
}  // namespace tarnwick
