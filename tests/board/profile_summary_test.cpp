// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/profile_summary.h"

#include "samples/profile_builder.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

using ProfileSummaryTest = testing::ProgramFixture;

TEST_F(ProfileSummaryTest, CountsIdentitiesAndTheirFolders) {
  samples::MessageStoreBuilder empty;
  empty.Finish();
  samples::ProfileBuilder profile(folder_.File("Ann/"));
  for (const char* name : {"Main Identity", "Work"}) {
    std::string store = profile.AddIdentity(name);
    profile.WriteStore(store, samples::StandardFolders(empty.Bytes(), empty.Bytes()));
  }
  profile.WriteHive();
  options::ProfileSummary found = ReadProfile(profile.Folder());
  EXPECT_THAT(found.identities, ElementsAre("Main Identity", "Work"));
  EXPECT_EQ(found.folders, 4) << "the folder lists are none";
}

TEST_F(ProfileSummaryTest, NamesOutlooksStoresWithAndWithoutARegistry) {
  for (const char* kind : {"Bob/", "plain/"}) {
    samples::ProfileBuilder profile(folder_.File(kind));
    if (std::string(kind) == "Bob/") profile.WriteHive();
    platform::WriteFile(profile.Folder() + "Archive.PST", "x");
    platform::MakeFolder(profile.Folder() + "AppData/Local/Microsoft/Outlook");
    platform::WriteFile(profile.Folder() + "AppData/Local/Microsoft/Outlook/Outlook.pst", "x");
    EXPECT_THAT(ReadProfile(profile.Folder()).outlookStores,
                ElementsAre("Archive.PST", "Outlook.pst"))
        << kind;
  }
}

TEST_F(ProfileSummaryTest, WhatCannotBeReadHoldsNothingAndIsNoError) {
  EXPECT_TRUE(ReadProfile(folder_.File("nowhere/")).IsEmpty());
  platform::MakeFolder(folder_.File("broken/"));
  platform::WriteFile(folder_.File("broken/NTUSER.DAT"), "no hive");
  EXPECT_TRUE(ReadProfile(folder_.File("broken/")).IsEmpty());
  EXPECT_TRUE(ui_.shown.empty());
}

}  // namespace
}  // namespace tarnwick::board
