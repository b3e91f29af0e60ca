// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/app_folder.h"

#include "support/faults.h"
#include "support/testing.h"

namespace tarnwick::repository {
namespace {

// Puts the environment back as it was.
class WithoutHome {
 public:
  WithoutHome() {
    for (const char* name : kNames) {
      former_.push_back(platform::EnvironmentText(name));
      platform::SetEnvironmentText(name, std::nullopt);
    }
  }
  ~WithoutHome() {
    for (size_t i = 0; i < former_.size(); ++i) {
      platform::SetEnvironmentText(kNames[i], former_[i]);
    }
  }
  WithoutHome(const WithoutHome&) = delete;
  WithoutHome& operator=(const WithoutHome&) = delete;

 private:
  static constexpr const char* kNames[] = {"HOME", "XDG_DATA_HOME", "TARNWICK_HOME"};
  std::vector<std::optional<std::string>> former_;
};

TEST(AppFolder, IsNeverTheCurrentFolderForWantOfAHome) {
  WithoutHome environment;
  platform::ClockOverride clock;
  clock.passwordHome = "/home/ann";
  platform::SetClockOverride(clock);
  EXPECT_EQ(ChooseAppFolder("/opt/none/"), "/home/ann/.local/share/tarnwick/");
  platform::SetEnvironmentText("HOME", "somewhere");
  platform::SetEnvironmentText("XDG_DATA_HOME", "somewhere");
  EXPECT_EQ(ChooseAppFolder("/opt/none/"), "/home/ann/.local/share/tarnwick/");
  platform::SetEnvironmentText("HOME", std::nullopt);
  platform::SetEnvironmentText("XDG_DATA_HOME", std::nullopt);
  clock.passwordHome = "";
  platform::SetClockOverride(clock);
  EXPECT_THROW(ChooseAppFolder("/opt/none/"), Error);
  platform::SetClockOverride({});
}

TEST(AppFolder, IsSeededOnceAndNeverOverwritten) {
  testing::TempFolder program;
  testing::TempFolder home;
  platform::WriteFile(program.File("emlTemplate.twr"), "template");
  platform::WriteFile(program.File("emlParameter.twr"), "parameters");
  platform::WriteFile(program.File("Tarnwick.twr"), "somebody's mail");
  std::string app = home.File("data/tarnwick/");
  platform::MakeFolder(app);
  platform::WriteFile(app + "Tarnwick.twr-wal", "of a file that was deleted after a crash");
  SeedAppFolder(app, program.Path());
  EXPECT_FALSE(platform::FileExists(app + "Tarnwick.twr-wal"));
  EXPECT_EQ(platform::ReadFile(app + "Tarnwick.twr"), "template");
  platform::WriteFile(app + "Tarnwick.twr", "mine");
  SeedAppFolder(app, program.Path());
  EXPECT_EQ(platform::ReadFile(app + "Tarnwick.twr"), "mine");
  // A lost template comes back; the person's own files are not replaced by empty ones.
  for (const char* lost : {"Tarnwick.twr", "emlParameter.twr", "emlTemplate.twr"}) {
    platform::RemoveFile(app + lost);
    SeedAppFolder(app, program.Path());
    EXPECT_EQ(platform::FileExists(app + lost), lost == std::string("emlTemplate.twr")) << lost;
  }
}

TEST(AppFolder, OfAPortableProgramIsItsOwn) {
  WithoutHome environment;
  testing::TempFolder program;
  platform::WriteFile(program.File("portable.txt"), "");
  platform::MakeFolder(program.File("share/tarnwick"));
  platform::WriteFile(program.File("share/tarnwick/emlTemplate.twr"), "template");
  platform::WriteFile(program.File("share/tarnwick/emlParameter.twr"), "parameters");
  EXPECT_EQ(ChooseAppFolder(program.Path()), program.Path());
  SeedAppFolder(program.Path(), program.Path());
  EXPECT_EQ(platform::ReadFile(program.File("Tarnwick.twr")), "template");
}

TEST(AppFolder, IsMadeFurtherWhereItsMakingWasInterrupted) {
  testing::TempFolder program;
  platform::WriteFile(program.File("emlTemplate.twr"), "template");
  platform::WriteFile(program.File("emlParameter.twr"), "parameters");
  for (int step = 0;; ++step) {
    testing::TempFolder home;
    bool happened = false;
    {
      testing::FailingFileStep fault(step);
      try {
        SeedAppFolder(home.Path(), program.Path());
      } catch (const Error&) {
      }
      happened = fault.Happened();
    }
    SeedAppFolder(home.Path(), program.Path());
    EXPECT_THAT(platform::ListFiles(home.Path()),
                UnorderedElementsAre("Tarnwick.twr", "emlParameter.twr", "emlTemplate.twr"))
        << step;
    if (!happened) break;
  }
}

}  // namespace
}  // namespace tarnwick::repository
