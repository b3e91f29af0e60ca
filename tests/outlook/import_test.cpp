// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/import.h"

#include "intake/sender_rules.h"
#include "intake/store_message.h"
#include "outlook_load.h"
#include "samples/memory_outlook.h"

namespace tarnwick::outlook {
namespace {

using samples::MailNamed;
using samples::MemoryFolder;
using samples::MemoryItem;
using samples::MemoryOutlook;
using samples::MemoryStore;

class OutlookImport : public OutlookLoad {
 protected:
  OutlookImport() {
    store_.root.folders = {&inbox_, &sent_};
    outlook_.stores = {&store_};
  }

  // found, stored, already stored, refused, ignored, unreadable, not reached
  std::vector<int64_t> Load(bool everyStore = true) {
    const core::LoadCounts& c = LoadFrom(outlook_, everyStore);
    return {c.found, c.stored, c.alreadyStored, c.refused, c.ignored, c.unreadable, c.notReached};
  }
  std::string TextOf(const std::string& subject, const std::string& column) {
    return Query("SELECT " + column + " FROM Email WHERE Subject = '" + subject + "'").AsText();
  }

  MemoryOutlook outlook_;
  MemoryStore store_;
  MemoryFolder inbox_{"Inbox", "f1", FolderRole::kOther, true, false, {}, {}};
  MemoryFolder sent_{"Gesendet", "f2", FolderRole::kSentItems, true, false, {}, {}};
};

TEST_F(OutlookImport, StoresEachMailOnceAndReadsNothingOfOneThatIsStored) {
  int timesRead = 0;
  inbox_.items = {MailNamed("01", "first"), MailNamed("02", "second")};
  for (MemoryItem& item : inbox_.items) item.Number(Prop::kMessageFlags, MessageFlag::kRead);
  EXPECT_THAT(Load(), ElementsAre(2, 2, 0, 0, 0, 0, 0));
  EXPECT_TRUE(core::State().NewMessageFlag);
  for (MemoryItem& item : inbox_.items) item.timesRead = &timesRead;
  core::State().NewMessageFlag = false;
  EXPECT_THAT(Load(), ElementsAre(2, 0, 2, 0, 0, 0, 0));
  EXPECT_EQ(timesRead, 0);
  EXPECT_FALSE(core::State().NewMessageFlag);
  EXPECT_EQ(CountRows("Email"), 2);
  EXPECT_EQ(Rows("SELECT EntryID, Application FROM Email"), "01|Outlook\n02|Outlook");
  // But for a state that was not kept.
  Run("UPDATE Email SET State = Null WHERE EntryID = '02'");
  EXPECT_THAT(Load(), ElementsAre(2, 0, 2, 0, 0, 0, 0));
  EXPECT_EQ(Rows("SELECT EntryID, State FROM Email"), "01|S\n02|S");
  EXPECT_EQ(timesRead, 1);
}

TEST_F(OutlookImport, WalksEveryFolderAndKeepsItsPath) {
  MemoryFolder drafts{"Drafts", "f3", FolderRole::kOther, true, false, {}, {}};
  MemoryFolder deep{"O'Brien 100%", "f4", FolderRole::kOther, true, false, {}, {&inbox_}};
  MemoryFolder broken{"broken", "f5", FolderRole::kOther, true, true, {}, {}};
  inbox_.folders = {&drafts, &broken, &deep};  // and deep leads back to the inbox
  drafts.items = {MailNamed("01", "draft").Number(Prop::kMessageFlags, MessageFlag::kUnsent)};
  deep.items = {MailNamed("02", "deep")};
  store_.root.items = {MailNamed("03", "top")};
  EXPECT_THAT(Load(), ElementsAre(3, 3, 0, 0, 0, 0, 0));
  EXPECT_THAT(Rows("SELECT Folder, Parent FROM Email WHERE Subject = 'draft'"),
              "Drafts|\\\\Personal Folders\\Inbox");
  EXPECT_EQ(TextOf("deep", "Folder"), "O'Brien 100%");
  EXPECT_THAT(Log(), HasSubstr("met again"));
  EXPECT_THAT(Log(), HasSubstr("Outlook folder skipped"));
}

TEST_F(OutlookImport, LearnsOwnAddressesFromSentMailBeforeItJudgesTheRest) {
  MemoryFolder other{"Projects", "f3", FolderRole::kOther, true, false, {}, {}};
  MemoryFolder ofOneYear{"2003", "f4", FolderRole::kOther, true, false, {}, {}};
  store_.root.folders = {&other, &sent_};
  sent_.folders = {&ofOneYear};
  other.items = {MailNamed("01", "mine"), MailNamed("02", "hers")};
  other.items[1].Text(Prop::kSenderAddress, "eve@else.test");
  ofOneYear.items = {
      MailNamed("03", "sent").Recipient(RecipientType::kTo, "Bob", "SMTP", "b@x.test")};
  Load();
  EXPECT_EQ(TextOf("sent", "Direction"), "Out");
  EXPECT_EQ(TextOf("sent", "FromToAddress"), "b@x.test");
  EXPECT_EQ(TextOf("mine", "Direction"), "Out");
  EXPECT_EQ(TextOf("hers", "Direction"), "In");
  EXPECT_TRUE(intake::IsFromMe("ann@firm.test"));
}

TEST_F(OutlookImport, ReadsTheDefaultStoreOnlyUnlessAllAreAskedFor) {
  MemoryStore archive;
  archive.name = "Archive 2003";
  MemoryFolder old{"Old", "f9", FolderRole::kOther, true, false, {MailNamed("09", "old")}, {}};
  archive.root.folders = {&old};
  outlook_.stores = {&archive, &store_};
  inbox_.items = {MailNamed("01", "new")};
  EXPECT_THAT(Load(false), ElementsAre(2, 1, 0, 0, 0, 0, 1));
  EXPECT_THAT(intake::Account().Text(), HasSubstr("Archive 2003"));
  EXPECT_THAT(Load(true), ElementsAre(2, 1, 1, 0, 0, 0, 0));
  EXPECT_EQ(TextOf("old", "Identity"), "Archive 2003");
}

TEST_F(OutlookImport, CountsWhatIsNoMailOrCannotBeRead) {
  MemoryFolder contacts{"Contacts", "f3", FolderRole::kOther, false, false, {}, {}};
  store_.root.folders = {&inbox_, &contacts};
  inbox_.items = {MailNamed("01", "good"), MailNamed("02", "damaged"), MailNamed("03", "report"),
                  MemoryItem{}, MailNamed("05", "signed")};
  inbox_.items[1].isDamaged = true;
  inbox_.items[2].Text(Prop::kMessageClass, "REPORT.IPM.Note.NDR");
  inbox_.items[3].entryId = "04";  // no property at all
  inbox_.items[4].Text(Prop::kMessageClass, "ipm.note.SMIME");
  contacts.items = {MailNamed("06", "person"), MailNamed("07", "misplaced")};
  contacts.items[0].Text(Prop::kMessageClass, "IPM.Contact");
  EXPECT_THAT(Load(), ElementsAre(5, 3, 0, 0, 0, 2, 0));
  EXPECT_THAT(intake::Account().Text(),
              HasSubstr("\\\\Personal Folders\\Inbox\r\ndamaged\r\n  item 2"));
  EXPECT_THAT(Log(), HasSubstr("1 ReportItem"));
  EXPECT_THAT(Log(), HasSubstr("1 ContactItem"));
}

TEST_F(OutlookImport, ReadsAStoreWithAPasswordForWhoSaysThatItIsTheirs) {
  store_.hasPassword = true;
  inbox_.items = {MailNamed("01", "secret")};
  ui_.yesNo = {false};
  EXPECT_THAT(Load(), ElementsAre(1, 0, 0, 0, 0, 0, 1));
  EXPECT_THAT(intake::Account().Text(), HasSubstr("guarded by a password"));
  EXPECT_THAT(ui_.Shown("box"),
              ElementsAre(HasSubstr("memory\r\n    It is guarded by a password")));
  ui_.yesNo = {true};
  EXPECT_THAT(Load(), ElementsAre(1, 1, 0, 0, 0, 0, 0));
}

TEST_F(OutlookImport, StopsBetweenItemsAndCountsTheRest) {
  for (int i = 0; i < 5; ++i) {
    inbox_.items.push_back(MailNamed("0" + std::to_string(i), "mail " + std::to_string(i)));
  }
  int64_t yields = 0;
  ui_.onYield = [&] {
    if (++yields != 2) return;
    EXPECT_EQ(ui_.progressDone, 2);
    EXPECT_EQ(ui_.progressTotal, 5);
    core::State().ImportCancelFlag = true;
  };
  EXPECT_THAT(Load(), ElementsAre(5, 2, 0, 0, 0, 0, 3));
}

TEST_F(OutlookImport, AppliesTheSenderRules) {
  core::State().RunWideAnswer = core::SenderAnswer::kCancel;
  intake::SetAddresseeReject("Spammer", "spam@junk.test");
  intake::AddIgnoredMessage("04");
  inbox_.items = {MailNamed("01", "wanted"), MailNamed("02", "spam"),
                  MailNamed("03", "ignored now"), MailNamed("04", "ignored before"),
                  MailNamed("05", "cancelled over")};
  inbox_.items[1].Text(Prop::kSenderAddress, "spam@junk.test");
  inbox_.items[2].Text(Prop::kSenderName, "Carl");
  inbox_.items[4].Text(Prop::kSenderName, "Dora");
  ui_.senders = {core::SenderAnswer::kAccept, core::SenderAnswer::kIgnore,
                 core::SenderAnswer::kCancel};
  EXPECT_THAT(Load(), ElementsAre(5, 1, 0, 1, 2, 0, 1));
  ASSERT_EQ(ui_.asked.size(), 3u);
  EXPECT_EQ(ui_.asked[1].subject, "ignored now");
  EXPECT_EQ(ui_.asked[1].from, "Carl  <ann@firm.test>");
  EXPECT_EQ(ui_.asked[1].body, inbox_.items[2].properties.Text(Prop::kBody));
}

TEST_F(OutlookImport, SaysWhenThereIsNoMailAndAdvisesOnTheSecurityPrompt) {
  EXPECT_THAT(Load(), ElementsAre(0, 0, 0, 0, 0, 0, 0));
  inbox_.items = {MailNamed("01", "one")};
  Load();
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("Microsoft Outlook doesn't content an email."));
  ui_.shown.clear();
  outlook_.asksForAccess = true;
  Load();
  EXPECT_THAT(ui_.Shown("box"), ElementsAre(HasSubstr("You should take the following actions")));
}

TEST_F(OutlookImport, GivesUpAMailThatOutgrowsTheStoresBudget) {
  store_.budget = 2000;
  inbox_.items = {MailNamed("01", "huge"), MailNamed("02", "small")};
  inbox_.items[0].Attachment("file.bin", std::string(5000, 'x'));
  EXPECT_THAT(Load(), ElementsAre(2, 1, 0, 0, 0, 1, 0));
  EXPECT_THAT(intake::Account().Text(), HasSubstr("more room"));
}

TEST_F(OutlookImport, ListsMoreRecipientsThanTheRecordHolds) {
  MemoryItem mail = MailNamed("01", "crowd");
  for (int i = 0; i < 105; ++i) {
    std::string address = "p" + std::to_string(i) + "@x.test";
    mail.Recipient(RecipientType::kTo, address, "SMTP", address);
    mail.Recipient(RecipientType::kCc, address, "SMTP", address);
    mail.Attachment("file" + std::to_string(i) + ".txt", "x");
  }
  inbox_.items = {std::move(mail)};
  EXPECT_THAT(Load(), ElementsAre(1, 1, 0, 0, 0, 0, 0));
  for (const auto& [table, count] :
       {std::pair{"ToRecipient", 100}, {"ccRecipient", 100}, {"Attachment", 20}}) {
    EXPECT_EQ(CountRows(table), count);
  }
  EXPECT_THAT(ui_.Shown("box"), AllOf(Contains("CC account is great than 100"),
                                      Contains("Attachment is great than 20")));
}

}  // namespace
}  // namespace tarnwick::outlook
