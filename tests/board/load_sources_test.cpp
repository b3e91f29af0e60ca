// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The load command over sources of the test's own: letters that lie in memory.

#include <utility>

#include "board/load_command.h"
#include "board/load_log.h"
#include "core/guard.h"
#include "intake/load_account.h"
#include "intake/source.h"
#include "intake/store_message.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

using intake::Outcome;
using intake::SourceMessage;

struct ShelfMail {
  std::string key;
  std::string from;
  bool isRecord = false;  // made by the source, not parsed
  intake::Ending ending{};
};

class Shelf : public intake::SourceFolder {
 public:
  Shelf(std::string place, std::vector<ShelfMail> letters)
      : place_(std::move(place)), letters_(std::move(letters)) {}

  std::string Place() const override { return place_; }
  intake::SourceDescriptor Descriptor() const override { return {"Inbox", "", "Shelves"}; }
  std::string Identity() const override { return "Ann"; }
  int64_t Size() const { return static_cast<int64_t>(letters_.size()); }

  bool Next(SourceMessage& message) override {
    if (next_ == letters_.size()) return false;
    const ShelfMail& letter = letters_[next_++];
    if (letter.key == "broken") throw Error(ErrorNumber::kPathAccess, "the shelf broke");
    message.name = "letter " + letter.key;
    message.key = letter.key;
    message.ending = letter.ending;
    if (letter.isRecord) {
      message.message.emplace();
      message.message->MessageKey = letter.key;
      message.message->Direction = "In";
      message.message->FromName = letter.from;
      message.message->Subject = "a record";
    }
    platform::WriteFile(core::State().TempMessageFile,
                        "From: " + letter.from + " <x@example.org>\r\nSubject: raw\r\n\r\ntext");
    return true;
  }

 private:
  std::string place_;
  std::vector<ShelfMail> letters_;
  size_t next_ = 0;
};

class Shelves : public intake::Source {
 public:
  Shelves(std::string name, std::vector<Shelf> shelves)
      : name_(std::move(name)), shelves_(std::move(shelves)) {}

  std::string Name() const override { return name_; }
  const char* Option() const override { return "Shelves"; }
  std::string Files() const override { return "*.shelf"; }
  bool IsIn(const std::string& folder) override { return folder.ends_with("house/"); }
  bool Announce(bool /*whole*/) override {
    for (const Shelf& shelf : shelves_) intake::Account().Announce(shelf.Place(), shelf.Size());
    return true;
  }
  bool Read(bool /*whole*/) override {
    return core::GuardedRun("ReadShelves", [&] {
      for (Shelf& shelf : shelves_) intake::ReadFolder(shelf);
    });
  }

 private:
  std::string name_;
  std::vector<Shelf> shelves_;
};

class LoadSources : public testing::ProgramFixture {
 protected:
  LoadSources() {
    repository::SetProfileFolder("/old/house/");
    intake::GetContactId("Ann", "ann@example.org");
    core::State().RepositoryIsEmpty = true;
    options_.senders = SenderPolicy::kKnownOnly;
  }

  LoadResult Load(std::vector<Shelf> shelves, std::vector<Shelf> others = {}) {
    Sources sources;
    sources.push_back(std::make_unique<Shelves>("Shelves", std::move(shelves)));
    if (!others.empty()) sources.push_back(std::make_unique<Shelves>("Others", std::move(others)));
    return LoadFromMailer(options_, sources);
  }
  static std::string Account() { return platform::ReadFile(LoadLogFile()); }

  LoadOptions options_;
};

TEST_F(LoadSources, RawLettersAndRecordsAreJudgedStoredAndCounted) {
  auto load = [&] {
    return CountsSummary(
        Load({{"top", {{"one", "Ann"}, {"two", "Ann", true}, {"three", "Bob"}}},
              {"low",
               {{"four", "Bob", true}, {"five", "Ann", false, {Outcome::kUnreadable, "torn"}}}}})
            .counts);
  };
  ui_.yesNo = {true};
  EXPECT_EQ(
      load(),
      "found 5, stored 2, already stored 0, refused 2, ignored 0, unreadable 1, not reached 0");
  EXPECT_THAT(ui_.Shown("question"),
              ElementsAre("Would you like to load email from Shelves to Repository?"));
  EXPECT_EQ(Query("SELECT Subject FROM Email WHERE EntryID = 'one'").AsText(), "raw");
  EXPECT_EQ(Query("SELECT Subject FROM Email WHERE EntryID = 'two'").AsText(), "a record");
  EXPECT_EQ(Query("SELECT Identity FROM Email WHERE Application = 'Shelves'").AsText(), "Ann");
  EXPECT_THAT(Account(), HasSubstr("low\r\ntorn\r\n  letter five"));
  EXPECT_THAT(Account(), HasSubstr("its sender is not among the contacts: Bob"));
  EXPECT_THAT(ui_.Shown("box"), ElementsAre());

  // The option was kept: nothing is asked, and a letter without a key of its own has one made.
  EXPECT_EQ(
      CountsSummary(Load({{"top", {{"one", "Ann"}, {"", "Ann"}}}}).counts),
      "found 2, stored 1, already stored 1, refused 0, ignored 0, unreadable 0, not reached 0");
  EXPECT_EQ(Load({{"top", {{"one", "Ann"}, {"", "Ann"}}}}).counts.alreadyStored, 2);
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("There isn't new message."));
}

TEST_F(LoadSources, AStopLeavesTheRestOfThemNotReached) {
  options_.everyMailer = true;
  ui_.onYield = [&] {
    if (core::State().Counts.stored == 1) StopLoad();
  };
  LoadResult result = Load({{"top", {{"one", "Ann"}, {"two", "Ann"}}}, {"low", {{"three", "Ann"}}}},
                           {{"other", {{"four", "Ann"}}}});
  EXPECT_TRUE(result.stopped);
  EXPECT_EQ(
      CountsSummary(result.counts),
      "found 4, stored 1, already stored 0, refused 0, ignored 0, unreadable 0, not reached 3");
  for (const char* place : {"top", "low", "other"}) {
    EXPECT_THAT(Account(), HasSubstr(std::string(place) + "\r\nthe load was stopped"));
  }
}

TEST_F(LoadSources, AnErrorOfOneKeepsNoOtherFromBeingRead) {
  options_.everyMailer = true;
  LoadResult result = Load({{"top", {{"one", "Ann"}, {"broken", ""}, {"two", "Ann"}}}},
                           {{"other", {{"three", "Ann"}}}});
  EXPECT_TRUE(result.failed);
  EXPECT_EQ(result.counts.stored, 2);
  EXPECT_EQ(result.counts.notReached, 2);
  EXPECT_THAT(ui_.Shown("error"), ElementsAre("Error: 75 the shelf broke ReadShelves"));
  EXPECT_THAT(Account(), HasSubstr("Not reached = 2\r\ntop\r\nthe shelf broke"));
}

TEST_F(LoadSources, AFolderWithoutAnythingIsNoProfile) {
  repository::SetProfileFolder("");
  ui_.folders = {"/old/garden/"};
  EXPECT_FALSE(Load({{"top", {{"one", "Ann"}}}}).ran);
  EXPECT_THAT(ui_.Shown("box"),
              ElementsAre("There is no NTUSER.DAT, user.reg, *.shelf file in /old/garden/"));
}

}  // namespace
}  // namespace tarnwick::board
