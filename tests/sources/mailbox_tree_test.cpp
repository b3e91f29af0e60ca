// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Mailboxes as they lie on disks: what is found, what it is called, and how a load takes it.

#include "board/load_command.h"
#include "board/load_log.h"
#include "intake/load_account.h"
#include "intake/reader_link.h"
#include "samples/mailbox_builder.h"
#include "sources/mailbox.h"
#include "support/machine.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"

namespace tarnwick::sources {
namespace {

const std::string kMark = "From - Tue Mar  5 13:07:00 2002\r\n";

std::string LetterOf(const std::string& from, const std::string& subject) {
  return "From: " + from + "\r\nTo: carl@example.org\r\nSubject: " + subject +
         "\r\nDate: Tue, 5 Mar 2002 13:07:00 +0000\r\n\r\ntext\r\n";
}

class MailboxTree : public testing::ProgramFixture {
 protected:
  MailboxTree() : root_(folder_.File("disk/")) {}

  void Write(const std::string& path, const std::string& text) {
    platform::MakeFolder(platform::FolderOf(root_ + path));
    platform::WriteFile(root_ + path, text);
  }
  void WriteBox(const std::string& path, const std::vector<std::string>& letters) {
    std::string box;
    for (const std::string& letter : letters) box += kMark + letter + "\r\n";
    Write(path, box);
  }
  // "account|name|full name|program"
  std::vector<std::string> Found() const {
    std::vector<std::string> rows;
    MailboxSearch search = FindMailboxes(root_, [] { return true; });
    for (const Mailbox& box : search.mailboxes) {
      std::string role = box.role == MailboxRole::kSent ? " sent"
                         : IsLeftOut(box.role)          ? " left out"
                                                        : "";
      rows.push_back(box.identity + "|" + box.name + "|" + box.fullName + "|" + box.application +
                     role);
    }
    return rows;
  }
  core::LoadCounts Load(const intake::ReadingRules& rules = intake::kDesigned) {
    repository::SetProfileFolder(root_);
    board::LoadOptions options;
    options.everyMailer = true;
    options.rules = rules;
    options.senders = board::SenderPolicy::kAcceptAll;
    return board::LoadFromMailer(options).counts;
  }

  std::string root_;
};

TEST_F(MailboxTree, FoldersBearTheNamesThatTheirProgramsShow) {
  const std::string box = kMark + LetterOf("a@b", "c");
  Write("Mail/pop.x.org/Inbox", box);
  Write("Mail/pop.x.org/Inbox.msf", "");
  Write("Mail/pop.x.org/Inbox.sbd/Work", box);
  Write("Mail/pop.x.org/Inbox.sbd/Work.sbd/lists.debian", box);
  Write("Mail/pop.x.org/Trash", box);
  Write("Eudora/Out.mbx", "From ???@??? Thu Jan 01 00:00:01 1998\r\nA: 1\r\n");
  Write("Apple/Old.mbox/mbox", box);
  Write("Apple/Box.mbox/Messages/1.emlx", "3\nA:1");
  Write("Maildir/cur/1.x;2,", "A: 1\n");
  Write("Maildir/new/2.x", "A: 1\n");
  Write("Maildir/.Sent.&AOQ-rger/cur/1.x;2,", "A: 1\n");
  Write("Maildir/.Sent.&AOQ-rger/new/.keep", "");
  Write("Windows Mail/Ann/Inbox/1.eml", "A: 1\n");
  Write("Windows Mail/Ann/Inbox/Sub/2.eml", "A: 1\n");
  Write("oe4/Inbox.mbx", samples::OutlookExpress4Builder().Letters());
  // None of these is mail.
  Write("photos/from.jpg", box);
  Write("notes", "From here on\n");
  Write("Mail/pop.x.org/popstate.dat", "x");
  EXPECT_THAT(Found(), ElementsAre("Apple|Box||Apple Mail", "Apple|Old||Apple Mail",
                                   "Eudora|Out||Eudora sent", "pop.x.org|Inbox||Thunderbird",
                                   "pop.x.org|Trash||Thunderbird left out",
                                   "pop.x.org|Work|Inbox.Work|Thunderbird",
                                   "pop.x.org|lists.debian|Inbox.Work.lists.debian|Thunderbird",
                                   "disk|Inbox||Maildir", "disk|ärger|Sent.ärger|Maildir sent",
                                   "Ann|Inbox||Windows Mail", "Ann|Sub|Inbox.Sub|Windows Mail",
                                   "oe4|Inbox||Outlook Express 4"));
}

TEST_F(MailboxTree, HostilePlacesAreWalkedThroughOnceAndOpenNothing) {
  Write("a/Inbox", kMark + LetterOf("a@b", "c"));
  Write("a/\xFF\xE9.eml", LetterOf("a@b", "of no encoding"));
  Write("closed/Inbox", kMark + LetterOf("a@b", "d"));
  platform::MakeFolder(root_ + "a/folder.eml");
  testing::MakePipe(root_ + "a/pipe.eml");
  testing::MakePipe(root_ + "a/pipe");
  testing::MakeLink("..", root_ + "a/loop");
  testing::MakeLink("Inbox", root_ + "a/link");
  Write("m/cur/1.x", LetterOf("a@b", "in a Maildir"));
  platform::MakeFolder(root_ + "m/new");
  for (int i = 0; i < 1000; ++i) {
    testing::MakeLink("../cur/1.x", root_ + "m/new/" + std::to_string(i));
  }
  std::string deep = "deep";
  for (int i = 0; i < 400; ++i) deep += "/dddd";
  Write(deep + "/1.eml", LetterOf("a@b", "deep"));
  bool isRoot = !testing::LetOwner(root_ + "closed", 0) || testing::IsAdministrator();
  core::LoadCounts counts = Load();
  testing::LetOwner(root_ + "closed", 7);
  EXPECT_EQ(counts.found, isRoot ? 5 : 4);
  EXPECT_EQ(counts.stored, isRoot ? 5 : 4);
  if (!isRoot) {
    EXPECT_THAT(platform::ReadFile(board::LoadLogFile()),
                HasSubstr(root_ + "closed/: it may not be read"));
  }
  EXPECT_EQ(Query("SELECT COUNT(*) FROM Email WHERE Subject = 'of no encoding'").AsInt(), 1);
}

TEST_F(MailboxTree, NumberedFilesAreAFolderOfLettersWithTheStateOfTheirSequences) {
  auto letter = [](const char* subject) { return LetterOf("bob@example.org", subject); };
  for (int i = 1; i <= 12; ++i) {
    Write("Mail/inbox/" + std::to_string(i), letter(("letter " + std::to_string(i)).c_str()));
  }
  Write("Mail/inbox/.mh_sequences",
        "cur: 3\nunseen: 2 x 9-11 10-12 5-4 99999999999999999999\nreplied: 1\nflagged: 1-2\n");
  Write("Mail/inbox/,13", letter("deleted"));
  Write("Mail/inbox/notes.txt", "From my desk");
  Write("Mail/inbox/work/7", letter("below"));  // nothing beside it
  Write("Mail/inbox/work/.claws_mark", "x");
  Write("Mail/photos/1", "no letter");
  Write("Mail/year/2003", letter("a file"));
  Write("Mail/year/report.doc", "x");  // so it is no such folder
  EXPECT_EQ(Load().stored, 13);
  EXPECT_EQ(Rows("SELECT Folder, Parent, Application, Subject FROM Email WHERE State Is Null"),
            "work|inbox.work|Claws Mail|below");
  EXPECT_EQ(CountRows("Email WHERE Folder = 'inbox' AND Application = 'MH'"), 12);
  EXPECT_EQ(Rows("SELECT Subject, State FROM Email WHERE State <> 'S' ORDER BY ID"),
            "letter 1|SRF\nletter 2|UF\nletter 9|U\nletter 10|U\nletter 11|U\nletter 12|U");
}

TEST_F(MailboxTree, TheStateComesFromWhereverTheProgramKeepsIt) {
  auto letter = [](const char* subject) { return LetterOf("bob@example.org", subject); };
  WriteBox("m/Inbox", {"X-Mozilla-Status: 1005\r\n" + letter("mozilla"), letter("plain")});
  Write("d/cur/1.x;2,RS", "X-Status: F\r\n" + letter("seen"));
  Write("d/new/2.x", letter("new"));
  Write("a/1.emlx", std::to_string(letter("apple").size()) + "\n" + letter("apple") +
                        "<plist><key>flags</key>\n<integer>16</integer>");
  Write("a/2.eml", "Status: O\r\n" + letter("file"));
  samples::OutlookExpress4Builder store;
  store.Add(letter("oe4"), 2);
  Write("o/Inbox.mbx", store.Letters());
  Write("o/Inbox.idx", store.Index());
  Load();
  EXPECT_EQ(Rows("SELECT Subject, State FROM Email ORDER BY Subject"),
            "apple|UF\nfile|U\nmozilla|SPF\nnew|U\noe4|U\nplain|Null\nseen|SR");

  // What was stored without one gets it from a later load; nothing else is touched.
  Run("UPDATE Email SET State = Null, Notes = 'mine'");
  Run("UPDATE Email SET State = 'D' WHERE Subject = 'seen'");
  EXPECT_EQ(Load().alreadyStored, 7);
  EXPECT_EQ(Rows("SELECT Subject, State FROM Email WHERE Notes = 'mine' ORDER BY Subject"),
            "apple|UF\nfile|U\nmozilla|SPF\nnew|U\noe4|U\nplain|Null\nseen|D");
  EXPECT_THAT(platform::ReadFile(board::LoadLogFile()),
              HasSubstr("have now been given their state (read, replied, flagged) = 5"));
}

TEST_F(MailboxTree, ALoadTakesWhatIsNewAndKnowsTheRest) {
  const std::string first = LetterOf("bob@example.org", "first");
  WriteBox("m/Inbox", {first, LetterOf("ann@home.org", "from myself"),
                       "X-Mozilla-Status: 0009\r\n" + LetterOf("bob@example.org", "deleted")});
  WriteBox("m/Gesendet", {LetterOf("Ann <ann@home.org>", "sent")});
  WriteBox("m/Trash", {LetterOf("bob@example.org", "thrown away")});
  Write("m/Saved.msg", samples::SampleMsgFile());
  EXPECT_EQ(
      board::CountsSummary(Load()),
      "found 6, stored 4, already stored 0, refused 0, ignored 0, unreadable 0, not reached 2");
  std::string account = platform::ReadFile(board::LoadLogFile());
  const std::string folder = std::string("m") + platform::kSeparator;
  EXPECT_THAT(account, HasSubstr(folder + "Inbox\r\nletters that were deleted are not read"));
  EXPECT_THAT(account,
              HasSubstr(folder + "Trash\r\ndrafts, deleted mail and the outbox are not read"));
  EXPECT_EQ(Query("SELECT Direction FROM Email WHERE Subject = 'sent'").AsText(), "Out");
  EXPECT_EQ(Query("SELECT Identity FROM Email WHERE Subject = 'first'").AsText(), "m");
  EXPECT_EQ(Query("SELECT FilesNum FROM Email WHERE Subject = 'A saved message'").AsInt(), 2);

  // It grew, and its program noted that a letter was read; a copy lies elsewhere as a file.
  WriteBox("m/Inbox",
           {"X-Mozilla-Status: 0001\r\n" + first, LetterOf("ann@home.org", "from myself"),
            LetterOf("bob@example.org", "new")});
  Write("copies/1.eml", LetterOf("ann@home.org", "from myself"));
  core::LoadCounts again = Load();
  EXPECT_EQ(again.stored, 1);
  EXPECT_EQ(again.alreadyStored, 5);
  EXPECT_EQ(Query("SELECT COUNT(*) FROM Email").AsInt(), 5);

  // Deleted mail is read where the rules say so.
  intake::ReadingRules rules = intake::kComplete;
  rules.drafts = true;
  EXPECT_EQ(Load(rules).stored, 0);
  rules.deletedItems = true;
  EXPECT_EQ(Load(rules).stored, 1);
}

// Single files: one leaves a file behind, one brings up a box, one is long, one is no letter, one
// is there twice, one is missing.
TEST_F(MailboxTree, TheReaderTakesWhatTheProgramTakes) {
  const std::string letter = LetterOf("ann@example.org", "a letter");
  std::string boxed = LetterOf("ann@example.org", "many files");
  boxed.insert(boxed.find("\r\n\r\n"), "\r\nContent-Type: multipart/mixed; boundary=edge");
  for (int i = 0; i < 25; ++i) {
    boxed += "--edge\r\nContent-Type: a/x; name=f" + std::to_string(i) + "\r\n\r\nx\r\n";
  }
  const std::vector<std::string> paths = {
      WriteTemp("1.eml", letter),
      WriteTemp("2.eml", LetterOf("b@c", "uu") + "begin 644 n.txt\r\n#0V%T\r\n`\r\nend\r\n"),
      WriteTemp("3.eml", boxed),
      WriteTemp("4.eml", LetterOf("b@c", "long") + std::string(1'200'000, 'x')),
      WriteTemp("5.eml", "\n\nno letter"),
      WriteTemp("6.eml", letter),
      folder_.File("7.eml"),
      WriteTemp("8.msg", samples::SampleMsgFile()),
      WriteTemp("9.msg", samples::SampleMsgFile("long", 1'200'000)),
      WriteTemp("10.msg", samples::SampleMsgFile().substr(0, 4000))};
  repository::DisconnectRepository();
  platform::CopyFile(folder_.File("Tarnwick.twr"), folder_.File("empty"));
  using Tables = decltype(testing::DumpRepository(RepositoryDb()));
  Tables left[2];
  decltype(ui_.shown) shown[2];
  std::string log[2];
  for (int second : {0, 1}) {
    repository::DisconnectRepository();
    platform::CopyFile(folder_.File("empty"), folder_.File("Tarnwick.twr"));
    ASSERT_TRUE(repository::OpenRepository(false));
    RemoveLog();
    ui_.shown.clear();
    intake::SetReader(second == 1 ? TARNWICK_READER : "");
    int64_t before = intake::RecordsRead();
    board::TakeResult taken = board::TakeTextFiles(paths);
    EXPECT_EQ(intake::RecordsRead() - before, second == 1 ? 8 + 5 + 3 : 0);
    EXPECT_EQ(taken.stored, 6);
    EXPECT_EQ(taken.alreadyStored, 1);
    EXPECT_EQ(taken.notTaken.size(), 2U);
    left[second] = testing::DumpRepository(RepositoryDb());
    shown[second] = ui_.shown;
    log[second] = Log();
  }
  intake::SetReader("");
  EXPECT_TRUE(left[0] == left[1]);
  EXPECT_EQ(shown[0], shown[1]);
  EXPECT_EQ(log[0], log[1]);
}

// What the reader reads is what the program reads; letters that are deleted, broken, long, or leave
// a file behind stand between.
TEST_F(MailboxTree, TheReaderLeavesWhatTheProgramLeaves) {
  std::vector<std::string> letters;
  for (int i = 0; i < 150; ++i) {
    std::string letter = LetterOf("ann@example.org", "letter " + std::to_string(i % 140));
    if (i % 13 == 5) letter.insert(0, "X-Mozilla-Status: 0008\r\n");
    if (i % 17 == 6) letter += "begin 644 note.txt\r\n#0V%T\r\n`\r\nend\r\n";
    if (i == 70) letter += std::string(1'200'000, 'x') + "\r\n";
    letters.push_back(std::move(letter));
  }
  WriteBox("Mail/Sent", letters);
  for (int i = 0; i < 60; ++i) {
    std::string name =
        "Maildir/cur/" + std::to_string(1000 + i) + ".x;2," + (i % 2 != 0 ? "S" : "");
    Write(name, i == 30 ? "" : LetterOf("eve@example.org", "file " + std::to_string(i)));
  }
  Write("Maildir/new/.keep", "");
  Write("Maildir/cur/2000.x;2,", LetterOf("eve@example.org", "long") + std::string(1'200'000, 'y'));
  for (int i = 1; i < 30; ++i) {
    std::string letter = LetterOf("tim@example.org", "apple " + std::to_string(i));
    if (i == 20) letter += std::string(1'200'000, 'z');
    std::string length = i == 8 ? "none" : std::to_string(i == 7 ? 99'999 : letter.size());
    Write("Tim.mbox/Messages/" + std::to_string(i) + ".emlx",
          length + "\n" + letter + "<key>flags</key><integer>" + std::to_string(i) + "</integer>");
    Write("mh/" + std::to_string(i), LetterOf("ida@example.org", "mh " + std::to_string(i)));
  }
  Write("Tim.mbox/Messages/40.emlx", "0\n");
  Write("mh/.mh_sequences", "unseen: 3-9\nreplied: 4 7\n");
  samples::OutlookExpress4Builder store;
  for (int i = 0; i < 20; ++i) {
    store.Add(LetterOf("bob@example.org", "four " + std::to_string(i)), i % 3);
  }
  Write("o/Inbox.mbx", store.Letters());
  Write("o/Inbox.idx", store.Index());
  repository::DisconnectRepository();
  platform::CopyFile(folder_.File("Tarnwick.twr"), folder_.File("empty"));
  using Tables = decltype(testing::DumpRepository(RepositoryDb()));
  Tables left[2];
  std::string accounts[2];
  for (int second : {0, 1}) {
    repository::DisconnectRepository();
    platform::CopyFile(folder_.File("empty"), folder_.File("Tarnwick.twr"));
    ASSERT_TRUE(repository::OpenRepository(false));
    intake::SetReader(second == 1 ? TARNWICK_READER : "");
    int64_t before = intake::RecordsRead();
    EXPECT_GT(Load(intake::kComplete).stored, 150);
    EXPECT_EQ(intake::RecordsRead() > before + 200, second == 1);
    left[second] = testing::DumpRepository(RepositoryDb());
    accounts[second] = intake::Account().Text();
  }
  intake::SetReader("");
  EXPECT_TRUE(left[0] == left[1]);
  EXPECT_EQ(accounts[0], accounts[1]);
}

}  // namespace
}  // namespace tarnwick::sources
