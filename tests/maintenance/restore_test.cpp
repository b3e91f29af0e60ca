// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/restore.h"

#include "database/engine/engine.h"
#include "maintenance/backup.h"
#include "maintenance/check.h"
#include "maintenance/database_file.h"
#include "maintenance/export.h"
#include "maintenance/merge.h"
#include "maintenance/unfinished_restore.h"
#include "repository/schema.h"
#include "support/faulty_disk.h"
#include "support/machine.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"

namespace tarnwick::maintenance {
namespace {

using platform::FileExists;
using ::testing::_;
using Dump = std::map<std::string, Texts>;

class Restore : public testing::ProgramFixture {
 protected:
  Restore()
      : file_(folder_.File("Ann's backup.twb")),
        copy_(folder_.File("Tarnwick_before_restore.twb")) {}

  static Dump Now() { return testing::DumpRepository(RepositoryDb()); }

  // A backup of count messages; then the repository gets others.
  void MakeBackupAndChange(int count) {
    testing::StoreVariedMessages(count);
    testing::StoreRulesAndMarks();
    ASSERT_EQ(MakeBackup(file_), Result::kDone);
    backup_ = Now();
    ASSERT_TRUE(repository::ClearRepository());
    testing::StoreVariedMessages(7, 1000);
    changed_ = Now();
    ui_.shown.clear();
  }

  Result RestoreWithYes(const std::string& file, const std::function<void()>& refresh = {}) {
    ui_.yesNo = {true, true};
    return RestoreBackup(file, refresh);
  }

  // As on a memory stick.
  static void WithoutSecondNames() {
    platform::SetFileFault([](platform::FileOperation operation, const std::string& path) {
      if (operation == platform::FileOperation::kLink) throw Error(70, path);
    });
  }

  // The former repository comes back from the copy that a failure has left.
  void ExpectCopyHoldsTheFormerRepository() {
    ASSERT_TRUE(FileExists(copy_));
    EXPECT_EQ(testing::DumpFile(copy_), changed_);
    EXPECT_EQ(RestoreWithYes(copy_), Result::kDone);
    EXPECT_EQ(Now(), changed_);
    EXPECT_FALSE(FileExists(copy_));
    EXPECT_EQ(UnfinishedRestore(), "");
  }

  // A copy with a damaged page that is read when rows are copied, though not to count them.
  std::string DamageBackup() {
    const std::string sound = platform::ReadFile(file_);
    for (size_t place = 16384; place < sound.size(); place += 16384) {
      std::string damaged = sound;
      damaged.replace(place + 100, 64, 64, 'x');
      std::string file = WriteTemp("damaged.twb", damaged);
      jet::Connection connection;
      OpenFile(connection, file);
      try {
        CountBackupTables(connection);
      } catch (const Error&) {
        continue;
      }
      try {
        jet::Recordset rows;
        rows.Open("SELECT * FROM FileRepository", connection);
        for (; !rows.Eof(); rows.MoveNext()) rows.Field("FileBody");
      } catch (const Error&) {
        return file;
      }
    }
    ADD_FAILURE() << "no such page";
    return file_;
  }

  // A restore that finds something wrong only when it has begun.
  void FailToRestore(const std::function<void()>& refresh = {}) {
    EXPECT_EQ(RestoreWithYes(DamageBackup(), refresh), Result::kFailed);
    EXPECT_THAT(ui_.Shown("error"),
                ElementsAre(AllOf(HasSubstr(" CopyTableFrom"), HasSubstr(copy_))));
    EXPECT_EQ(ui_.Shown("box"), Texts{});
    EXPECT_EQ(UnfinishedRestore(), copy_);
    ui_.shown.clear();
  }

  std::string file_;
  std::string copy_;
  Dump backup_;
  Dump changed_;
};

TEST_F(Restore, TheRepositoryIsWhatItWasWhenBackedUp) {
  MakeBackupAndChange(60);
  std::string bytes = platform::ReadFile(file_);
  int refreshed = 0;
  auto refresh = [&] {
    ++refreshed;
    EXPECT_THAT(ui_.Shown("box"), IsEmpty());
    EXPECT_EQ(Now(), backup_);
  };
  EXPECT_EQ(RestoreWithYes(file_, refresh), Result::kDone);
  EXPECT_EQ(Now(), backup_);
  std::string when = platform::FormatDate(platform::FileModified(file_), "General Date");
  EXPECT_EQ(ui_.Shown("question"),
            (Texts{"Current information will be deleted. Do you want to continue?",
                   "Backup file was created at " + when + ". Do you want to continue?"}));
  EXPECT_EQ(ui_.Shown("box"), Texts{"Restore is done."});
  EXPECT_EQ(refreshed, 1);
  EXPECT_FALSE(FileExists(copy_));
  EXPECT_TRUE(platform::ReadFile(file_) == bytes);
  EXPECT_FALSE(core::State().RepositoryIsEmpty);
  // New rows get keys of their own behind the restored ones.
  testing::StoreVariedMessages(1, 2000);
  EXPECT_GT(Query("SELECT Max(ID) AS Last FROM Email").AsInt(), 60);
  EXPECT_EQ(RepositoryDb().IntegrityCheck(), "");
}

TEST_F(Restore, ABackupOfAFormerVersionComesBackAndALaterOneIsRefused) {
  testing::StoreVariedMessages(20);
  testing::StoreRulesAndMarks();
  Run("UPDATE Email SET Notes = Null, EmailImportance = Null");
  backup_ = Now();
  testing::MakeFormerFile(file_, {"Notes", "EmailImportance"});
  std::string bytes = platform::ReadFile(file_);
  ASSERT_TRUE(repository::ClearRepository());
  EXPECT_EQ(RestoreWithYes(file_), Result::kDone);
  EXPECT_EQ(Now(), backup_);
  EXPECT_TRUE(platform::ReadFile(file_) == bytes);
  testing::MakeFormerFile(file_, {}, repository::kSchemaVersion + 1);
  EXPECT_EQ(RestoreWithYes(file_), Result::kFailed);
  EXPECT_THAT(ui_.Shown("error").back(), HasSubstr("newer version of Tarnwick"));
  EXPECT_EQ(Now(), backup_);
}

// Its rows stay, and would be the next message's.
TEST_F(Restore, TheKeyOfADeletedMessageIsNotGivenAgain) {
  MakeBackupAndChange(3);
  ASSERT_EQ(RestoreWithYes(file_), Result::kDone);
  Run("DELETE FROM Email WHERE ID = 3");
  ui_.yesNo = {true};
  ASSERT_EQ(MakeBackup(file_), Result::kDone);
  ASSERT_EQ(RestoreWithYes(file_), Result::kDone);
  testing::StoreVariedMessages(1, 1000);
  EXPECT_EQ(Query("SELECT Max(ID) AS Last FROM Email").AsInt(), 4);
  // A damaged row that names the last key there can be leaves keys to give.
  Run("INSERT INTO Attachment (EmailID) VALUES (9223372036854775807)");
  repository::DisconnectRepository();
  ASSERT_TRUE(repository::OpenRepository(false));
  testing::StoreVariedMessages(1, 1001);
  EXPECT_EQ(Query("SELECT Max(ID) AS Last FROM Email").AsInt(), 5);
}

TEST_F(Restore, WithoutSecondNamesTheFileIsCopiedAndAStopThenChangesNothing) {
  MakeBackupAndChange(20);
  WithoutSecondNames();
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  EXPECT_EQ(RestoreWithYes(file_), Result::kStopped);
  EXPECT_EQ(ui_.Shown("box"), Texts{"Restore is stopped."});
  EXPECT_EQ(Now(), changed_);
  EXPECT_EQ(platform::ListFiles(folder_.Path(), ".unfinished"), Texts{});
  EXPECT_FALSE(FileExists(copy_));
  ui_.onYield = {};
  EXPECT_EQ(RestoreWithYes(file_), Result::kDone);
  EXPECT_EQ(Now(), backup_);
  EXPECT_FALSE(FileExists(copy_));
}

TEST_F(Restore, ABackupOfAnEmptyRepositoryEmptiesIt) {
  ASSERT_EQ(MakeBackup(file_), Result::kDone);
  testing::StoreVariedMessages(5);
  EXPECT_EQ(RestoreWithYes(file_), Result::kDone);
  EXPECT_EQ(CountRows("Email"), 0);
  EXPECT_EQ(CountRows("MeContact"), 0);
  EXPECT_EQ(CountRows("EmailOne"), 1);
  EXPECT_TRUE(core::State().RepositoryIsEmpty);
}

TEST_F(Restore, ANoLeavesEverything) {
  MakeBackupAndChange(3);
  ui_.yesNo = {false};
  EXPECT_EQ(RestoreBackup(file_), Result::kDeclined);
  ui_.yesNo = {true, false};
  EXPECT_EQ(RestoreBackup(file_), Result::kDeclined);
  EXPECT_EQ(Now(), changed_);
  EXPECT_EQ(ui_.Shown("box"), Texts{});
}

TEST_F(Restore, WhatIsNoFullBackupIsRefusedAndChangesNothing) {
  MakeBackupAndChange(3);
  testing::ExportAll(folder_.File("export.twb"));
  WriteTemp("text.twb", std::string(9000, 'x'));
  WriteTemp("nothing.twb", "");
  std::vector<jet::TableDefinition> tables(repository::RepositoryTables().begin(),
                                           repository::RepositoryTables().end());
  jet::CreateDatabaseFile(folder_.File("password.twb"), "another", tables, 1);
  tables[0].columns[2].name = "Other";
  jet::CreateDatabaseFile(folder_.File("column.twb"), repository::DatabasePassword(), tables, 1);
  tables.erase(tables.begin());
  jet::CreateDatabaseFile(folder_.File("table.twb"), repository::DatabasePassword(), tables, 1);
  std::string damaged = platform::ReadFile(file_);
  damaged[100] = static_cast<char>(damaged[100] ^ 1);
  WriteTemp("first page.twb", damaged);
  WriteTemp("short.twb", platform::ReadFile(file_).substr(0, 1500));

  const Texts kFiles = {"export.twb", "text.twb",  "nothing.twb",    "password.twb",
                        "column.twb", "table.twb", "first page.twb", "short.twb"};
  for (const std::string& name : kFiles) {
    SCOPED_TRACE(name);
    ui_.shown.clear();
    bool isExport = name == "export.twb";
    std::string bytes = platform::ReadFile(folder_.File(name));
    EXPECT_EQ(IsItFullBackup(folder_.File(name)), isExport ? 1 : 2);
    EXPECT_EQ(RestoreWithYes(folder_.File(name)), Result::kDeclined);
    EXPECT_EQ(ui_.Shown("error"),
              Texts{isExport ? "Error: You should use full backup file in this function."
                             : "Error: Invalid file format."});
    EXPECT_TRUE(platform::ReadFile(folder_.File(name)) == bytes);
  }
  ui_.shown.clear();
  EXPECT_EQ(RestoreBackup(folder_.File("missing.twb")), Result::kDeclined);
  EXPECT_EQ(ui_.shown.size(), 1U);
  EXPECT_EQ(ui_.Shown("box"), Texts{"There is not file " + folder_.File("missing.twb")});
  EXPECT_EQ(RestoreBackup(folder_.File(repository::kRepositoryFile)), Result::kFailed);
  EXPECT_EQ(Now(), changed_);
  EXPECT_FALSE(FileExists(copy_));
}

TEST_F(Restore, WithoutRoomForTheCopyNothingBegins) {
  MakeBackupAndChange(3);
  platform::SetFreeSpaceOverride(5 * 1024 * 1024);
  EXPECT_EQ(RestoreWithYes(file_), Result::kFailed);
  EXPECT_EQ(Now(), changed_);
  ui_.shown.clear();
  // Room for the new data, and none for a copy beside them.
  WithoutSecondNames();
  testing::StoreVariedMessages(700, 3000);
  changed_ = Now();
  platform::SetFreeSpaceOverride(platform::FileSize(file_) + 17 * 1024 * 1024);
  EXPECT_EQ(RestoreWithYes(file_), Result::kFailed);
  EXPECT_THAT(
      ui_.Shown("error"),
      ElementsAre(AllOf(HasSubstr("Error: 61 There is not enough free space in " + folder_.Path()),
                        HasSubstr(" MB are free MakeSafetyCopy"))));
  EXPECT_EQ(Now(), changed_);
}

TEST_F(Restore, ABackupDamagedInsideLeavesTheFormerRepositoryInTheCopy) {
  MakeBackupAndChange(60);
  int refreshed = 0;
  FailToRestore([&] { ++refreshed; });
  EXPECT_EQ(refreshed, 1);
  EXPECT_THAT(Log(), HasSubstr("Restore is not complete"));
  ExpectCopyHoldsTheFormerRepository();
}

TEST_F(Restore, UnfinishedItIsKnownWhereverTheRepositoryGoes) {
  MakeBackupAndChange(60);
  FailToRestore();
  std::string other = WriteTemp("other.twb", "x");
  EXPECT_EQ(twMakeMarge(other).result, Result::kDeclined);
  EXPECT_EQ(MakeBackup(other), Result::kDeclined);
  EXPECT_EQ(ui_.shown.size(), 2U);
  EXPECT_THAT(ui_.Shown("error"), ElementsAre(HasSubstr(copy_), HasSubstr(copy_)));
  CheckReport report;
  EXPECT_EQ(CheckRepository(report), Result::kDone);
  ASSERT_FALSE(report.IsSound());
  EXPECT_THAT(report.damage[0].what, HasSubstr(copy_));
  EXPECT_EQ(report.formerCopies, Texts{});

  std::string moved = folder_.File("moved/");
  platform::MakeFolder(moved);
  repository::DisconnectRepository();
  for (const char* name : {repository::kRepositoryFile, "Tarnwick_before_restore.twb"}) {
    platform::CopyFile(folder_.File(name), moved + name);
  }
  ASSERT_TRUE(repository::OpenRepository(false));
  ASSERT_TRUE(repository::SwitchRepository(moved));
  copy_ = moved + "Tarnwick_before_restore.twb";
  EXPECT_EQ(UnfinishedRestore(), copy_);
  ui_.shown.clear();
  ui_.yesNo = {false, true};
  for (int i = 0; i < 3; ++i) AskAboutUnfinishedRestore();
  EXPECT_THAT(ui_.Shown("question"), ElementsAre(_, HasSubstr(copy_)));
  EXPECT_EQ(ui_.shown.size(), 2U);
  EXPECT_EQ(Now(), changed_);
}

// Like an export it has messages and no contact.
TEST_F(Restore, TheCopyOfARepositoryWithoutContactsComesBack) {
  MakeBackupAndChange(60);
  Run("DELETE * FROM MeContact");
  changed_ = Now();
  FailToRestore();
  EXPECT_EQ(IsItFullBackup(copy_), 1);
  std::string apart = folder_.File("apart/Tarnwick_before_restore.twb");
  platform::MakeFolder(folder_.File("apart"));
  platform::CopyFile(copy_, apart);
  ExpectCopyHoldsTheFormerRepository();
  ASSERT_TRUE(repository::ClearRepository());
  EXPECT_EQ(RestoreWithYes(apart), Result::kDone);
  EXPECT_EQ(Now(), changed_);
}

TEST_F(Restore, ASourceIsNeverWrittenTo) {
  MakeBackupAndChange(20);
  std::string folder = folder_.File("disc/");
  platform::MakeFolder(folder);
  testing::ExportAll(folder + "export.twb");
  platform::CopyFile(file_, folder + "backup.twb");
  const Texts names = platform::ListFiles(folder);
  std::map<std::string, std::string> bytes;
  for (const std::string& name : names) {
    {
      jet::Database file(folder + name, repository::DatabasePassword(),
                         jet::Database::Mode::kExisting);
      file.Run("PRAGMA application_id = 1");  // another order of texts
    }
    bytes[name] = platform::ReadFile(folder + name);
    platform::SetFileModified(folder + name, DateTime::FromDate(2010, 1, 1));
    testing::LetOwner(folder + name, 4);
  }
  testing::LetOwner(folder, 5);
  EXPECT_EQ(RestoreWithYes(folder + "backup.twb"), Result::kDone);
  EXPECT_EQ(Now(), backup_);
  MergeOptions options{Duplicates::kSkip, UnknownSenders::kAccept};
  EXPECT_EQ(twMakeMarge(folder + "export.twb", options).result, Result::kDone);
  EXPECT_EQ(platform::ListFiles(folder), names);
  for (const std::string& name : names) {
    EXPECT_TRUE(platform::ReadFile(folder + name) == bytes[name]) << name;
    EXPECT_EQ(platform::FileModified(folder + name), DateTime::FromDate(2010, 1, 1)) << name;
  }
  testing::LetOwner(folder, 7);
  // One that another program has open is refused for what it is.
  ui_.shown.clear();
  platform::WriteFile(file_ + "-wal", "");
  EXPECT_EQ(RestoreWithYes(file_), Result::kFailed);
  EXPECT_THAT(ui_.Shown("error")[0], HasSubstr("is in use"));
  ui_.yesNo.clear();
}

TEST_F(Restore, RowsThatAreNotTheBackupsAreNotTakenForIt) {
  MakeBackupAndChange(20);
  bool added = false;
  ui_.onYield = [&] {
    if (added) return;
    added = true;
    Run("INSERT INTO IgnoredEmail (ID, MessageID) VALUES (5000, 'x')");
  };
  EXPECT_EQ(RestoreWithYes(file_), Result::kFailed);
  EXPECT_TRUE(added);
  EXPECT_THAT(ui_.Shown("error"), ElementsAre(HasSubstr("Table IgnoredEmail has ")));
  ui_.onYield = {};
  ExpectCopyHoldsTheFormerRepository();
}

TEST_F(Restore, BesideALogThatIsLeftOverNothingBegins) {
  MakeBackupAndChange(3);
  testing::StartOnFaultyDisk();
  testing::StoreVariedMessages(1, 1100);
  changed_ = Now();
  {
    // The log can't be written back when the file is closed.
    testing::FaultyDisk disk(testing::DiskFault::kFull, 0);
    EXPECT_EQ(RestoreWithYes(file_), Result::kFailed);
  }
  EXPECT_EQ(ui_.Shown("error").size(), 1U);
  EXPECT_THAT(Log(), HasSubstr("Path/File access error: the log of "));
  EXPECT_EQ(Now(), changed_);
  EXPECT_FALSE(FileExists(copy_));
}

}  // namespace
}  // namespace tarnwick::maintenance
