// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/conversations.h"

#include "intake/store_message.h"
#include "support/program_fixture.h"

namespace tarnwick::search {
namespace {

class ConversationsTest : public testing::ProgramFixture {
 protected:
  ConversationsTest() { AllConversations().Forget(); }
  ~ConversationsTest() override { AllConversations().Forget(); }

  // Stores a letter; gives its key.
  static int64_t Store(const std::string& headers, const std::string& subject,
                       const std::string& correspondent = "Ann") {
    intake::MailMessage message;
    static int number = 0;
    message.MessageKey = std::to_string(++number);
    message.Subject = subject;
    message.Direction = "In";
    message.FromName = correspondent;
    message.FromAddress = correspondent + "@example.org";
    platform::WriteFile(core::State().TempMessageFile, headers + "\r\nx\r\n");
    intake::dbSaveMesage(core::State().TempMessageFile, message, "x", 1);
    return Query("SELECT Max(ID) FROM Email").AsInt();
  }
  static void ReadAll() {
    while (!AllConversations().Read(10)) {
    }
  }
  // "1 2 1": for each message the first of its conversation, counted from 1.
  static std::string Groups() {
    ReadAll();
    std::string text;
    std::map<uint32_t, int64_t> first;
    int64_t last = Query("SELECT Max(ID) FROM Email").AsInt();
    int64_t before = Query("SELECT Min(ID) FROM Email").AsInt() - 1;
    EXPECT_EQ(AllConversations().Of(-1), Conversations::kNone);
    EXPECT_EQ(AllConversations().Of(last + 1), Conversations::kNone);
    for (int64_t id = before + 1; id <= last; ++id) {
      auto [group, isNew] = first.try_emplace(AllConversations().Of(id), id - before);
      text += (text.empty() ? "" : " ") + std::to_string(group->second);
    }
    return text;
  }
};

TEST_F(ConversationsTest, LettersThatNameEachOtherBelongTogether) {
  struct Letter {
    std::string headers;
    std::string subject;
    std::string correspondent = "Ann";
  };
  const auto id = [](const char* own, const std::string& more = {}) {
    return "Message-ID: <" + std::string(own) + ">\r\n" + more;
  };
  const struct {
    const char* name;
    std::vector<Letter> letters;
    std::string groups;
  } cases[] = {
      {"a chain, its first letter last",
       {{id("3@x", "References: <1@x> <2@x>\r\n"), "c"},
        {id("2@x", "In-Reply-To: <1@x>\r\n"), "b", "Bob"},
        {id("9@x"), "c"},
        {id("1@x"), "a"}},
       "1 1 3 1"},
      {"the letter that both name is missing",
       {{id("2@x", "References: <1@x>\r\n"), "a"}, {id("3@x", "References: <1@x>\r\n"), "b"}},
       "1 1"},
      {"a circle",
       {{id("1@x", "References: <2@x>\r\n"), "a"},
        {id("2@x", "References: <3@x>\r\n"), "b"},
        {id("3@x", "References: <1@x> <3@x>\r\n"), "c"}},
       "1 1 1"},
      {"copies of one letter, and a reply by its subject to one of them",
       {{id("1@x"), "a"}, {id("1@x"), "b"}, {id("1@x"), "a"}, {"", "Re: b"}},
       "1 1 1 1"},
      {"the subject alone, of one correspondent",
       {{"", "Hello"}, {"", "re: hello"}, {"", "Hello", "Bob"}, {id("1@x"), "Aw[2]: RE:  HELLO"}},
       "1 1 3 1"},
      {"no reply, no conversation",
       {{"", "Hello"}, {"", "Hello"}, {id("1@x"), "Fwd: Hello"}},
       "1 2 3"},
      {"replies that name other letters stay with them",
       {{id("1@x"), "plan"},
        {id("2@x", "References: <1@x>\r\n"), "Re: plan"},
        {id("3@x"), "plan"},
        {id("4@x", "References: <3@x>\r\n"), "Re: plan"}},
       "1 1 3 3"},
      {"a reply to a letter without a Message-ID",
       {{id("2@x", "In-Reply-To: <unknown@x>\r\n"), "Re: plan"}, {"", "plan"}},
       "1 1"},
      {"without subjects", {{"", ""}, {"", "Re:"}}, "1 2"},
  };
  for (const auto& test : cases) {
    ASSERT_TRUE(repository::ClearRepository());
    AllConversations().Forget();
    for (const Letter& letter : test.letters) {
      Store(letter.headers, letter.subject, letter.correspondent);
    }
    EXPECT_EQ(Groups(), test.groups) << test.name;
    EXPECT_TRUE(AllConversations().Unknown().empty());
  }
}

TEST_F(ConversationsTest, WhatFormerVersionsStoredIsLearntFromTheFilesAndNewLettersJoin) {
  Store("Message-ID: <1@x>\r\n", "a");
  Store("References: <1@x>\r\n", "b");
  Store("", "c");
  Run("UPDATE Email SET Thread = Null");
  Run("DELETE FROM FileRepository WHERE FileID = 3");
  EXPECT_EQ(Groups(), "1 2 3");
  EXPECT_EQ(AllConversations().Unknown(), (std::vector<int64_t>{1, 2, 3}));
  // What was done before a stop is kept.
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  std::vector<int64_t> many(100, 2);
  many.front() = 1;
  many.back() = 3;
  EXPECT_FALSE(LearnThreads(many));
  ui_.onYield = {};
  ReadAll();
  EXPECT_EQ(AllConversations().Unknown(), (std::vector<int64_t>{3}));
  EXPECT_TRUE(LearnThreads({3, 99}));
  EXPECT_EQ(Groups(), "1 1 3");
  EXPECT_TRUE(AllConversations().Unknown().empty());
  Store("In-Reply-To: <1@x>\r\n", "d");
  EXPECT_FALSE(AllConversations().IsComplete());
  EXPECT_EQ(Groups(), "1 1 3 1");
}

// Each letter costs the same, whatever is in it.
TEST_F(ConversationsTest, LongChainsEndInOneConversation) {
  jet::CommitGroup group(repository::RepositoryDb());
  for (int i = 0; i < 3000; ++i) {
    std::string own = std::to_string(i * 7 % 3000);
    std::string next = std::to_string((i * 7 + 1) % 3000);
    Store("Message-ID: <" + own + "@x>\r\nReferences: <" + next + "@x>\r\n", own);
  }
  group.End();
  ReadAll();
  std::set<uint32_t> all;
  for (int64_t id = 1; id <= 3000; ++id) all.insert(AllConversations().Of(id));
  EXPECT_EQ(all.size(), 1U);
  EXPECT_EQ(AllConversations().Of(3001), Conversations::kNone);
}

}  // namespace
}  // namespace tarnwick::search
