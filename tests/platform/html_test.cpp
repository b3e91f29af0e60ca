// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/html.h"

#include "platform/charset.h"
#include "support/testing.h"

namespace tarnwick::platform {
namespace {

TEST(HtmlToPlainText, TheBodyIsRenderedAsLines) {
  const Case rows[] = {
      {"inline elements join", "a<b>b</b><i>c</i> d", "abc d"},
      {"runs of blanks are one", "  a \r\n\t b  ", "a b"},
      {"blank at an element's edge", "a <b> b</b>c", "a bc"},
      {"line break", "a<br>b<BR/><br>c", "a\r\nb\r\n\r\nc"},
      {"blocks", "a<div>b</div>c<div><div>d</div></div>", "a\r\nb\r\nc\r\nd"},
      {"paragraphs stand apart", "<p>a</p><p>b</p>c", "a\r\n\r\nb\r\n\r\nc"},
      {"unclosed paragraphs", "<p>a<p>b", "a\r\n\r\nb"},
      {"empty paragraphs make no lines", "<p>a</p><p></p><p> </p><p>b</p>", "a\r\n\r\nb"},
      {"list", "x<ul><li>a<li>b</ul>y", "x\r\na\r\nb\r\ny"},
      {"headings and rules", "<h1>a</h1>b<hr>c", "a\r\nb\r\nc"},
      {"table", "<table><tr><td>a</td><td>b</td></tr><tr><th>c<th>d</table>", "a\tb\r\nc\td"},
      {"pre keeps its own", "<pre>\na  b\n\n c</pre>d", "a  b\r\n\r\n c\r\nd"},
      {"no-break spaces", "a&nbsp;&nbsp;b \xC2\xA0 c", "a  b   c"},
      {"references", "&lt;&amp;&gt;&quot;&eacute;&#1087;&#x43F;", "<&>\"éпп"},
      {"references of windows-1252", "&#150;&#147;&#148;&#128;", "–“”€"},
      {"scripts and styles", "a<script>if (a<b) x='</p>';</script><style>p {}</style>b", "ab"},
      {"comments", "a<!-- <p>no</p> -->b", "ab"},
      {"conditional comments", "a<!--[if mso]><p>no<![endif]-->b<![if !x]>c<![endif]>d", "abcd"},
      {"declaration without an end", "a<!b", "a<!b"},
      {"hidden by attribute", "a<span hidden>no</span>b", "ab"},
      {"hidden by style", "a<div style='DISPLAY : none'>no<b>no</b></div>b", "ab"},
      {"a script's title is none", "a<iframe>no</iframe>b", "ab"},
      {"unclosed markup", "a<b>b<a href=\"x", "ab"},
      {"text behind the body", "a</body></html>b", "a\r\n\r\nb"},
      {"letters outside ASCII", "<p>Привет, 日本</p>", "Привет, 日本"},
      {"nul", std::string("a\0b", 3), "a b"},
  };
  for (const Case& row : rows)
    EXPECT_EQ(HtmlToPlainText("<html><body>" + row.given), row.expected) << row.what;
}

TEST(HtmlToPlainText, OnlyADeclaredBodyCounts) {
  const std::pair<const char*, const char*> kRows[] = {
      {"", ""},
      {" \r\n\t", ""},
      {"<p>a</p>", ""},
      {"plain", ""},
      {"<!-- <body> -->a<img alt='<body>'><script>'<body>'</script>", ""},
      {"<html><frameset><frame src=x></frameset></html>", ""},
      {"<HTML><HEAD><TITLE>t</TITLE></HEAD><BODY class=x>a</BODY></HTML>", "a"},
      {"<head><title>t</title><style>s</style><body>a", "a"},
      {"<head><title>t</title><o:p>a</o:p><body>b", "a\r\nb"},
      {"<meta http-equiv=Content-Type content='text/html; charset=koi8-r'><body>ä", "ä"}};
  for (const auto& [html, text] : kRows) EXPECT_EQ(HtmlToPlainText(html), text) << html;
}

TEST(ShownText, IsWhatABrowserShowsOfADocumentOfAnyShape) {
  const Case rows[] = {
      {"a fragment", "<p>a</p>b", "a\r\n\r\nb"},
      {"no markup", "plain", "plain"},
      {"a BODY in a comment alone", "<!-- <body> --><font>a</font>", "a"},
      {"no BODY behind the head", "<html><head><title>t</title></head>a", "a"},
      {"an open head, then an element", "<html><head><style>s</style><font>a</font>", "a"},
      {"an open head, then a strange element", "<html><head><title>t</title><o:p>a</o:p>", "a"},
      {"an open head, then text", "<html><head><meta name=x>a<body>b", "a\r\n\r\nb"},
      {"an open head, then the body", "<html><head><title>t</title><body>a", "a"},
      {"nothing but a head", "<html><head><title>t</title></head></html>", ""},
      {"only a picture", "<html><body><img src=x></body></html>", ""},
  };
  for (const Case& row : rows) EXPECT_EQ(ShownText(row.given), row.expected) << row.what;
}

// Each of these was quadratic, or endless, in one parser or another.
TEST(HtmlToPlainText, HostileDocumentsTakeLinearTime) {
  auto repeated = [](std::string_view piece, size_t count) {
    std::string text;
    for (size_t i = 0; i < count; ++i) text += piece;
    return text;
  };
  constexpr size_t kMany = 30000;
  std::string attributes;
  for (size_t i = 0; i < kMany; ++i) attributes += " a" + std::to_string(i);
  const Case rows[] = {
      {"deep nesting", repeated("<div>", kMany) + "deep", "deep"},
      {"deep nesting with ends", repeated("<b>", kMany) + "x" + repeated("</b>", kMany), "x"},
      {"ends of nothing", repeated("<b>", 400) + repeated("</i>", kMany) + "x", "x"},
      {"bodies", repeated("<body>", kMany) + "x", "x"},
      {"attributes", "<p" + attributes + ">x", "x"},
      {"attributes behind what opens a comment", "<!--><p" + attributes + " -->x", "x"},
      {"attributes behind what opens a comment, 2", "<!---><p" + attributes + " -->x", "x"},
      {"quoted attributes", "<p" + repeated("\"a\"", kMany) + ">x", "x"},
      {"open comments", "x" + repeated("<!--", kMany), "x"},
      {"open references", "x" + repeated("&", kMany), "x" + repeated("&", kMany)},
      {"blanks", "x" + repeated(" ", kMany) + "y", "x y"},
      {"breaks of an empty text", repeated("<p>", kMany) + "x", "x"},
      // Long enough to pass every limit of time if each is searched to the document's end.
      {"open declarations", repeated("<!x aaaaaaaaaaaaa", 33 * kMany),
       repeated("<!x aaaaaaaaaaaaa", 33 * kMany)},
  };
  for (const Case& row : rows)
    EXPECT_TRUE(HtmlToPlainText("<body>" + row.given) == row.expected) << row.what;
  for (const char* piece :
       {"<table><tr><td>", "<li>", "</p>", "<", "<a b='", "<![CDATA[", "<?x "}) {
    SCOPED_TRACE(piece);
    EXPECT_TRUE(IsValidUtf8(HtmlToPlainText("<body>" + repeated(piece, kMany))));
  }
}

}  // namespace
}  // namespace tarnwick::platform
