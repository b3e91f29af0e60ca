// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/protect.h"

#include "maintenance/backup.h"
#include "maintenance/export.h"
#include "maintenance/merge.h"
#include "maintenance/restore.h"
#include "repository/file_key.h"
#include "repository/keys.h"
#include "repository/schema.h"
#include "support/faults.h"
#include "support/machine.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"

namespace tarnwick::maintenance {
namespace {

using platform::Secret;
using repository::MarkOf;
using ::testing::AnyOf;
using Dump = std::map<std::string, Texts>;

class Protect : public testing::ProgramFixture {
 protected:
  Protect() { repository::SetKeyCostOverride({{.passes = 1, .memoryPower = 13}}); }
  ~Protect() override { repository::SetKeyCostOverride({}); }

  static Dump Now() { return testing::DumpRepository(RepositoryDb()); }
  static Result Set(const std::string& password) { return ProtectRepository(Secret(password)); }

  // As a start does it, with these answers.
  bool Restart(std::deque<std::string> passwords) {
    repository::LockRepository();
    ui_.shown.clear();
    ui_.passwords = std::move(passwords);
    return repository::OpenRepository(false);
  }

  bool OpensWithProgramsPassword(const std::string& file) {
    jet::Connection connection;
    connection.SetProperty(jet::kDataSourceProperty, file);
    connection.SetProperty(jet::kPasswordProperty, repository::DatabasePassword());
    try {
      connection.Open();
    } catch (const Error&) {
      return false;
    }
    return true;
  }

  std::string file_ = folder_.File(repository::kRepositoryFile);
};

// Embedded in every protected file: another key, and none of them opens any more.
TEST(FileKey, IsMadeOfMarkAndPasswordAsItAlwaysWas) {
  const std::string mark("Tw\x01\x0d\x01saltsalt9~{", 16);
  auto key = repository::FileKey::Of(mark, Secret("Ann's own"));
  ASSERT_TRUE(key.has_value());
  EXPECT_EQ(key->ForEngine().Bytes(),
            "raw:2b9ab57bc84caabf197de9da91e0286487b36961bc35d390460bbde708f22a89"
            "5477010d0173616c7473616c74397e7b");
  EXPECT_FALSE(repository::FileKey::Of(mark, Secret("Ann's Own")).has_value());
  for (const auto& [at, byte] :
       std::map<size_t, char>{{0, 't'}, {2, 2}, {3, 12}, {3, 22}, {4, 0}}) {
    std::string other = mark;
    other[at] = byte;
    EXPECT_FALSE(repository::IsMark(other)) << at;
  }
}

TEST_F(Protect, SetChangedAndTakenOffTheContentStaysAndOnlyThePasswordInForceOpensIt) {
  testing::StoreVariedMessages(30);
  testing::StoreRulesAndMarks();
  const Dump before = Now();
  int refreshed = 0;
  EXPECT_EQ(ProtectRepository(Secret("first"), [&] { ++refreshed; }), Result::kDone);
  EXPECT_EQ(refreshed, 1);
  EXPECT_FALSE(testing::MayBeLookedInto()) << "a crash would leave an image of the key";
  EXPECT_TRUE(IsProtected() && IsOwnPassword(Secret("first")) && !IsOwnPassword(Secret("other")));
  EXPECT_EQ(Now(), before);
  EXPECT_TRUE(Restart({"wrong", "first"}));
  EXPECT_EQ(ui_.Shown("password"), (Texts{file_, file_}));
  EXPECT_EQ(Now(), before);

  const std::string mark = repository::Repository().Mark;
  EXPECT_EQ(Set("second"), Result::kDone);
  EXPECT_NE(repository::Repository().Mark, mark);
  EXPECT_FALSE(Restart({"first", "first", "first"}));
  EXPECT_THAT(ui_.Shown("error"), ElementsAre(StartsWith("Error: 3031 This is not the password")));
  EXPECT_FALSE(Restart({""}));  // given up: said by nobody
  EXPECT_THAT(ui_.Shown("error"), IsEmpty());
  EXPECT_FALSE(OpensWithProgramsPassword(file_));
  EXPECT_TRUE(Restart({"second"}));
  EXPECT_EQ(Now(), before);

  ui_.yesNo = {true};
  EXPECT_EQ(UnprotectRepository(), Result::kDone);
  EXPECT_TRUE(Restart({}));
  EXPECT_EQ(Now(), before);
  EXPECT_FALSE(IsProtected());
  EXPECT_TRUE(testing::MayBeLookedInto());
  EXPECT_THAT(Log(), Not(AnyOf(HasSubstr("first"), HasSubstr("second"))));
}

TEST_F(Protect, AWrongPasswordIsToldFromADamagedFile) {
  ASSERT_EQ(Set("own"), Result::kDone);
  repository::LockRepository();
  const std::string whole = platform::ReadFile(file_);
  const Case kCases[] = {{"in the mark's random part", "7", "3031 This is not the password"},
                         {"in the first page", "3000", "the password is right, but"}};
  for (const Case& damage : kCases) {
    std::string bytes = whole;
    bytes[std::stoul(damage.given)] ^= 1;
    platform::WriteFile(file_, bytes);
    bool isTriedAgain = damage.expected[0] == '3';
    std::deque<std::string> answers(isTriedAgain ? 3 : 1, "own");
    EXPECT_FALSE(Restart(answers));
    EXPECT_THAT(ui_.Shown("error"), ElementsAre(HasSubstr(damage.expected))) << damage.what;
  }
  platform::WriteFile(file_, whole);
  EXPECT_TRUE(Restart({"own"}));
}

TEST_F(Protect, StoppedAtAnyFileOperationTheFormerOrTheNewPasswordOpensItAll) {
  testing::StoreVariedMessages(5);
  const Dump before = Now();
  int failed = 0;
  for (const std::string& password : Texts{"first", "second", ""}) {  // set, changed, taken off
    bool happened = true;
    for (int step = 0; happened; ++step) {
      SCOPED_TRACE(password + " at " + std::to_string(step));
      const std::string former = repository::Repository().Mark;
      ui_.shown.clear();
      if (password.empty()) ui_.yesNo = {true};
      {
        testing::FailingFileStep fault(step);
        Result result = password.empty() ? UnprotectRepository() : Set(password);
        happened = fault.Happened();
        if (result != Result::kDone) {
          ++failed;
          EXPECT_FALSE(ui_.Shown("error").empty());
        }
      }
      ui_.passwords.clear();
      if (!RepositoryDb().IsOpen()) {
        ASSERT_TRUE(repository::OpenRepository(false));
      }
      ASSERT_EQ(Now(), before);
      EXPECT_THAT(platform::ListFiles(folder_.Path(), ".unfinished"), IsEmpty());
      if (password.empty() && !IsProtected()) break;  // nothing is left to take off
    }
  }
  EXPECT_GT(failed, 10);
  EXPECT_FALSE(IsProtected());
  // A stop leaves it as it is.
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  EXPECT_EQ(Set("third"), Result::kStopped);
  EXPECT_FALSE(IsProtected());
  EXPECT_EQ(Now(), before);
}

TEST_F(Protect, WhatIsWrittenCarriesTheRepositorysPasswordAndIsReadWithItsOwn) {
  testing::StoreVariedMessages(12);
  const Dump before = Now();
  const auto messages = testing::AllMessages(RepositoryDb());
  const std::string backup = folder_.File("backup.twb");
  const std::string other = folder_.File("export.twb");
  ASSERT_EQ(Set("first"), Result::kDone);
  ui_.shown.clear();
  EXPECT_EQ(MakeBackup(backup), Result::kDone);
  EXPECT_EQ(ui_.Shown("box"), Texts{"Backup is done.\r\nIts password is the repository's own."});
  testing::ExportAll(other);
  EXPECT_EQ(MarkOf(backup), repository::Repository().Mark);
  EXPECT_EQ(MarkOf(other), repository::Repository().Mark);
  EXPECT_EQ(testing::DumpFile(backup), before);

  // The repository gets another password; each file asks for the one it was made with.
  ASSERT_EQ(Set("second"), Result::kDone);
  ASSERT_TRUE(Restart({"second"}));
  const std::string mark = repository::Repository().Mark;
  ui_.passwords = {"no", "no", "no"};
  EXPECT_EQ(RestoreBackup(backup), Result::kFailed);
  ui_.passwords = {""};
  EXPECT_EQ(twMakeMarge(other).result, Result::kDeclined);
  EXPECT_EQ(Now(), before);
  ASSERT_TRUE(repository::ClearRepository());
  ui_.passwords = {"first"};
  EXPECT_EQ(twMakeMarge(other, {Duplicates::kAsk, UnknownSenders::kAccept}).result, Result::kDone);
  EXPECT_EQ(testing::AllMessages(RepositoryDb()), messages);
  ui_.yesNo = {true, true};
  EXPECT_EQ(RestoreBackup(backup), Result::kDone);
  EXPECT_EQ(Now(), before);
  EXPECT_EQ(repository::Repository().Mark, mark);
  EXPECT_TRUE(Restart({"second"}));

  // Into a repository without one: the person is told that nothing of their own protects it.
  ui_.yesNo = {true, true, true};
  ASSERT_EQ(UnprotectRepository(), Result::kDone);
  ui_.shown.clear();
  ui_.passwords = {"first"};
  EXPECT_EQ(RestoreBackup(backup), Result::kDone);
  EXPECT_THAT(ui_.Shown("box"), ElementsAre(HasSubstr("this repository is not")));
  EXPECT_EQ(Now(), before);
}

}  // namespace
}  // namespace tarnwick::maintenance
