// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "contacts/unsent_message.h"

#include "platform/shell.h"
#include "support/program_fixture.h"

namespace tarnwick::contacts {
namespace {

TEST(MailboxTextTest, EachStaysOneMailbox) {
  const struct {
    const char* what;
    std::string name, address, mailbox;
  } rows[] = {
      {"plain", "Ann Lee", "ann@example.org", "\"Ann Lee\" <ann@example.org>"},
      {"comma and dot", "Lee, Ann Q.", "a@b.c", "\"Lee, Ann Q.\" <a@b.c>"},
      {"quotation marks and backslash", "a\" <x@y.z>, \\", "a@b.c",
       "\"a\\\" <x@y.z>, \\\\\" <a@b.c>"},
      {"line breaks in a name", "Ann\r\nBcc: x@y.z\n\n", "a@b.c", "\"Ann Bcc: x@y.z\" <a@b.c>"},
      {"NUL and tab in a name", std::string("A\0\tB", 4), "a@b.c", "\"A B\" <a@b.c>"},
      {"header in an address", "Ann", "a@b.c>\r\nBcc: <x@y.z", "\"Ann\" <a@b.c___Bcc:__x@y.z>"},
      {"second address", "Ann", "a@b.c, x@y.z; \"q\"", "\"Ann\" <a@b.c__x@y.z___q_>"},
      {"blanks around an address", "Ann", " a@b.c ", "\"Ann\" <a@b.c>"},
      {"line separators outside ASCII", "Ann", "a\xE2\x80\xA8@b\xC2\x85.c", "\"Ann\" <a_@b_.c>"},
      {"no name known", "no name", "a@b.c", "<a@b.c>"},
      {"Cyrillic", "Анна", "a@b.c", "=?UTF-8?B?0JDQvdC90LA=?= <a@b.c>"},
      {"not UTF-8", "Zo\xEB", "a@b.c", "=?UTF-8?B?Wm/Dqw==?= <a@b.c>"},
  };
  for (const auto& row : rows)
    EXPECT_EQ(MailboxText(row.name, row.address), row.mailbox) << row.what;
}

TEST(MailboxTextTest, LongNamesAreFoldedBetweenCharacters) {
  std::string name;
  for (int i = 0; i < 400; ++i) name += i % 2 == 0 ? "€" : "e";
  for (const std::string& text : {name, std::string(3000, 'n')}) {
    std::string mailbox = MailboxText(text, "a@b.c");
    size_t begin = 0;
    while (begin < mailbox.size()) {
      size_t end = std::min(mailbox.find("\r\n", begin), mailbox.size());
      EXPECT_LE(end - begin, 100U);
      EXPECT_EQ(mailbox.substr(begin, 8) == "        ", begin > 0);
      begin = end + 2;
    }
  }
  // 45 bytes a word: eleven pairs of four bytes leave one, which the next character does not fit
  // in.
  EXPECT_THAT(
      MailboxText(name, "a@b.c"),
      HasSubstr("=?UTF-8?B?4oKsZeKCrGXigqxl4oKsZeKCrGXigqxl4oKsZeKCrGXigqxl4oKsZeKCrGU=?="));
}

class SendTest : public testing::ProgramFixture {
 protected:
  SendTest() {
    platform::SetShellHook([this](const std::string& path) {
      opened_.push_back(path);
      return result_;
    });
  }
  ~SendTest() override { platform::SetShellHook({}); }

  static void AddSent(const std::string& name, const std::string& address, const char* day) {
    Run("INSERT INTO Email (Direction, NameFrom, AddressFrom, CreationTime) VALUES ('Out', '" +
        name + "', '" + address + "', #" + day + "#)");
  }

  std::vector<std::string> opened_;
  platform::ShellResult result_ = platform::ShellResult::kOpened;
};

TEST_F(SendTest, TheFileHasTheseLines) {
  AddSent("Old Me", "old@example.org", "01/02/2001");
  AddSent("Me", "me@example.org", "03/04/2005");
  AddSent("Older Me", "older@example.org", "01/02/1999");
  ContactAddress address{1, "ann@example.org"};
  EXPECT_TRUE(SendToOne("Ann", &address));
  ASSERT_THAT(opened_, ElementsAre(folder_.File("EmailFile/Temp43200.eml")));
  EXPECT_EQ(platform::ReadFile(opened_[0]),
            "From: \"Me\" <me@example.org>\r\n"
            "To: \"Ann\" <ann@example.org>\r\n"
            "Subject: \r\n"
            "Date: Mon, 15 Jun 2020 12:00:00 +0300\r\n"
            "MIME-Version: 1.0\r\n"
            "Content-Type: text/plain; charset=\"us - ascii\"; format=flowed\r\n"
            "X-Priority: 3\r\n"
            "X -MSMail - Priority: Normal\r\n"
            "X-Unsent: 1\r\n"
            "X-MimeOLE: Produced By Microsoft MimeOLE V6.00.2600.0000\r\n");

  // A second one of the same second takes its place, whole.
  EXPECT_TRUE(SendToAll("B", {{1, "b@c.d"}}));
  ASSERT_THAT(opened_, ElementsAre(opened_[0], opened_[0]));
  EXPECT_THAT(platform::ReadFile(opened_[0]), Not(HasSubstr("ann@example.org")));
}

TEST_F(SendTest, AllAddressesGoOnFoldedLines) {
  std::vector<ContactAddress> addresses = {
      {1, "a@b.c"}, {2, "no address"}, {3, "d@e.f\r\nX-Evil: 1"}, {4, "g@h.i"}};
  EXPECT_TRUE(SendToAll("Ann", addresses));
  EXPECT_THAT(platform::ReadFile(opened_.at(0)), HasSubstr("From: \r\n"
                                                           "To: \"Ann\" <a@b.c>\r\n"
                                                           "        \"Ann\" <d@e.f__X-Evil:_1>\r\n"
                                                           "        \"Ann\" <g@h.i>\r\n"
                                                           "Subject: \r\n"));
}

TEST_F(SendTest, WithoutAnAddressOrAMailProgramThePersonIsTold) {
  EXPECT_FALSE(SendToOne("Ann", nullptr));
  EXPECT_TRUE(opened_.empty());
  result_ = platform::ShellResult::kNoHandler;
  EXPECT_FALSE(SendToAll("Ann", {{1, "a@b.c"}}));
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("There isn't selected row.",
                                            HasSubstr(folder_.File("EmailFile/Temp43200.eml"))));
}

TEST_F(SendTest, AFullDiskIsReported) {
  platform::SetFileFault([](platform::FileOperation operation, const std::string& path) {
    if (operation == platform::FileOperation::kWrite && path.ends_with(".eml")) {
      throw Error(ErrorNumber::kDiskFull, "No space left");
    }
  });
  ContactAddress address{1, "a@b.c"};
  EXPECT_FALSE(SendToOne("Ann", &address));
  EXPECT_TRUE(opened_.empty());
  EXPECT_THAT(Log(), HasSubstr("Error: 61 No space left mctSendToOne_Click"));
}

}  // namespace
}  // namespace tarnwick::contacts
