// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "reading/clean_html.h"

#include <gmock/gmock.h>

#include <algorithm>

namespace tarnwick::reading {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

TEST(CleanHtml, KeepsWhatAPersonReadsAndNothingThatActs) {
  const struct {
    const char* what;
    const char* html;
    const char* clean;
  } kRows[] = {
      {"words and their looks", "<p>a <b>b</b> &lt;c&gt;</p>", "<p>a <b>b</b> &lt;c&gt;</p>"},
      {"a script", "<script>steal()</script>x", "<p>x</p>"},
      {"a script in an attribute", "<p onclick=\"steal()\" style=\"color:white\">x</p>",
       "<p>x</p>"},
      {"a style sheet", "<style>@import 'http://x'</style><link rel=stylesheet href=//x>x",
       "<p>x</p>"},
      {"frames and objects", "<iframe src=http://x>in</iframe><object data=x>in</object>x",
       "<p>x</p>"},
      {"a form", "<form action=http://x><input value=v><button>b</button>x</form>", "x"},
      {"a page that moves on", "<meta http-equiv=refresh content='0;url=http://x'>x", "<p>x</p>"},
      {"another base", "<base href=file:///etc/><a href=passwd>x</a>", "x"},
      {"a picture from elsewhere", "<img src=http://x/1.gif alt=\"a <b>\">", "[a &lt;b&gt;]"},
      {"a picture of a file", "<img src=file:///etc/passwd><img src=\"//x/y\">x", "<p>x</p>"},
      {"a picture of the letter", "<img src='cid:a@b' width=10 onerror=x()>",
       "<img src=\"cid:a@b\" width=\"10\"/>"},
      {"a picture that breaks out", "<img src='cid:\"><a href=x>'>",
       "<img src=\"cid:&quot;&gt;&lt;a href=x&gt;\"/>"},
      {"a background", "<table background=http://x><tr><td>x</table>",
       "<table cellpadding=\"2\"><tr><td>x</td></tr></table>"},
      {"a link", "<a href=\"https://example.org/a?b&amp;c\" target=x>go</a>",
       "<a href=\"https://example.org/a?b&amp;c\">go</a>"},
      {"links that act",
       "<a href='javascript:x()'>1</a><a href='file:///x'>2</a><a href='data:,'>3</a>", "123"},
      {"a link cut by a control", "<a href='http://a\x01.b'>x</a>", "x"},
      {"what is hidden", "<div style='Display : none'>bait</div>x", "<p>x</p>"},
      {"elements without end", "<b><i>x", "<b><i>x</i></b>"},
      {"cells without a table", "<tr><td>x</td></tr>", "<div><div>x</div></div>"},
  };
  for (const auto& row : kRows) EXPECT_EQ(CleanHtml(row.html).html, row.clean) << row.what;
  EXPECT_EQ(CleanHtml("<img src=http://x/1.gif><img src=//y>").remotePictures, 2U);
}

TEST(CleanHtml, SaysWhereALinkLeadsWhenItsWordsSayOtherwise) {
  const struct {
    const char* words;
    const char* target;
    const char* told;  // "" where all is as it says
  } kRows[] = {
      {"www.bank.example", "http://evil.example/bank.example", "evil.example"},
      {"https://bank.example/", "http://bank.example@evil.example/", "evil.example"},
      {"<b>bank</b>.example", "http://bank.example.evil.example", "bank.example.evil.example"},
      {"bank.example", "https://www.bank.example/login", ""},
      {"mail.bank.example", "https://bank.example", ""},
      {"Click here", "http://evil.example", ""},
      {"ann@bank.example", "mailto:ann@bank.example", ""},
      {"bank.example", "mailto:eve@evil.example", "eve@evil.example"},
  };
  for (const auto& row : kRows) {
    CleanedHtml clean =
        CleanHtml("<a href=\"" + std::string(row.target) + "\">" + row.words + "</a>");
    bool isTold = clean.html.find("[leads to " + std::string(row.told) + "]") != std::string::npos;
    EXPECT_EQ(isTold, *row.told != '\0') << clean.html;
    EXPECT_EQ(clean.misleadingLinks, *row.told != '\0' ? 1U : 0U) << row.words;
  }
}

TEST(CleanHtml, WhateverALetterHoldsTheResultStaysSmall) {
  auto many = [](const std::string& text, size_t bytes) {
    std::string all;
    while (all.size() < bytes) all += text;
    return all;
  };
  for (const char* text : {"<table><tr><td>", "<div>", "<td>x", "<b>a</b>", "word ",
                           "<a href=http://x>", "<img src=cid:x>", "<blockquote><p>"}) {
    CleanedHtml clean = CleanHtml(many(text, 3000000));
    EXPECT_TRUE(clean.isCut) << text;
    EXPECT_LT(clean.html.size(), 2000000U) << text;
    EXPECT_LE(std::count(clean.html.begin(), clean.html.end(), '<'), 20000) << text;
    size_t deepest = 0;
    for (size_t at = 0, open = 0; (at = clean.html.find('<', at)) != std::string::npos; ++at) {
      if (clean.html[at + 1] == '/') {
        --open;
      } else if (clean.html[clean.html.find('>', at) - 1] != '/') {
        deepest = std::max(deepest, ++open);
      }
    }
    EXPECT_LE(deepest, 40U) << text;
  }
  EXPECT_THAT(CleanHtml(many("x", 1000)).html, HasSubstr("&#8203;")) << "a place to break the line";
  EXPECT_THAT(CleanHtml("short").html, Not(HasSubstr("&#8203;")));
}

}  // namespace
}  // namespace tarnwick::reading
