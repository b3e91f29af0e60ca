// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/load_account.h"

#include "support/program_fixture.h"

namespace tarnwick::intake {
namespace {

class LoadAccountTest : public testing::ProgramFixture {
 protected:
  LoadAccountTest() {
    core::BeginLoadState();
    account_.Open();
  }
  ~LoadAccountTest() override { core::EndLoadState(); }

  // A unit that writes a row.
  void Store(const std::string& place, int64_t id) {
    repository::RepositoryDb().Execute("INSERT INTO ObjectList VALUES (" + std::to_string(id) +
                                       ")");
    account_.Count(place, Outcome::kStored);
  }

  LoadAccount account_;
};

TEST_F(LoadAccountTest, WhatTheEngineTakesBackIsNotStored) {
  jet::Connection& repository = repository::RepositoryDb();
  account_.Announce("a", 2);
  account_.Announce("b", 3);
  {
    jet::CommitGroup group(repository);
    Store("a", 1);
    Store("a", 2);
    repository.FlushGroup();
    Store("b", 3);
    account_.Count("b", Outcome::kUnreadable, "it is damaged", "the fourth");
    // A statement that is stopped within a commit makes the engine take all of it back.
    std::string list = "0";
    for (int i = 1; i < 50000; i++) list += ", " + std::to_string(i);
    repository.Execute("INSERT INTO ObjectList VALUES (5)");
    int calls = 0;
    repository.SetProgressHandler([&] { return ++calls > 20; });
    EXPECT_THROW(repository.Execute("UPDATE ObjectList SET ID = ID + 1 WHERE ID IN (" + list + ")"),
                 Error);
    repository.SetProgressHandler({});
    account_.Count("b", Outcome::kStored);  // its beginning is lost, too
    group.End();
  }
  account_.Finish("a");
  account_.Close();
  EXPECT_EQ(core::State().Counts.stored, CountRows("ObjectList"));
  EXPECT_EQ(CountsSummary(core::State().Counts),
            "found 5, stored 2, already stored 0, refused 0, ignored 0, unreadable 1, "
            "not reached 2");
  EXPECT_THAT(account_.Text(), HasSubstr("Unreadable = 1\r\nb\r\nit is damaged\r\n  the fourth"));
  EXPECT_TRUE(account_.HasLost());
}

TEST_F(LoadAccountTest, TellsEachMessageWhereThereAreFewAndForgesNoLine) {
  account_.Announce("place\r\nUnreadable = 7", 1000);
  for (int i = 0; i < 300; ++i) {
    account_.Count("place\r\nUnreadable = 7", Outcome::kRefused, "its sender is rejected",
                   "letter " + std::to_string(i) + "\r\nNot reached = 9\xC2\x85\xE2\x80\xAE");
  }
  account_.Finish("place\r\nUnreadable = 7");
  account_.Close();
  std::string text = account_.Text();
  EXPECT_THAT(text, Not(HasSubstr("\r\nUnreadable = 7")));
  EXPECT_THAT(text, Not(HasSubstr("\r\nNot reached = 9")));
  EXPECT_THAT(text, HasSubstr("Refused = 300\r\nplace\\r\\nUnreadable = 7\r\nits sender is rejected"
                              "\r\n  letter 0\\r\\nNot reached = 9\\u0085\\u202e\r\n"));
  EXPECT_THAT(text, HasSubstr("  and 200 more\r\nNot reached = 700\r\n"));
  EXPECT_THAT(text, HasSubstr("it holds fewer messages than announced"));
}

}  // namespace
}  // namespace tarnwick::intake
