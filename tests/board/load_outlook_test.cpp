// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The load command over a profile that holds nothing but a store of Outlook's.

#include "board/load_command.h"
#include "samples/pst_builder.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

class LoadOutlook : public testing::ProgramFixture {
 protected:
  LoadOutlook() {
    platform::SetEnvironmentText("TARNWICK_READER", TARNWICK_READER);
    platform::MakeFolder(folder_.File("profile"));
    AddStore("Outlook.pst", "Personal Folders");
    repository::SetProfileFolder(folder_.File("profile"));
  }
  ~LoadOutlook() override { platform::SetEnvironmentText("TARNWICK_READER", std::nullopt); }

  // A store of one mail.
  void AddStore(const std::string& file, const std::string& name) {
    samples::PstBuilder store(outlook::reader::Variant::kUnicode, name);
    store.AddMessage(store.AddFolder(samples::PstBuilder::kTop, "Inbox"),
                     samples::PstMail("hello"));
    platform::WriteFile(folder_.File("profile/" + file), store.Build());
  }
};

TEST_F(LoadOutlook, IsTakenWholeAtFirstThenByItsDefaultStoreAndLeftAsItWas) {
  AddStore("Archive.pst", "Archive");
  std::string profile = folder_.File("profile/");
  std::vector<std::string> files = platform::ListFiles(profile);
  std::map<std::string, std::string> before;
  DateTime old = DateTime::FromDate(2003, 2, 1);
  for (const std::string& file : files) {
    before[file] = platform::ReadFile(profile + file);
    EXPECT_TRUE(platform::SetFileModified(profile + file, old));
  }
  LoadOptions options;
  options.senders = SenderPolicy::kAcceptAll;
  ui_.yesNo = {true, true};
  LoadResult result = LoadFromMailer(options);
  EXPECT_TRUE(!result.failed && result.counts.stored == 2);
  EXPECT_THAT(ui_.Shown("question"),
              ElementsAre("Would you like to load email from Outlook to Repository?"));
  EXPECT_TRUE(repository::GetOption("MSOutlook") && !repository::GetOption("OutlookExpress"));
  EXPECT_NE(repository::GetLastLoaded(), "");
  core::LoadCounts later = LoadFromMailer(options).counts;
  EXPECT_EQ(later.alreadyStored, 1);
  EXPECT_EQ(later.notReached, 1);
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("There isn't new message."));
  options.full = true;
  EXPECT_EQ(LoadFromMailer(options).counts.alreadyStored, 2) << "asked for again";
  EXPECT_EQ(platform::ListFiles(profile), files);
  for (const std::string& file : files) {
    EXPECT_TRUE(platform::ReadFile(profile + file) == before[file]) << file;
    EXPECT_EQ(platform::FileModified(profile + file), old) << file;
  }
}

TEST_F(LoadOutlook, NothingIsTakenIntoARepositoryThatIsLeftUnfinished) {
  repository::RepositoryDb().SetMark(1);
  LoadOptions options;
  options.everyMailer = true;
  LoadResult result = LoadFromMailer(options);
  EXPECT_TRUE(result.failed);
  EXPECT_FALSE(result.ran);
  EXPECT_EQ(TakeTextFiles({WriteTemp("one.txt", "From: a@b.test\r\n\r\nx")}).notReached, 1);
  EXPECT_EQ(ui_.shown.size(), 2U);
  EXPECT_EQ(ui_.Shown("error").size(), 2U);
  EXPECT_EQ(CountRows("Email"), 0);
}

}  // namespace
}  // namespace tarnwick::board
