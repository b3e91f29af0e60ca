// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/rtf.h"

#include "outlook/little_endian.h"
#include "support/testing.h"

namespace tarnwick::outlook {
namespace {

using namespace std::string_view_literals;

std::string Packed(std::string_view body, uint32_t rawSize, uint32_t kind = 0x75465A4C) {
  std::string bytes;
  PutNumber(bytes, static_cast<uint32_t>(body.size() + 12));
  PutNumber(bytes, rawSize);
  PutNumber(bytes, kind);
  PutNumber(bytes, 0);
  return bytes.append(body);
}

// The worked example of the format's description: "{\rtf1\ansi\ansicpg1252\pard hello world}".
TEST(UnpackRtf, ReadsThePublishedExampleAndRepeatsAnOverlappingRun) {
  constexpr std::string_view kBody =
      "\x03\x00\x0a\x00rcpg125B2\x0a\xf3 hel\x09\x00 bw\x05\xb0ld}\x0a\x80\x0f\xa0"sv;
  EXPECT_EQ(UnpackRtf(Packed(kBody, 43)), "{\\rtf1\\ansi\\ansicpg1252\\pard hello world}\r\n");
  constexpr std::string_view kRun = "\x82W\x0c\xf8XYZWX\x0d\xfe"sv;
  EXPECT_THAT(UnpackRtf(Packed(kRun, 0x1000)).value_or(""), StartsWith("WWWWWWWWWWW"));
}

TEST(UnpackRtf, TakesOddInput) {
  EXPECT_FALSE(UnpackRtf("").has_value());
  EXPECT_FALSE(UnpackRtf("LZFu").has_value());
  EXPECT_FALSE(UnpackRtf(Packed("x", 1, 0x12345678)).has_value());
  EXPECT_EQ(UnpackRtf(Packed("{\\rtf1 a}", 9, 0x414C454D)), "{\\rtf1 a}");
  EXPECT_EQ(UnpackRtf(Packed("{\\rtf1 a}", 0xFFFFFFFF, 0x414C454D)), "{\\rtf1 a}");
  EXPECT_EQ(UnpackRtf(Packed(std::string("\x01\x0c", 2), 9)), "");  // half a reference
}

struct Row {
  const char* name;
  std::string rtf;
  RtfContent::Kind kind;
  std::string text;
};
void PrintTo(const Row& row, std::ostream* out) {
  *out << row.name;
}

class ReadRtfTable : public ::testing::TestWithParam<Row> {};

TEST_P(ReadRtfTable, GivesTheText) {
  RtfContent content = ReadRtf(GetParam().rtf);
  EXPECT_EQ(content.kind, GetParam().kind);
  EXPECT_EQ(content.text, GetParam().text);
}

constexpr auto kHtml = RtfContent::Kind::kHtml;
constexpr auto kText = RtfContent::Kind::kText;
constexpr auto kRich = RtfContent::Kind::kRichText;

INSTANTIATE_TEST_SUITE_P(
    Bodies, ReadRtfTable,
    ::testing::Values(
        Row{"html_tags_and_their_rtf_twins",
            "{\\rtf1\\ansi\\ansicpg1252\\fromhtml1 \\deff0{\\fonttbl{\\f0\\fswiss Arial;}}"
            "{\\*\\htmltag19 <html>}{\\*\\htmltag50 <b>}\\htmlrtf {\\b \\htmlrtf0 Bold"
            "\\htmlrtf }\\htmlrtf0 {\\*\\htmltag58 </b>}{\\*\\htmltag241 <br>\\par }"
            "{\\*\\mhtmltag84 <a href=\"x\">}caf\\'e9\\~{\\*\\htmltag84 &lt;}\\htmlrtf <\\htmlrtf0 "
            "{\\*\\htmltag27 </html>}}",
            kHtml, "<html><b>Bold</b><br>\r\ncaf\xC3\xA9&nbsp;&lt;</html>"},
        Row{"html_in_a_cyrillic_font",
            "{\\rtf1\\ansi\\ansicpg1251\\fromhtml1{\\fonttbl{\\f0 Arial;}{\\f1\\fcharset204 A;}}"
            "\\f1 \\'cf\\'f0\\f0\\'e8}",
            kHtml, "При"},
        Row{"japanese_whose_second_bytes_are_letters",
            "{\\rtf1\\ansi\\ansicpg932\\fromhtml1 \\'83e\\'83X\\'83g}", kHtml, "テスト"},
        Row{"plain_text_in_disguise",
            "{\\rtf1\\ansi\\fromtext \\fbidi{\\fonttbl{\\f0 Courier;}}\\f0 one\\par\r\ntwo\\{\\}}",
            kText, "one\r\ntwo{}"},
        Row{"rich_text_loses_its_formatting",
            "{\\rtf1\\ansi{\\fonttbl{\\f0 A;}}{\\colortbl;\\red0;}{\\*\\generator "
            "G;}{\\info{\\title "
            "T}}\\pard\\b Hello\\b0  {\\i there}\\emdash{\\pict\\pngblip 89504e}\\bin3 }{}end}",
            kRich, "Hello there—end"},
        Row{"unicode_with_its_replacements",
            "{\\rtf1\\uc1 \\u1055?\\u-10179?\\u-8704?\\uc0\\u1056 x\\u0 y}", kRich,
            "\xD0\x9F\xF0\x9F\x98\x80\xD0\xA0xy"},
        Row{"plain_goes_back_to_the_default_font",
            "{\\rtf1\\ansi\\ansicpg1251\\deff0{\\fonttbl{\\f0 A;}{\\f1\\fcharset161 B;}}"
            "\\f1 \\'e1\\plain \\'e1}",
            kRich, "\xCE\xB1\xD0\xB1"},
        Row{"broken_off_anywhere", "{\\rtf1 a\\'4{\\u", kRich, "a4"},
        Row{"more_closed_than_opened", "}}}a\\", kRich, "a"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(ReadRtf, TakesDeepNestingAndHugeNumbers) {
  std::string rtf(200'000, '{');
  rtf += "\\bin99999999999999999999 ";
  EXPECT_EQ(ReadRtf(rtf).text, "");
  EXPECT_EQ(ReadRtf("{\\rtf1\\u99999999999 \\f-99999999999 \\uc-5 a}").kind, kRich);
}

}  // namespace
}  // namespace tarnwick::outlook
