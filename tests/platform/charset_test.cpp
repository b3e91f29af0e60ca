// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/charset.h"
#include "support/testing.h"

namespace tarnwick::platform {
namespace {

using namespace std::string_literals;

struct Conversion {
  const char* what;
  const char* charset;
  std::string bytes;
  std::string text;
};

TEST(Charset, BytesBecomeText) {
  const Conversion rows[] = {
      {"koi8-r", "KOI8-R", "\xF0\xD2\xC9\xD7\xC5\xD4", "Привет"},
      {"windows cyrillic", "Windows-1251", "\xCF\xF0\xE8\xE2\xE5\xF2", "Привет"},
      {"quoted name", "\"koi8-r\"", "\xC4\xC1", "да"},
      {"name with blanks and semicolon", " utf-8 ;", "\xC3\xA4", "ä"},
      {"name with a language", "utf-8*en", "\xC3\xA4", "ä"},
      {"latin-1 has the euro of its wide form", "iso-8859-1", "\x80 5 \x96 6", "€ 5 – 6"},
      {"latin-1 by any of its names", "csISOLatin1", "\x80", "€"},
      {"Turkish latin has the quotation marks of its wide form", "latin5", "\x93\xDD\x94", "“İ”"},
      {"Korean with code page 949, by its older name", "x-euc-kr", "\xC7\xD1\x8C\x63", "한똠"},
      {"us-ascii with eight bits", "us-ascii", "caf\xE9", "café"},
      {"undefined byte keeps its value", "windows-1252", "\x81", "\xC2\x81"},
      {"undefined byte of a Greek page", "windows-1253", "\xD2", "\xC3\x92"},
      {"old Japanese name", "x-sjis", "\x93\xFA\x96\x7B", "日本"},
      {"shift_jis is code page 932", "shift_jis", "\x87\x40", "①"},
      {"iso-2022-jp", "ISO-2022-JP", "\x1B$BF|K\\\x1B(B!", "日本!"},
      {"a set announced before one is chosen", "iso-2022-kr", "\x1B$)C\x0EGQ\x0F!", "한!"},
      {"two sets announced, one behind the other", "iso-2022-cn", "\x1B$)A\x1B$*H\x0EVP\x0F!",
       "中!"},
      {"iso-2022-jp with an empty run", "iso-2022-jp", "\x1B$BF|\x1B(B\x1B$BK\\\x1B(J\x1B(B!",
       "日本!"},
      {"euc-jp", "x-euc-jp", "\xC6\xFC\xCB\xDC", "日本"},
      {"gb2312 is gb18030", "gb2312", "\xD6\xD0\xCE\xC4\x81\x40", "中文丂"},
      {"big5", "CN-Big5", "\xA4\xA4", "中"},
      {"Korean with code page 949", "ks_c_5601-1987", "\xC7\xD1\x8C\x63", "한똠"},
      {"Hebrew, implicit", "iso-8859-8-i", "\xF9\xEC\xE5\xED", "שלום"},
      {"Thai", "TIS-620", "\xA1\xA2", "กข"},
      {"DOS", "cp-850", "\x81\x84", "üä"},
      {"DOS Cyrillic", "cp866", "\x8F\xE0", "Пр"},
      {"Macintosh", "x-mac-roman", "\x8A", "ä"},
      {"Macintosh Cyrillic", "x-mac-cyrillic", "\x80", "А"},
      {"utf-7", "unicode-1-1-utf-7", "+AOQ-bc", "äbc"},
      {"utf-16", "utf-16be", "\0a\xD8\x3D\xDE\x00"s, "a😀"},
      {"bad utf-8", "utf-8", "a\xFF\xC3(", "a\xEF\xBF\xBD\xEF\xBF\xBD("},
      {"cut utf-8", "utf-8", "a\xE2\x82", "a\xEF\xBF\xBD"},
      {"nul stays", "koi8-r", "a\0\xC1"s, "a\0а"s},
  };
  for (const Conversion& row : rows) {
    SCOPED_TRACE(row.what);
    EXPECT_TRUE(IsKnownCharset(row.charset));
    auto text = CharsetToUtf8(row.bytes, row.charset);
    ASSERT_TRUE(text.has_value());
    EXPECT_EQ(*text, row.text);
    EXPECT_TRUE(IsValidUtf8(*text));
  }
}

TEST(Charset, EveryWayToNameAWindowsPageIsUnderstood) {
  for (const char* name : {"windows-1251", "WINDOWS1251", "cp1251", "win-1251", "cp-1251", "1251",
                           "x-cp1251", "ANSI-1251", "windows_1251"}) {
    EXPECT_EQ(CharsetToUtf8("\xC0", name), "А") << name;
  }
}

TEST(Charset, NamesThatSayNothingFallToTheSystemsPage) {
  SetLocaleOverride("ru_RU");
  for (const char* name : {"", "x-unknown", "unknown-8bit", "no such charset", "../../etc/passwd",
                           "koi8-r,swaplfnl", "\xFF\xFE"}) {
    EXPECT_FALSE(IsKnownCharset(name)) << name;
    EXPECT_FALSE(CharsetToUtf8("x", name).has_value()) << name;
    EXPECT_EQ(BytesToUtf8("\xC4\xE0 yes", name), "Да yes") << name;
  }
  EXPECT_FALSE(IsKnownCharset(std::string(100000, 'x')));
  EXPECT_EQ(EnsureUtf8("\xC4\xE0"), "Да");
  EXPECT_EQ(EnsureUtf8("Да"), "Да");
  SetLocaleOverride("ja_JP");
  EXPECT_EQ(BytesToUtf8("\x93\xFA", ""), "日");
  SetLocaleOverride("");
}

TEST(Charset, ManyNamesDoNotCrowdOutTheirNeighbours) {
  for (int i = 0; i < 1000; ++i) {
    EXPECT_FALSE(IsKnownCharset("made-up-" + std::to_string(i)));
    ASSERT_EQ(CharsetToUtf8("\xC4\xC1", "koi8-r"), "да");
  }
}

TEST(Charset, EveryByteOfEveryKindOfCharsetGivesValidText) {
  std::string all;
  for (int i = 0; i < 256; ++i) all += static_cast<char>(i);
  for (int i = 255; i >= 0; --i) all += static_cast<char>(i);
  for (const char* name : {"utf-8", "koi8-u", "shift_jis", "iso-2022-jp", "iso-2022-kr", "hz",
                           "gb18030", "big5", "utf-7", "utf-16", "utf-32", "windows-1258",
                           "iso-2022-cn", "imap-mailbox-name", "scsu", "ibm-037", "euc-tw"}) {
    auto text = CharsetToUtf8(all + all, name);
    ASSERT_TRUE(text.has_value()) << name;
    EXPECT_TRUE(IsValidUtf8(*text)) << name;
    EXPECT_GT(CountChars(*text), 200U) << name;
  }
}

TEST(Charset, CharactersAreCountedAndCut) {
  EXPECT_EQ(CountChars("aПр日😀"), 5U);
  EXPECT_EQ(FirstChars("aПр日😀", 3), "aПр");
  EXPECT_EQ(FirstChars("aПр", 3), "aПр");
  EXPECT_EQ(FirstChars("日本", 0), "");
  EXPECT_TRUE(IsValidUtf8("\xEF\xBF\xBF"));
  for (const char* bad : {"\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\x80"}) {
    EXPECT_FALSE(IsValidUtf8(bad));
  }
  EXPECT_FALSE(IsValidUtf8("12345678\xFF"));
  EXPECT_FALSE(IsAscii("12345678\xFF"));
}

TEST(Charset, CaseIsIgnoredInEveryScript) {
  EXPECT_TRUE(EqualIgnoringCase("ПРИВЕТ Ä", "привет ä"));
  EXPECT_FALSE(EqualIgnoringCase("a", "aa"));
  EXPECT_EQ(FoldCase("ΣΑΣ"), FoldCase("σας"));
  EXPECT_EQ(FoldCase("A\xFF"), "a\xFF");
  EXPECT_EQ(AsciiLower("ÄB"), "Äb");
  EXPECT_EQ(AsciiUpper("äb"), "äB");
}

TEST(Charset, Utf16EndsAtItsZero) {
  EXPECT_EQ(Utf16ToUtf8("A\0\x3D\xD8\x00\xDE\0\0B\0"s), "A😀");
  EXPECT_EQ(Utf16ToUtf8("A\0\x3D\xD8"s), "A\xEF\xBF\xBD");
  EXPECT_EQ(Utf16ToUtf8("A\0B"s), "A");
  EXPECT_EQ(Utf16ToUtf8(""), "");
}

}  // namespace
}  // namespace tarnwick::platform
