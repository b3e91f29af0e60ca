// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/export.h"

#include "maintenance/restore.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"

namespace tarnwick::maintenance {
namespace {

using platform::FileExists;

class Export : public testing::ProgramFixture {
 protected:
  Export() : file_(folder_.File("Ann's export.twb")) {}

  // The list of the window, as far as an export looks at it.
  void OpenList(const std::string& where) {
    list_.Open("SELECT DISTINCT Email.Subject, Email.ID, Email.ReceivedTime FROM Email\r\n" +
                   where + "\r\nORDER BY Email.ReceivedTime DESC",
               RepositoryDb(), jet::CursorType::kKeyset, jet::LockType::kOptimistic);
  }

  // The lines of a table that belong to these messages.
  static Texts Matching(const std::string& table, const std::string& where) {
    return testing::DumpTable(RepositoryDb(), table + " WHERE " + where);
  }

  std::string file_;
  jet::Recordset list_;
};

TEST_F(Export, TheListedMessagesGoWithAllThatHangsOnThem) {
  testing::StoreVariedMessages(60);
  testing::StoreRulesAndMarks();
  auto before = testing::DumpRepository(RepositoryDb());
  OpenList("WHERE Email.ID > 20 AND Email.Direction = 'In'");
  int64_t listed = list_.RecordCount();
  int64_t exported = 0;
  EXPECT_EQ(ExportEmails(file_, list_, &exported), Result::kDone);
  EXPECT_EQ(exported, listed);
  EXPECT_EQ(ui_.Shown("box"),
            (Texts{std::to_string(listed) + " Email(s) is exported.", "Export is done."}));
  auto dump = testing::DumpFile(file_);
  const std::string ids = "(SELECT ID FROM Email WHERE ID > 20 AND Direction = 'In')";
  EXPECT_EQ(dump["Email"], Matching("Email", "ID IN " + ids));
  EXPECT_EQ(dump["FileRepository"], Matching("FileRepository", "FileID IN " + ids));
  for (const char* table : {"Attachment", "ToRecipient", "ccRecipient"}) {
    EXPECT_EQ(dump[table], Matching(table, "EmailID IN " + ids)) << table;
    EXPECT_FALSE(dump[table].empty()) << table;
  }
  EXPECT_EQ(dump["tblProject"],
            Matching("tblProject", "ID IN (SELECT ProjectID FROM Email WHERE ID IN " + ids + ")"));
  for (const char* table :
       {"MeContact", "ContactEmail", "MeAddress", "RejectSender", "UserList", "IgnoredEmail"}) {
    EXPECT_EQ(dump[table], Texts{}) << table;
  }
  EXPECT_EQ(IsItFullBackup(file_), 1);
  EXPECT_EQ(testing::DumpRepository(RepositoryDb()), before);
}

TEST_F(Export, TheListIsQueriedAnewFirst) {
  testing::StoreVariedMessages(6);
  OpenList("");
  Run("DELETE * FROM Email WHERE ID = 3");
  testing::StoreVariedMessages(1, 6);
  EXPECT_EQ(ExportEmails(file_, list_), Result::kDone);
  EXPECT_THAT(ui_.shown, Contains(Pair("box", "6 Email(s) is exported.")));
}

TEST_F(Export, AnEmptyListDoesNothing) {
  testing::StoreVariedMessages(1);
  OpenList("WHERE Email.ID = 77");
  EXPECT_EQ(ExportEmails(file_, list_), Result::kDeclined);
  list_.Close();
  // The row that the window shows in an empty list has the number of a real message.
  list_.Open("SELECT Email.Subject, Email.ID FROM EmailOne AS Email ", RepositoryDb(),
             jet::CursorType::kKeyset, jet::LockType::kOptimistic);
  ASSERT_EQ(list_.RecordCount(), 1);
  EXPECT_EQ(ExportEmails(file_, list_), Result::kDeclined);
  EXPECT_EQ(ui_.shown.size(), 0U);
  EXPECT_FALSE(FileExists(file_));
}

TEST_F(Export, AnExistingFileIsAskedForFirst) {
  testing::StoreVariedMessages(3);
  OpenList("");
  platform::WriteFile(file_, "an older export");
  ui_.yesNo = {false};
  EXPECT_EQ(ExportEmails(file_, list_), Result::kDeclined);
  EXPECT_EQ(platform::ReadFile(file_), "an older export");
  EXPECT_EQ(ui_.Shown("question"), Texts{"Do you want to delete file " + file_ + "?"});
  ui_.yesNo = {true, true};
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  EXPECT_EQ(ExportEmails(file_, list_), Result::kStopped);
  EXPECT_EQ(ui_.Shown("box"), Texts{"Export is stopped."});
  EXPECT_EQ(platform::ListFiles(folder_.Path(), ".unfinished"), Texts{});
  ui_.onYield = {};
  EXPECT_EQ(ExportEmails(file_, list_), Result::kDone);
  EXPECT_EQ(testing::DumpFile(file_)["Email"].size(), 3U);
}

TEST_F(Export, TwoHundredThousandMessagesGoInOnePiece) {
  testing::StoreVariedMessages(1);
  RepositoryDb().BeginGroup();
  constexpr size_t kWanted = 200000;
  for (size_t have = 1; have < kWanted; have *= 2) {
    Run("INSERT INTO Email (Subject, Direction, ReceivedTime, ProjectID) SELECT Subject, "
        "Direction, ReceivedTime, ProjectID FROM Email");
  }
  Run("DELETE * FROM Email WHERE ID > 200000");
  Run("DELETE * FROM FileRepository");
  Run("INSERT INTO FileRepository (FileID, Application) SELECT ID, Subject FROM Email");
  RepositoryDb().EndGroup();
  OpenList("");
  EXPECT_EQ(ExportEmails(file_, list_), Result::kDone);
  EXPECT_THAT(ui_.shown, Contains(Pair("box", "200000 Email(s) is exported.")));
  auto dump = testing::DumpFile(file_);
  EXPECT_EQ(dump["Email"].size(), kWanted);
  EXPECT_EQ(dump["FileRepository"].size(), kWanted);
}

}  // namespace
}  // namespace tarnwick::maintenance
