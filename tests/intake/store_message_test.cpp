// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/store_message.h"

#include "core/guard.h"
#include "intake/header_parser.h"
#include "intake/sender_rules.h"
#include "platform/charset.h"
#include "support/faulty_disk.h"
#include "support/program_fixture.h"

namespace tarnwick::intake {
namespace {

using core::SenderAnswer;
using core::State;

class StoreMessage : public testing::ProgramFixture {
 protected:
  StoreMessage() {
    message_.Subject = "Budget";
    message_.SentTime = DateTime::FromDate(2004, 1, 5).WithTime(10, 20, 30);
    message_.ReceivedTime = DateTime::FromDate(2004, 1, 5).WithTime(10, 21, 0);
    message_.MessageKey = "key one";
    message_.FromName = "Berta Holm";
    message_.FromAddress = "berta@example.org";
    message_.FromToName = message_.FromName;
    message_.FromToAddress = message_.FromAddress;
    message_.Direction = "In";
    message_.Folder = "Inbox";
    message_.Body = "Hello\r\n";
    message_.To[0] = {"Ann", "ann@example.org"};
    message_.ToCount = 1;
    file_ = WriteTemp("message.eml", "Subject: Budget\r\n\r\nHello\r\n");
  }

  void Store(int16_t skipAcceptance = 1) {
    dbSaveMesage(file_, message_, "Outlook Express", skipAcceptance, "Main", &ending_);
  }

  std::string StoredFile(int64_t id) {
    jet::Recordset rows;
    rows.Open(
        "SELECT FileBody FROM FileRepository WHERE FileID=" + std::to_string(id) + "ORDER BY ID",
        RepositoryDb(), jet::CursorType::kKeyset);
    std::string bytes;
    for (; !rows.Eof(); rows.MoveNext()) {
      bytes += std::get<jet::Bytes>(rows.Field("FileBody").Data()).data;
    }
    return bytes;
  }

  MailMessage message_;
  Ending ending_;
  std::string file_;
};

TEST_F(StoreMessage, EveryRowOfAMessageIsWritten) {
  message_.Attachments[0] = "plan's.doc";
  message_.Attachments[1] = "";
  message_.AttachCount = 2;
  message_.Cc[0] = {"Carl", "carl@example.org"};
  message_.CcCount = 1;
  message_.Importance = "High";
  Store();
  EXPECT_EQ(ending_.outcome, Outcome::kStored);
  EXPECT_EQ(State().StoredMessages, 1);
  EXPECT_EQ(State().LatestReceivedTime, message_.ReceivedTime);
  EXPECT_EQ(
      Rows("SELECT EntryID, EmailImportance, FilesNum, Notes, Active, UserName, Identity FROM "
           "Email"),
      "key one|HIGH|2|Null|Null|ann|Main");
  EXPECT_EQ(Query("SELECT CreationTime FROM Email").AsDate(), message_.SentTime);
  EXPECT_EQ(Rows("SELECT FileName FROM Attachment"), "plan's.doc");
  EXPECT_EQ(Rows("SELECT Address FROM ToRecipient"), "ann@example.org");
  EXPECT_EQ(Rows("SELECT Name FROM ccRecipient"), "Carl");
  EXPECT_EQ(Rows("SELECT MeContact.Name FROM Email INNER JOIN MeContact ON Email.FromTo = "
                 "MeContact.ID"),
            "Berta Holm");
  EXPECT_EQ(Rows("SELECT tblProject.ProjectName FROM Email INNER JOIN tblProject ON "
                 "Email.ProjectID = tblProject.ID"),
            "Inbox");
  EXPECT_EQ(StoredFile(1), platform::ReadFile(file_));
}

TEST_F(StoreMessage, SentMailMakesContactsOfItsRecipientsAndReusesThem) {
  message_.Direction = "Out";
  message_.To[0] = {"", "nameless@example.org"};
  message_.To[1] = {"Dora O'Hara", "dora@example.org"};
  message_.ToCount = 2;
  Store();
  message_.To[0] = {"DORA O'HARA", "dora@elsewhere.org"};
  message_.ToCount = 1;
  message_.MessageKey = "key two";
  Store();
  EXPECT_EQ(Query("SELECT FromTo FROM Email WHERE EntryID='key one'").AsInt(), 0);
  EXPECT_EQ(CountRows("MeContact"), 1);
  EXPECT_EQ(CountRows("ContactEmail"), 2);
  EXPECT_EQ(Query("SELECT FromTo FROM Email WHERE EntryID='key two'").AsInt(),
            Query("SELECT ID FROM MeContact").AsInt());
  message_.Direction = "";
  message_.MessageKey = "key three";
  Store();
  EXPECT_EQ(CountRows("ToRecipient"), 3);
}

TEST_F(StoreMessage, ALongFileIsKeptInRowsOfItsExactBytes) {
  std::string raw;
  for (int i = 0; i < 70000; ++i) raw += static_cast<char>(i * 7);
  file_ = WriteTemp("long.eml", raw);
  Store();
  EXPECT_EQ(CountRows("FileRepository"), 3);
  EXPECT_EQ(StoredFile(1), raw);
  file_ = WriteTemp("exact.eml", raw.substr(0, 32767));
  Store();
  EXPECT_EQ(CountRows("FileRepository"), 4);
  EXPECT_EQ(StoredFile(2), raw.substr(0, 32767));
}

TEST_F(StoreMessage, HostileTextsAreStoredAsTheyStand) {
  const std::string nasty = "x'); DELETE * FROM Email; -- \"%_[a]#";
  message_.Subject = nasty;
  message_.FromName = nasty;
  message_.FromAddress = nasty;
  message_.Folder = nasty;
  message_.To[0] = {nasty, nasty};
  message_.Attachments[0] = nasty + std::string("\0tail", 5);
  message_.AttachCount = 1;
  message_.Body = "broken \xFF\xFE utf-8";
  message_.MessageKey = std::string(300, 'k') + "'";
  Store();
  message_.MessageKey = "other";
  Store();
  message_.MessageKey = "long";
  message_.Subject = std::string(40'000, 's');
  message_.AttachCount = INT16_MAX;  // as a damaged export may have it
  message_.Attachments[0].clear();
  Store();
  EXPECT_EQ(Query("SELECT Subject FROM Email WHERE EntryID='long'").AsText().size(), 32767U);
  Run("DELETE FROM Email WHERE EntryID='long'");
  EXPECT_EQ(CountRows("Attachment"), 2);
  EXPECT_EQ(Query("SELECT Subject FROM Email").AsText(), nasty);
  EXPECT_EQ(CountRows("Email"), 2);
  EXPECT_EQ(CountRows("MeContact"), 1);
  EXPECT_EQ(CountRows("tblProject"), 1);
  EXPECT_EQ(Query("SELECT FileName FROM Attachment").AsText(), nasty + std::string("\0tail", 5));
  EXPECT_TRUE(platform::IsValidUtf8(Query("SELECT Body FROM Email").AsText()));
  EXPECT_EQ(Query("SELECT EntryID FROM Email").AsText(), std::string(255, 'k'));
}

TEST_F(StoreMessage, AnEmptyOrMarkupBodyIsTakenFromTheHtml) {
  message_.HTMLBody = "<html><body><p>From the <b>HTML</b></p></body></html>";
  message_.Body = "";
  Store();
  message_.Body = "<html>raw";
  Store();
  message_.Body = "<HTML> is kept as text";
  Store();
  EXPECT_EQ(Rows("SELECT Body FROM Email ORDER BY ID"),
            "From the HTML\nFrom the HTML\n<HTML> is kept as text");
}

TEST_F(StoreMessage, AnErrorKeepsWhatWasWrittenAndIsReported) {
  file_ = folder_.File("gone.eml");
  Store();
  EXPECT_TRUE(CountRows("Email") == 1 && CountRows("ToRecipient") == 1);
  EXPECT_THAT(ui_.Shown("error"),
              ElementsAre(AllOf(HasSubstr("Error: 53 "), HasSubstr(" FileToDB"))));
}

TEST_F(StoreMessage, AMessageLeftByHalfIsNoStoredOneAndIsMadeWholeByTheNextLoad) {
  const std::string whole = file_;
  file_ = folder_.File("gone.eml");
  message_.Attachments[0] = "plan.doc";
  message_.AttachCount = 1;
  message_.Cc[0] = {"Carl", "carl@example.org"};
  message_.CcCount = 1;
  Store();
  EXPECT_EQ(ending_.outcome, Outcome::kUnreadable);
  EXPECT_NE(State().LastReportedError.find("FileToDB"), std::string::npos);
  EXPECT_FALSE(IsEmailExist("key one"));
  Run("UPDATE Email SET Active='+', Notes='mine'");
  repository::DisconnectRepository();
  ASSERT_TRUE(repository::OpenRepository(false));
  EXPECT_FALSE(IsEmailExist("key one"));
  file_ = whole;
  Store();
  EXPECT_EQ(ending_.outcome, Outcome::kStored);
  EXPECT_TRUE(IsEmailExist("key one"));
  for (const char* table :
       {"Email", "Attachment", "ToRecipient", "ccRecipient", "FileRepository"}) {
    EXPECT_EQ(CountRows(table), 1) << table;
  }
  EXPECT_EQ(CountRows("Unfinished"), 0);
  EXPECT_EQ(StoredFile(1), platform::ReadFile(whole));
  EXPECT_EQ(Rows("SELECT Active, Notes FROM Email"), "+|mine");
}

TEST_F(StoreMessage, AnUnknownSenderIsAskedAboutAndTheAnswerObeyed) {
  ui_.senders = {SenderAnswer::kIgnore, SenderAnswer::kReject, SenderAnswer::kAccept};
  Store(0);
  EXPECT_EQ(ending_.outcome, Outcome::kIgnored);
  EXPECT_TRUE(IsEmailExist("key one"));
  ASSERT_EQ(ui_.asked.size(), 1U);
  EXPECT_EQ(ui_.asked[0].from, "Berta Holm  <berta@example.org>");

  message_.FromName = "Spam's Inc";
  message_.FromAddress = "spam@example.org";
  message_.MessageKey = "key two";
  Store(0);
  EXPECT_EQ(ending_.outcome, Outcome::kRefused);
  Store(0);  // now by the rule, unasked
  EXPECT_EQ(ending_.outcome, Outcome::kRefused);
  message_.FromAddress = "another@example.org";  // by name
  Store(0);
  EXPECT_EQ(ending_.outcome, Outcome::kRefused);
  EXPECT_EQ(State().StoredMessages, 0);
  EXPECT_EQ(CountRows("Email"), 0);

  message_.FromName = "Emil";
  message_.FromAddress = "emil@example.org";
  Store(0);
  EXPECT_EQ(ending_.outcome, Outcome::kStored);
  Store(0);  // a contact now
  EXPECT_EQ(ui_.asked.size(), 3U);
}

TEST_F(StoreMessage, ARejectedAddressBeatsAKnownNameAndAcceptAllBeatsBoth) {
  GetContactId("Berta Holm", "berta@example.org");
  SetAddresseeReject("Somebody", "berta@example.org");
  Store(0);
  EXPECT_EQ(ending_.outcome, Outcome::kRefused);
  SetAddresseeReject("Nobody", "nobody@example.org");
  message_.FromName = "Nobody";
  ui_.senders = {};
  Store(0);
  EXPECT_EQ(ending_.outcome, Outcome::kRefused);
  message_.FromName = "Unknown";
  message_.FromAddress = "unknown@example.org";
  ui_.senders = {SenderAnswer::kAcceptAll};
  Store(0);
  message_.FromAddress = "berta@example.org";
  Store(0);
  EXPECT_EQ(ending_.outcome, Outcome::kStored);
  EXPECT_EQ(CountRows("Email"), 2);
}

TEST_F(StoreMessage, CancelAndTheStopFlagStoreNothing) {
  ui_.senders = {SenderAnswer::kCancel};
  Store(0);
  EXPECT_TRUE(State().StopFlag);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(ending_.outcome, Outcome::kStopped);
    EXPECT_EQ(CountRows("Email"), 0);
    ending_ = {};
    Store();
  }
}

TEST_F(StoreMessage, OwnAddressesAreKeptOnceAndKnownInAnyCase) {
  dbSaveMeAddress("Ann@Example.org", "Ann", "Outlook Express");
  dbSaveMeAddress("ann@example.org", "Ann", "Outlook Express");
  dbSaveMeAddress("o'hara@example.org", "", "Outlook Express");
  EXPECT_EQ(CountRows("MeAddress"), 2);
  EXPECT_TRUE(IsFromMe("ANN@EXAMPLE.ORG"));
  EXPECT_TRUE(IsFromMe("o'hara@example.org"));
  EXPECT_FALSE(IsFromMe("ann@example.or"));
  EXPECT_FALSE(IsEmailExist(""));
}

class StoreMessageOnABadDisk : public StoreMessage {
 protected:
  static void SetUpTestSuite() { testing::FaultyDisk::Install(); }

  // What a load does with these files, whatever the disk answers.
  void Load(const std::vector<std::string>& files, const std::string& keys) {
    core::BeginLoadState();
    core::GuardedRun("Load", [&] {
      jet::CommitGroup group(RepositoryDb());
      for (const std::string& file : files) {
        file_ = file;
        message_.MessageKey = keys + file;
        message_.Folder = message_.FromName = keys;
        core::GuardedRun("Load", [&] {
          if (!IsEmailExist(message_.MessageKey)) Store();
          RepositoryDb().EndUnit();
        });
      }
      group.End();
    });
    core::EndLoadState();
  }

  void ExpectWhole(const std::string& file, const std::string& keys) {
    jet::Value id = Query("SELECT ID FROM Email WHERE EntryID='" + StoredKey(keys + file) + "'");
    ASSERT_FALSE(id.IsNull()) << keys << file;
    EXPECT_EQ(StoredFile(id.AsInt()), platform::ReadFile(file)) << keys << file;
    EXPECT_EQ(CountRows("ToRecipient WHERE EmailID=" + id.AsText()), 1) << keys << file;
  }
};

TEST_F(StoreMessageOnABadDisk, NoMessageIsMixedWithAnotherAndTheNextLoadMakesAllWhole) {
  // More than the engine keeps in memory: it writes in the middle of the message, too.
  std::string bytes;
  bytes.resize(18'000'000, ' ');
  uint64_t number = 1;
  for (char& byte : bytes)
    byte = static_cast<char>((number = number * 6364136223846793005 + 1) >> 56);
  const std::vector<std::string> files = {WriteTemp("first.eml", "Subject: first\r\n\r\n1"),
                                          WriteTemp("long.eml", bytes),
                                          WriteTemp("last.eml", "Subject: last\r\n\r\n2")};
  for (testing::DiskFault fault : {testing::DiskFault::kFull, testing::DiskFault::kShortWrite}) {
    for (int64_t at : {0, 3, 40, 301, 1200, 2300}) {
      const std::string keys = std::to_string(static_cast<int>(fault)) + "-" + std::to_string(at);
      {
        testing::FaultyDisk disk(fault, at);
        Load(files, keys);
        EXPECT_TRUE(disk.Happened()) << keys;
      }
      Load(files, keys);
      for (const std::string& file : files) ExpectWhole(file, keys);
      EXPECT_EQ(CountRows("Unfinished"), 0) << keys;
      EXPECT_EQ(CountRows("FileRepository WHERE FileID NOT IN (SELECT ID FROM Email)"), 0) << keys;
    }
  }
}

}  // namespace
}  // namespace tarnwick::intake
