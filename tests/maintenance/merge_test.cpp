// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/merge.h"

#include "core/messages.h"
#include "intake/sender_rules.h"
#include "maintenance/backup.h"
#include "maintenance/export.h"
#include "support/faults.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"

namespace tarnwick::maintenance {
namespace {

using core::RepeatedAnswer;
using core::SenderAnswer;

class MergeTest : public testing::ProgramFixture {
 protected:
  MergeTest() : file_(folder_.File("Ann's export.twb")) {}

  // Exports count messages and empties the repository.
  void MakeExport(int count) {
    testing::StoreVariedMessages(count);
    ExportAndClear();
  }
  void ExportAndClear() {
    testing::ExportAll(file_);
    messages_ = AllMessages();
    ui_.shown.clear();
    ASSERT_TRUE(repository::ClearRepository());
  }

  static std::map<std::string, std::string> AllMessages() {
    return testing::AllMessages(RepositoryDb());
  }
  static std::string Summary(int ignored, int imported) {
    return "Import is done. \r\n" + std::to_string(ignored) + " email(s) is ignored.\r\n" +
           std::to_string(imported) + " email(s) is imported.";
  }

  const MergeOptions kEverybody{Duplicates::kAsk, UnknownSenders::kAccept};
  std::string file_;
  std::map<std::string, std::string> messages_;
};

TEST_F(MergeTest, AnEmptyRepositoryGetsTheSameMessages) {
  MakeExport(60);
  Run("UPDATE tblProject SET ProjectName = 'other'");
  MergeResult merged = twMakeMarge(file_, kEverybody);
  EXPECT_EQ(merged.result, Result::kDone);
  EXPECT_EQ(merged.imported, 60);
  EXPECT_EQ(AllMessages(), messages_);
  EXPECT_EQ(ui_.Shown("box"), Texts{Summary(0, 60)});
  EXPECT_EQ(ui_.Shown("error"), Texts{});
  EXPECT_GT(CountRows("MeContact"), 0);
  EXPECT_EQ(ui_.progressDone, ui_.progressTotal);
  EXPECT_EQ(platform::ListFiles(core::State().EmailFileFolder), Texts{});
  EXPECT_FALSE(core::State().RepositoryIsEmpty);
}

TEST_F(MergeTest, AnExportOfAFormerVersionIsTaken) {
  testing::StoreVariedMessages(5);
  Run("UPDATE Email SET Notes = Null, Charset = Null, State = Null");
  messages_ = AllMessages();
  ASSERT_GT(Run("DELETE FROM MeContact"), 0);
  testing::MakeFormerFile(file_, {"Notes", "Charset", "State"});
  ASSERT_TRUE(repository::ClearRepository());
  EXPECT_EQ(twMakeMarge(file_, kEverybody).imported, 5);
  EXPECT_EQ(ui_.Shown("error"), Texts{});
  Run("UPDATE Email SET Charset = Null");
  EXPECT_EQ(AllMessages(), messages_);
}

TEST_F(MergeTest, AMessageLeftByHalfStaysSoAndAProjectThatIsNotItsFolderStays) {
  testing::StoreVariedMessages(2);
  Run("INSERT INTO Unfinished (EmailID) VALUES (2)");
  Run("UPDATE tblProject SET ProjectName = 'House' WHERE ID = 1");
  ExportAndClear();
  EXPECT_EQ(twMakeMarge(file_, kEverybody).imported, 2);
  EXPECT_TRUE(intake::IsEmailExist(testing::VariedMessage(0).MessageKey));
  EXPECT_FALSE(intake::IsEmailExist(testing::VariedMessage(1).MessageKey));
  EXPECT_EQ(Query("SELECT ProjectName FROM tblProject").AsText(), "House");
  EXPECT_EQ(Query("SELECT Folder FROM Email").AsText(), testing::VariedMessage(0).Folder);
}

TEST_F(MergeTest, DuplicatesAreAskedForOneByOneOrAllAtOnce) {
  MakeExport(6);
  ASSERT_EQ(twMakeMarge(file_, kEverybody).imported, 6);
  auto before = testing::DumpRepository(RepositoryDb());
  ui_.shown.clear();
  ui_.yesNoAll = std::deque<RepeatedAnswer>(6, RepeatedAnswer::kNo);
  MergeResult merged = twMakeMarge(file_, kEverybody);
  EXPECT_EQ(merged.ignored, 6);
  EXPECT_EQ(testing::DumpRepository(RepositoryDb()), before);
  Texts questions = ui_.Shown("question");
  ASSERT_EQ(questions.size(), 6U);
  EXPECT_EQ(questions[0], testing::VariedMessage(0).Subject +
                              " 1/1/2004\r\nThis message is exist. Do you want to continue?");
  EXPECT_EQ(ui_.Shown("box"), Texts{Summary(6, 0)});

  ui_.yesNoAll = {RepeatedAnswer::kYes, RepeatedAnswer::kNo, RepeatedAnswer::kNoToAll};
  merged = twMakeMarge(file_, kEverybody);
  EXPECT_EQ(merged.imported, 1);
  EXPECT_EQ(merged.ignored, 5);
  ui_.yesNoAll = {RepeatedAnswer::kNo, RepeatedAnswer::kYesToAll};
  merged = twMakeMarge(file_, kEverybody);
  EXPECT_EQ(merged.imported, 5);
  EXPECT_EQ(merged.ignored, 1);
  EXPECT_EQ(CountRows("Email"), 12);

  EXPECT_EQ(twMakeMarge(file_, {Duplicates::kSkip, UnknownSenders::kAccept}).ignored, 6);
  EXPECT_EQ(twMakeMarge(file_, {Duplicates::kKeep, UnknownSenders::kAccept}).imported, 6);
}

TEST_F(MergeTest, SendersAreJudgedAsInALoad) {
  MakeExport(5);  // 0 and 3 were sent; 1, 2 and 4 come from three senders
  intake::SetAddresseeReject("", testing::VariedMessage(1).FromAddress);
  ui_.senders = {SenderAnswer::kIgnore, SenderAnswer::kAccept};
  MergeResult merged = twMakeMarge(file_);
  EXPECT_EQ(merged.result, Result::kDone);
  EXPECT_EQ(merged.imported, 3);
  EXPECT_EQ(merged.ignored, 2);
  EXPECT_TRUE(intake::IsMessageIgnored(testing::VariedMessage(2).MessageKey));

  ASSERT_TRUE(repository::ClearRepository());
  merged = twMakeMarge(file_, {Duplicates::kSkip, UnknownSenders::kRefuse});
  EXPECT_EQ(CountRows("Email"), merged.imported);
  EXPECT_EQ(merged.imported + merged.ignored, 5);
  EXPECT_LT(merged.imported, 5);

  ASSERT_TRUE(repository::ClearRepository());
  ui_.shown.clear();
  ui_.senders = {SenderAnswer::kAccept, SenderAnswer::kCancel};
  merged = twMakeMarge(file_);
  EXPECT_EQ(merged.result, Result::kStopped);
  EXPECT_EQ(merged.imported, 2);
  EXPECT_EQ(merged.notReached, 3);
  EXPECT_EQ(ui_.Shown("box"),
            Texts{"Import is stopped. \r\n0 email(s) is ignored.\r\n2 email(s) is imported.\r\n"
                  "3 email(s) is not reached."});
}

TEST_F(MergeTest, WhatIsNoExportIsRefused) {
  testing::StoreVariedMessages(3);
  ASSERT_EQ(MakeBackup(folder_.File("full.twb")), Result::kDone);
  WriteTemp("text.twb", "no database");
  auto before = testing::DumpRepository(RepositoryDb());
  ui_.shown.clear();
  for (const char* name : {"full.twb", "text.twb", "missing.twb"}) {
    EXPECT_EQ(twMakeMarge(folder_.File(name)).result, Result::kDeclined) << name;
  }
  EXPECT_THAT(ui_.shown,
              ElementsAre(Pair("error", "Error: You should use full backup file in this function."),
                          Pair("error", "Error: Invalid file format."),
                          Pair("box", "There is not file " + folder_.File("missing.twb"))));
  EXPECT_EQ(testing::DumpRepository(RepositoryDb()), before);
}

TEST_F(MergeTest, StoppedItKeepsWhatWasMergedAndSaysSo) {
  MakeExport(400);
  ui_.onYield = [] { core::State().ImportCancelFlag = core::State().StoredMessages > 0; };
  core::State().StoredMessages = 0;
  MergeResult merged = twMakeMarge(file_, kEverybody);
  EXPECT_EQ(merged.result, Result::kStopped);
  EXPECT_GT(merged.imported, 0);
  EXPECT_EQ(merged.imported + merged.notReached, 400);
  EXPECT_EQ(CountRows("Email"), merged.imported);
  EXPECT_THAT(ui_.Shown("box"), ElementsAre(HasSubstr("Import is stopped. ")));
  // The next merge takes the rest.
  ui_.onYield = {};
  merged = twMakeMarge(file_, {Duplicates::kSkip, UnknownSenders::kAccept});
  EXPECT_EQ(merged.result, Result::kDone);
  EXPECT_EQ(AllMessages(), messages_);
}

TEST_F(MergeTest, ItStopsAtAMessageThatFailsAndKeepsTheOthers) {
  MakeExport(5);
  int step = 0;
  for (bool happened = true; happened; ++step) {
    ui_.shown.clear();
    testing::FailingFileStep fault(step);
    MergeResult merged = twMakeMarge(file_, kEverybody);
    happened = fault.Happened();
    platform::SetFileFault(nullptr);
    // The first looks at the file end the merge before it has begun. Some are repeated later.
    bool isDone = merged.result == Result::kDone;
    if (happened && (isDone || merged.imported + merged.notReached == 0)) {
      EXPECT_TRUE(isDone || step < 12) << step;
      EXPECT_EQ(AllMessages(), isDone ? messages_ : decltype(messages_){}) << step;
      EXPECT_NE(isDone, ui_.Shown("error").size() == 1) << step;
      ASSERT_TRUE(repository::ClearRepository());
      continue;
    }
    EXPECT_EQ(merged.result, happened ? Result::kFailed : Result::kDone) << step;
    EXPECT_EQ(CountRows("Email") - CountRows("Unfinished"), merged.imported) << step;
    EXPECT_EQ(merged.imported + merged.notReached, 5) << step;
    if (happened) {
      EXPECT_TRUE(ui_.Shown("error").empty()) << step;
      EXPECT_THAT(ui_.Shown("box").back(),
                  AllOf(HasSubstr("Import is stopped. "), HasSubstr(core::kDiskIsFull)));
      // The next merge makes the one whole that failed.
      merged = twMakeMarge(file_, {Duplicates::kSkip, UnknownSenders::kAccept});
      EXPECT_EQ(merged.result, Result::kDone) << step;
      EXPECT_EQ(AllMessages(), messages_) << step;
      EXPECT_EQ(CountRows("Unfinished"), 0) << step;
    }
    EXPECT_EQ(platform::ListFiles(core::State().EmailFileFolder), Texts{}) << step;
    ASSERT_TRUE(repository::ClearRepository());
  }
  EXPECT_GT(step, 20);
}

TEST_F(MergeTest, AFileThatMayNotGrowIsOneWithoutRoom) {
  MakeExport(200);
  uint64_t size = platform::FileSize(RepositoryDb().DataSource());
  repository::DisconnectRepository();
  platform::CopyFile(folder_.File("emlTemplate.twr"), folder_.File("Tarnwick.twr"));
  ASSERT_TRUE(repository::OpenRepository(false));
  MergeResult merged;
  {
    testing::FileSizeLimit limit(size / 3);
    merged = twMakeMarge(file_, kEverybody);
  }
  EXPECT_EQ(merged.result, Result::kFailed);
  EXPECT_TRUE(merged.diskIsFull);
  EXPECT_EQ(merged.imported + merged.notReached, 200);
  EXPECT_EQ(CountRows("Email"), merged.imported);
}

TEST_F(MergeTest, AHostileFileIsTakenForWhatItIs) {
  testing::StoreVariedMessages(2);
  for (int i = 0; i < 8; ++i) {  // far more than a message can have
    Run("INSERT INTO ToRecipient (EmailID, Address, Name) SELECT EmailID, "
        "Address, Name FROM ToRecipient");
    Run("INSERT INTO Attachment (EmailID, FileName) VALUES (1, 'a.txt')");
    Run("INSERT INTO Attachment (EmailID, FileName) SELECT EmailID, FileName "
        "FROM Attachment");
  }
  Run("UPDATE Email SET CountMailTo = 30000, CountCC = -5, FilesNum = 'many', CreationTime = NULL, "
      "ReceivedTime = 'yesterday', Subject = 12, ProjectID = 99, EntryID = NULL");
  ExportAndClear();
  MergeResult merged = twMakeMarge(file_, kEverybody);
  EXPECT_EQ(merged.imported, 2);
  EXPECT_EQ(Query("SELECT Subject FROM Email").AsText(), "12");
  EXPECT_EQ(CountRows("ToRecipient"), 768);
  EXPECT_EQ(Rows("SELECT Max(CountMailTo), Min(CountCC) FROM Email"), "512|0");
  EXPECT_LE(Query("SELECT Max(FilesNum) AS M FROM Email").AsInt(), 20);
}

}  // namespace
}  // namespace tarnwick::maintenance
