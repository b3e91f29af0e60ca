// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/shell.h"
#include "support/testing.h"

#include <sys/stat.h>

namespace tarnwick::platform {
namespace {

using testing::TempFolder;

// A desktop of the test's own: the only program on the search path is an xdg-open that leaves its
// arguments in a file and does what the test wants of it.
class ShellTest : public ::testing::Test {
 protected:
  ShellTest() {
    if (const char* path = std::getenv("PATH")) path_ = path;
    MakeFolder(folder_.File("bin"));
    setenv("PATH", folder_.File("bin").c_str(), 1);
  }
  ~ShellTest() override { setenv("PATH", path_.c_str(), 1); }

  void Desktop(const std::string& behaviour) {
    std::string program = folder_.File("bin/xdg-open");
    WriteFile(program, "#!/bin/sh\nfor word; do echo \"[$word]\"; done > '" +
                           folder_.File("arguments") + "'\n" + behaviour + "\n");
    ASSERT_EQ(chmod(program.c_str(), 0700), 0);
  }
  std::string Document(const std::string& name) {
    WriteFile(folder_.File(name), "Subject: x\r\n");
    return folder_.File(name);
  }

  TempFolder folder_;
  std::string path_;
};

TEST_F(ShellTest, APathIsOneArgumentWhateverItHolds) {
  Desktop("exit 0");
  for (const char* name : {"plain.eml", "two words.eml", "$(touch boo).eml", "a;b & c|d.eml",
                           "quote's \"and\" `more`.eml", "--help", "\xC3\xA4.eml"}) {
    std::string path = Document(name);
    EXPECT_EQ(OpenWithShell(path), ShellResult::kOpened) << name;
    EXPECT_EQ(ReadFile(folder_.File("arguments")), "[" + path + "]\n");
  }
}

TEST_F(ShellTest, RefusalsAreTold) {
  std::string path = Document("a.eml");
  EXPECT_EQ(OpenWithShell(path), ShellResult::kNoHandler) << "no xdg-open at all";
  Desktop("exit 3");
  EXPECT_EQ(OpenWithShell(path), ShellResult::kNoHandler) << "no program for the file";
  Desktop("kill -9 $$");
  EXPECT_EQ(OpenWithShell(path), ShellResult::kNoHandler) << "killed";
  EXPECT_THROW(OpenWithShell(folder_.File("missing.eml")), Error);
}

TEST_F(ShellTest, WindowsLiveWhileTheDesktopThinks) {
  std::string sign = folder_.File("seen");  // the desktop waits for the third turn
  Desktop("until [ -e '" + sign + "' ]; do /bin/sleep 0.01; done; exit 4");
  int turns = 0;
  auto turn = [&] {
    if (++turns == 3) WriteFile(sign, "");
  };
  EXPECT_EQ(OpenWithShell(Document("a.eml"), turn), ShellResult::kNoHandler);
  EXPECT_GE(turns, 3);
}

}  // namespace
}  // namespace tarnwick::platform
