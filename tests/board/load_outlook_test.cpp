// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The load command over a profile that holds nothing but a store of Outlook's.
#include <gmock/gmock.h>

#include <cstdlib>

#include "board/load_command.h"
#include "platform/files.h"
#include "repository/parameter_store.h"
#include "support/program_fixture.h"
#include "support/pst_builder.h"

namespace tarnwick::board {
namespace {

using ::testing::ElementsAre;

class LoadOutlook : public testing::ProgramFixture {
 protected:
  LoadOutlook() {
    setenv("TARNWICK_PST_READER", TARNWICK_BIN "/tarnwick-pst-reader", 1);
    testing::PstBuilder store(true);
    testing::PstMessage mail;
    mail.properties.texts = {{0x001A, "IPM.Note"}, {0x0037, "hello"}, {0x0C1A, "Ann"}};
    store.AddMessage(store.AddFolder(testing::PstBuilder::kTop, "Inbox"), mail);
    platform::MakeFolder(folder_.File("profile"));
    platform::WriteFile(folder_.File("profile/Outlook.pst"), store.Build());
    repository::SetProfileFolder(folder_.File("profile"));
  }
  ~LoadOutlook() override { unsetenv("TARNWICK_PST_READER"); }
};

TEST_F(LoadOutlook, IsAskedForByItselfAtAFirstLoad) {
  ui_.yesNo = {false, true};
  LoadOptions options;
  options.senders = SenderPolicy::kAcceptAll;
  LoadResult result = LoadFromMailer(options);
  EXPECT_EQ(
      CountsSummary(result.counts),
      "found 1, stored 1, already stored 0, refused 0, ignored 0, unreadable 0, not reached 0");
  EXPECT_FALSE(result.failed);
  EXPECT_THAT(ui_.Shown("question"),
              ElementsAre("Would you like to load email from Outlook Express to Repository?",
                          "Would you like to load email from Outlook to Repository?"));
  EXPECT_TRUE(repository::GetOption("MSOutlook"));
  EXPECT_FALSE(repository::GetOption("OutlookExpress"));
  EXPECT_NE(repository::GetLastLoaded(), "");
  // From now on it is read without a question.
  EXPECT_EQ(LoadFromMailer(options).counts.alreadyStored, 1);
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("There isn't new message."));
}

TEST_F(LoadOutlook, IsTakenWithEveryMailer) {
  LoadOptions options;
  options.everyMailer = true;
  options.senders = SenderPolicy::kAcceptAll;
  LoadResult result = LoadFromMailer(options);
  EXPECT_FALSE(result.failed);
  EXPECT_EQ(result.counts.stored, 1);
}

TEST_F(LoadOutlook, IsNotReadWhereThePersonSaysNo) {
  ui_.yesNo = {false, false};
  EXPECT_FALSE(LoadFromMailer({}).ran);
  EXPECT_FALSE(repository::GetOption("MSOutlook"));
  EXPECT_EQ(CountRows("Email"), 0);
}

}  // namespace
}  // namespace tarnwick::board
