// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/backup.h"

#include "database/engine/engine.h"
#include "maintenance/restore.h"
#include "repository/schema.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"

namespace tarnwick::maintenance {
namespace {

using platform::FileExists;

class Backup : public testing::ProgramFixture {
 protected:
  Backup() : file_(folder_.File("Ann's backup.twb")) {}

  Texts FilesLeft() { return platform::ListFiles(folder_.Path(), ".unfinished"); }

  static int64_t IndexesIn(const std::string& file) {
    return jet::Database(file, repository::DatabasePassword(), jet::Database::Mode::kReadOnly)
        .Number("SELECT count(*) FROM sqlite_schema WHERE type = 'index'");
  }

  std::string file_;
};

TEST_F(Backup, EveryRowOfEveryTableArrivesAsItIs) {
  testing::StoreVariedMessages(60);
  testing::StoreRulesAndMarks();
  Run("INSERT INTO ObjectList VALUES (5)");
  auto before = testing::DumpRepository(RepositoryDb());
  EXPECT_EQ(MakeBackup(file_), Result::kDone);
  EXPECT_EQ(ui_.Shown("box"), Texts{"Backup is done."});
  EXPECT_EQ(testing::DumpFile(file_), before);
  EXPECT_EQ(testing::DumpRepository(RepositoryDb()), before);
  EXPECT_EQ(IsItFullBackup(file_), 0);
  EXPECT_EQ(FilesLeft(), Texts{});
  EXPECT_EQ(ui_.progressDone, ui_.progressTotal);
  EXPECT_THAT(Log(), HasSubstr("Backup into "));
  EXPECT_EQ(ProposedBackupName(), "Email_20200615.twb");

  // It becomes a repository like others.
  EXPECT_EQ(IndexesIn(file_), 0);
  const std::string opened = RepositoryDb().DataSource();
  repository::DisconnectRepository();
  platform::CopyFile(file_, opened);
  ASSERT_TRUE(repository::OpenRepository(false));
  repository::DisconnectRepository();
  EXPECT_EQ(IndexesIn(opened), IndexesIn(folder_.File(repository::kTemplateFile)));
}

TEST_F(Backup, AnExistingFileIsAskedForAndReplacedOnlyByAWholeOne) {
  testing::StoreVariedMessages(5);
  platform::WriteFile(file_, "an older backup");
  ui_.yesNo = {false};
  EXPECT_EQ(MakeBackup(file_), Result::kDeclined);
  EXPECT_EQ(ui_.Shown("question"), Texts{"Do you want to delete file " + file_ + "?"});
  EXPECT_EQ(ui_.Shown("box"), Texts{});
  EXPECT_EQ(platform::ReadFile(file_), "an older backup");

  ui_.yesNo = {true};
  std::string emptyRepository = folder_.File(repository::kTemplateFile);
  platform::RenameFile(emptyRepository, emptyRepository + ".away");
  EXPECT_EQ(MakeBackup(file_), Result::kFailed);
  EXPECT_EQ(platform::ReadFile(file_), "an older backup");
  EXPECT_THAT(ui_.Shown("error"),
              ElementsAre(::testing::MatchesRegex("Error: 53 File not found: .* MakeBackup")));
  platform::RenameFile(emptyRepository + ".away", emptyRepository);
  ui_.yesNo = {true};
  EXPECT_EQ(MakeBackup(file_), Result::kDone);
  EXPECT_EQ(testing::DumpFile(file_), testing::DumpRepository(RepositoryDb()));
}

TEST_F(Backup, WhereThereIsNotRoomForBothTheOlderFileGoesFirst) {
  platform::WriteFile(file_, "an older backup");
  platform::SetFreeSpaceOverride(1000);
  ui_.yesNo = {true};
  bool wasGone = false;
  ui_.onYield = [&] { wasGone = !FileExists(file_); };
  EXPECT_EQ(MakeBackup(file_), Result::kDone);
  EXPECT_TRUE(wasGone);
  EXPECT_TRUE(FileExists(file_));
}

TEST_F(Backup, TheProgramsOwnFilesAreNeverOverwritten) {
  for (const char* name :
       {repository::kRepositoryFile, repository::kParameterFile, repository::kTemplateFile}) {
    EXPECT_EQ(MakeBackup(folder_.File(std::string("./") + name)), Result::kFailed) << name;
  }
  EXPECT_EQ(ui_.Shown("error").size(), 3U);
  EXPECT_EQ(CountRows("Email"), 0);
  EXPECT_EQ(MakeBackup(folder_.File("EmailFile")), Result::kFailed);  // a folder
  EXPECT_EQ(MakeBackup(folder_.File("no/such/folder.twb")), Result::kFailed);
}

TEST_F(Backup, StoppedItLeavesNothing) {
  testing::StoreVariedMessages(20);
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  EXPECT_EQ(MakeBackup(file_), Result::kStopped);
  EXPECT_EQ(ui_.Shown("box"), Texts{"Backup is stopped."});
  EXPECT_EQ(ui_.Shown("error"), Texts{});
  EXPECT_FALSE(FileExists(file_));
  EXPECT_EQ(FilesLeft(), Texts{});
  EXPECT_FALSE(core::State().ImportCancelFlag);
}

}  // namespace
}  // namespace tarnwick::maintenance
