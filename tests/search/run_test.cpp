// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/run.h"

#include <utility>

#include "support/program_fixture.h"

namespace tarnwick::search {
namespace {

struct Letter {
  std::string subject;
  std::string from = {};  // address
  std::string to = {};
  std::string cc = {};
  std::string body = {};
  std::string file = {};
  std::string folder = "Inbox";
  std::string contact = {};         // name in the contact book
  std::string contactAddress = {};  // known there
  std::string direction = "In";
  std::string state = {};
};

class SearchRun : public testing::ProgramFixture {
 protected:
  SearchRun() { Map().Forget(); }
  ~SearchRun() override {
    Map().Forget();
    platform::SetClockOverride({});
  }

  static void Insert(const std::string& table,
                     const std::vector<std::pair<const char*, jet::Value>>& fields) {
    jet::Recordset rows;
    rows.Open(table, repository::RepositoryDb(), jet::CursorType::kKeyset,
              jet::LockType::kOptimistic, jet::CommandType::kTable);
    rows.AddNew();
    for (const auto& [name, value] : fields) {
      if (!value.IsText() || !value.AsText().empty()) rows.SetField(name, value);
    }
    rows.Update();
  }

  int64_t Add(const Letter& letter) {
    int64_t contact = 0;
    if (!letter.contact.empty()) {
      Insert("MeContact", {{"Name", letter.contact}});
      contact = repository::RepositoryDb().LastIdentity();
      Insert("ContactEmail", {{"ContactID", contact}, {"Address", letter.contactAddress}});
    }
    Insert("Email", {{"Subject", letter.subject},
                     {"AddressFrom", letter.from},
                     {"Body", letter.body},
                     {"Folder", letter.folder},
                     {"Identity", "Main"},
                     {"Direction", letter.direction},
                     {"State", letter.state},
                     {"FromTo", contact},
                     {"ReceivedTime", DateTime::FromDate(2004, 3, 7)}});
    int64_t id = repository::RepositoryDb().LastIdentity();
    if (!letter.to.empty()) Insert("ToRecipient", {{"EmailID", id}, {"Address", letter.to}});
    if (!letter.cc.empty()) Insert("ccRecipient", {{"EmailID", id}, {"Name", letter.cc}});
    if (!letter.file.empty()) Insert("Attachment", {{"EmailID", id}, {"FileName", letter.file}});
    subjects_.push_back(letter.subject);
    messages_.insert(messages_.begin(), id);  // the latest first
    return id;
  }

  Texts Found(Request request) {
    search::Run run(std::move(request), messages_);
    Texts found;
    for (bool goesOn = true; goesOn;) {
      goesOn = run.Step(5);
      for (int64_t hit : run.TakeHits()) {
        found.push_back(
            subjects_.at(messages_.size() - 1 -
                         static_cast<size_t>(std::find(messages_.begin(), messages_.end(), hit) -
                                             messages_.begin())));
      }
    }
    return found;
  }

  // While the clock stands still every message is tested as it is; when it leaps, none is before
  // the map and the index have been asked.
  static void SetLeap(int64_t milliseconds) {
    platform::ClockOverride clock;
    clock.tickStep = milliseconds;
    platform::SetClockOverride(clock);
  }

  Texts subjects_;
  std::vector<int64_t> messages_;
};

TEST_F(SearchRun, FindsTheSameWithAndWithoutTheMapAndTheIndex) {
  Add({.subject = "plan",
       .from = "ann@firm.org",
       .to = "me@home.org",
       .body = "the Budget of it's year"});
  Add({.subject = "Re: plan",
       .from = "me@home.org",
       .to = "ann@firm.org",
       .folder = "Sent Items",
       .contact = "Ann Lee",
       .contactAddress = "lee@old.net",
       .direction = "Out",
       .state = "S"});
  Add({.subject = "budget",
       .from = "x@y.z",
       .cc = "Ann Lee",
       .file = "Report 2004.doc",
       .state = "URF"});
  Add({.subject = "zebra", .contact = "Straße GmbH", .contactAddress = "info@strasse.de"});
  Add({.subject = "100%_sure", .body = "O'Neill said \"yes\""});
  Add({.subject = ""});
  const struct {
    const char* typed;
    Texts found;
  } cases[] = {
      {"BUDGET", {"budget", "plan"}},
      {"ann@firm.org", {"Re: plan", "plan"}},
      {"@firm", {"Re: plan", "plan"}},
      {"lee", {"budget", "Re: plan"}},
      {"old.net", {"Re: plan"}},
      {"from:old.net", {}},
      {"to:old.net", {"Re: plan"}},
      {"from:strasse.de", {"zebra"}},
      {"to:strasse.de", {}},
      {"to:\"ann lee\"", {"budget", "Re: plan"}},
      {"from:firm", {"plan"}},
      {"subject:budget", {"budget"}},
      {"file:report", {"budget"}},
      {"report", {"budget"}},
      {"in:sent", {"Re: plan"}},
      {"-in:inbox", {"Re: plan"}},
      {"is:read", {"Re: plan"}},
      {"is:unread", {"budget"}},
      {"is:replied is:flagged -is:read", {"budget"}},
      {"-is:unread -is:read plan", {"plan"}},
      {"is:draft", {}},
      {"plan budget", {"plan"}},
      {"budget plan", {"plan"}},
      {"\"budget of\"", {"plan"}},
      {"\"of budget\"", {}},
      {"-plan", {"", "100%_sure", "zebra", "budget"}},
      {"-from:firm -budget", {"", "100%_sure", "zebra", "Re: plan"}},
      {"budget -file:report", {"plan"}},
      {"it's", {"plan"}},
      {"O'Neill", {"100%_sure"}},
      {"100%_s", {"100%_sure"}},
      {"1_0", {}},
      {"STRAßE", {"zebra"}},
      {"nowhere", {}},
  };
  for (const auto& test : cases) {
    for (int64_t leap : {0, 1000}) {
      SetLeap(leap);
      EXPECT_EQ(Found({ParseQuery(test.typed)}), test.found) << test.typed << ", " << leap;
    }
  }
}

TEST_F(SearchRun, AFolderAndAConditionNarrow) {
  Add({.subject = "a", .body = "one two"});
  Add({.subject = "b", .body = "one"});
  Add({.subject = "c", .body = "one two", .folder = "Inbox2"});
  for (int64_t leap : {0, 1000}) {
    SetLeap(leap);
    EXPECT_EQ(Found({ParseQuery("one"), {{"Main", "Inbox"}}}), (Texts{"b", "a"}));
    EXPECT_EQ(Found({{}, {{"Other", "Inbox"}}}), Texts{});
    EXPECT_EQ(Found({ParseQuery("one"), {}, "Email.Body Like '%two%'", {{"Body", "two"}}}),
              (Texts{"c", "a"}));
  }
}

TEST_F(SearchRun, WhatComesLaterIsFound) {
  SetLeap(1000);
  Add({.subject = "first", .from = "ann@firm.org"});
  EXPECT_EQ(Found({ParseQuery("from:ann")}), Texts{"first"});
  Add({.subject = "second", .from = "ann@firm.org", .file = "a.doc"});
  EXPECT_EQ(Found({ParseQuery("from:ann")}), (Texts{"second", "first"}));
  EXPECT_EQ(Found({ParseQuery("file:a.doc")}), Texts{"second"});
  Add({.subject = "third", .contact = "Bob Late", .contactAddress = "late@old.net"});
  EXPECT_EQ(Found({ParseQuery("\"bob late\"")}), Texts{"third"});
  EXPECT_EQ(Found({ParseQuery("LATE@old")}), Texts{"third"});
  repository::RepositoryDb().Execute("UPDATE MeContact SET Name = 'Eve Later'");
  Map().ForgetContacts();
  EXPECT_EQ(Found({ParseQuery("\"eve later\"")}), Texts{"third"});
  EXPECT_EQ(Found({ParseQuery("\"bob late\"")}), Texts{});
}

TEST_F(SearchRun, AKeyTooHighForTheMapIsFoundAllTheSame) {
  SetLeap(1000);
  Add({.subject = "low", .from = "ann@firm.org"});
  int64_t id = Add({.subject = "high", .from = "ann@firm.org"});
  int64_t high = int64_t{1} << 40;
  repository::RepositoryDb().Execute("UPDATE Email SET ID = " + std::to_string(high) +
                                     " WHERE ID = " + std::to_string(id));
  messages_[0] = high;
  EXPECT_EQ(Found({ParseQuery("from:ann")}), (Texts{"high", "low"}));
}

TEST_F(SearchRun, FoldersAreCountedAsTheyAre) {
  Add({.subject = "a"});
  int64_t gone = Add({.subject = "b", .folder = "Old"});
  Add({.subject = "c", .folder = "Sent Items"});
  Add({.subject = "d"});
  while (!Map().Read(10)) {
  }
  EXPECT_EQ(
      Map().Folders(),
      (std::vector<Folder>{{"Main", "Inbox", 2}, {"Main", "Old", 1}, {"Main", "Sent Items", 1}}));
  repository::RepositoryDb().Execute("DELETE FROM Email WHERE ID=" + std::to_string(gone));
  const std::vector<Folder> left = {{"Main", "Inbox", 2}, {"Main", "Sent Items", 1}};
  EXPECT_EQ(Map().Folders(), left);
  Add({.subject = "as many as before"});
  EXPECT_EQ(Map().Folders(), left);
}

}  // namespace
}  // namespace tarnwick::search
