// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/check.h"

#include "maintenance/merge.h"
#include "repository/schema.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"
#include "takeout/stored_file.h"

namespace tarnwick::maintenance {
namespace {

class Check : public testing::ProgramFixture {
 protected:
  Check() {
    testing::StoreVariedMessages(4);
    testing::StoreVariedMessages(8, 5);  // number 4 is an empty file
  }

  // "id what" of each finding.
  static std::vector<std::string> Damage(const CheckReport& report) {
    std::vector<std::string> lines;
    for (const Finding& finding : report.damage) {
      lines.push_back(std::to_string(finding.id) + " " + finding.what);
    }
    return lines;
  }

  static std::map<int64_t, std::string> Originals() {
    std::map<int64_t, std::string> originals;
    jet::Recordset rows;
    rows.Open("SELECT FileID, FileBody FROM FileRepository ORDER BY ID", RepositoryDb());
    for (; !rows.Eof(); rows.MoveNext()) {
      originals[rows.Field("FileID").AsInt()] += rows.Field("FileBody").AsText();
    }
    return originals;
  }

  std::string file_ = folder_.File(repository::kRepositoryFile);
};

TEST_F(Check, FindsEveryMessageWholeAndLeftoversHarmless) {
  Run("DELETE * FROM Email WHERE ID=3");
  CheckReport report;
  EXPECT_EQ(CheckRepository(report), Result::kDone);
  EXPECT_THAT(Damage(report), IsEmpty());
  EXPECT_EQ(report.messages, 11);
  EXPECT_EQ(report.sound.size(), 11U);
  EXPECT_GT(report.leftovers, 0);
  EXPECT_GT(ui_.progressTotal, 0);
}

TEST_F(Check, NamesTheMessageAndWhatItLacks) {
  ASSERT_EQ(Query("SELECT Count(*) FROM FileRepository WHERE FileID=1").AsInt(), 3);
  for (const char* damage :
       {"DELETE * FROM FileRepository WHERE ID=2", "DELETE * FROM FileRepository WHERE FileID=2",
        "DELETE * FROM ToRecipient WHERE EmailID=4", "UPDATE Email SET FilesNum=0 WHERE ID=5",
        "INSERT INTO ccRecipient (EmailID, Address) VALUES (7, 'x')",
        "UPDATE FileRepository SET FileBody='' WHERE FileID=8",
        "INSERT INTO Unfinished (EmailID) VALUES (9)"}) {
    Run(damage);
  }
  CheckReport report;
  EXPECT_EQ(CheckRepository(report), Result::kDone);
  EXPECT_THAT(
      Damage(report),
      ElementsAre("1 Its original is not whole", "2 Its original is missing",
                  "4 0 To recipients instead of 4", HasSubstr("attachment names instead of 0"),
                  HasSubstr("Cc recipients instead of"), "8 Its original is not whole",
                  HasSubstr("9 An error ended its storing half way")));
  EXPECT_EQ(report.DamagedMessages(), 7);
  EXPECT_THAT(Log(), HasSubstr("Check: Message 2: Its original is missing"));

  std::string saved = folder_.File("sound.twb");
  EXPECT_EQ(ExportSound(report, saved), Result::kDone);
  ASSERT_TRUE(repository::ClearRepository());
  EXPECT_EQ(twMakeMarge(saved, {Duplicates::kKeep, UnknownSenders::kAccept}).imported, 5);
  EXPECT_EQ(CheckRepository(report), Result::kDone);
  EXPECT_THAT(Damage(report), IsEmpty());
}

TEST_F(Check, StopsWhenItIsTold) {
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  CheckReport report;
  EXPECT_EQ(CheckRepository(report), Result::kStopped);
  EXPECT_LT(report.messages, 11);
}

// A changed bit, a page of zeros, an older page, a file cut short: whatever is still given out is
// what was stored, and the check says that something is wrong.
TEST_F(Check, ADamagedFileIsRefusedOrReportedAndNeverShownAsMail) {
  constexpr size_t kPage = 16384;
  std::map<int64_t, std::string> originals = Originals();
  repository::DisconnectRepository();
  const std::string sound = platform::ReadFile(file_);
  ASSERT_EQ(sound.size() % kPage, 0U);
  size_t pages = sound.size() / kPage;
  size_t refused = 0;
  int64_t given = 0;
  size_t damaged = 0;
  for (size_t page = 0; page < pages; ++page) {
    for (const char* kind : {"bit", "zeros", "other page", "cut"}) {
      std::string bytes = sound;
      if (kind[0] == 'b') bytes[page * kPage + (page * 7919) % kPage] ^= 0x10;
      if (kind[0] == 'z') bytes.replace(page * kPage, kPage, kPage, '\0');
      if (kind[0] == 'o') {
        bytes.replace(page * kPage, kPage, sound, (page + 1) % pages * kPage, kPage);
      }
      if (kind[0] == 'c') {
        if (page % 4 != 3) continue;
        bytes.resize(page * kPage + 100);
      }
      platform::WriteFile(file_, bytes);
      ui_.shown.clear();
      ++damaged;
      if (!repository::OpenRepository(false)) {
        EXPECT_EQ(ui_.Shown("error").size(), 1U) << kind << page;
        ++refused;
        continue;
      }
      CheckReport report;
      EXPECT_EQ(CheckRepository(report), Result::kDone) << kind << page;
      EXPECT_FALSE(report.IsSound()) << kind << page;
      for (int64_t id : report.sound) {
        EXPECT_TRUE(takeout::ReadStoredFile(id) == originals[id]) << kind << page << " " << id;
        ++given;
      }
      repository::DisconnectRepository();
    }
  }
  EXPECT_GT(refused, 0U);
  EXPECT_LT(refused, damaged);
  EXPECT_GT(given, 0);
  platform::WriteFile(file_, sound);
  ASSERT_TRUE(repository::OpenRepository(false));
}

}  // namespace
}  // namespace tarnwick::maintenance
