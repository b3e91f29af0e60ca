// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The contract of tarnwick-cli, as scripts see it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "cli/command_line.h"
#include "platform/files.h"
#include "support/run_program.h"
#include "support/temp_folder.h"

namespace tarnwick::app {
namespace {

using testing::ProgramRun;

class Cli : public ::testing::Test {
 protected:
  ProgramRun Run(std::vector<std::string> words, const std::string& input = {}) {
    std::vector<std::string> arguments = {std::string(TARNWICK_BIN) + "/tarnwick-cli", "--home",
                                          home_.File("home")};
    arguments.insert(arguments.end(), words.begin(), words.end());
    return testing::RunProgram(arguments, input);
  }

  std::string WriteMessage(const std::string& name, const std::string& text) {
    platform::WriteFile(home_.File(name), text);
    return home_.File(name);
  }

  testing::TempFolder home_;
};

TEST_F(Cli, AHomeIsMadeAndAMessageTakenListedAndShown) {
  std::string raw =
      "From: Ann Lee <ann@example.org>\r\nTo: bob@example.org\r\nSubject: Garden\tplan\r\n"
      "Date: Mon, 5 Jan 2004 10:20:30 +0000\r\n\r\nTulips first.\r\n";
  std::string file = WriteMessage("garden.eml", raw);
  ProgramRun run = Run({"take", file});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.output, "stored 1, already stored 0, unreadable 0\n");
  run = Run({"take", file});
  EXPECT_EQ(run.output, "stored 0, already stored 1, unreadable 0\n");
  EXPECT_NE(run.errors.find("This email is in the repository."), std::string::npos);

  run = Run({"list"});
  EXPECT_EQ(run.status, 0) << run.errors;
  EXPECT_EQ(run.output, "1\t2004-01-05 10:20:30\tIn\t\tAnn Lee\tGarden plan\n");
  run = Run({"list", "--json", "--subject", "GARDEN"});
  EXPECT_NE(run.output.find("\"ID\":1"), std::string::npos) << run.output;
  EXPECT_NE(run.output.find("\"ReceivedTime\":\"2004-01-05 10:20:30\""), std::string::npos)
      << run.output;
  EXPECT_EQ(Run({"list", "--text", "roses"}).output, "");
  EXPECT_EQ(Run({"list", "--to", "2004-01-04"}).output, "");
  EXPECT_EQ(Run({"list", "--limit", "0"}).output, "");

  EXPECT_EQ(Run({"show", "1", "--raw"}).output, raw);
  EXPECT_EQ(Run({"show", "1", "--text"}).output, "Tulips first.\r\n");
  run = Run({"show", "2"});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.errors, "");
}

TEST_F(Cli, FailuresAndWrongUsageHaveTheirStatus) {
  EXPECT_EQ(Run({}).status, 2);
  EXPECT_EQ(Run({"lists"}).status, 2);
  EXPECT_EQ(Run({"list", "--limit", "many"}).status, 2);
  EXPECT_EQ(Run({"list", "--direction", "up"}).status, 2);
  EXPECT_EQ(Run({"list", "--from", "5 Jan"}).status, 2);
  EXPECT_EQ(Run({"show"}).status, 2);
  EXPECT_EQ(Run({"load", "extra"}).status, 2);
  EXPECT_EQ(Run({"take", home_.File("missing.eml")}).status, 1);
  EXPECT_EQ(Run({"load"}).status, 1);  // no profile is known
  EXPECT_EQ(Run({"--help"}).status, 0);
  EXPECT_THAT(Run({"--version"}).output, ::testing::MatchesRegex("tarnwick-cli [0-9.]+\n"));
  platform::WriteFile(home_.File("home/Tarnwick.twr"), std::string(5000, 'x'));
  ProgramRun run = Run({"list"});
  EXPECT_EQ(run.status, 1);
  EXPECT_NE(run.errors.find("26 "), std::string::npos) << run.errors;
}

TEST(Arguments, OptionsTakeValuesEitherWayAndOperandsMayLookLikeOptions) {
  Arguments arguments({"--limit", "5", "--sort=subject", "--json", "--", "--odd"},
                      {"--limit", "--sort"}, {"--json"});
  EXPECT_EQ(arguments.Number("--limit"), 5);
  EXPECT_EQ(arguments.OneOf("--sort", {"date", "subject"}), "subject");
  EXPECT_TRUE(arguments.Has("--json"));
  EXPECT_EQ(arguments.Operands(), std::vector<std::string>{"--odd"});
  EXPECT_THROW(Arguments({"--limit"}, {"--limit"}, {}), UsageError);
  EXPECT_THROW(Arguments({"--what"}, {}, {}), UsageError);
  EXPECT_THROW(ParseNumber("-1", "ID"), UsageError);
  EXPECT_THROW(ParseNumber("99999999999999999999", "ID"), UsageError);
}

}  // namespace
}  // namespace tarnwick::app
