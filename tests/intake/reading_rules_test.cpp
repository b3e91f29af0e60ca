// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/reading_rules.h"

#include "intake/header_parser.h"
#include "intake/message_text.h"
#include "support/program_fixture.h"

namespace tarnwick::intake {
namespace {

using testing::Lines;

class CompleteReading : public testing::ProgramFixture {
 protected:
  MailMessage Read(const std::string& text, const ReadingRules& rules = kComplete,
                   const StoreFacts& times = {}) {
    MailMessage message;
    ParseMessageFile(WriteTemp("message.eml", text), {"Inbox", "", ""}, nullptr, message, rules,
                     times);
    return message;
  }
  bool Take(const std::string& text, const ReadingRules& rules) {
    return dbxParseMessage(WriteTemp("message.eml", text), {"Inbox", "", ""}, "", "", nullptr,
                           rules);
  }
};

TEST_F(CompleteReading, TheTimeOfSendingIsTheFirstThatIsSound) {
  const std::string sound = "Date: Mon, 5 Jan 2004 10:20:30 +0300";
  const std::string received = "Received: by x;\r\n\tTue, 6 Jan 2004 10:00:00 +0000";
  const DateTime sent = DateTime::FromDate(2013, 2, 1);
  const DateTime arrived = DateTime::FromDate(2013, 2, 3);
  const StoreFacts all{sent, DateTime::FromDate(2013, 2, 2), arrived};
  const struct {
    const char* what;
    std::string header;
    StoreFacts times;
    const char* date;
  } rows[] = {
      {"its own", sound + "\r\n" + received, all, "2004-01-05 10:20:30"},
      {"comments with a colon and many words",
       "Date: Mon, 5 Jan 2004 10:20:30 +0300 (GMT+03:00 (a b c d e f) (open", all,
       "2004-01-05 10:20:30"},
      {"of 1985", "Date: 5 Jan 85 10:20:30", all, "1985-01-05 10:20:30"},
      {"of the year 2000 in two digits", "Date: 5 Jan 00 10:20:30", all, "2000-01-05 10:20:30"},
      {"of 2019", "Date: 5 Jan 2019 10:20:30", all, "2019-01-05 10:20:30"},
      {"the store's: of tomorrow's tomorrow", "Date: 17 Jun 2020 12:00:01", all,
       "2013-02-01 00:00:00"},
      {"the store's: before mail", "Date: 1 Jan 1970 00:00:00 +0000", all, "2013-02-01 00:00:00"},
      {"the store's: the year 102", "Date: 5 Jan 102 10:20:30", all, "2013-02-01 00:00:00"},
      {"the store's: no day", "Date: Jan 2004 10:20:30", all, "2013-02-01 00:00:00"},
      {"the store's: no such day", "Date: 30 Feb 2004 10:20:30", all, "2013-02-01 00:00:00"},
      {"the store's: no such time", "Date: 5 Jan 2004 25:20:30", all, "2013-02-01 00:00:00"},
      {"the store's: words", "Date: last Monday", all, "2013-02-01 00:00:00"},
      {"received, for the store", received, {{}, all.received, {}}, "2013-02-02 00:00:00"},
      {"Received", received, {{}, {}, arrived}, "2004-01-06 10:00:00"},
      {"Received, for unsound times",
       received,
       {DateTime::FromDate(1901, 1, 1), {}, arrived},
       "2004-01-06 10:00:00"},
      {"arrived", "Received: x; 17 Jun 2021 10:00:00", {{}, {}, arrived}, "2013-02-03 00:00:00"},
      {"none", "Date: soon", {}, "1990-01-01 00:00:00"},
  };
  for (const auto& row : rows) {
    MailMessage message = Read("From: a@b\r\n" + row.header + "\r\n\r\n", kComplete, row.times);
    EXPECT_EQ(message.SentTime.ToIso(), row.date) << row.what;
  }
  EXPECT_EQ(Read("From: a@b\r\nDate: soon\r\n\r\n", kDesigned, all).SentTime.ToIso(),
            "2020-06-15 12:00:00");
}

TEST_F(CompleteReading, SubjectsKeepTheirBlanksAndQuotationMarks) {
  const struct {
    const char* header;
    const char* complete;
    const char* designed;
  } rows[] = {
      {"MD5\r\n code", "MD5 code", "MD5code"},
      {"tab\r\n\t\tand \r\n  more\r\n \r\n end", "tab and more end", "tabandmoreend"},
      {"\"quoted\"", "\"quoted\"", "quoted"},
      {"> 'x'", "> 'x'", " 'x"},
      {"=?utf-8?Q?gr=C3?=\r\n =?utf-8?Q?=BCn?=", "gr\xC3\xBCn", "gr\xC3\xBCn"},
      {"a =?utf-8?Q?b?=\r\n =?utf-8?Q?c?=\r\n d", "a bc d", "a bcd"},
  };
  for (const auto& row : rows) {
    std::string text = "From: a@b\r\nSubject: " + std::string(row.header) + "\r\n\r\n";
    EXPECT_EQ(Read(text).Subject, row.complete) << row.header;
    EXPECT_EQ(Read(text, kDesigned).Subject, row.designed) << row.header;
  }
}

TEST_F(CompleteReading, RecipientsAreTakenWhole) {
  const AddressPair lee{"Lee, Ann", "ann@example.org"};
  const AddressPair bob{"bob@example.org", "bob@example.org"};
  const struct {
    const char* header;
    std::vector<AddressPair> pairs;
  } rows[] = {
      {"\"Lee, Ann\" <ann@example.org>, bob@example.org", {lee, bob}},
      {"bob@example.org,\r\n \"Lee, Ann\" <ann@example.org>", {bob, lee}},
      {"\"a \\\", b\" <ann@example.org>, bob@example.org", {{"a \\\", b", "ann@example.org"}, bob}},
      {"5\" disk <ann@example.org>, \"x\\\" <b@example.org>, bob@example.org",
       {{"5\" disk <ann@example.org>, \"x\\", "b@example.org"}, bob}},
      {"bob@example.org, \"Ann <ann@example.org>, bob@example.org",
       {bob, {"Ann", "ann@example.org"}, bob}},
      {"Ann Lee <ann>, root, Ann Lee, friends:;, <>, \"Ann\"",
       {{"Ann Lee", "ann"},
        {"root", "root"},
        {"Ann Lee", "no address"},
        {"friends:;", "no address"},
        {"<>", "no address"},
        {"\"Ann\"", "no address"}}},
  };
  for (const auto& row : rows) {
    MailMessage message = Read("From: a@b\r\nTo: " + std::string(row.header) + "\r\n\r\n");
    message.To.resize(static_cast<size_t>(message.ToCount));
    EXPECT_EQ(message.To, row.pairs) << row.header;
  }
  EXPECT_EQ(Read("From: MAILER-DAEMON\r\n\r\n").FromAddress, "MAILER-DAEMON");

  std::string many = "u0@b";
  for (int i = 1; i < 5000; ++i) many += ", \"u, " + std::to_string(i) + "\" <u@b>";
  core::State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
  ASSERT_TRUE(Take(Lines("From: a@b|To: " + many + "|Cc: " + many + "|"), kComplete));
  EXPECT_EQ(CountRows("ToRecipient"), 5000);
  EXPECT_EQ(CountRows("ccRecipient"), 5000);
  EXPECT_EQ(Query("SELECT CountMailTo FROM Email").AsInt(), 5000);
  EXPECT_TRUE(ui_.shown.empty());
}

TEST_F(CompleteReading, ALetterIsTheSameUnderBothReadings) {
  core::State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
  const std::string letters[] = {
      Lines("From: a@b|Subject: MD5| code|Date: 5 Jan 2004 10:00:00 +0100 (x:y)|"),
      Lines("From: a@b|Subject: \"old\"|Date: 5 Jan 102 10:00:00|"),
      Lines("From: a@b|Subject: =?koi8-r?Q?=C1?=| \xC1|Received: x; 5 Jan 2004 9:00|"),
      Lines("From: a@b|Subject: " + std::string(300, 'w') + "| x|Date: 30 Feb 2004|"),
  };
  for (const std::string& letter : letters) {
    bool isFirst = &letter == letters || &letter == &letters[2];
    EXPECT_TRUE(Take(letter, isFirst ? kDesigned : kComplete)) << letter;
    EXPECT_FALSE(Take(letter, isFirst ? kComplete : kDesigned)) << letter;
  }
  EXPECT_EQ(CountRows("Email"), 4);
}

TEST_F(CompleteReading, TheOptionsSayTheRules) {
  repository::SetOption(kDraftsOption, true);
  EXPECT_FALSE(StoredRules().everyStore);
  EXPECT_FALSE(StoredRules().drafts);  // a part of complete reading
  repository::SetOption(repository::kCompleteReadingOption, true);
  EXPECT_TRUE(StoredRules().everyStore);
  EXPECT_TRUE(StoredRules().drafts);
  EXPECT_FALSE(StoredRules().outbox);
}

}  // namespace
}  // namespace tarnwick::intake
