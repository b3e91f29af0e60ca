// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <algorithm>
#include <random>

#include "database/text/order.h"
#include "database/text/search.h"
#include "platform/charset.h"
#include "support/testing.h"

namespace tarnwick::jet {
namespace {

// Texts over an alphabet in which folding, accents, marks, punctuation and stray bytes all occur.
std::string RandomText(std::mt19937& random) {
  static const std::vector<std::string> kPieces = {
      "a",      "A",        "b",  "B",      "z",          "s",         "S",
      "ſ",      "k",        "K",  "\u212A", "i",          "I",         "ı",
      "İ",      "l",        "·",  "e",      "é",          "É",         "e\u0301",
      "\u0301", "\u0338",   "ß",  "ẞ",      "б",          "Б",         "ς",
      "σ",      "Σ",        "日", "\u0345", "ι",          " ",         "-",
      "_",      "'",        "=",  "<",      "\t",         "\x01",      std::string(1, '\0'),
      "\xff",   "\xe2\x84", "1",  "2",      "\U00010400", "\U00010428"};
  std::string text;
  for (size_t length = random() % 6; length > 0; length--) {
    text += kPieces[random() % kPieces.size()];
  }
  return text;
}

TEST(TextOrder, ShortCutAgreesWithTheFullComparison) {
  std::mt19937 random(1);
  for (int i = 0; i < 200000; i++) {
    std::string a = RandomText(random);
    std::string b = RandomText(random);
    ASSERT_EQ(CompareText(a, b), CompareTextFully(a, b)) << '"' << a << "\" \"" << b << '"';
  }
}

TEST(TextOrder, PrintableAsciiAgreesInEveryPair) {
  for (char first = ' '; first < 0x7F; first++) {
    for (char second = ' '; second < 0x7F; second++) {
      std::string a(1, first);
      std::string b(1, second);
      ASSERT_EQ(CompareText(a, b), CompareTextFully(a, b)) << a << b;
      ASSERT_EQ(CompareText("x" + a + b, "x" + b), CompareTextFully("x" + a + b, "x" + b))
          << a << b;
    }
  }
}

TEST(TextOrder, IsTotalAndEqualsExactlyWhereFoldsDo) {
  std::mt19937 random(2);
  std::vector<std::string> texts;
  for (int i = 0; i < 400; i++) texts.push_back(RandomText(random));
  std::sort(texts.begin(), texts.end(),
            [](const std::string& a, const std::string& b) { return CompareText(a, b) < 0; });
  for (size_t i = 0; i < texts.size(); i++) {
    for (size_t j = i; j < texts.size(); j++) {
      int order = CompareText(texts[i], texts[j]);
      ASSERT_LE(order, 0) << texts[i] << " / " << texts[j];
      ASSERT_EQ(order, -CompareText(texts[j], texts[i]));
      ASSERT_EQ(order == 0, platform::FoldCase(texts[i]) == platform::FoldCase(texts[j]));
    }
  }
}

TEST(TextOrder, OrdersAsPeopleDo) {
  const std::vector<std::string> kOrdered = {"",        "_note", "-x",    "1",      "10",
                                             "2",       "apple", "Apply", "eclair", "éclair",
                                             "eclairs", "Zoë",   "zoo"};
  for (size_t i = 1; i < kOrdered.size(); i++) {
    EXPECT_LT(CompareText(kOrdered[i - 1], kOrdered[i]), 0)
        << kOrdered[i - 1] << " / " << kOrdered[i];
  }
  EXPECT_EQ(CompareText("ПРИВЕТ", "привет"), 0);
  EXPECT_EQ(CompareText("STRASSE", "strasse"), 0);
  EXPECT_NE(CompareText("straße", "strasse"), 0);
  EXPECT_NE(CompareText("resume", "résumé"), 0);
}

// The plain way to find a match: character by character from every beginning.
size_t PlainFind(const std::string& text, const std::string& part, bool& found) {
  std::vector<int32_t> folded;
  std::vector<int32_t> wanted;
  for (size_t i = 0; i < text.size();)
    folded.push_back(platform::FoldChar(platform::NextChar(text, i)));
  for (size_t i = 0; i < part.size();)
    wanted.push_back(platform::FoldChar(platform::NextChar(part, i)));
  auto place = std::search(folded.begin(), folded.end(), wanted.begin(), wanted.end());
  found = place != folded.end() || wanted.empty();
  return static_cast<size_t>(place - folded.begin());
}

TEST(TextSearch, FindsWhatThePlainWayFinds) {
  std::mt19937 random(3);
  int hits = 0;
  for (int i = 0; i < 100000; i++) {
    std::string text;
    for (int piece = 0; piece < 8; piece++) text += RandomText(random);
    std::string part = RandomText(random);
    // Stray bytes may be split from their neighbours in another way when walked backwards.
    text = platform::MendUtf8(text);
    part = platform::MendUtf8(part);
    bool found = false;
    size_t place = PlainFind(text, part, found);
    Needle::Match match = Needle(part).Find(text);
    ASSERT_EQ(match.begin != Needle::kNone, found) << '"' << text << "\" \"" << part << '"';
    if (!found) continue;
    hits++;
    ASSERT_EQ(platform::CountChars(std::string_view(text).substr(0, match.begin)), place)
        << text << part;
    ASSERT_EQ(platform::CountChars(std::string_view(text).substr(0, match.end)),
              place + platform::CountChars(part));
  }
  EXPECT_GT(hits, 10000);
}

TEST(TextSearch, FindsAtEveryPlaceOfALongText) {
  for (size_t place = 0; place < 80; place++) {
    std::string text(80, 'x');
    text.insert(place, "Needle");
    EXPECT_EQ(Needle("nEEDLE").Find(text).begin, place);
    EXPECT_EQ(Needle("nEEDLEy").Find(text).begin, Needle::kNone);
  }
}

TEST(TextSearch, HostileBytesNeverLeaveTheText) {
  EXPECT_EQ(Needle("x\x80q").Find("x\x80q").begin, 0U) << "a stray byte is a character of its own";
  std::mt19937 random(4);
  for (int i = 0; i < 50000; i++) {
    std::string text(random() % 40, '\0');
    for (char& c : text) c = static_cast<char>(random());
    std::string part(random() % 3, '\0');
    for (char& c : part) c = static_cast<char>(random());
    Needle::Match match = Needle(part).Find(text);
    if (match.begin != Needle::kNone) {
      ASSERT_LE(match.begin, match.end);
      ASSERT_LE(match.end, text.size());
    }
    LikePattern("%" + part + "_%" + part).Matches(text);
  }
}

TEST(Like, Patterns) {
  const struct {
    const char *text, *pattern;
    bool matches;
  } kCases[] = {
      {"Quarterly report", "%REPORT%", true},
      {"Quarterly report", "report", false},
      {"Quarterly report", "quarterly%", true},
      {"Quarterly report", "%report", true},
      {"Quarterly report", "q%y%t", true},
      {"Quarterly report", "q%t%y", false},
      {"it's", "it_s", true},
      {"its", "it_s", false},
      {"ités", "it_s", true},
      {"", "%%", true},
      {"", "", true},
      {"", "_", false},
      {"abab", "%ab", true},
      {"ab", "%ab%ab%", false},
      {"abab", "ab%ab", true},
      {"aba", "ab%ba", false},
      {"100% sure", "%0\\%", false},
      {"[x]", "[x]", true},
      {"x", "[x]", false},
      {"a*b?", "a*b?", true},
      {"Grüße aus Köln", "%KÖLN", true},
      {"\u212Aelvin", "kelvin", true},
      {"Привет", "%РИВ%", true},
  };
  for (const auto& test : kCases) {
    EXPECT_EQ(LikePattern(test.pattern).Matches(test.text), test.matches)
        << test.text << " LIKE " << test.pattern;
  }
}

TEST(MendUtf8, KeepsWhatIsTextAndReadsTheRestAsWindows1252) {
  EXPECT_EQ(platform::MendUtf8("Gr\xfc\xdf Grüß \x80 \x81"), "Grüß Grüß € \u0081");
  EXPECT_EQ(platform::MendUtf8("\xed\xa0\x80"), "í\u00A0€");
  EXPECT_TRUE(platform::IsValidUtf8("日本 \U0001F600"));
  EXPECT_FALSE(platform::IsValidUtf8("0123456789\xc0\xaf"));
}

}  // namespace
}  // namespace tarnwick::jet
