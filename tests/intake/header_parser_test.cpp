// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/header_parser.h"

#include "intake/message_text.h"
#include "intake/sender_rules.h"
#include "intake/store_message.h"
#include "platform/charset.h"
#include "support/program_fixture.h"

namespace tarnwick::intake {
namespace {

using testing::Lines;

class HeaderParser : public testing::ProgramFixture {
 protected:
  bool Parse(const std::string& text, const std::string& key = "") {
    message_ = MailMessage();
    message_.MessageKey = key;
    return ParseMessageFile(WriteTemp("message.eml", text), source_, IsFromMe, message_);
  }
  bool Take(const std::string& text, const std::string& key = "") {
    return dbxParseMessage(WriteTemp("message.eml", text), source_, "Main", key, &ending_);
  }

  std::string Recipients() const {
    std::string text;
    for (int i = 0; i < message_.ToCount; ++i) {
      const AddressPair& to = message_.To[static_cast<size_t>(i)];
      text += to.Name + "<" + to.Address + "> ";
    }
    return text;
  }

  SourceDescriptor source_{"Inbox", "", "Outlook Express"};
  MailMessage message_;
  Ending ending_;
};

TEST(ClassifyHeader, KeysAreComparedWhole) {
  const struct {
    const char* line;
    HeaderCode code;
    const char* value;
  } rows[] = {
      {"SUBJECT: a: b", HeaderCode::kSubject, "a: b"},
      {"Sent:\t x ", HeaderCode::kDate, "x"},
      {"reference: x", HeaderCode::kMessageId, "x"},
      {"X-Status: x", HeaderCode::kOther, "X-Status: x"},
      {"Status: RO", HeaderCode::kImportance, "RO"},
      {"iX-MSMail-Priority: High", HeaderCode::kImportance, "High"},
      {"Subject : x", HeaderCode::kOther, "Subject : x"},
      {" Subject: x", HeaderCode::kOther, " Subject: x"},
      {"subject", HeaderCode::kSubject, ""},
      {"", HeaderCode::kOther, ""},
      {": x", HeaderCode::kOther, ": x"},
  };
  for (const auto& row : rows) {
    std::string line = row.line;
    EXPECT_EQ(ClassifyHeader(line), row.code) << row.line;
    EXPECT_EQ(line, row.value);
  }
}

TEST(SplitAddress, NameAndAddressAreToldApart) {
  const struct {
    const char *text, *name, *address;
  } rows[] = {
      {"Ann Lee <ann@example.org>", "Ann Lee", "ann@example.org"},
      {"\"Ann Lee\" <ann@example.org>", "Ann Lee", "ann@example.org"},
      {"'Ann' <ann@example.org>", "Ann", "ann@example.org"},
      {"ann@example.org", "ann@example.org", "ann@example.org"},
      {"<ann@example.org>", "ann@example.org", "ann@example.org"},
      {"ann@example.org (Ann Lee)", "(Ann Lee)", "ann@example.org"},
      {"ann@example.org <", "ann@example.org", "ann@example.org"},
      {"- <ann@example.org>", "ann@example.org", "ann@example.org"},
      {"Ann", "Ann", "no address"},
      {"-", "no address", "no address"},
      {"", "no name", "no address"},
      {"@", "@", "@"},
      {"a\tb@c", "a", "b@c"},
      {"\"ann@home.org\" <ann@example.org>", "ann@home.org", "ann@example.org"},
      {"'ann@home.org' <ann@example.org> (Lee)", "ann@home.org", "ann@example.org"},
      {"Ann @ home ann@example.org", "Ann @ home", "ann@example.org"},
      {"ann@home.org <ann@example.org", "ann@home.org", "ann@example.org"},
      {"\"Lee <a@b>, Ann\" <ann@example.org>", "Lee <a@b>, Ann", "ann@example.org"},
      {"Ann <ann@example.org>, Bo <bo@example.org>", "Ann", "ann@example.org"},
      {"a@b <none> ann@example.org", "a@b <none", "ann@example.org"},
      {"ann@example.org (Ann @ home)", "(Ann @ home)", "ann@example.org"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(SplitAddress(row.text), (AddressPair{row.name, row.address})) << row.text;
  }
}

TEST_F(HeaderParser, EveryFieldOfAnOrdinaryLetterIsFound) {
  EXPECT_TRUE(
      Parse(Lines("Received: from a by b; Mon, 5 Jan 2004 10:21:00 +0000|Received: from c|"
                  "\tby d; Mon, 5 Jan 2004 10:22:00 +0000|"
                  "Received: from the future; Wed, 17 Jun 2020 13:00:00 +0000|"
                  "From: =?koi8-r?B?4c7OwQ==?= <ann@example.org>,|"
                  "To: \"Berta Holm\" <berta@example.org>, carl@example.org,|"
                  "  Dora <dora@example.org>|Cc: Nobody, Emil <emil@example.org>|"
                  "Subject: 'Budget: plan'| =?utf-8?Q?_f=C3=BCr?=|Subject: not this one|"
                  "Date: Mon, 5 Jan 2004 10:20:30 +0200|Importance: High|X-Other: x||Hello||Ann")));
  EXPECT_EQ(message_.FromName, "Анна");
  EXPECT_EQ(message_.FromAddress, "ann@example.org");
  EXPECT_EQ(Recipients(),
            "Berta Holm<berta@example.org> carl@example.org<carl@example.org> "
            "Dora<dora@example.org> ");
  EXPECT_EQ(message_.CcCount, 1);
  EXPECT_EQ(message_.Cc[0], (AddressPair{"Emil", "emil@example.org"}));
  EXPECT_EQ(message_.Subject, "Budget: plan für");
  EXPECT_EQ(message_.SentTime.ToIso(), "2004-01-05 11:20:30");
  EXPECT_EQ(message_.ReceivedTime.ToIso(), "2004-01-05 10:22:00");
  EXPECT_EQ(message_.TimeText, "10:20:30");
  EXPECT_EQ(message_.TimeShift, "+0200");
  EXPECT_EQ(message_.Importance, "High");
  EXPECT_EQ(message_.Body, "Hello\r\n\r\nAnn\r\n");
  EXPECT_EQ(message_.Direction, "In");
  EXPECT_EQ(message_.FromToName, "Анна");
  EXPECT_EQ(message_.MessageKey, "Budget: plan für_20040105112030");
  EXPECT_EQ(message_.Folder, "Inbox");
}

TEST_F(HeaderParser, ListsAreSplitAtEveryCommaAndGoOnAfterOne) {
  Parse(
      Lines("To: \"Lee, Ann\" <ann@example.org>,|berta@example.org, |"
            "\"Smith: Bob\" <bob@example.org>,|Carl Holm: home <carl@example.org>,|"
            "mailto:dora@example.org|Cc: a@b,||x"));
  EXPECT_EQ(Recipients(),
            "Lee<no address> Ann<ann@example.org> berta@example.org<berta@example.org> "
            "Smith: Bob<bob@example.org> Carl Holm: home<carl@example.org> "
            "mailto:dora@example.org<mailto:dora@example.org> ");
  EXPECT_EQ(message_.CcCount, 1);
  EXPECT_EQ(message_.Body, "x\r\n");
}

TEST_F(HeaderParser, ALineOfAddressesNeverTakesTheNextHeader) {
  for (const char* next : {"X-Mailer: by@x", "x-sender:by@x", "MIME-Version : 1.0", "Subject:s",
                           "Received: by x", "Content-Type: text/plain", "--by@x"}) {
    SCOPED_TRACE(next);
    for (const char* list : {"To: a@b, ", "Cc: a@b,", "Bcc: a@b;"}) {
      Parse(Lines(std::string("From: c@d|") + list + "|" + next + "|Date: 5 Jan 2004 10:00:00||x"));
      EXPECT_EQ(message_.ToCount, *list == 'T' ? 1 : 0);
      EXPECT_EQ(message_.CcCount, *list == 'C' ? 1 : 0);
      EXPECT_EQ(message_.Subject, *next == 'S' ? "s" : "");
    }
  }
}

TEST_F(HeaderParser, AHeaderFoldedBeforeItsAddressKeepsIt) {
  Parse(
      Lines("From: =?utf-8?Q?A_very_long_name?=|\t<ann@example.org>|To: Berta with a long name|"
            " <berta@example.org>||x"));
  EXPECT_EQ(message_.FromName, "A very long name");
  EXPECT_EQ(message_.FromAddress, "ann@example.org");
  EXPECT_EQ(message_.To[0], (AddressPair{"Berta with a long name", "berta@example.org"}));
}

TEST_F(HeaderParser, HeadersEndAtAnEmptyLineOrTwoHyphens) {
  Parse(Lines("Subject: a|--|To: ann@example.org|"));
  EXPECT_EQ(message_.ToCount, 0);
  EXPECT_EQ(message_.Body, "--\r\nTo: ann@example.org\r\n\r\n");
  Parse("Subject: only a header");
  EXPECT_EQ(message_.Subject, "only a header");
  EXPECT_EQ(message_.Body, "");
  Parse("Subject: a\nFrom: b@c\r\n\nline feed\r\nno end");
  EXPECT_EQ(message_.FromAddress, "b@c");
  EXPECT_EQ(message_.Body, "line feed\r\nno end\r\n");
}

TEST_F(HeaderParser, UndeclaredHeaderBytesTakeTheBodysCharset) {
  Parse(
      Lines("From: \xC1\xCE\xCE\xC1 <ann@example.org>|"
            "To: =?utf-8?B?0LE=?= \xC1 <berta@example.org>|Subject: \xD0\xCC\xC1\xCE|"
            "Content-Type: text/plain; charset=KOI8-R||\xC4\xC1"));
  EXPECT_EQ(message_.FromName, "анна");
  EXPECT_EQ(message_.To[0].Name, "б а");
  EXPECT_EQ(message_.Subject, "план");
  EXPECT_EQ(message_.Body, "да\r\n");
  EXPECT_EQ(message_.SubjectConverted, 1);
}

TEST_F(HeaderParser, DirectionFollowsFolderParentAndOwnAddresses) {
  dbSaveMeAddress("ann@example.org", "Ann", "Outlook Express");
  const struct {
    const char *folder, *parent, *from, *direction;
  } rows[] = {
      {"Sent Items", "", "x@example.org", "Out"},
      {"sent items", "", "x@example.org", "In"},
      {"2002", "Old.sent items.2002", "x@example.org", "Out"},
      {"Inbox", "", "ann@example.org", "In"},
      {"Letters", "INBOX.Letters", "ann@example.org", "In"},
      {"Letters", "", "Ann@Example.org", "Out"},
      {"Letters", "", "x@example.org", "In"},
  };
  for (const auto& row : rows) {
    source_ = {row.folder, row.parent, "Outlook Express"};
    Parse(Lines("From: " + std::string(row.from) + "|To: b@c|"));
    EXPECT_EQ(message_.Direction, row.direction) << row.folder << row.parent << row.from;
    EXPECT_EQ(message_.FromToAddress, message_.Direction == "In" ? row.from : "b@c");
  }
}

TEST_F(HeaderParser, DatesThatAreMissingOrMadHaveTheirFallback) {
  Parse(Lines("Subject: a|"));
  EXPECT_EQ(message_.SentTime.ToIso(), "1990-01-01 00:00:00");
  EXPECT_EQ(message_.ReceivedTime, message_.SentTime);
  Parse(Lines("Subject: a|Received: x; 5 Jan 2004 10:00:00|"));
  EXPECT_EQ(message_.SentTime.ToIso(), "2004-01-05 10:00:00");
  Parse(Lines("Subject: a|Date: 5 Jan 102 10:00:00|Received: x; 5 Jan 2002 10:00:00|"));
  EXPECT_EQ(message_.SentTime.ToIso(), "0102-01-05 10:00:00");
  EXPECT_EQ(message_.ReceivedTime.ToIso(), "2002-01-05 10:00:00");
}

TEST_F(HeaderParser, WithoutSubjectAndCorrespondentItIsNoMessage) {
  EXPECT_FALSE(Parse("no message at all"));
  EXPECT_FALSE(Parse(""));
  EXPECT_TRUE(Parse("From: ann@example.org\r\n"));
  source_.folder = "Sent Items";
  EXPECT_FALSE(Parse("From: ann@example.org\r\n\r\nhidden recipients"));
  // A store that counts it as a letter is believed.
  EXPECT_TRUE(Parse("From: ann@example.org\r\n\r\nhidden recipients", "key"));
  EXPECT_EQ(message_.Subject, "no subject");

  EXPECT_FALSE(Take("no message at all"));
  EXPECT_EQ(ending_.outcome, Outcome::kUnreadable);
  EXPECT_EQ(ui_.Shown("box"), std::vector<std::string>{"Message format is invalid."});
}

TEST_F(HeaderParser, TooManyRecipientsAreDropped) {
  std::string many;
  for (int i = 0; i < 150; ++i) many += (i > 0 ? ", u" : "u") + std::to_string(i) + "@example.org";
  Parse(Lines("From: a@b|To: " + many + "|Cc: " + many + "|Subject: s|"));
  EXPECT_EQ(message_.ToCount, 100);
  EXPECT_EQ(message_.CcCount, 100);
  EXPECT_EQ(message_.Cc[99].Address, "u99@example.org");
  EXPECT_EQ(ui_.Shown("box"), std::vector<std::string>(50, "CC account is great than 100"));
}

TEST_F(HeaderParser, ATakenMessageIsStoredOnce) {
  core::State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
  std::string text = Lines("From: a@b|Subject: s|Date: 5 Jan 2004 10:00:00||x");
  EXPECT_TRUE(Take(text, "key one"));
  EXPECT_EQ(ending_.outcome, Outcome::kStored);
  EXPECT_EQ(Rows("SELECT EntryID, Encoding, Identity FROM Email"), "key one|NOT|Main");
  EXPECT_FALSE(Take("not even read", "key one"));
  EXPECT_EQ(ending_.outcome, Outcome::kAlreadyStored);
  EXPECT_TRUE(Take(text));  // without the caller's key it has one of its own
  EXPECT_FALSE(Take(text));
  EXPECT_EQ(ending_.outcome, Outcome::kAlreadyStored);
  AddIgnoredMessage("key two");
  EXPECT_FALSE(Take(text, "key two"));
  EXPECT_EQ(ending_.outcome, Outcome::kIgnored);
  EXPECT_EQ(CountRows("Email"), 2);
  EXPECT_EQ(ui_.status[core::StatusPanel::kProgress], "s");
  core::State().StopFlag = true;
  EXPECT_FALSE(Take(text, "key three"));
  EXPECT_EQ(ending_.outcome, Outcome::kStopped);
}

TEST_F(HeaderParser, LongSubjectsDoNotCutTheDateOffTheKey) {
  core::State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
  const std::string subject = std::string(300, 'w');
  auto letter = [&](const std::string& day) {
    return "Subject: " + subject + "\r\nFrom: bob@example.org\r\nDate: Mon, " + day +
           " Jan 2004 10:20:30 +0000\r\n\r\nBody\r\n";
  };
  EXPECT_TRUE(Take(letter("5")));
  EXPECT_TRUE(Take(letter("12")));
  EXPECT_FALSE(Take(letter("12")));
  // Stored by a former version, whose key was cut.
  Run("DELETE FROM Email WHERE ID = 2");
  Run("UPDATE Email SET EntryID = '" + subject.substr(0, 255) + "'");
  EXPECT_FALSE(Take(letter("5")));
  EXPECT_TRUE(Take(letter("12")));
}

TEST_F(HeaderParser, AFileThatCannotBeReadIsReported) {
  EXPECT_FALSE(dbxParseMessage(folder_.File("none.eml"), source_, "", "", &ending_));
  EXPECT_EQ(ending_.outcome, Outcome::kUnreadable);
  EXPECT_THAT(ui_.Shown("error"),
              ElementsAre(AllOf(HasSubstr("Error: 53 "), HasSubstr(" dbxParseMessage"))));
}

}  // namespace
}  // namespace tarnwick::intake
