// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/messages.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <vector>

#include "core/guard.h"
#include "core/run_state.h"
#include "core/startup.h"
#include "core/text.h"
#include "platform/clock.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/locale.h"
#include "support/faults.h"
#include "support/scripted_ui.h"
#include "support/temp_folder.h"

namespace tarnwick::core {
namespace {

class Messages : public ::testing::Test {
 protected:
  Messages() {
    platform::SetLocaleOverride("en_US");
    platform::SetClockOverride({.now = DateTime::FromDate(2005, 3, 7).WithTime(9, 8, 7),
                                .zoneBiasMinutes = 300,
                                .logonName = "ann"});
    PrepareRun(folder_.Path());
  }
  ~Messages() override {
    platform::SetLocaleOverride("");
    platform::SetClockOverride({});
  }
  static std::string Log() { return platform::ReadFile(State().LogFile); }

  testing::TempFolder folder_;
  testing::ScriptedUi ui_;
};

// Puts the environment back as it was.
class WithoutHome {
 public:
  WithoutHome() {
    for (const char* name : kNames) {
      const char* value = std::getenv(name);
      former_.push_back(value == nullptr ? std::nullopt : std::optional<std::string>(value));
      unsetenv(name);
    }
  }
  ~WithoutHome() {
    for (size_t i = 0; i < former_.size(); ++i) {
      if (former_[i]) setenv(kNames[i], former_[i]->c_str(), 1);
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
  setenv("HOME", "somewhere", 1);
  setenv("XDG_DATA_HOME", "somewhere", 1);
  EXPECT_EQ(ChooseAppFolder("/opt/none/"), "/home/ann/.local/share/tarnwick/");
  unsetenv("HOME");
  unsetenv("XDG_DATA_HOME");
  clock.passwordHome = "";
  platform::SetClockOverride(clock);
  EXPECT_THROW(ChooseAppFolder("/opt/none/"), Error);
  platform::SetClockOverride({});
}

TEST_F(Messages, ASecondStartLeavesOnlyItsOwnEntries) {
  WriteLog("of the first run");
  PrepareRun(folder_.Path());
  EXPECT_EQ(Log(), "3/7/2005 09:08:07\r\n************ Startup *************\r\n\r\n");
  EXPECT_EQ(State().LocalZoneHours, 5);
  EXPECT_EQ(State().UserName, "ann");
}

TEST_F(Messages, AnErrorIsShownAndLoggedAndGivesTheFailureValue) {
  platform::RemoveFile(State().LogFile);
  int result = Guarded("twParseDate", 7, []() -> int { throw Error(53, "File not found: x"); });
  EXPECT_EQ(result, 7);
  EXPECT_EQ(ui_.Shown("error"),
            std::vector<std::string>{"Error: 53 File not found: x twParseDate"});
  EXPECT_EQ(Log(), "3/7/2005 09:08:07\r\nError: 53 File not found: x twParseDate\r\n\r\n");
  State().LogEvents = false;
  LogProgress("progress");
  EXPECT_FALSE(GuardedRun(
      "quiet", [] { throw std::runtime_error("odd"); }, Report::kLog));
  EXPECT_EQ(ui_.Shown("error").size(), 1U);
  EXPECT_NE(Log().find("Error: 51 odd quiet"), std::string::npos);
  EXPECT_EQ(Log().find("progress"), std::string::npos);
}

TEST_F(Messages, NoTextFromMailCanForgeALineOfTheLog) {
  platform::RemoveFile(State().LogFile);
  WriteLog("own\r\nlines \x1B[2J\u009B\u202E\u200F\u2028 \r \n " + OneLogLine("a\r\nError: 5\tb"));
  GuardedRun("twRead", [] { throw Error(75, "no file a\r\nb"); });
  WriteLog("");
  EXPECT_EQ(Log(),
            "3/7/2005 09:08:07\r\nown\r\n"
            "lines \\u001b[2J\\u009b\\u202e\\u200f\\u2028 \\r \\n a\\r\\nError: 5\tb\r\n\r\n"
            "3/7/2005 09:08:07\r\nError: 75 no file a\\r\\nb twRead\r\n\r\n"
            "3/7/2005 09:08:07\r\n\r\n\r\n");
}

TEST_F(Messages, ARepeatedBoxCanBeSilencedForOneLoadAndIsAlwaysLogged) {
  ui_.silenceWhenOffered = true;
  for (int load = 0; load < 2; ++load) {
    ui_.shown.clear();
    ui_.silenceOffers = 0;
    BeginLoadState();
    for (int i = 0; i < 5; ++i) ShowRepeatedMessage("Cc limit", "CC account is great than 100");
    for (int i = 0; i < 3; ++i) ReportUnknownFormat("file " + std::to_string(i));
    EndLoadState();
    // Once plainly, once with the offer, then silence; each kind by itself, each load anew.
    EXPECT_EQ(ui_.Shown("box").size(), 2U);
    EXPECT_EQ(ui_.Shown("error").size(), 2U);
    EXPECT_EQ(ui_.silenceOffers, 2);
  }
  std::string log = Log();
  size_t entries = 0;
  for (size_t at = 0; (at = log.find("CC account", at)) != std::string::npos; ++at) ++entries;
  EXPECT_EQ(entries, 10U);
  EXPECT_NE(log.find("Program can't recognize file format. file 2"), std::string::npos);
}

TEST_F(Messages, ALogThatCannotBeWrittenStopsNothing) {
  State().LogFile = folder_.File("no/such/folder/log");
  WriteLog("lost");
  ShowError("shown all the same");
  EXPECT_EQ(ui_.Shown("error").size(), 1U);
}

TEST(ZoneHours, AreWholePositiveAndRoundedHalfToEven) {
  const struct {
    int bias, hours;
  } kRows[] = {{300, 5}, {-300, 5}, {-330, 6}, {-270, 4}, {210, 4}, {-345, 6}, {0, 0}, {-60, 1}};
  for (const auto& row : kRows) EXPECT_EQ(ZoneHours(row.bias), row.hours) << row.bias;
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
    EXPECT_TRUE(platform::FileExists(home.File("Tarnwick.twr"))) << step;
    EXPECT_TRUE(platform::FileExists(home.File("emlParameter.twr"))) << step;
    EXPECT_EQ(platform::ListFiles(home.Path()).size(), 3U) << step;
    if (!happened) break;
  }
}

}  // namespace
}  // namespace tarnwick::core
