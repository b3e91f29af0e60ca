// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/save_messages.h"

#include <filesystem>

#include "intake/header_parser.h"
#include "intake/store_message.h"
#include "outlook/msg_file.h"
#include "platform/charset.h"
#include "sources/letter_files.h"
#include "sources/mbox.h"
#include "support/faults.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"
#include "support/run_program.h"
#include "takeout/new_files.h"
#include "takeout/stored_message.h"

namespace tarnwick::takeout {
namespace {

namespace fs = std::filesystem;

class SaveMessagesTest : public testing::ProgramFixture {
 protected:
  // Stores a message and keeps its bytes beside.
  void Store(int number, const std::string& file) {
    intake::MailMessage message = testing::VariedMessage(number);
    platform::WriteFile(core::State().TempMessageFile, file);
    intake::dbSaveMesage(core::State().TempMessageFile, message, message.Application, 1, "");
    ids_.push_back(static_cast<int64_t>(ids_.size()) + 1);
    if (file.empty()) return;
    platform::MakeFolder(folder_.File("raw/"));
    platform::WriteFile(folder_.File("raw/") + std::to_string(number), file);
  }
  void StoreLetters(int count) {
    jet::CommitGroup group(repository::RepositoryDb());
    for (int i = 0; i < count; ++i) {
      Store(i, "Subject: " + std::to_string(i) + "\r\n\r\n" + std::string(1000, 'x') + "\r\n");
    }
    repository::RepositoryDb().EndUnit();
    group.End();
  }
  std::string Save(SaveFormat format, const std::string& name, bool folders = false) {
    auto counts = SaveMessages({ids_, format, folders, folder_.File(name)});
    return counts ? counts->Line() : "nothing";
  }
  Texts Files(const std::string& name) {
    Texts paths;
    for (const auto& entry : fs::recursive_directory_iterator(folder_.File(name))) {
      if (entry.is_regular_file()) paths.push_back(entry.path().string());
    }
    return paths;
  }
  // Of a mailbox file of such letters, which ends with a whole one.
  static int64_t WholeMessages(const std::string& path) {
    std::string text = platform::ReadFile(path);
    int64_t count = 0;
    for (size_t at = 0; at < text.size(); ++count) {
      at = std::min(text.find("\n\nFrom ", at), text.size() - 2) + 2;
    }
    EXPECT_TRUE(text.empty() || text.ends_with("x\r\n\n")) << path;
    return count;
  }
  void ReadBack(const char* kind, const std::string& name) {
    testing::ProgramRun run =
        testing::RunProgram({"/usr/bin/env", "python3",
                             std::string(TARNWICK_SOURCE) + "/tests/takeout/read_mailboxes.py",
                             kind, folder_.File(name), folder_.File("raw")});
    EXPECT_EQ(run.status, 0) << name << ": " << run.output << run.errors;
  }

  std::vector<int64_t> ids_;
};

TEST_F(SaveMessagesTest, EveryFormatIsReadBackMessageForMessage) {
  for (int i = 0; i < 30; ++i) Store(i, testing::VariedFile(i));
  const std::string kOdd[] = {
      "From the start\nSubject: x\n\nFrom a\n>From b\n>>From c\r\n From d\n>Fromm\n\nFrom e",
      "Subject: y\r\n\r\n\r\nFrom f\r\n\r\n",
      "\n",
      "From ",
      ">From ",
      "x\n\n\n"};
  int number = 30;
  for (const std::string& file : kOdd) Store(number++, file);
  const std::string kAll = "selected 36, saved 33, no stored file 3, failed 0, not reached 0";

  EXPECT_EQ(Save(SaveFormat::kEml, "eml"), kAll);
  std::multiset<std::string> saved, stored;
  std::set<std::string> folded;
  for (const std::string& path : Files("eml")) {
    saved.insert(platform::ReadFile(path));
    folded.insert(platform::FoldCase(platform::FileNameOf(path)));
  }
  for (const std::string& path : Files("raw")) stored.insert(platform::ReadFile(path));
  EXPECT_EQ(saved, stored);
  EXPECT_EQ(folded.size(), 33U);
  EXPECT_EQ(platform::FileModified(Files("eml")[0]).ToIso().substr(0, 4), "2004");
  EXPECT_EQ(Save(SaveFormat::kEml, "eml-folders", true), kAll);
  EXPECT_TRUE(platform::FolderExists(folder_.File("eml-folders/Local Folders/O'Brien's letters")));

  bool hasPython = testing::RunProgram({"/usr/bin/env", "python3", "--version"}).status == 0;
  for (bool folders : {false, true}) {
    std::string suffix = folders ? "-folders" : "";
    EXPECT_EQ(Save(SaveFormat::kMbox, "mbox" + suffix, folders), kAll);
    EXPECT_EQ(Save(SaveFormat::kMaildir, "maildir" + suffix, folders), kAll);
    if (hasPython) ReadBack("mbox", "mbox" + suffix);
    if (hasPython) ReadBack("maildir", "maildir" + suffix);
  }
  EXPECT_EQ(Files("mbox-folders").size(), 4U) << "one for each folder";
  if (!hasPython) GTEST_SKIP() << "no python3 here";
}

TEST_F(SaveMessagesTest, TheStateGoesIntoNamesAndMailboxesAndComesBack) {
  std::map<std::string, std::string> stored;
  for (int i = 0; i < 14; ++i) {
    std::string state = testing::VariedMessage(i).State;
    std::string subject = "Subject: " + std::to_string(i) + (i < 7 ? "\r\n" : "\n");
    // What its own headers say is not said again.
    bool isSaid = i == 0;
    Store(i, (isSaid ? "Status: RO\r\n" : i == 7 ? "Status: O\r\n" : "") + subject + "\r\nx\r\n");
    stored[subject] = state;
  }
  Save(SaveFormat::kMaildir, "maildir");
  Save(SaveFormat::kMbox, "mbox");
  auto statesOf = [](sources::LetterReader& reader) {
    std::map<std::string, std::string> states;
    for (sources::LetterEntry letter; reader.Next(letter); letter = {}) {
      std::string text;
      reader.Copy([&](std::string_view piece) { text += piece; });
      text.erase(0, text.find("Subject"));
      states[text.substr(0, text.find('\n') + 1)] = intake::StoredState(letter.state);
    }
    return states;
  };
  sources::MboxReader mbox(Files("mbox").at(0));
  EXPECT_EQ(statesOf(mbox), stored);
  EXPECT_EQ(platform::ReadFile(Files("mbox")[0]).find("Status: RO\r\nStatus: RO"),
            std::string::npos);
  sources::LetterFiles maildir(sources::MaildirFiles(folder_.File("maildir")),
                               sources::StateInMaildir);
  for (auto& [subject, state] : stored) state = state.empty() ? "S" : state;
  EXPECT_EQ(statesOf(maildir), stored);
  // Outlook keeps the last of replying and forwarding alone, and of a draft its having been sent.
  Save(SaveFormat::kMsg, "msg");
  std::multiset<std::string> read;
  for (const std::string& path : Files("msg")) {
    read.insert(outlook::MsgFileReader().Read(path, {"Inbox", "", "Outlook"}, false).message.State);
  }
  EXPECT_EQ(read, (std::multiset<std::string>{"S", "S", "S", "S", "S", "S", "SRF", "SRF", "U", "U",
                                              "UP", "UP", "URF", "URF"}));
}

// Read back by our own reader field by field, and by another's for the form of the file; large
// enough for the list of its table's sectors.
TEST_F(SaveMessagesTest, AFileForOutlookHoldsWhatIsStored) {
  std::string large(std::size_t{8} << 20, 'x');
  for (size_t i = 0; i < large.size(); i += 77) large[i] = '\n';
  std::string letter = WriteTemp(
      "letter.eml",
      "From: =?utf-8?q?Zo=C3=AB?= <zoe@example.org>\r\nTo: Ann <ann@example.org>, "
      "bob@example.org\r\n"
      "Cc: Carol <carol@example.org>\r\nSubject: Re: Caf=?utf-8?b?w6k=?= =?utf-8?b?8J+Yig==?=\r\n"
      "Date: Mon, 5 Jan 2004 10:20:30 +0000\r\nMessage-ID: <a@example.org>\r\n"
      "References: <b@example.org>\r\n <c@example.org>\r\nMIME-Version: 1.0\r\n"
      "Content-Type: multipart/mixed; boundary=B\r\n\r\n--B\r\nContent-Type: text/plain; "
      "charset=utf-8\r\n\r\nThe words.\r\n--B\r\nContent-Type: application/x; name=large.bin\r\n"
      "Content-Disposition: attachment\r\n\r\n" +
          large +
          "\r\n--B\r\nContent-Type: message/rfc822\r\n\r\nSubject: inner\r\nContent-Type: "
          "application/x; name=deep.bin\r\nContent-Disposition: "
          "attachment\r\n\r\ndeep\r\n--B--\r\n");
  ui_.senders = {core::SenderAnswer::kAcceptAll};
  ASSERT_TRUE(intake::dbxParseMessage(letter, {"Inbox", "", "Outlook"}, "", ""));
  auto counts = SaveMessages({{1}, SaveFormat::kMsg, false, folder_.File("msg")});
  ASSERT_EQ(counts->saved, 1);
  std::string path = Files("msg").at(0);
  EXPECT_TRUE(path.ends_with(".msg"));

  StoredMessage stored = *ReadStoredMessage(1);
  intake::MailMessage read =
      outlook::MsgFileReader().Read(path, {"Inbox", "", "Outlook"}, false).message;
  EXPECT_EQ(read.Subject, stored.subject);
  EXPECT_EQ(read.Body, stored.body);
  EXPECT_EQ((intake::AddressPair{read.FromName, read.FromAddress}),
            (intake::AddressPair{stored.fromName, stored.fromAddress}));
  EXPECT_EQ(std::vector(read.To.begin(), read.To.begin() + read.ToCount), stored.to);
  EXPECT_EQ(std::vector(read.Cc.begin(), read.Cc.begin() + read.CcCount), stored.cc);
  EXPECT_EQ(read.SentTime, stored.sent);
  EXPECT_EQ(read.AttachCount, 2);
  EXPECT_THAT(platform::ReadFile(core::State().TempMessageFile), HasSubstr("<c@example.org>"));

  const std::string kPython = "/usr/bin/python3";  // the one that Debian's modules are for
  if (testing::RunProgram({kPython, "-c", "import olefile"}).status != 0) {
    GTEST_SKIP() << "no olefile module here";
  }
  testing::ProgramRun run = testing::RunProgram(
      {kPython, std::string(TARNWICK_SOURCE) + "/tests/takeout/read_msg.py", path});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.output,
            "IPM.Note|Re: Café😊|Zoë|zoe@example.org|The words.\n2004-01-05 10:20:30\n"
            "1 Ann ann@example.org\n1 bob@example.org bob@example.org\n2 Carol carol@example.org\n"
            "large.bin 8388608\ninner.eml 99\n");
}

TEST_F(SaveMessagesTest, WhatIsThereIsNeverReplaced) {
  StoreLetters(3);
  for (SaveFormat format : {SaveFormat::kEml, SaveFormat::kMbox, SaveFormat::kMaildir}) {
    std::string name = "out" + std::to_string(static_cast<int>(format));
    Save(format, name);
    Texts first = Files(name);
    for (const std::string& path : first) platform::WriteFile(path, "changed by its owner");
    Save(format, name);
    EXPECT_EQ(Files(name).size(), first.size() * 2);
    for (const std::string& path : first) {
      EXPECT_EQ(platform::ReadFile(path), "changed by its owner") << path;
    }
  }
}

// The disk fills at every step of the run in turn: from that step on nothing can be written.
TEST_F(SaveMessagesTest, AFullDiskKeepsWhatWasSavedWholeAndCountsTheRest) {
  StoreLetters(200);
  std::multiset<std::string> stored;
  for (const std::string& path : Files("raw")) stored.insert(platform::ReadFile(path));
  for (SaveFormat format : {SaveFormat::kEml, SaveFormat::kMbox, SaveFormat::kMaildir}) {
    for (int step : {0, 1, 2, 3}) {
      std::string name = std::to_string(static_cast<int>(format)) + std::to_string(step);
      int writes = 0;
      platform::SetFileFault([&](platform::FileOperation operation, const std::string& path) {
        bool isOurs = path.find(folder_.File(name)) == 0;
        if (isOurs && operation == platform::FileOperation::kWrite && writes++ >= step) {
          throw Error(ErrorNumber::kDiskFull, "Disk full: " + path);
        }
      });
      ui_.shown.clear();
      auto counts = SaveMessages({ids_, format, false, folder_.File(name)});
      platform::SetFileFault(nullptr);
      ASSERT_TRUE(counts) << name;
      EXPECT_EQ(counts->saved + counts->failed + counts->notReached, 200) << name;
      EXPECT_LT(counts->saved, 200) << name;
      EXPECT_THAT(ui_.Shown("error"), ElementsAre(HasSubstr("Disk full"))) << name;
      int64_t whole = 0;
      for (const std::string& path : Files(name)) {
        std::string text = platform::ReadFile(path);
        EXPECT_EQ(path.find(platform::kUnfinished), std::string::npos) << path;
        if (format != SaveFormat::kMbox) {
          EXPECT_EQ(stored.count(text), 1U) << path;
          ++whole;
          continue;
        }
        whole += WholeMessages(path);
      }
      EXPECT_EQ(whole, counts->saved) << name;
    }
  }
}

TEST_F(SaveMessagesTest, AMailboxFileThatCanGrowNoFurtherEndsWithAWholeMessage) {
  StoreLetters(200);
  std::optional<SaveCounts> counts;
  {
    testing::FileSizeLimit limit(150000);
    counts = SaveMessages({ids_, SaveFormat::kMbox, false, folder_.File("out")});
  }
  ASSERT_TRUE(counts);
  EXPECT_TRUE(counts->saved > 100 && counts->saved < 150) << counts->saved;
  EXPECT_EQ(WholeMessages(folder_.File("out/Tarnwick.mbox")), counts->saved);
}

TEST_F(SaveMessagesTest, AStopAndTooLittleRoomAreAccountedFor) {
  StoreLetters(100);
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  auto counts = SaveMessages({ids_, SaveFormat::kMbox, false, folder_.File("stopped")});
  ui_.onYield = nullptr;
  ASSERT_TRUE(counts);
  EXPECT_GT(counts->saved, 0);
  EXPECT_EQ(counts->saved + counts->notReached, 100);
  EXPECT_TRUE(platform::FileExists(folder_.File("stopped/Tarnwick.mbox")));
  EXPECT_THAT(Log(), HasSubstr(counts->Line()));

  platform::SetFreeSpaceOverride(100 * 1000);
  EXPECT_EQ(Save(SaveFormat::kEml, "none"), "nothing");
  EXPECT_FALSE(platform::FolderExists(folder_.File("none")));
  EXPECT_THAT(ui_.Shown("error"), ElementsAre(HasSubstr("There is not enough free space in ")));
  platform::SetFreeSpaceOverride(600 * 1000);
  EXPECT_EQ(Save(SaveFormat::kEml, "fits").substr(0, 23), "selected 100, saved 100");
  platform::SetFreeSpaceOverride({});
  auto refused =
      SaveMessages({ids_, SaveFormat::kEml, false, core::State().EmailFileFolder + "mine"});
  EXPECT_FALSE(refused) << "it would be emptied at the next start";

  platform::SetFileFault([](platform::FileOperation, const std::string& path) {
    if (path.find(":2,") != std::string::npos) throw Error(ErrorNumber::kPathAccess, path);
  });
  EXPECT_EQ(Save(SaveFormat::kMaildir, "camera").substr(0, 23), "selected 100, saved 100");
  EXPECT_THAT(platform::ListFiles(folder_.File("camera/cur")), Each(HasSubstr(";2,")));
  EXPECT_THAT(platform::ListFiles(folder_.File("camera/tmp")), IsEmpty());
}

TEST(FreeNames, FitEveryFileSystemAndAreUniqueWithoutRegardToCase) {
  FreeNames names("");
  EXPECT_EQ(names.Take("2003-05-02 1432 Ann - Re: a/b?", ".eml"),
            "2003-05-02 1432 Ann - Re_ a_b_.eml");
  EXPECT_EQ(names.Take("NUL", ".eml"), "_NUL.eml");
  EXPECT_EQ(names.Take("Ünder", ".eml"), "Ünder.eml");
  EXPECT_EQ(names.Take("üNDER", ".eml"), "üNDER (2).eml");
  EXPECT_EQ(names.Take("", ".eml"), "file.eml");
  EXPECT_EQ(names.Take("Ends badly. . .", ".eml"), "Ends badly.eml");
  for (const char* text : {"x", "日", "a\xFF", "👪"}) {
    std::string longText;
    for (int i = 0; i < 500; ++i) longText += text;
    for (int i = 0; i < 12; ++i) {
      std::string name = names.Take(longText, ".eml");
      EXPECT_LE(platform::CountChars(name), 120U);
      EXPECT_LE(name.size(), 220U);
      EXPECT_TRUE(platform::IsValidUtf8(name));
      EXPECT_EQ(name.substr(name.size() - 4), ".eml");
      EXPECT_EQ(name.find(" (" + std::to_string(i + 1) + ")") != std::string::npos, i > 0) << name;
    }
  }
}

TEST(FolderPath, ComesFromWhateverTheMailerWrote) {
  EXPECT_THAT(FolderPath("Outlook Express", "Local Folders.Inbox.Workshop", "Workshop"),
              ElementsAre("Local Folders", "Inbox", "Workshop"));
  EXPECT_THAT(FolderPath("Outlook Express", "", "Inbox"), ElementsAre("Inbox"));
  EXPECT_THAT(FolderPath("Outlook", "\\\\Personal Folders\\Inbox", "v1.0"),
              ElementsAre("Personal Folders", "Inbox", "v1.0"));
  MessageLabel label;
  EXPECT_THAT(SafeFolderPath(label), ElementsAre("Mail"));
  label.folder = {"..", "a/b", "CON"};
  EXPECT_THAT(SafeFolderPath(label), ElementsAre("a_b", "_CON"));
  label.folder.assign(17, "deep");
  EXPECT_EQ(SafeFolderPath(label).size(), 16U);
}

}  // namespace
}  // namespace tarnwick::takeout
