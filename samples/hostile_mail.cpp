// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/hostile_mail.h"

#include <array>
#include <random>

namespace tarnwick::samples {

namespace {

using namespace std::string_literals;

constexpr const char* kInjection = "x'); DELETE * FROM Email; -- \" # [a] %_";

// A letter whose headers are these, each ended.
std::string RawMail(const std::string& headers, const std::string& body = "text\r\n") {
  return "From: a@b.test\r\n" + headers + "\r\n" + body;
}
std::string Subject(const std::string& value) {
  return RawMail("Subject: " + value + "\r\n");
}
std::string Dated(const std::string& value) {
  return RawMail("Subject: s\r\nDate: " + value + "\r\n");
}
std::string Encoded(const std::string& encoding, const std::string& body) {
  return RawMail("Subject: s\r\nContent-Transfer-Encoding: " + encoding + "\r\n", body);
}
std::string Charset(const std::string& name, const std::string& body) {
  return RawMail("Subject: s\r\nContent-Type: text/plain; charset=" + name + "\r\n", body);
}
std::string Html(const std::string& html) {
  return RawMail("Subject: s\r\nContent-Type: text/html\r\n", html);
}
std::string Parts(const std::string& parts) {
  return RawMail("Subject: s\r\nContent-Type: multipart/mixed; boundary=b\r\n", parts);
}
std::string Attached(const std::string& name) {
  return Parts(
      "--b\r\nContent-Type: text/plain\r\n\r\ntext\r\n--b\r\nContent-Type: "
      "application/octet-stream; name=\"" +
      name + "\"\r\n\r\nAAAA\r\n--b--\r\n");
}
std::string Inline(const std::string& name) {
  return RawMail("Subject: s\r\n", "begin 644 " + name + "\r\n#0V%T\r\n`\r\nend\r\n");
}

// As often as fits size bytes.
std::string Filled(const std::string& piece, size_t size) {
  std::string text;
  text.reserve(size + piece.size());
  while (text.size() < size) text += piece;
  return text;
}

// Letters of which no three are likelier than others.
std::string Scribbled(size_t size) {
  std::mt19937 random(1);
  std::string text;
  text.reserve(size + 2);
  while (text.size() < size) {
    text += static_cast<char>(' ' + random() % 95);
    if (text.size() % 72 == 70) text += "\r\n";
  }
  return text;
}

void AddTexts(std::vector<HostileKind>& kinds) {
  const std::string injection = kInjection;
  kinds.push_back({"statement in the subject", Subject(injection), {{"Subject", injection}}});
  kinds.push_back({"statement in the sender",
                   "From: \"" + injection + "\" <'@x';--@b>\r\nSubject: s\r\n\r\nt\r\n",
                   {{"Subject", "s"}}});
  kinds.push_back({"statement in a recipient",
                   RawMail("Subject: s\r\nTo: x'); DROP <a'b@c>\r\n"),
                   {{"to", "x'); DROP<a'b@c>"}}});
  kinds.push_back({"statement in an attachment's name",
                   Attached("a'); DELETE * FROM Email;.txt"),
                   {{"files", "a'); DELETE * FROM Email;.txt"}}});
  kinds.push_back({"statement in the charset",
                   Charset("\"x'); --\"", "text\r\n"),
                   {{"Charset", "x');"}, {"body", "text\r\n"}}});
  kinds.push_back(
      {"statement in the encoding", Encoded("x'); DELETE", "text\r\n"), {{"body", "text\r\n"}}});
  kinds.push_back({"statement in an encoded word",
                   Subject("=?utf-8?Q?=27)=3B_DELETE_*?="),
                   {{"Subject", "'); DELETE *"}}});
  kinds.push_back({"statement in the importance",
                   RawMail("Subject: s\r\nImportance: '\"--\r\n"),
                   {{"EmailImportance", "'\"--"}}});
  kinds.push_back({"header in an encoded word",
                   Subject("=?utf-8?Q?a=0D=0ATo:_evil=40x?="),
                   {{"to count", "0"}}});
  kinds.push_back(
      {"header behind a lone carriage return", Subject("a\rTo: evil@x"), {{"to count", "0"}}});
  kinds.push_back({"zero bytes in headers",
                   RawMail("Subject: a\0b\r\nTo: c\0d@x\r\n"s),
                   {{"Subject", "a\0b"s}, {"to count", "1"}}});
  kinds.push_back(
      {"zero bytes in the body", RawMail("Subject: s\r\n", "a\0b\r\n"s), {{"body", "a\0b\r\n"s}}});
  kinds.push_back({"nothing but zero bytes", std::string(500, '\0'), {}, true});
  kinds.push_back({"control characters",
                   Subject("a\x1B]0;title\x07\x7F"),
                   {{"Subject", "a\x1B]0;title\x07\x7F"}}});
  kinds.push_back({"text that turns its direction",
                   Subject("=?utf-8?Q?a=E2=80=AEgpj.exe?="),
                   {{"Subject", "a\u202Egpj.exe"}}});
  kinds.push_back({"broken UTF-8", Charset("utf-8", "a\xC3(\xF8\xFF\xED\xA0\x80z\r\n")});
  kinds.push_back({"overlong UTF-8", Subject("=?utf-8?Q?=C0=AF=E0=80=AF?=")});
  kinds.push_back(
      {"a charset nobody knows", Charset("x-none-such", "caf\xE9\r\n"), {{"body", "café\r\n"}}});
  kinds.push_back(
      {"a charset that lies", Charset("us-ascii", "caf\xE9\r\n"), {{"body", "café\r\n"}}});
  kinds.push_back({"UTF-16 in the name only", Charset("utf-16", "text\r\n")});
  kinds.push_back({"an escape sequence cut off", Charset("iso-2022-jp", "\x1B$B\x46\r\n")});
  kinds.push_back({"UTF-7 that hides markup",
                   Charset("utf-7", "+ADw-script+AD4-x\r\n"),
                   {{"body", "<script>x\r\n"}}});
}

void AddHeaders(std::vector<HostileKind>& kinds) {
  kinds.push_back(
      {"every header twice",
       RawMail("Subject: first\r\nSubject: second\r\nTo: a@b\r\nTo: c@d\r\nFrom: x@y\r\n"),
       {{"Subject", "first"}, {"to", "a@b<a@b>"}, {"AddressFrom", "a@b.test"}}});
  kinds.push_back({"no header at all", "just text\r\n", {}, true});
  kinds.push_back({"no end of the headers", "Subject: s\r\nFrom: a@b", {{"Subject", "s"}}});
  kinds.push_back({"line ends of another system",
                   "From: a@b\nSubject: s\n\nx\n",
                   {{"Subject", "s"}, {"body", "x\r\n"}}});
  kinds.push_back({"an empty sender", "From: <>\r\nSubject: s\r\n\r\nx\r\n", {{"Subject", "s"}}});
  kinds.push_back(
      {"addresses without an end", RawMail("Subject: s\r\nTo: <<<<@@@@,,,,\"\"\"\r\n")});
  kinds.push_back({"an encoded word in an encoded word",
                   Subject("=?utf-8?Q?=3D=3Futf-8=3FQ=3Fa=3F=3D?="),
                   {{"Subject", "=?utf-8?Q?a?="}}});
  kinds.push_back({"an encoded word without an end",
                   Subject("=?utf-8?B?SGVsbG8"),
                   {{"Subject", "=?utf-8?B?SGVsbG8"}}});
  for (const auto& [name, value, date] : std::vector<std::array<const char*, 3>>{
           {"a date of the year 9999", "31 Dec 9999 23:59:59", "9999-12-31 23:59:59"},
           {"a date beyond all years", "5 Jan 99999999999999999999 10:00:00", ""},
           {"the 31st of February", "31 Feb 2004 10:00:00", "2004-03-02 10:00:00"},
           {"hour 99", "5 Jan 2004 99:99:99", "2004-01-05 00:00:00"},
           {"a zone beyond the day", "5 Jan 2004 10:00:00 +99999999999999999999", ""},
           {"the year 0", "5 Jan 0000 10:00:00 +0000", "2000-01-05 10:00:00"},
           {"more words than a date has", "1 2 3 4 5 6 7 8 9 10 11 12", ""},
           {"no word of a date", "soon", "2020-06-15 12:00:00"}}) {
    HostileKind kind{name, Dated(value)};
    if (*date != '\0') kind.expected.emplace_back("CreationTime", date);
    kinds.push_back(std::move(kind));
  }
}

void AddFiles(std::vector<HostileKind>& kinds) {
  for (const char* name : {"../../../../etc/passwd", "/etc/passwd", "C:\\\\Windows\\\\evil.exe",
                           "..", "a/../../b", "CON.txt", "x.txt::$DATA"}) {
    std::string shown = name;
    if (size_t at = shown.find("\\\\"); at != std::string::npos) shown = "C:\\Windows\\evil.exe";
    kinds.push_back({"a path for an attachment's name", Attached(name), {{"files", shown}}});
    kinds.push_back({"a path for an inline file's name", Inline(name)});
  }
  kinds.push_back({"a name of a thousand letters", Inline(std::string(1000, 'n') + ".txt")});
  kinds.push_back({"a name of blanks", Attached("   ")});
  kinds.push_back({"broken base64", Encoded("base64", "SGV!!sbG8*\xFF=\r\n=A==B\r\n")});
  kinds.push_back(
      {"broken quoted-printable", Encoded("quoted-printable", "a=ZZ=\r\n=4=\r\nb=\r\n")});
  kinds.push_back(
      {"an inline file without an end", RawMail("Subject: s\r\n", "begin 644 a.txt\r\n#0V%T\r\n")});
  kinds.push_back({"a boundary that is everywhere",
                   RawMail("Subject: s\r\nContent-Type: multipart/mixed; boundary=\"\"\r\n",
                           "--\r\ntext\r\n----\r\n")});
  kinds.push_back(
      {"a container that holds itself",
       Parts("--b\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\n\r\nt\r\n")});
  kinds.push_back({"a script",
                   Html("<body><script>evil()</script><p onclick='x'>a</p></body>"),
                   {{"body", "a"}}});
  kinds.push_back({"a picture from elsewhere",
                   Html("<body>a<img src='http://x.test/p.gif'><iframe src='file:///etc/passwd'>"
                        "</iframe></body>"),
                   {{"body", "a"}}});
  kinds.push_back(
      {"an entity that names a file",
       Html("<!DOCTYPE html [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><body>a&x;</body>")});
  kinds.push_back({"entities that multiply",
                   Html("<!DOCTYPE html [<!ENTITY a 'xxxxxxxxxx'><!ENTITY b '&a;&a;&a;&a;&a;&a;'>"
                        "<!ENTITY c '&b;&b;&b;&b;&b;&b;&b;'>]><body>a&c;&c;&c;</body>")});
}

void AddSized(std::vector<HostileKind>& kinds, size_t size) {
  auto add = [&](const char* name, std::string raw,
                 std::vector<std::pair<std::string, std::string>> expected = {}) {
    kinds.push_back({name, std::move(raw), std::move(expected), false, true});
  };
  const std::string multipart =
      "From: a@b\r\nSubject: s\r\nContent-Type: multipart/mixed; "
      "boundary=b\r\n\r\n";
  add("headers without end", RawMail("Subject: s\r\n" + Filled("X-Header: x\r\n", size)),
      {{"Subject", "s"}, {"body", "text\r\n"}});
  add("a folded subject", RawMail("Subject: s\r\n" + Filled(" f\r\n", size)));
  add("a long subject", Subject(std::string(size, 's')), {{"Subject", std::string(size, 's')}});
  add("a long line", RawMail("Subject: s\r\n", std::string(size, 'x') + "\r\n"),
      {{"body length", std::to_string(size + 2)}});
  add("empty lines", RawMail("Subject: s\r\n", Filled("\r\n", size) + "x\r\n"));
  add("recipients", RawMail("Subject: s\r\nTo: " + Filled("a@b, ", size) + "c@d\r\n"),
      {{"to count", "100"}});
  add("copies", RawMail("Subject: s\r\nCc: " + Filled("a@b, ", size) + "c@d\r\n"),
      {{"cc count", "100"}});
  add("recipients, a line each",
      RawMail("Subject: s\r\nTo: " + Filled("a@b,\r\n", size) + "c@d\r\n"), {{"to count", "100"}});
  add("stations on its way",
      RawMail("Subject: s\r\n" + Filled("Received: by x; 5 Jan 2004 10:00:00\r\n", size)),
      {{"ReceivedTime", "2004-01-05 10:00:00"}});
  add("encoded words", Subject(Filled("=?utf-8?Q?a?= ", size)));
  add("beginnings of encoded words", Subject(Filled("=?utf-8?Q?", size)));
  add("ends and beginnings of encoded words",
      Subject(Filled("?=", size / 2) + Filled("=?", size / 2)));
  add("one encoded word", Subject("=?utf-8?B?" + std::string(size, 'A') + "?="));
  add("parameters",
      RawMail("Subject: s\r\nContent-Type: text/plain" + Filled("; a=b", size) + "\r\n"));
  add("pieces of a name",
      RawMail("Subject: s\r\nContent-Type: application/x" + Filled("; name*1=x", size) + "\r\n"));
  add("boundaries", multipart + Filled("--b\r\n", size));
  add("parts", multipart + Filled("--b\r\nContent-Type: text/plain\r\n\r\nx\r\n", size));
  add("containers in containers",
      multipart + Filled("--b\r\nContent-Type: multipart/mixed; boundary=b\r\n\r\n", size));
  add("letters in letters",
      multipart + Filled("--b\r\nContent-Type: message/rfc822\r\n\r\n", size));
  add("attachments",
      multipart + Filled("--b\r\nContent-Type: image/gif; name=a\r\n\r\nAAAA\r\n", size));
  add("inline files",
      RawMail("Subject: s\r\n", Filled("begin 644 a\r\n#0V%T\r\n`\r\nend\r\n", size)));
  add("beginnings of inline files",
      RawMail("Subject: s\r\n", Filled("begin 644 a\r\n#0V%T\r\n", size)));
  add("base64", Encoded("base64", Filled("SGVsbG8gd29ybGQhISEh\r\n", size)));
  add("quoted-printable", Encoded("quoted-printable", Filled("=3D=\r\n", size)));
  add("depth of markup", Html("<body>" + Filled("<div>", size) + "x"));
  add("tables in tables", Html("<body>" + Filled("<table><tr><td>", size) + "x"));
  add("attributes", Html("<body><p " + Filled("a='b' ", size) + ">x"), {{"body", "x"}});
  add("entities", Html("<body>" + Filled("&amp;&#8364;&none;", size)));
  add("open comments", Html("<body>x" + Filled("<!--", size)), {{"body", "x"}});
  add("open tags", Html("<body>x" + Filled("<a b='", size)));
  add("line ends of one kind", RawMail("Subject: s\r\n", Filled("x\r", size)));
  add("text that never repeats", RawMail("Subject: s\r\n", Scribbled(size)));
  add("zero bytes", RawMail("Subject: s\r\n", std::string(size, '\0')));
  add("bytes of no charset", Charset("utf-8", Filled("\xFF\xFE\x80", size)));
  add("a charset with states", Charset("iso-2022-jp", Filled("\x1B$B\x1B(B", size)));
}

// Where the words of a grammar stand in a letter.
struct Grammar {
  const char* name;
  std::string before;
  std::string after;
  std::vector<const char*> words;
};

Grammar InHeader(const char* name, std::vector<const char*> words) {
  return {name, "From: a@b.test\r\nSubject: s\r\n" + std::string(name) + ": ", "\r\n\r\ntext\r\n",
          std::move(words)};
}
Grammar InBody(const char* name, const std::string& headers, std::vector<const char*> words) {
  return {name, RawMail("Subject: s\r\n" + headers, ""), "\r\n", std::move(words)};
}

const std::vector<Grammar>& Grammars() {
  const std::vector<const char*> markup = {"<",
                                           "<!",
                                           "<!x",
                                           "<!-",
                                           "<!--",
                                           "<!-->",
                                           "-->",
                                           "<![",
                                           "<![if",
                                           "<![CDATA[",
                                           "<!DOCTYPE ",
                                           "<?",
                                           "<?x",
                                           "</",
                                           "</x",
                                           "</x>",
                                           "<x",
                                           "<x ",
                                           "<x>",
                                           "<x/>",
                                           "<x y=",
                                           "<x y='",
                                           "<x y='>",
                                           "\"",
                                           "'",
                                           "=",
                                           ">",
                                           "&",
                                           "&#",
                                           "&#x",
                                           "&#1;",
                                           "&amp",
                                           "&x;",
                                           "<p>",
                                           "</p>",
                                           "<br>",
                                           "<b>",
                                           "<b><i></b>",
                                           "<a>",
                                           "<td>",
                                           "<table>",
                                           "<li>",
                                           "<pre>\n",
                                           "<option>",
                                           "<script>",
                                           "<style>",
                                           "<title>",
                                           "<textarea>",
                                           "<head>",
                                           "<body>",
                                           "</body>",
                                           "<html>",
                                           "</html>",
                                           "<o:p>",
                                           "<div hidden>",
                                           "<form><b>",
                                           "<font style=display:none>",
                                           "\xC2\xA0",
                                           " ",
                                           "\n",
                                           "\t"};
  const std::vector<const char*> parts = {"--b\r\n",
                                          "--b--\r\n",
                                          "--b ",
                                          "b",
                                          "Content-Type\r\n",
                                          "Content-Type:\r\n",
                                          "Content-Type: text/html\r\n",
                                          "Content-Type text/html\r\n",
                                          "Content-Type=html\r\n",
                                          "Content-Type: multipart/x; boundary=b\r\n\r\n",
                                          "--b\r\nContent-Type: message/rfc822\r\n\r\n",
                                          "--b\r\nX: y\r\n",
                                          "--b\r\n x\r\n",
                                          "--b\r\n\r\n",
                                          "Content-",
                                          "\r\n",
                                          " \r\n",
                                          "x: y\r\n",
                                          "begin 644 a\r\n",
                                          "begin\r\n",
                                          "end\r\n",
                                          "`\r\n",
                                          "--b\r\nContent-Disposition: inline\r\n"};
  const std::vector<const char*> parameters = {";",
                                               "=",
                                               "\"",
                                               "\\",
                                               "\\\"",
                                               "'",
                                               "*",
                                               "; a",
                                               "; a=",
                                               "; a=\"",
                                               "; name*=",
                                               "; name*0=x",
                                               "; name*9*=''%41",
                                               "; charset=",
                                               "; boundary=",
                                               "charset",
                                               "boundary",
                                               " ",
                                               "\r\n ",
                                               "%",
                                               "=?",
                                               "?=",
                                               "=?a?q?b?=",
                                               "plain",
                                               "html",
                                               "content-transfer-encoding:"};
  const std::vector<const char*> addresses = {
      "<",  ">",     "@",      ",",       ";",    ":",   "\"", "'",  "\\",        "(",
      ")",  "<@",    "@>",     "<@>",     "<@>,", "\"<", "(@", "@(", "a@b ",      "a@b,",
      ", ", ",\r\n", ",\r\n ", ",\r\na:", " <",   "\t",  "=?", "?=", "=?a?b?c?=", "\xE9"};
  const std::vector<const char*> dates = {
      "1",  "1 ",   ":",   ": ",     "-",     "- ", "+", "+1 ", ",",     ", ",       ";",
      "; ", "Jan ", "am ", "1:1:1 ", "1:1:1", "\t", ".", "(",   "\r\n ", "\xC3\xA9 "};
  static const std::vector<Grammar> grammars = {
      InBody("markup", "Content-Type: text/html\r\n", markup),
      InBody("markup in a body", "Content-Type: text/html\r\n\r\n<body>", markup),
      InBody("parts", "Content-Type: multipart/mixed; boundary=b\r\n", parts),
      InBody("parts in a single body", "", parts),
      InBody("undeclared parts", "Content-Type: multipart/mixed\r\n", parts),
      InBody("base64", "Content-Transfer-Encoding: base64\r\n",
             {"A", "=", "A=", "A\r\n", "=\r\n", "-", " ", "A A\r\n", "\r\n"}),
      InBody("quoted-printable", "Content-Transfer-Encoding: quoted-printable\r\n",
             {"=", "=\r\n", "=4", "=41", " ", " \r\n", "= ", "A=\r\n"}),
      InHeader("Content-Type", parameters),
      InHeader("Content-Disposition", parameters),
      InHeader("To", addresses),
      InHeader("Cc", addresses),
      InHeader("Bcc", addresses),
      {"From", "Subject: s\r\nFrom: ", "\r\n\r\ntext\r\n", addresses},
      {"Subject", "From: a@b.test\r\nSubject: ", "\r\n\r\ntext\r\n", addresses},
      InHeader("Date", dates),
      InHeader("Received", dates),
  };
  return grammars;
}

}  // namespace

size_t RepeatedWordCount() {
  size_t count = 0;
  for (const Grammar& grammar : Grammars()) count += grammar.words.size();
  return count;
}

HostileKind RepeatedWord(size_t number, size_t size) {
  auto grammar = Grammars().begin();
  for (; number >= grammar->words.size(); ++grammar) number -= grammar->words.size();
  std::string word = grammar->words[number];
  std::string shown;
  for (char c : word) {
    shown += c == '\r' ? "\\r" : c == '\n' ? "\\n" : c == '\t' ? "\\t" : std::string(1, c);
  }
  HostileKind kind{grammar->name + (" " + shown),
                   grammar->before + Filled(word, size) + grammar->after};
  kind.isSized = true;
  return kind;
}

std::vector<HostileKind> HostileKinds(size_t size) {
  std::vector<HostileKind> kinds;
  AddTexts(kinds);
  AddHeaders(kinds);
  AddFiles(kinds);
  AddSized(kinds, size);
  return kinds;
}

}  // namespace tarnwick::samples
