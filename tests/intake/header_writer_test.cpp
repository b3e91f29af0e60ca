// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/header_writer.h"
#include "support/testing.h"

namespace tarnwick::intake {
namespace {

// Stored messages are made of these bytes: they stay as they are.
TEST(HeaderWriter, TextsKeepTheFormThatStoredMessagesHave) {
  const Case kRows[] = {
      {"each control character is a blank", HeaderText("a\r\nBcc: b\t "), "a  Bcc: b"},
      {"what looks encoded", HeaderText("=?x"), "=?utf-8?B?PT94?="},
      {"42 bytes a word, cut between characters", HeaderText(std::string(41, 'a') + "\u20AC"),
       "=?utf-8?B?YWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWFhYWE=?=\r\n =?utf-8?B?4oKs?="},
      {"200 characters are plain", HeaderText(std::string(200, 'x')), std::string(200, 'x')},
      {"a quoted parameter", HeaderParameter("name", "a \"b\".txt"),
       ";\r\n\tname=\"a \\\"b\\\".txt\""},
      {"an encoded parameter", HeaderParameter("name", "\u00E9 1.txt"),
       ";\r\n\tname*=utf-8''%C3%A9%201.txt"},
  };
  for (const Case& row : kRows) EXPECT_EQ(row.given, row.expected) << row.what;
  EXPECT_EQ(HeaderText(std::string(201, 'x')).substr(0, 10), "=?utf-8?B?");
}

TEST(HeaderWriter, ADateHasTheZoneWithItsSign) {
  DateTime day = DateTime::FromDate(2020, 6, 5).WithTime(7, 8, 9);
  EXPECT_EQ(InternetDate(day, 180), "Fri, 5 Jun 2020 07:08:09 +0300");
  EXPECT_EQ(InternetDate(day, -210), "Fri, 5 Jun 2020 07:08:09 -0330");
  EXPECT_EQ(InternetDate(DateTime::FromDate(2017, 12, 31), 0), "Sun, 31 Dec 2017 00:00:00 +0000");
}

}  // namespace
}  // namespace tarnwick::intake
