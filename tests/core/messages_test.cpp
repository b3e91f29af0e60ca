// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/messages.h"

#include "core/guard.h"
#include "core/run_state.h"
#include "core/startup.h"
#include "core/text.h"
#include "support/scripted_ui.h"
#include "support/testing.h"

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
  EXPECT_THAT(ui_.Shown("error"), ElementsAre("Error: 53 File not found: x twParseDate"));
  EXPECT_EQ(Log(), "3/7/2005 09:08:07\r\nError: 53 File not found: x twParseDate\r\n\r\n");
  State().LogEvents = false;
  LogProgress("progress");
  EXPECT_FALSE(GuardedRun(
      "quiet", [] { throw std::runtime_error("odd"); }, Report::kLog));
  EXPECT_EQ(ui_.Shown("error").size(), 1U);
  EXPECT_NE(Log().find("Error: 51 odd quiet"), std::string::npos);
  EXPECT_EQ(Log().find("progress"), std::string::npos);
  // A log that cannot be written stops nothing.
  State().LogFile = folder_.File("no/such/folder/log");
  WriteLog("lost");
  ShowError("shown all the same");
  EXPECT_EQ(ui_.Shown("error").size(), 2U);
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

TEST(ZoneHours, AreWholePositiveAndRoundedHalfToEven) {
  const std::pair<int, int> kRows[] = {{300, 5}, {-300, 5}, {-330, 6}, {-270, 4},
                                       {210, 4}, {-345, 6}, {0, 0},    {-60, 1}};
  for (const auto& [bias, hours] : kRows) EXPECT_EQ(ZoneHours(bias), hours) << bias;
}

}  // namespace
}  // namespace tarnwick::core
