// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "look/look.h"

#include "board/load_found.h"
#include "intake/reader_link.h"
#include "samples/dbx_builder.h"
#include "samples/hive_builder.h"
#include "samples/mailbox_builder.h"
#include "samples/pst_builder.h"
#include "samples/sample_profile.h"
#include "support/machine.h"
#include "support/program_fixture.h"

namespace tarnwick::look {
namespace {

const std::string kMark = "From - Tue Mar  5 13:07:00 2002\n";

std::string LetterOf(const std::string& subject, const std::string& year) {
  return "From: bob@example.org\nSubject: " + subject + "\nDate: Tue, 5 Mar " + year +
         " 13:07:00 +0000\n\ntext\n\n";
}

class LookAround : public testing::ProgramFixture {
 protected:
  LookAround() : root_(folder_.File("disk/")) {
    platform::SetEnvironmentText("TARNWICK_READER", TARNWICK_READER);
    samples::WriteSampleProfile(root_ + "Documents and Settings/clara/");
    Write("mail/pop/Inbox", kMark + LetterOf("a", "1999") + kMark + LetterOf("b", "2004"));
    Write("mail/pop/Sent", kMark + LetterOf("c", "2001"));
    Write("mail/pop/Trash", kMark + LetterOf("d", "2001"));
    Write("oe/Inbox.dbx", std::string(100, 'x'));
    Write("dbase/table.dbx", "no mail");
    Write("outlook/broken.pst", "no store");
  }

  void Write(const std::string& path, const std::string& text) {
    platform::MakeFolder(platform::FolderOf(root_ + path));
    platform::WriteFile(root_ + path, text);
  }
  Found LookAll() const {
    return Look(root_, true, [](const Found&, const std::string&) { return true; });
  }
  static std::string Row(const FoundMail& mail) {
    const char* states[] = {"whole", "damaged", "password"};
    const char* stored[] = {"new", "partly", "stored"};
    return mail.program + "|" + mail.user + "|" + mail.identity + "|" +
           std::to_string(mail.folders) + "|" + std::to_string(mail.messages) + "|" +
           std::to_string(mail.firstYear) + "-" + std::to_string(mail.lastYear) + "|" +
           states[static_cast<int>(mail.state)] + "|" + stored[static_cast<int>(mail.stored)];
  }
  static std::vector<std::string> Rows(const Found& found) {
    std::vector<std::string> rows;
    for (const FoundMail& mail : found.mail) rows.push_back(Row(mail));
    return rows;
  }

  std::string root_;
};

TEST_F(LookAround, TellsWhoseMailLiesWhereAndWhetherItIsStored) {
  const std::string profile = repository::GetProfileFolder();
  Found found = LookAll();
  std::vector<std::string> rows = Rows(found);
  ASSERT_EQ(rows.size(), 3U);
  EXPECT_THAT(rows[0], HasSubstr("Outlook Express|clara|"));
  EXPECT_THAT(rows[0], HasSubstr("|whole|new"));
  EXPECT_EQ(rows[1], "mbox||pop|3|4|1999-2004|whole|new");
  EXPECT_EQ(rows[2], "Outlook||broken.pst|0|0|0-0|damaged|new");
  EXPECT_NE(found.mail[2].fault, "");
  EXPECT_THAT(found.forbidden, IsEmpty());
  EXPECT_EQ(found.mail[1].place,
            root_ + "mail" + platform::kSeparator + "pop" + platform::kSeparator);

  // What is ticked is loaded, drafts and deleted mail with it, and nothing else.
  board::LoadResult result = board::LoadFound({found.mail[1]}, board::SenderPolicy::kAcceptAll);
  EXPECT_EQ(result.counts.stored, 4);
  EXPECT_EQ(result.counts.found, 4);
  result = board::LoadFound({found.mail[0]}, board::SenderPolicy::kAcceptAll);
  EXPECT_GT(result.counts.stored, 10);
  EXPECT_EQ(repository::GetProfileFolder(), profile) << "it stays as it was";
  found = LookAll();
  board::LoadFound({found.mail[0], found.mail[1]}, board::SenderPolicy::kAcceptAll);
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("There isn't new message."));
  rows = Rows(LookAll());
  EXPECT_THAT(rows[0], EndsWith("|stored"));
  EXPECT_THAT(rows[1], EndsWith("|stored"));
}

TEST_F(LookAround, KnowsAStoreOnACopiedDriveByItsIdentity) {
  samples::HiveBuilder hive;
  hive.AddText("Identities\\{1}", "Username", "Ann");
  hive.AddText("Identities\\{1}\\Software\\Microsoft\\Outlook Express\\5.0", "Store Root",
               "D:\\Mail\\", true);
  Write("old/C/Users/ann/NTUSER.DAT", hive.Build());
  samples::MessageStoreBuilder inbox;
  samples::IndexedMessage letter;
  letter.text = "From: bob@example.org\r\nSubject: x\r\n\r\n";
  inbox.AddMessage(letter);
  inbox.Finish();
  Write("old/D/Mail/Inbox.dbx", inbox.Bytes());
  EXPECT_THAT(Rows(LookAll()), Contains(HasSubstr("Outlook Express|ann|Ann|1|1|")));
}

// Short stores and long ones, damaged ones, and letters that are deleted before one that is not.
TEST_F(LookAround, TheReaderSaysOfMailWhatTheProgramFindsInIt) {
  Write("stored/1.eml", LetterOf("kept", "2005"));
  board::TakeTextFiles({root_ + "stored"});
  const std::string kept = LetterOf("kept", "2005");
  Write("long/Inbox", kMark + kept + kMark + LetterOf("z", "1998") + std::string(1'500'000, 'x'));
  for (const char* name : {"1", "2", "10"}) Write(std::string("mh/") + name, kept);
  Write("md/new/.keep", "");
  Write("md/cur/1015333620.a;2,T", LetterOf("gone", "2001"));
  Write("md/cur/1015333621.a;2,S", kept);
  auto apple = [](const std::string& letter, int flags) {
    return std::to_string(letter.size()) + "\n" + letter + "<key>flags</key><integer>" +
           std::to_string(flags) + "</integer>";
  };
  Write("Pat.mbox/Messages/1.emlx", apple(LetterOf("gone", "2003"), 2));
  Write("Pat.mbox/Messages/2.emlx", apple(kept, 1));
  samples::OutlookExpress4Builder four;
  four.Add(LetterOf("gone", "1997"), 1);
  four.Add(kept, 2);
  Write("four/Inbox.mbx", four.Letters());
  Write("four/Inbox.idx", four.Index());
  samples::MessageStoreBuilder store;
  samples::IndexedMessage letter;
  letter.text = LetterOf("kept", "2005") + std::string(2'000'000, 'x');
  store.AddMessage(letter);
  store.Finish();
  Write("long/Long.dbx", store.Bytes());
  Write("cut/Cut.dbx", store.Bytes().substr(0, 5000));
  Write("cut/Inbox.mbx", four.Letters().substr(0, 90));

  std::string told[2];
  for (int second : {0, 1}) {
    intake::SetReader(second == 1 ? TARNWICK_READER : "");
    int64_t before = intake::RecordsRead();
    for (const FoundMail& mail : LookAll().mail) {
      told[second] += Row(mail) + "|" + std::to_string(mail.bytes) + "\n";
    }
    EXPECT_EQ(intake::RecordsRead() > before + 15, second == 1);
  }
  intake::SetReader("");
  EXPECT_EQ(told[0], told[1]);
  for (const char* row :
       {"mbox||long|1|2|1998-2005|whole|stored", "MH||", "Maildir||", "Apple Mail||",
        "Outlook Express 4||four|1|2|1997-2005|whole|stored", "|damaged|new"}) {
    EXPECT_THAT(told[0], HasSubstr(row));
  }
}

TEST_F(LookAround, CanBeStoppedAndKeepsToOneFile) {
  int asked = 0;
  Found found = Look(root_, false, [&](const Found& soFar, const std::string&) {
    EXPECT_EQ(soFar.foldersSeen, ++asked);
    return asked < 3;
  });
  EXPECT_TRUE(found.isStopped);
  EXPECT_EQ(asked, 3);
  found =
      Look(root_ + "mail/pop/Inbox", false, [](const Found&, const std::string&) { return true; });
  ASSERT_EQ(found.mail.size(), 1U);
  EXPECT_EQ(found.mail[0].messages, 2);
  EXPECT_THROW(
      Look(root_ + "nothing", false, [](const Found&, const std::string&) { return true; }), Error);
}

TEST_F(LookAround, TakingAFolderTakesEveryLetterAndSaysWhatIsNone) {
  Write("letters/1.eml", LetterOf("e", "2003"));
  Write("letters/2.msg", samples::SampleMsgFile());
  testing::MakePipe(root_ + "letters/pipe.eml");
  board::TakeResult taken =
      board::TakeTextFiles({root_ + "mail", root_ + "letters", root_ + "letters/1.eml",
                            root_ + "dbase", root_ + "letters/pipe.eml"});
  EXPECT_EQ(taken.stored, 7);
  EXPECT_THAT(taken.notTaken, ElementsAre(root_ + "dbase", root_ + "letters/pipe.eml"));
  EXPECT_EQ(Query("SELECT Folder FROM Email WHERE Subject = 'b'").AsText(), "pop_Inbox");
}

}  // namespace
}  // namespace tarnwick::look
