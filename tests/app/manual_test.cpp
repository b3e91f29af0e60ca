// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The manual page keeps up with the program.

#include <regex>

#include "support/run_program.h"
#include "support/testing.h"

namespace tarnwick::app {
namespace {

TEST(Manual, ExplainsEveryCommandAndOption) {
  std::string usage = testing::RunProgram({TARNWICK_CLI, "--help"}, "").output;
  std::string page = platform::ReadFile(std::string(TARNWICK_SOURCE) + "/packaging/tarnwick-cli.1");
  page = std::regex_replace(page, std::regex(R"(\\-)"), "-");
  // An option is anywhere, a command begins an indented line.
  static const std::regex word(R"(--[a-z][a-z-]*|\n  [a-z]+)");
  int words = 0;
  for (std::sregex_iterator it(usage.begin(), usage.end(), word), end; it != end; ++it) {
    std::string name = it->str();
    if (name[0] == '\n') name = "\n.BR " + name.substr(3) + " ";
    EXPECT_THAT(page, HasSubstr(name));
    ++words;
  }
  EXPECT_GT(words, 15);
}

}  // namespace
}  // namespace tarnwick::app
