// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/text.h"

#include "platform/charset.h"
#include "support/testing.h"

namespace tarnwick::core {
namespace {

TEST(Text, SplitFirstFindsTheFirstDelimiterWithoutRegardToCase) {
  std::string text = "one AND two and three";
  EXPECT_EQ(SplitFirst(text, " and ", true), "one");
  EXPECT_EQ(text, "two and three");
  EXPECT_EQ(SplitFirst(text, " and ", false), "two");
  EXPECT_EQ(text, "two and three");
  EXPECT_EQ(SplitFirst(text, ":", true), "two and three");
  EXPECT_EQ(text, "");
}

TEST(Text, SplitLastSearchesTheLaterOnesExactly) {
  std::string text = "a;b;c";
  EXPECT_EQ(SplitLast(text, ";", true), "c");
  EXPECT_EQ(text, "a;b");
  text = "one AND two and three AND four";
  // The first is found in any case, the ones behind it only as written.
  EXPECT_EQ(SplitLast(text, " and ", false), "three AND four");
  text = "one AND two";
  EXPECT_EQ(SplitLast(text, " and ", true), "two");
  EXPECT_EQ(text, "one");
  text = "none";
  EXPECT_EQ(SplitLast(text, ";", true), "none");
  EXPECT_EQ(text, "");
}

TEST(Text, UnquoteTakesOneMarkAtEachEnd) {
  const std::pair<const char*, const char*> kRows[] = {
      {" \t\"Ann\"\t", "Ann"}, {"<<a@b>>", "<a@b>"}, {"'x", "x"}, {"x>", "x"}, {"\"", ""}, {"", ""},
      {"a\tb", "a b"}};
  for (const auto& row : kRows) EXPECT_EQ(Unquote(row.first), row.second) << row.first;
}

TEST(Text, FilterTextIsCutInCharactersAfterQuotesAreReplaced) {
  EXPECT_EQ(SanitizeFilterText("it's \"so\""), "it_s _so_");
  std::string wide;
  for (int i = 0; i < 300; ++i) wide += "\u0416";
  std::string cut = SanitizeFilterText(wide);
  EXPECT_EQ(platform::CountChars(cut), 255U);
  EXPECT_TRUE(platform::IsValidUtf8(cut));
  EXPECT_EQ(QuoteSql("O'Hara ''"), "O''Hara ''''");
}

}  // namespace
}  // namespace tarnwick::core
