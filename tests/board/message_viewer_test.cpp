// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/message_viewer.h"

#include "board_rows.h"
#include "platform/shell.h"
#include "reading/letter.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

using core::StatusPanel;

class MessageViewer : public testing::ProgramFixture {
 protected:
  MessageViewer() {
    platform::SetShellHook([this](const std::string& path) {
      opened_.push_back(path);
      return answer_;
    });
  }
  ~MessageViewer() override {
    platform::SetShellHook({});
    ResetBoard();
  }

  static void AddFileRow(int64_t id, const std::string& bytes) {
    testing::AddRow(repository::Repository().FileRecordset,
                    {{"FileID", id}, {"FileBody", jet::Bytes{bytes}}}, "ID");
  }
  static int64_t AddHtml(const std::string& html, const std::string& body = {}) {
    int64_t id = AddListed({.subject = "html", .body = body});
    Run("UPDATE Email SET Charset = 'koi8-r', HTMLBody = '" + html +
        "' WHERE ID = " + std::to_string(id));
    return id;
  }
  static std::string Body(int64_t id) {
    return Query("SELECT Body FROM Email WHERE ID=" + std::to_string(id)).AsText();
  }

  std::vector<std::string> opened_;
  platform::ShellResult answer_ = platform::ShellResult::kOpened;
};

TEST_F(MessageViewer, TheStoredRowsBecomeOneFileOfTheMailersKind) {
  const std::pair<const char*, const char*> kRows[] = {{"Outlook Express", "Temp43200.eml"},
                                                       {"Outlook", "Temp43200.eml"},
                                                       {"Text", "Temp43200.txt"},
                                                       {"", "Temp43200"}};
  AddFileRow(7, std::string("From: a\r\n\0\xff", 11));
  AddFileRow(8, "another message's");
  AddFileRow(7, "\r\nend");
  for (const auto& [application, name] : kRows) {
    opened_.clear();
    EXPECT_TRUE(ShowStoredMessage(7, application)) << application;
    ASSERT_THAT(opened_, ElementsAre(core::State().EmailFileFolder + name));
    EXPECT_EQ(platform::ReadFile(opened_[0]), std::string("From: a\r\n\0\xff\r\nend", 16));
  }
}

TEST_F(MessageViewer, AMessageOfOutlookIsOneWhereAProgramOpensThem) {
  int64_t id = AddListed({.subject = "plan"});
  AddFileRow(id, "Subject: plan\r\n\r\ntext\r\n");
  auto take = [this](const std::string& path) {
    opened_.push_back(path);
    return answer_;
  };
  platform::SetShellHook(take, ".msg");
  EXPECT_TRUE(ShowStoredMessage(id, "Outlook Express") && ShowStoredMessage(id, "Outlook"));
  ASSERT_THAT(opened_, ElementsAre(EndsWith("Temp43200.eml"), EndsWith("Temp43200.msg")));
  EXPECT_THAT(platform::ReadFile(opened_[1]), StartsWith("\xD0\xCF\x11\xE0"));
}

TEST_F(MessageViewer, WithoutACopyOrAProgramThePersonIsTold) {
  EXPECT_FALSE(ShowStoredMessage(7, "Outlook Express"));
  EXPECT_THAT(ui_.Shown("box"), ElementsAre("There isn't nature email copy."));
  EXPECT_TRUE(opened_.empty());
  AddFileRow(7, "x");
  answer_ = platform::ShellResult::kNoHandler;
  EXPECT_FALSE(ShowStoredMessage(7, "Outlook Express"));
  EXPECT_THAT(ui_.Shown("box")[1], HasSubstr(core::State().EmailFileFolder + "Temp43200.eml"));
}

TEST_F(MessageViewer, TheTextIsTheBodyAndElseTheHtmlAsItStands) {
  EXPECT_EQ(reading::ReadEmailText(AddHtml("<p>rich", "plain"))->text, "plain");
  EXPECT_EQ(reading::ReadEmailText(AddHtml("<p>rich", " \r\n"))->text, "<p>rich");
  EXPECT_EQ(reading::ReadEmailText(AddHtml(""))->text, "");
  EXPECT_EQ(reading::ReadEmailText(4711), std::nullopt);
}

TEST_F(MessageViewer, HtmlMovesIntoTheBodyWhereItHasText) {
  int64_t rich = AddHtml("<html><body><p>Мир</p><p>b</p></body></html>", "old");
  int64_t bodyless = AddHtml("<p>no body element", "kept");
  int64_t plain = AddListed({.subject = "plain", .body = "stays"});
  ui_.yesNo = {false, true, true};
  EXPECT_FALSE(MoveHtmlToBody());
  EXPECT_EQ(Body(rich), "old");
  EXPECT_TRUE(MoveHtmlToBody());
  EXPECT_THAT(ui_.Shown("question"), Each("Do you want to move HTML to body?"));
  EXPECT_THAT(Body(rich), HasSubstr("Мир")) << "decoded once, not twice";
  EXPECT_THAT(Body(rich), HasSubstr("\r\nb"));
  EXPECT_EQ(Body(bodyless), "kept");
  EXPECT_EQ(Body(plain), "stays");
  EXPECT_EQ(ui_.status[StatusPanel::kProgress],
            "1 bodies filled from HTML, 3 of 3 messages looked at");
  EXPECT_FALSE(MoveHtmlToBody()) << "nothing is left to do";
}

TEST_F(MessageViewer, AStopKeepsWhatWasMoved) {
  std::vector<int64_t> ids;
  for (int i = 0; i < 300; ++i) ids.push_back(AddHtml("<body>text</body>"));
  ui_.yesNo = {true};
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  EXPECT_TRUE(MoveHtmlToBody());
  EXPECT_EQ(Body(ids.front()), "text");
  EXPECT_EQ(Body(ids.back()), "");
  EXPECT_TRUE(ui_.status[StatusPanel::kProgress].starts_with("Stopped: "));
  EXPECT_FALSE(core::State().ImportCancelFlag);
}

}  // namespace
}  // namespace tarnwick::board
