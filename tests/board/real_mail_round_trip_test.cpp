// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Real mail goes into a repository and, by every way out of it and back in, arrives unchanged.

#include "board/list_query.h"
#include "board/load_command.h"
#include "maintenance/backup.h"
#include "maintenance/export.h"
#include "maintenance/merge.h"
#include "maintenance/restore.h"
#include "support/program_fixture.h"
#include "support/real_data.h"
#include "support/repository_content.h"

namespace tarnwick::board {
namespace {

using maintenance::Result;
using repository::RepositoryDb;

class RealMailRoundTrip : public testing::ProgramFixture {
 protected:
  // Message files by hand, stores by the load command.
  static void TakeEverything(const std::string& mail) {
    std::vector<std::string> files = platform::ListFiles(mail);
    for (size_t i = 0; i < files.size(); i += 5) TakeTextFiles({mail + "/" + files[i]});
    for (const char* store : {"pst", "profile-ann"}) {
      repository::SetProfileFolder(testing::RealData(store));
      LoadFromMailer({.everyMailer = true, .full = true, .senders = SenderPolicy::kAcceptAll});
    }
  }
};

TEST_F(RealMailRoundTrip, BackupRestoreExportAndMergeKeepEveryMessage) {
  std::string mail = testing::RealData("eml/list-mail-2002");
  if (mail.empty()) GTEST_SKIP() << "no real mail here";
  TakeEverything(mail);
  testing::StoreRulesAndMarks();
  const auto rows = testing::DumpRepository(RepositoryDb());
  const auto messages = testing::AllMessages(RepositoryDb());
  ASSERT_GT(messages.size(), 400U);
  ui_.shown.clear();

  std::string backup = folder_.File("full.twb");
  ASSERT_EQ(maintenance::MakeBackup(backup), Result::kDone);
  EXPECT_EQ(testing::DumpFile(backup), rows);

  std::string exported = folder_.File("listed.twb");
  ASSERT_TRUE(OpenEmailList(BuildListWhere(EveryMessage())));
  ASSERT_EQ(maintenance::ExportEmails(exported, Board().ListRecordset), Result::kDone);
  auto part = testing::DumpFile(exported);
  for (const char* table :
       {"Email", "FileRepository", "Attachment", "ToRecipient", "ccRecipient", "tblProject"}) {
    EXPECT_EQ(part.at(table), rows.at(table)) << table;
  }

  ASSERT_TRUE(repository::ClearRepository());
  maintenance::MergeResult merged = maintenance::twMakeMarge(
      exported, {maintenance::Duplicates::kKeep, maintenance::UnknownSenders::kAccept});
  EXPECT_EQ(merged.result, Result::kDone);
  EXPECT_EQ(merged.imported, static_cast<int64_t>(messages.size()));
  EXPECT_EQ(testing::AllMessages(RepositoryDb()), messages);

  ui_.yesNo = {true, true};
  EXPECT_EQ(maintenance::RestoreBackup(backup), Result::kDone);
  EXPECT_EQ(testing::DumpRepository(RepositoryDb()), rows);
  EXPECT_THAT(ui_.Shown("error"), IsEmpty());
}

}  // namespace
}  // namespace tarnwick::board
