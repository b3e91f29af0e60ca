// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Whole import runs over built profiles.
#include "oe/import.h"

#include "intake/sender_rules.h"
#include "intake/store_message.h"
#include "oe_fixture.h"
#include "support/real_data.h"

namespace tarnwick::oe {
namespace {

using samples::IndexedMessage;
using samples::MessagePlaces;
using samples::MessageStoreBuilder;
using samples::ProfileBuilder;
using samples::StandardFolders;

class Import : public OeFixture {
 protected:
  Import() : profile_(folder_.File("Ann/")) { UseProfile(profile_.Folder()); }

  void Load() {
    profile_.WriteHive();
    core::BeginLoadState();
    core::State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
    Read(core::State().RepositoryIsEmpty);
  }

  static void Read(bool whole) {
    jet::CommitGroup group(repository::RepositoryDb());
    intake::LoadAccount& account = intake::Account();
    account.Open();
    ASSERT_TRUE(oeInitialize());
    AnnounceMessages();
    if (whole) CollectMeAddresses();
    ImportOutlookExpress();
    group.End();
    account.Close();
  }

  // What is in the account but the numbers.
  static std::string Reasons() { return intake::Account().Text(); }

  static std::string FolderOf(const std::string& subject) {
    return Query("SELECT Folder FROM Email WHERE Subject='" + subject + "'").AsText();
  }
  static std::string RawOf(const std::string& subject) {
    return Query(
               "SELECT FileBody FROM FileRepository WHERE FileID IN (SELECT ID FROM Email WHERE "
               "Subject='" +
               subject + "') ORDER BY FileID")
        .AsText();
  }

  ProfileBuilder profile_;
};

TEST_F(Import, TakesEveryFolderButDraftsDeletedItemsAndOutbox) {
  std::string store = profile_.AddIdentity("Main Identity");
  auto folders = StandardFolders(StoreOf({"inbox 1", "inbox 2"}), StoreOf({"sent"}));
  folders.push_back({{4, 2, "Old Drafts", "old.dbx"}, StoreOf({"old draft"})});
  folders.push_back({{5, 0, "drafts", "lower.dbx"}, StoreOf({"lower case"})});
  folders.push_back({{6, 1, "Deleted Items", "Deleted.dbx"}, StoreOf({"deleted", "deleted 2"})});
  folders.push_back({{7, 0, "Outbox", "Outbox.dbx"}, StoreOf({"outgoing"})});
  folders.push_back({{8, 6, "Kept", "kept.dbx"}, StoreOf({"below deleted"})});
  folders.push_back({{9, 2, "It's 100% \"us\"", "us.dbx"}, StoreOf({"ours"})});
  ProfileBuilder::WriteStore(store, folders);
  Load();
  EXPECT_EQ(Summary(), "found 10, stored 5, not reached 5, ");
  EXPECT_EQ(Rows("SELECT Subject, Folder FROM Email ORDER BY ID"),
            "inbox 1|Inbox\ninbox 2|Inbox\nsent|Sent Items\nlower case|drafts\nours|It's 100% "
            "\"us\"");
  EXPECT_EQ(RawOf("inbox 1"), MailOf("inbox 1", 0).text);
  EXPECT_THAT(Reasons(),
              HasSubstr("Not reached = 2\r\n" + store +
                        "Deleted.dbx\r\ndrafts, deleted items and the outbox are not read"));
  EXPECT_TRUE(core::State().NewMessageFlag);
  EXPECT_EQ(ui_.progressDone, ui_.progressTotal);
  EXPECT_FALSE(platform::FileExists(core::State().TempMessageFile));
  EXPECT_EQ(ui_.status[core::StatusPanel::kProgress], "");

  Load();
  EXPECT_EQ(Summary(), "found 10, already 5, not reached 5, ");
  EXPECT_FALSE(core::State().NewMessageFlag);
}

TEST_F(Import, LettersOfOneMessageIdAndSecondAreToldApart) {
  IndexedMessage direct = MailOf("direct");
  direct.messageId = "<1@example.org>";
  IndexedMessage fromList = direct;
  fromList.text += "-- \r\nTo leave the list ...\r\n";
  const std::string in = StoreWith({direct, fromList});
  MessageStoreBuilder kept;  // a copy, of which the index has the length wrong
  MessagePlaces copy = kept.AddMessage(direct);
  for (uint32_t entry = copy.info + 12; entry < copy.date; entry += 4) {
    uint32_t value = kept.Image().Get32(entry);
    if ((value & 0xFF) == 0x91) kept.Image().Put32(entry, value + 256);
  }
  kept.Finish();
  std::string store = profile_.AddIdentity("Ann");
  ProfileBuilder::WriteStore(store, StandardFolders(in, ""));
  Load();
  EXPECT_EQ(Summary(), "found 2, stored 2, ");
  Load();
  EXPECT_EQ(Summary(), "found 2, already 2, ");

  // As former versions left it: the first letter under a key that stands for both.
  Run("DELETE FROM Email WHERE ID = 2");
  Run("UPDATE Email SET EntryID = '<1@example.org>_20040105100000'");
  auto folders = StandardFolders(in, "");
  folders.push_back({{4, 1, "Kept", "kept.dbx"}, kept.Bytes()});
  ProfileBuilder::WriteStore(store, folders);
  Load();
  EXPECT_EQ(Summary(), "found 3, stored 1, already 2, ");
  EXPECT_EQ(RawOf("direct"), direct.text);
  EXPECT_EQ(Query("SELECT FileBody FROM FileRepository WHERE FileID = 3").AsText(), fromList.text);
  Load();
  EXPECT_EQ(Summary(), "found 3, already 3, ");
  EXPECT_FALSE(core::State().NewMessageFlag);
  // Ignored for good, a former key says nothing about the letter's text.
  Run("DELETE FROM Email");
  intake::AddIgnoredMessage("<1@example.org>_20040105100000");
  Load();
  EXPECT_EQ(Summary(), "found 3, ignored 3, ");
}

TEST_F(Import, LabelsNameTheIdentityAndHotmail) {
  for (const char* name : {"Ann", "Bob"}) {
    std::string store = profile_.AddIdentity(name);
    auto folders = StandardFolders(StoreOf({std::string(name) + " in"}), "");
    folders.push_back({{4, 0, "My Hotmail", "LocalStore2"}, ""});
    folders.push_back({{5, 4, "Family", "f.dbx"}, StoreOf({std::string(name) + " family"})});
    ProfileBuilder::WriteStore(store, folders);
  }
  Load();
  EXPECT_EQ(Summary(), "found 4, stored 4, ");
  EXPECT_EQ(FolderOf("Ann in"), "Ann_Inbox");
  EXPECT_EQ(FolderOf("Bob family"), "Bob_Hotmail_Family");
  EXPECT_EQ(Query("SELECT Parent FROM Email WHERE Subject='Bob family'").AsText(),
            "My Hotmail.Family");
}

TEST_F(Import, SentMailTeachesTheUsersAddresses) {
  std::string store = profile_.AddIdentity("Ann");
  IndexedMessage letter = MailOf("reply");
  letter.text =
      "From: =?iso-8859-1?Q?Ann_O'N=E9il?= <ann@example.org>\r\nTo: bob@example.org\r\n"
      "Subject: reply\r\n"
      "Date: Mon, 5 Jan 2004 10:00:00 +0000\r\n\r\n----- Original Message -----\r\n"
      "From: Bob <bob@example.org>\r\nSubject: question\r\n\r\nWell?\r\n";
  auto folders = StandardFolders(StoreOf({"in"}), StoreWith({letter}));
  IndexedMessage mine = MailOf("mine");
  mine.text = "From: ann@example.org\r\nTo: carl@example.org\r\nSubject: mine\r\n\r\nx\r\n";
  folders.push_back({{4, 1, "Friends", "friends.dbx"}, StoreWith({mine})});
  mine.text = "From: ann@old.example.org\r\nTo: carl@example.org\r\nSubject: old\r\n\r\nx\r\n";
  mine.messageId = "<old@example.org>";
  folders.push_back({{5, 3, "2003", "2003.dbx"}, StoreWith({mine})});  // below Sent Items
  ProfileBuilder::WriteStore(store, folders);
  Load();
  EXPECT_EQ(CountRows("MeAddress"), 2);
  EXPECT_THAT(Rows("SELECT Address, FromName FROM MeAddress"),
              StartsWith("ann@example.org|Ann O'Néil\n"));
  EXPECT_EQ(Rows("SELECT Subject, Direction FROM Email WHERE Subject <> 'old' ORDER BY Subject"),
            "in|In\nmine|Out\nreply|Out");
  EXPECT_EQ(Summary(), "found 4, stored 4, ");
}

TEST_F(Import, WhatIsNotReachedIsCountedWithItsReason) {
  std::string store = profile_.AddIdentity("Ann");
  MessageStoreBuilder deep;
  auto info = [&](const char* subject) { return deep.AddMessage(MailOf(subject)).info; };
  uint32_t third = deep.Image().AddNode({{info("third 1"), 0}, {info("third 2"), 0}});
  uint32_t left = deep.Image().AddNode({{info("left"), third}});
  uint32_t right = deep.Image().AddNode({{info("right"), 0}});
  deep.SetRoot(deep.Image().AddNode({{info("root"), right}}, left));
  deep.SetItemCount(5);

  MessageStoreBuilder deepLeft;  // a third level by a left child alone
  uint32_t low = deepLeft.Image().AddNode({{deepLeft.AddMessage(MailOf("low")).info, 0}});
  uint32_t middle = deepLeft.Image().AddNode({}, low);
  deepLeft.SetRoot(deepLeft.Image().AddNode({}, middle));
  deepLeft.SetItemCount(1);

  MessageStoreBuilder lopsided;
  uint32_t child = lopsided.Image().AddNode({{lopsided.AddMessage(MailOf("child")).info, 0}});
  lopsided.SetRoot(lopsided.Image().AddNode({{lopsided.AddMessage(MailOf("top", 1)).info, child}}));
  lopsided.SetItemCount(2);

  MessageStoreBuilder treeless;
  treeless.AddMessage(MailOf("no tree"));
  treeless.SetItemCount(1);

  MessageStoreBuilder odd;  // three announced, one dated, one dated too late, one more than said
  odd.AddMessage(MailOf("dated"));
  IndexedMessage late = MailOf("late");
  late.date = DateTime::FromDate(2011, 5, 1);
  odd.AddMessage(late);
  odd.Finish();
  odd.SetItemCount(1);

  auto folders = StandardFolders(deep.Bytes(), lopsided.Bytes());
  folders.push_back({{4, 1, "Treeless", "t.dbx"}, treeless.Bytes()});
  folders.push_back({{5, 1, "Odd", "odd.dbx"}, odd.Bytes()});
  folders.push_back({{6, 1, "Left", "left.dbx"}, deepLeft.Bytes()});
  ProfileBuilder::WriteStore(store, folders);
  platform::WriteFile(store + "unlisted.dbx", StoreOf({"unlisted"}));
  std::string liar = StoreOf({});
  for (size_t i = 0xC4; i < 0xC8; ++i) liar[i] = '\xFF';
  platform::WriteFile(store + "liar.dbx", liar);
  int64_t most = static_cast<int64_t>(liar.size() / 40);
  // A second list in the store is beyond the one identity.
  ProfileBuilder::WriteStore(store, {{{1, 0, "Z", "z.dbx"}, StoreOf({"z"})}}, "zzz.dbx");
  Load();

  const core::LoadCounts& counts = core::State().Counts;
  EXPECT_EQ(counts.found, 5 + 2 + 1 + 2 + 1 + 1 + most + 1);
  EXPECT_EQ(counts.stored, 3 + 1 + 1);
  EXPECT_EQ(counts.unreadable, 1);
  EXPECT_EQ(counts.notReached, counts.found - counts.stored - counts.unreadable);
  for (const std::string& reason :
       {"Not reached = 2\r\n" + store + "Inbox.dbx\r\nmessages below the second level",
        "Not reached = 1\r\n" + store + "Sent Items.dbx\r\nmessages behind the root's entries",
        std::string("left.dbx\r\nmessages below the second level"),
        std::string("t.dbx\r\nthe file has no message tree"),
        std::string("unlisted.dbx\r\nno folder of the folder list"),
        std::string("z.dbx\r\nits folder list has no identity of its own"),
        std::string("its date is missing, before 1990 or after 2009")}) {
    EXPECT_THAT(Reasons(), HasSubstr(reason));
  }
}

TEST_F(Import, EndsOfMessagesAreCountedApart) {
  std::string store = profile_.AddIdentity("Ann");
  MessageStoreBuilder inbox;
  auto add = [&](const std::string& subject, const std::string& sender, int minute) {
    IndexedMessage letter = MailOf(subject, minute);
    letter.text =
        "From: " + sender + "\r\nTo: ann@example.org\r\nSubject: " + subject + "\r\n\r\nHello.\r\n";
    letter.messageId = "<" + subject + "@example.org>";
    inbox.AddMessage(letter);
  };
  add("taken", "good@example.org", 1);
  add("refused", "bad@example.org", 2);
  add("ignored", "dull@example.org", 3);
  IndexedMessage empty = MailOf("no mail", 4);
  empty.text = "\r\nneither sender nor subject\r\n";
  inbox.AddMessage(empty);
  inbox.Finish();
  ProfileBuilder::WriteStore(store, StandardFolders(inbox.Bytes(), ""));
  profile_.WriteHive();
  core::BeginLoadState();
  intake::SetAddresseeReject("bad", "bad@example.org");
  ui_.senders = {core::SenderAnswer::kAccept, core::SenderAnswer::kIgnore};
  Read(false);
  EXPECT_EQ(Summary(), "found 4, stored 1, refused 1, ignored 1, unreadable 1, ");

  Load();
  EXPECT_EQ(core::State().Counts.alreadyStored, 1);
  EXPECT_EQ(core::State().Counts.ignored, 1);
}

TEST_F(Import, AStopLeavesTheRestNotReached) {
  std::string store = profile_.AddIdentity("Ann");
  ProfileBuilder::WriteStore(
      store, StandardFolders(StoreOf({"1", "2", "3"}), StoreOf({"sent 1", "sent 2"})));
  profile_.WriteHive();
  core::State().RepositoryIsEmpty = false;
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  Load();
  EXPECT_EQ(Summary(), "found 5, stored 1, not reached 4, ");
  EXPECT_THAT(Reasons(), HasSubstr("Sent Items.dbx\r\nthe load was stopped"));

  // Cancel in the ask dialog stops the same way, over the message that was asked about.
  ui_.onYield = nullptr;
  core::BeginLoadState();
  ui_.senders = {core::SenderAnswer::kCancel};
  Run("DELETE * FROM MeContact");
  Read(false);
  EXPECT_EQ(Summary(), "found 5, already 1, not reached 4, ");
}

TEST_F(Import, AFileNamedByManyFoldersIsReadAndCountedOnce) {
  std::string store = profile_.AddIdentity("Ann");
  auto folders = StandardFolders(StoreOf({"a", "b"}), StoreOf({"c"}));
  for (uint8_t i = 4; i < 200; ++i) {
    folders.push_back({{i, 1, "Twin", i % 2 == 0 ? "INBOX.DBX" : "Sent Items.dbx"}, ""});
  }
  ProfileBuilder::WriteStore(store, folders);
  Load();
  EXPECT_EQ(Summary(), "found 3, stored 3, ");
}

TEST_F(Import, RealStoresGiveTheirMessages) {
  std::string data = testing::RealData("profile-ann/");
  if (data.empty()) GTEST_SKIP() << "no real data here";
  UseProfile(data);
  Read(false);
  EXPECT_EQ(Summary(), "found 1, stored 1, ");
  EXPECT_EQ(Rows("SELECT AddressFrom, EntryID FROM Email"),
            "noreply@freshmeat.net|<20020617194207.DF10883011@mail.freshmeat.net>"
            "_2710_04a0dba67b44c101_20020617194207");

  // The same files without their profile: one of 2021 is beyond the reader's years.
  core::BeginLoadState();
  core::State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
  UseProfile(testing::RealData("dbx/"));
  Read(false);
  EXPECT_EQ(core::State().Counts.unreadable, 1);
  EXPECT_EQ(core::State().Counts.notReached, 2);  // no folder of the real list names these files
  EXPECT_THAT(ui_.Shown("error"), IsEmpty());
}

}  // namespace
}  // namespace tarnwick::oe
