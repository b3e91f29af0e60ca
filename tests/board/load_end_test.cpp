// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// However a load, a take or a merge ends, its account is told and its counts are what is in the
// file.

#include "board/load_command.h"
#include "board/load_log.h"
#include "core/messages.h"
#include "maintenance/merge.h"
#include "platform/registry.h"
#include "samples/profile_builder.h"
#include "samples/pst_builder.h"
#include "support/faulty_disk.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"

namespace tarnwick::board {
namespace {

using testing::DiskFault;
using testing::FaultyDisk;

constexpr int kLetters = 25;

std::string LetterText(int number) {
  std::string name = std::to_string(number);
  return "From: ann" + name + "@example.org\r\nTo: b@x.test\r\nSubject: letter " + name +
         "\r\nMessage-ID: <" + name + "@example.org>\r\n\r\nText\r\n" +
         std::string(number % 6 == 3 ? 50'000 : 300, 'x') + "\r\n";
}

class LoadEnd : public testing::ProgramFixture {
 protected:
  LoadEnd() : profile_(folder_.File("profile/")) {
    testing::StartOnFaultyDisk();
    repository::SetProfileFolder(profile_.Folder());
    WriteStoreTo(profile_.AddIdentity("ann"));
    profile_.WriteHive();
  }

  static void WriteStoreTo(const std::string& folder) {
    samples::MessageStoreBuilder inbox;
    for (int i = 0; i < kLetters; ++i) {
      samples::IndexedMessage message;
      message.date = message.date.AddSeconds(i * 1000);
      message.messageId = "<" + std::to_string(i) + "@example.org>";
      message.text = LetterText(i);
      message.blockSize = 4096;
      inbox.AddMessage(message);
    }
    inbox.Finish();
    samples::ProfileBuilder::WriteStore(folder, samples::StandardFolders(inbox.Bytes(), ""));
  }

  void AddOutlookStore() {
    platform::SetEnvironmentText("TARNWICK_READER", TARNWICK_READER);
    samples::PstBuilder store;
    store.AddMessage(store.AddFolder(samples::PstBuilder::kTop, "Inbox"),
                     samples::PstMail("hello"));
    platform::WriteFile(profile_.Folder() + "Outlook.pst", store.Build());
  }

  static LoadResult Load() {
    LoadOptions options;
    options.everyMailer = true;
    options.senders = SenderPolicy::kAcceptAll;
    return LoadFromMailer(options);
  }

  static std::string LastLoads() { return platform::ReadFile(LoadLogFile()); }

  // Runs work on a disk that has no more room from some write on, for every such write of a run.
  void ForEachFullDisk(DiskFault fault, const std::function<void()>& work) {
    repository::ClearRepository();
    ui_.shown.clear();
    int64_t calls = 0;
    {
      FaultyDisk disk(fault, INT64_MAX);
      work();
      calls = disk.Calls();
    }
    ASSERT_GT(calls, 5);
    for (int64_t at = 0; at < calls; at += 1 + calls / 20) {
      SCOPED_TRACE("full from write " + std::to_string(at));
      repository::ClearRepository();
      ui_.shown.clear();
      core::State().DiskIsFull = false;
      int64_t stored = 0;
      {
        FaultyDisk disk(fault, at, true);
        work();
        stored = CountRows("Email");
        repository::DisconnectRepository();
      }
      EXPECT_LE(ui_.shown.size(), 1U) << "nor at the end of the program";
      ASSERT_TRUE(repository::OpenRepository(false));
      EXPECT_EQ(CountRows("Email"), stored);
    }
  }

  samples::ProfileBuilder profile_;
};

TEST_F(LoadEnd, AFullDiskEndsALoadAtOnceAndTheCountsAreWhatIsInTheFile) {
  int64_t ended = 0;
  ForEachFullDisk(DiskFault::kNoRoom, [&] {
    int64_t errorsBefore = core::State().ReportedErrors;
    LoadResult result = Load();
    const core::LoadCounts& counts = result.counts;
    EXPECT_LE(core::State().ReportedErrors, errorsBefore + 3) << "not one a message";
    // Who has an identity could not even be noted.
    if (counts.found == 0) {
      EXPECT_TRUE(result.failed);
      return;
    }
    EXPECT_EQ(counts.found, kLetters);
    EXPECT_EQ(counts.stored, CountRows("Email"));
    EXPECT_EQ(counts.stored + counts.notReached, kLetters);
    EXPECT_THAT(LastLoads(), HasSubstr(CountsSummary(counts)));
    if (!core::State().DiskIsFull) return;
    ++ended;
    EXPECT_TRUE(result.failed);
    EXPECT_THAT(LastLoads(), HasSubstr("Inbox.dbx\r\nthe disk is full"));
    EXPECT_THAT(ui_.Shown("box"), ElementsAre(core::kDiskIsFull));
  });
  EXPECT_GT(ended, 5);
  EXPECT_EQ(Load().counts.notReached, 0) << "there is room again";
  EXPECT_EQ(CountRows("Email"), kLetters);
}

TEST_F(LoadEnd, AFullDiskEndsATakeAndAMerge) {
  std::vector<std::string> files;
  for (int i = 0; i < 12; ++i) {
    files.push_back(WriteTemp(std::to_string(i) + ".eml", LetterText(i)));
  }
  TakeTextFiles(files);
  testing::ExportAll(folder_.File("merge.twb"));
  ForEachFullDisk(DiskFault::kFull, [&] {
    TakeResult result = TakeTextFiles(files);
    EXPECT_EQ(result.stored, CountRows("Email"));
    EXPECT_EQ(result.stored + result.notReached, 12);
    EXPECT_EQ(result.notTaken.size(), static_cast<size_t>(result.notReached));
    EXPECT_EQ(ui_.shown.size(), core::State().DiskIsFull ? 1U : 0U);
  });
  ForEachFullDisk(DiskFault::kFull, [&] {
    maintenance::MergeResult merged = maintenance::twMakeMarge(
        folder_.File("merge.twb"),
        {maintenance::Duplicates::kKeep, maintenance::UnknownSenders::kAccept});
    EXPECT_EQ(merged.imported, CountRows("Email"));
    EXPECT_EQ(merged.imported + merged.notReached, 12);
    EXPECT_EQ(ui_.shown.size(), 1U);
    EXPECT_EQ(merged.result == maintenance::Result::kDone, !merged.diskIsFull);
  });
}

// Some file systems need room even for what is written over.
TEST_F(LoadEnd, WhatCouldNotBeTakenBackIsTakenBackOnceThereIsRoom) {
  for (int64_t at = 0; at < 60; at += 4) {
    SCOPED_TRACE(at);
    repository::ClearRepository();
    LoadResult result;
    {
      FaultyDisk disk(DiskFault::kFull, at, true);
      result = Load();
    }
    EXPECT_EQ(result.counts.stored, CountRows("Email"));
    EXPECT_EQ(result.counts.stored < kLetters, result.failed);
  }
}

TEST_F(LoadEnd, AnIdentityWithoutAStoreLeavesTheOthersNotReachedAndOutlookRead) {
  profile_.Hive().AddText("Identities\\{5A7E0000-11D3-4B0C-9D21-000000000000}", "Username", "Bob");
  profile_.WriteHive();
  AddOutlookStore();
  LoadResult result = Load();
  EXPECT_FALSE(result.failed);
  EXPECT_EQ(CountsSummary(result.counts),
            "found 26, stored 1, already stored 0, refused 0, ignored 0, unreadable 0, "
            "not reached 25");
  EXPECT_THAT(LastLoads(), HasSubstr("Inbox.dbx\r\nno mail store known for identity Bob"));
  EXPECT_EQ(Load().counts.alreadyStored, 1);
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("There isn't new message."));
}

TEST_F(LoadEnd, AFirstLoadGoesOnBehindANoAndAlwaysSaysSomething) {
  AddOutlookStore();
  LoadOptions options;
  options.senders = SenderPolicy::kAcceptAll;
  core::State().RepositoryIsEmpty = true;
  // Whose mail it is, is asked where the system does not say.
  bool isAsked = platform::OwnProfileFolder().empty();
  repository::SetProfileFolder(isAsked ? "" : profile_.Folder());
  if (isAsked) ui_.folders = {profile_.Folder()};
  ui_.yesNo = {false, true};
  EXPECT_EQ(LoadFromMailer(options).counts.stored, 1);
  EXPECT_EQ(ui_.Shown("folder").size(), isAsked ? 1U : 0U);
  EXPECT_THAT(ui_.Shown("question"),
              ElementsAre(HasSubstr("from Outlook Express"), HasSubstr("from Outlook to")));
  EXPECT_FALSE(repository::GetOption("OutlookExpress"));

  ui_.shown.clear();
  core::State().RepositoryIsEmpty = core::State().FullLoadAsked = true;
  ui_.yesNo = {false, false};
  LoadFromMailer(options);
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("There isn't new message."));
  EXPECT_FALSE(core::State().RepositoryIsEmpty) << "the full load was asked for once";
  repository::NoteWhetherEmpty();
  EXPECT_FALSE(core::State().RepositoryIsEmpty);
}

TEST_F(LoadEnd, TheAccountsOfTheLastLoadsOutlastTheLog) {
  Load();
  EXPECT_THAT(Log(), HasSubstr("\r\nLoad: found 25, stored 25,"));
  EXPECT_THAT(LastLoads(), StartsWith("6/15/2020 12:00:00\r\nLoad: found 25, stored 25,"));
  for (int i = 0; i < 30; ++i) KeepInLoadLog("load " + std::to_string(i));
  KeepInLoadLog(std::string(3'000'000, 'x'));
  std::string kept = LastLoads();
  EXPECT_LT(kept.size(), 1'100'000U);
  EXPECT_THAT(kept, AllOf(StartsWith("6/15/2020 12:00:00\r\nxxx"), HasSubstr("load 29\r\n\r\n"),
                          HasSubstr("load 11\r\n"), Not(HasSubstr("load 10\r\n"))));
}

}  // namespace
}  // namespace tarnwick::board
