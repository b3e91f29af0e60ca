// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/repository.h"

#include "core/startup.h"
#include "repository/schema.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"

namespace tarnwick::repository {
namespace {

using core::State;

class RepositoryTest : public testing::ProgramFixture {};

// A page of a file that is no database, or one of another program.
std::string Garbage() {
  std::string bytes;
  for (int i = 0; i < 8192; ++i) bytes += static_cast<char>(i * 31 + i / 7);
  return bytes;
}

TEST_F(RepositoryTest, OpeningEmptiesTheScratchFolderAndTheObjectList) {
  Run("INSERT INTO ObjectList VALUES (5)");
  platform::WriteFile(State().EmailFileFolder + "left over.msg", "x");
  ASSERT_TRUE(OpenRepository(false));
  EXPECT_EQ(CountRows("ObjectList"), 0);
  EXPECT_TRUE(platform::ListFiles(State().EmailFileFolder).empty());
  EXPECT_EQ(CountRows("EmailOne"), 1);
}

TEST_F(RepositoryTest, WhatAKilledRunLeftGoesEvenWhenNothingCanBeOpened) {
  const std::string left = State().EmailFileFolder + "oeTempMessage.msg";
  for (const char* file : {kRepositoryFile, kParameterFile}) {
    DisconnectRepository();
    platform::WriteFile(State().AppFolder + file, Garbage());
    platform::WriteFile(left, "From: ann@example.org");
    EXPECT_FALSE(OpenRepository(false));
    EXPECT_FALSE(platform::FileExists(left)) << file;
  }
}

TEST_F(RepositoryTest, TheScratchFilesOfARunningProgramStay) {
  DisconnectRepository();
  jet::Connection running;
  ASSERT_TRUE(twSetConnection(running, State().AppFolder + kParameterFile, ""));
  running.Execute("DELETE * FROM Parameter");
  const std::string scratch = State().EmailFileFolder + "oeTempMessage.msg";
  platform::WriteFile(scratch, "From: ann@example.org");
  EXPECT_FALSE(OpenRepository(false));
  EXPECT_TRUE(platform::FileExists(scratch));
}

TEST_F(RepositoryTest, ClearingLeavesTheObjectListAndTheSettings) {
  for (const jet::TableDefinition& table : RepositoryTables()) {
    std::string name(table.name);
    if (name == "EmailOne" || name == "ObjectList") continue;
    // The second column of every table is a text or a number; so is the only one of UserList.
    std::string column(table.columns[table.columns.size() > 1 ? 1 : 0].name);
    Run("INSERT INTO " + name + " (" + column + ") VALUES ('1')");
  }
  Run("INSERT INTO ObjectList VALUES (5)");
  SetOption("MSOutlook", true);
  EXPECT_FALSE(HasNoEmail());
  ClearRepository();
  for (const jet::TableDefinition& table : RepositoryTables()) {
    std::string name(table.name);
    int64_t expected = name == "ObjectList" || name == "EmailOne" ? 1 : 0;
    EXPECT_EQ(CountRows(name), expected) << name;
  }
  EXPECT_TRUE(GetOption("MSOutlook"));
  EXPECT_TRUE(HasNoEmail());
}

TEST_F(RepositoryTest, AFormerRepositoryGrowsAndALaterOneIsLeftAlone) {
  testing::StoreVariedMessages(3);
  Run("UPDATE Email SET Notes = Null, Charset = Null");
  const std::vector<std::string> kLater = {"Notes", "Charset", "State"};
  auto before = testing::DumpTable(RepositoryDb(), "Email", kLater);
  std::string former = folder_.File("former.twr");
  std::string later = folder_.File("later.twr");
  testing::MakeFormerFile(former, kLater);
  testing::MakeFormerFile(later, {}, kSchemaVersion + 1);
  std::string file = RepositoryDb().DataSource();
  auto openInstead = [&](const std::string& other) {
    DisconnectRepository();
    platform::CopyFile(other, file);
    return OpenRepository(false);
  };
  ASSERT_TRUE(openInstead(former));
  EXPECT_EQ(testing::DumpTable(RepositoryDb(), "Email", kLater), before);
  testing::StoreVariedMessages(3, 10);
  EXPECT_EQ(CountRows("Email"), 6);
  EXPECT_EQ(Query("SELECT Count(*) FROM Email WHERE State Is Null").AsInt(), 3);
  EXPECT_EQ(CountRows("Unfinished"), 0);
  EXPECT_TRUE(ui_.Shown("error").empty());
  ASSERT_TRUE(OpenRepository(false));
  EXPECT_FALSE(openInstead(later));
  EXPECT_NE(ui_.Shown("error").back().find("newer version of Tarnwick"), std::string::npos);
}

TEST_F(RepositoryTest, AFileThatIsNoRepositoryIsRefusedWithTheAdviceInOneBox) {
  DisconnectRepository();
  std::string file = State().AppFolder + kRepositoryFile;
  platform::WriteFile(file, Garbage());
  EXPECT_FALSE(OpenRepository(false));
  EXPECT_THAT(ui_.Shown("error"),
              ElementsAre(AllOf(
                  StartsWith("Error: You should take the following actions against message\r\n\"A"),
                  HasSubstr("    3. Click YES\r\n26 "))));
  EXPECT_EQ(platform::ReadFile(file), Garbage());
  platform::RemoveFile(file);
  EXPECT_FALSE(OpenRepository(false));
  EXPECT_FALSE(platform::FileExists(file)) << "a missing one is never made by opening";
}

TEST_F(RepositoryTest, CreatingAndOpeningRefuseWhatTheyMust) {
  EXPECT_FALSE(CreateRepositoryIn(State().AppFolder));
  EXPECT_FALSE(OpenRepositoryIn(State().AppFolder));
  EXPECT_FALSE(OpenRepositoryIn(""));
  std::string other = folder_.File("other");
  platform::MakeFolder(other);
  EXPECT_FALSE(OpenRepositoryIn(other));
  platform::WriteFile(other + "/Tarnwick.twr", "somebody's");
  EXPECT_FALSE(CreateRepositoryIn(other));
  EXPECT_EQ(platform::ReadFile(other + "/Tarnwick.twr"), "somebody's");
  std::string chosen = "You have selected an application folder. You select other folder.";
  std::string file = "contain repository file " + folder_.File("other/Tarnwick.twr");
  EXPECT_THAT(ui_.Shown("box"), ElementsAre(chosen, chosen, "Selected folder does not " + file,
                                            "Selected folder " + file));
  // And one that turns out to be no repository leaves the former one open.
  Run("INSERT INTO Email (Subject) VALUES ('kept')");
  EXPECT_FALSE(OpenRepositoryIn(other));
  EXPECT_EQ(Query("SELECT Subject FROM Email").AsText(), "kept");
  EXPECT_EQ(GetRepositoryFolder(), State().AppFolder);
}

TEST_F(RepositoryTest, SwitchingLastsUntilTheFolderIsGone) {
  std::string other = folder_.File("second/");
  platform::MakeFolder(other);
  ASSERT_TRUE(CreateRepositoryIn(folder_.File("second")));
  EXPECT_EQ(Repository().RepositoryFolder, other);
  Run("INSERT INTO Email (Subject) VALUES ('in the second')");
  ASSERT_TRUE(OpenRepository(false));
  EXPECT_EQ(Query("SELECT Subject FROM Email").AsText(), "in the second");
  DisconnectRepository();
  platform::RenameFile(other + "Tarnwick.twr", other + "moved away");
  ASSERT_TRUE(OpenRepository(false));
  EXPECT_EQ(Repository().RepositoryFolder, State().AppFolder);
}

TEST_F(RepositoryTest, SettingsKeepOneRowEachAndEmptyOnesReadAsNothing) {
  EXPECT_TRUE(GetParameter("Filter", "Subject", kTextColumn).IsNull());
  EXPECT_EQ(GetLastLoaded(), "");
  SetParameter("Filter", "Subject", kTextColumn, "it's \"quoted\"; DROP TABLE Parameter --");
  SetParameter("Filter", "Subject", kTextColumn, "second");
  SetOption("OutlookExpress", true);
  SetOption("OutlookExpress", false);
  EXPECT_EQ(GetParameter("Filter", "Subject", kTextColumn).AsText(), "second");
  EXPECT_FALSE(GetOption("OutlookExpress"));
  EXPECT_EQ(DatabasePassword().size(), 9U);
  jet::Recordset rows;
  rows.Open("SELECT * FROM Parameter WHERE ParameterGroup <> 'CompleteReading'", ParameterDb(),
            jet::CursorType::kKeyset);
  EXPECT_EQ(rows.RecordCount(), 2);
  // Nothing that each opening and closing would have to make, flush and take away.
  EXPECT_FALSE(platform::FileExists(State().AppFolder + kParameterFile + "-wal"));
  SetLastLoaded(DateTime::FromDate(2005, 3, 5).WithTime(14, 7, 0));
  EXPECT_EQ(GetLastLoaded(), "3/5/2005 14:07");
}

TEST_F(RepositoryTest, AWindowComesBackOnlyWhereItCanBeSeen) {
  constexpr int kHeight = 15000;
  constexpr int kWidth = 20000;
  EXPECT_FALSE(RestoreFormPosition("MainBoard", false, kHeight, kWidth));
  SaveFormPosition("MainBoard", {300, 400, 6000, 9000});
  auto place = RestoreFormPosition("MainBoard", true, kHeight, kWidth);
  ASSERT_TRUE(place);
  EXPECT_TRUE(place->top == 300 && place->left == 400 && place->width == 9000);
  EXPECT_FALSE(RestoreFormPosition("MainBoard", true, 400, 400));
  SaveFormPosition("MainBoard", {-20, 400, 6000, 9000});
  EXPECT_FALSE(RestoreFormPosition("MainBoard", false, kHeight, kWidth));
}

}  // namespace
}  // namespace tarnwick::repository
