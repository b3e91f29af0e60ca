// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/help_topics.h"

#include "platform/shell.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

class HelpTopics : public testing::ProgramFixture {
 protected:
  HelpTopics() {
    platform::SetShellHook([this](const std::string& path) {
      opened_.push_back(platform::FileNameOf(path));
      return path.ends_with(viewable_) ? platform::ShellResult::kOpened
                                       : platform::ShellResult::kNoHandler;
    });
    for (const char* place : {"usr/bin/", "usr/share/tarnwick/help/"}) {
      platform::MakeFolder(folder_.File(place));
    }
    for (const char* name : {"twHelp.chm", "index.html"}) {
      platform::WriteFile(folder_.File("usr/share/tarnwick/help/") + name, "help");
    }
  }
  ~HelpTopics() override { platform::SetShellHook({}); }

  std::vector<std::string> opened_;
  std::string viewable_;
};

TEST_F(HelpTopics, TheFirstFileWithAViewerIsOpened) {
  const std::string program = folder_.File("usr/bin/");
  viewable_ = ".chm";
  EXPECT_TRUE(ShowHelp(program));
  EXPECT_THAT(opened_, ElementsAre("twHelp.chm"));
  viewable_ = ".html";
  EXPECT_TRUE(ShowHelp(program));
  EXPECT_THAT(opened_, ElementsAre("twHelp.chm", "twHelp.chm", "index.html"));
  EXPECT_TRUE(ui_.Shown("box").empty());
}

TEST_F(HelpTopics, WithoutAViewerOrAnyHelpThePersonIsTold) {
  viewable_ = "none";
  EXPECT_FALSE(ShowHelp(folder_.File("usr/bin/")));
  EXPECT_FALSE(ShowHelp(folder_.File("elsewhere/")));
  EXPECT_THAT(ui_.Shown("box"),
              ElementsAre(HasSubstr(folder_.File("usr/share/tarnwick/help/index.html")),
                          "The help is not installed."));
  platform::MakeFolder(folder_.File("usr/bin/help/"));
  platform::WriteFile(folder_.File("usr/bin/help/index.html"), "own");
  EXPECT_EQ(FindHelp(folder_.File("usr/bin/")).front(), folder_.File("usr/bin/help/index.html"));
}

}  // namespace
}  // namespace tarnwick::board
