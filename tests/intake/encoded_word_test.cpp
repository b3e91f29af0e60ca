// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/encoded_word.h"

#include "intake/transfer_decoding.h"
#include "support/testing.h"

namespace tarnwick::intake {
namespace {

using namespace std::string_literals;

std::string Decoded(std::string_view text, std::string_view charset = {}) {
  MixedText out;
  Decode(text, out);
  return out.Finish(charset);
}

TEST(EncodedWord, WordsAreUndoneAndTheRestIsKept) {
  const Case rows[] = {
      {"no word", "plain = text? yes", "plain = text? yes"},
      {"text around it", "Re: =?koi8-r?B?8NLJ18XU?= [2]", "Re: Привет [2]"},
      {"Q with blanks as underscores", "=?utf-8?q?a_b=5Fc?=", "a b_c"},
      {"lower-case digits", "=?iso-8859-1?Q?J=f6rg?=", "Jörg"},
      {"windows charset", "=?windows-1251?Q?=CF=F0=E8?=", "При"},
      {"two with text between", "=?utf-8?Q?a?= and =?utf-8?Q?b?=", "a and b"},
      {"blanks between two vanish", "=?utf-8?Q?a?= \t =?koi8-r?Q?=C1?= !", "aа !"},
      {"adjacent without a blank", "=?utf-8?Q?a?==?utf-8?Q?b?=", "ab"},
      {"a character cut in two", "=?utf-8?B?0J/R?= =?UTF-8?B?gNC4?=", "При"},
      {"language suffix", "=?us-ascii*en?Q?hi?=", "hi"},
      {"unknown charset", "=?x-none?Q?hi?=", "hi"},
      {"empty charset", "=??Q?hi?=", "hi"},
      {"unknown letter", "=?utf-8?X?as it is?=", "as it is"},
      {"empty text", "a=?utf-8?Q?\?=b", "ab"},
      {"blanks inside", "=?utf-8?Q?two words?=", "two words"},
      {"base64 that ends with padding", "=?utf-8?B?YQ==?= =?utf-8?B?YmM=?=", "abc"},
      {"one word reaches to the last mark", "=?utf-8?Q?a?= b?=", "a?= b"},
      {"never closed", "=?utf-8?Q?abc", "=?utf-8?Q?abc"},
      {"without a letter", "=?utf-8?abc?=", "=?utf-8?abc?="},
      {"letter too long", "=?utf-8?base64?YQ==?=", "=?utf-8?base64?YQ==?="},
      {"the first never closed", "=?utf-8?Q?a =?utf-8?Q?b?=", "=?utf-8?Q?a b"},
      {"only marks", "=?\?=", "=?\?="},
      {"bad escapes stay", "=?utf-8?Q?a=4=XYb=?=", "a=4=XYb="},
  };
  for (const Case& row : rows) EXPECT_EQ(Decoded(row.given), row.expected) << row.what;
  MixedText out;
  EXPECT_FALSE(Decode("=?utf-8?Q?abc", out));
  EXPECT_TRUE(Decode("=?utf-8?Q?abc?=", out));
}

TEST(EncodedWord, WhatAWordGaveIsNotConvertedAgain) {
  // Plain KOI8-R bytes beside a word of UTF-8: only the bytes take the message's charset.
  EXPECT_EQ(Decoded("\xC1 =?utf-8?B?0LE=?= \xC1", "koi8-r"), "а б а");
}

TEST(MixedText, UnclaimedBytesFindTheirCharset) {
  platform::SetLocaleOverride("ru_RU");
  const struct {
    const char *what, *charset;
    std::string bytes, text;
  } rows[] = {
      {"declared", "koi8-r", "\xC4\xC1", "да"},
      {"declared windows page", "Windows-1251", "\xC4\xE0", "Да"},
      {"undeclared", "", "\xC4\xE0", "Да"},
      {"undeclared UTF-8", "", "Да", "Да"},
      {"unknown", "x-unknown", "\xC4\xE0", "Да"},
      {"us-ascii can't be", "us-ascii", "\xC4\xE0", "Да"},
      {"says Cyrillic, is UTF-8", "windows-1251", "план", "план"},
      {"says Cyrillic, is it", "windows-1251", "\xCD\xB3", "Ні"},
      {"says Thai, is it", "windows-874", "\xC2\xA1\xC2\xA1", "ยกยก"},
      {"says latin-1, is UTF-8", "iso-8859-1", "Grüße", "Grüße"},
      {"says latin-1, is it", "iso-8859-1", "Gr\xFC\xDF\x65", "Grüße"},
      {"says UTF-8, is not", "utf-8", "\xC4\xE0\r\n", "Да\r\n"},
      {"UTF-8 with a foreign footer", "utf-8", "Да\r\n\xC4\xE0", "Да\r\nДа"},
      {"UTF-8, damaged", "utf-8", "Да\xFF", "Да\xEF\xBF\xBD"},
      {"shifted Japanese", "iso-2022-jp", "\x1B$BF|K\\\x1B(B", "日本"},
      {"nul", "koi8-r", "a\0\xC1"s, "a\0а"s},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    MixedText text;
    text.AppendRaw(row.bytes);
    EXPECT_EQ(text.Finish(row.charset), row.text);
  }
  platform::SetLocaleOverride("");
}

TEST(Base64, FoursGiveThreesAndTheRestWhatItHolds) {
  const std::pair<const char*, const char*> kRows[] = {{"SGVsbG8=", "Hello"},
                                                       {"SGVsbG8=\r\n", "Hello"},
                                                       {"SGVs=bG8", "Hello"},
                                                       {"SGVs", "Hel"},
                                                       {"SGV", "He"},
                                                       {"SG", "H"},
                                                       {"S", "H"},
                                                       {"SGVsS", "HelH"},
                                                       {"====", ""}};
  for (const auto& [text, decoded] : kRows) EXPECT_EQ(DecodeBase64(text), decoded) << text;
  EXPECT_EQ(DecodeBase64("SGVs bG8").size(), 6U);  // a blank keeps its place
}

// Of lines with "|" between them.
std::string Body(const char* encoding, std::string_view lines) {
  BodyDecoder decoder(encoding);
  for (size_t end = lines.find('|'); end != std::string_view::npos; end = lines.find('|')) {
    decoder.Line(lines.substr(0, end));
    lines.remove_prefix(end + 1);
  }
  decoder.Line(lines);
  return decoder.Take();
}

TEST(BodyDecoder, LinesBecomeTheBodyThatWasSent) {
  const struct {
    const char *what, *encoding, *lines, *body;
  } rows[] = {
      {"not encoded", "7bit", "a = b| c ", "a = b\r\n c \r\n"},
      {"binary is not base64", "binary", "SGVs", "SGVs\r\n"},
      {"unknown", "x-foo", "=41", "=41\r\n"},
      {"base64 line by line", "BASE64", "SGVs|bG8=", "Hello"},
      {"base64, lines that do not fill fours", "base64", "SGVsb|G8gd29|ybGQ=", "Hello world"},
      {"base64 without padding", "base64", "SGVsbG8", "Hello"},
      {"base64 padded in the middle", "base64", "SGVsbG8=|SGVsbG8=", "HelloHello"},
      {"base64 with blanks around", "base64", " SGVs \t||bG8= ", "Hello"},
      {"base64 with a list's footer", "base64", "SGVsbG8=|a list of lists",
       "Hello\r\na list of lists\r\n"},
      {"quoted-printable", "Quoted-Printable", "a=3Db_c|=C3=A4=|x  |y= ", "a=b_c\r\näx\r\ny"},
      {"bad escapes", "quoted-printable", "50=% =4|=zz", "50=% =4\r\n=zz\r\n"}};
  for (const auto& row : rows) EXPECT_EQ(Body(row.encoding, row.lines), row.body) << row.what;
}

TEST(DecodeFile, LeavesOutWhatStandsBehindThePadding) {
  EXPECT_EQ(DecodeFile("SGVsbG8=SGVs\r\nSGVsbG8=\r\na footer\r\n", "base64"), "HelloHello");
}

}  // namespace
}  // namespace tarnwick::intake
