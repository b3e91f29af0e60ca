// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/mime_body.h"

#include "core/run_state.h"
#include "intake/header_parser.h"
#include "intake/message_text.h"
#include "support/scripted_ui.h"
#include "support/testing.h"

namespace tarnwick::intake {
namespace {

using testing::Lines;

class MimeBody : public ::testing::Test {
 protected:
  MimeBody() {
    core::State().EmailFileFolder = folder_.File("scratch/");
    core::State().LogFile = folder_.File("log");
    platform::MakeFolder(core::State().EmailFileFolder);
  }
  ~MimeBody() override { core::ResetState(); }

  const MailMessage& Parse(const std::string& text) {
    platform::WriteFile(folder_.File("message.eml"), text);
    message_ = MailMessage();
    ParseMessageFile(folder_.File("message.eml"), {"Inbox", "", ""}, nullptr, message_);
    return message_;
  }
  // A multipart message of boundary "b" with these lines behind its headers.
  const MailMessage& ParseParts(const std::string& lines) {
    return Parse("Subject: s\r\nContent-Type: multipart/mixed; boundary=\"b=_1\"\r\n\r\n" +
                 Lines(lines));
  }
  std::vector<std::string> Attachments() const {
    return {message_.Attachments.begin(), message_.Attachments.begin() + message_.AttachCount};
  }
  std::vector<std::string> Files() { return platform::ListFiles(core::State().EmailFileFolder); }
  std::string File(const std::string& name) {
    return platform::ReadFile(core::State().EmailFileFolder + name);
  }

  testing::TempFolder folder_;
  testing::ScriptedUi ui_;
  MailMessage message_;
};

TEST_F(MimeBody, PartsGoWhereTheirKindSays) {
  ParseParts(
      "preamble, not shown|--b=_1|Content-Type: text/plain; charset=koi8-r|"
      "Content-Transfer-Encoding: quoted-printable||=C4=C1 =|a_b||--b=_1|"
      "Content-Transfer-Encoding: base64|Content-Type: text/html; charset=\"utf-8\"||"
      "PGh0bWw+PGJvZHk+0LTQsDwvYm9keT48L2h0bWw+|--b=_1|"
      "Content-Type: application/octet-stream;|\tname=\"=?koi8-r?B?8MzBzg==?=.doc\"|"
      "Content-Transfer-Encoding: base64||AAAA|--b=_1|Content-Type: image/png|"
      "Content-Disposition: attachment;| filename*=utf-8''%D0%B4%D0%B0.png||AAAA|"
      "--b=_1--|epilogue, plain and not shown");
  EXPECT_EQ(message_.IsMultipart, 1);
  EXPECT_EQ(message_.Body, "да a_b\r\n\r\n");
  EXPECT_EQ(message_.HTMLBody, "<html><body>да</body></html>");
  EXPECT_EQ(message_.HTMLCharset, "utf-8");
  EXPECT_EQ(message_.Boundaries[0], "b=_1");
  EXPECT_EQ(Attachments(), (Texts{"План.doc", "да.png"}));
}

TEST_F(MimeBody, NestedContainersAndAttachedMessagesAreWalkedFlat) {
  ParseParts(
      "--b=_1|Content-Type: multipart/alternative;|  boundary=b=_1inner||--b=_1inner||"
      "one|--b=_1inner|Content-Type: text/html||<body>html</body>|--b=_1inner--|no part|"
      "--b=_1|Content-Type: message/rfc822||From: x@y|Content-Transfer-Encoding: base64|"
      "Content-Type: text/plain; charset=koi8-r|X-Mailer: none||xME=|--b=_1|"
      "Content-Type: message/rfc822||Content-Type: text/plain|Subject: y||two|--b=_1--");
  EXPECT_EQ(message_.Body, "one\r\nда\r\ntwo\r\n");
  EXPECT_EQ(message_.HTMLBody, "<body>html</body>\r\n");
  EXPECT_EQ(message_.BoundaryCount, 2);
}

TEST_F(MimeBody, ALineThatBeginsWithContentTypeBeginsAPart) {
  ParseParts(
      "--b=_1|Content-Type: text/plain||first|  CONTENT-TYPE: text/html||<body>second|"
      "content-type of a thing|--b=_1--");
  EXPECT_EQ(message_.HTMLBody, "<body>second\r\n");
  EXPECT_EQ(message_.Body, "first\r\ncontent-type of a thing\r\n");
}

TEST_F(MimeBody, TheEndOfADocumentIsNotLostToABoundaryOnItsLine) {
  ParseParts(
      "--b=_1|Content-Type: text/html||<html><body>a|</HTML>--b=_1|"
      "Content-Type: text/plain||text");
  EXPECT_EQ(message_.HTMLBody, "<html><body>a\r\n</HTML>--b=_1\r\n");
  EXPECT_EQ(message_.Body, "text\r\n");
}

TEST_F(MimeBody, PartHeadersComeInManyShapes) {
  const struct {
    const char *what, *lines, *body, *attachments;
  } rows[] = {
      {"no headers", "--b=_1||text", "text\r\n", ""},
      {"not even an empty line", "--b=_1|some text|more", "some text\r\nmore\r\n", ""},
      {"text that looks like a header", "--b=_1|Content-Type: text/plain|Note: this",
       "Note: this\r\n", ""},
      {"other headers between", "--b=_1|X-A: b|Content-Type: text/plain|Content-ID: <x>||t",
       "t\r\n", ""},
      {"type without a slash", "--b=_1|Content-Type: plain||t", "t\r\n", ""},
      {"text with a file name",
       "--b=_1|Content-Disposition: inline; filename=a.txt|Content-Type: text/plain||t", "",
       "a.txt|"},
      {"text, disposed without a name",
       "--b=_1|Content-Type: text/plain|Content-Disposition: attachment||t", "t\r\n", ""},
      {"a name that says plain",
       "--b=_1|Content-Type: application/msword; name=\"explained plainly.doc\"||AAAA", "",
       "explained plainly.doc|"},
      {"signed container",
       "--b=_1|Content-Type: multipart/signed; protocol=\"application/pgp-signature\";|"
       " boundary=in||--in||t|--in--",
       "t\r\n", ""},
      {"a container with an empty boundary",
       "--b=_1|Content-Type: multipart/mixed; boundary=\"\"||--b=_1||t|u", "t\r\nu\r\n", ""},
      {"attachment without a name", "--b=_1|Content-Type: application/pdf||AAAA", "", "|"},
      {"sound with a name", "--b=_1|Content-Type: audio/wav; name=a.wav||AAAA", "", "a.wav|"},
      {"other kinds are passed over", "--b=_1|Content-Type: text/calendar||BEGIN:V", "", ""},
      {"odd text is better than none", "--b=_1|Content-Type: text/enriched||t", "t\r\n", ""},
      {"name in pieces",
       "--b=_1|Content-Type: image/gif;| name*0*=koi8-r''%C4;| name*1*=%C1;|"
       " name*2=\".gif\"||x",
       "", "да.gif|"},
      {"quotation marks in a later piece of a name",
       "--b=_1|Content-Type: image/gif;| name*0*=utf-8''%D0%B4;| name*1*=koi8-r'en'x.gif||"
       "x",
       "", "дkoi8-r'en'x.gif|"},
      {"windows path and quotes", "--b=_1|Content-Type: image/gif; name=\"C:\\a \\\"b\\\".gif\"||x",
       "", "C:\\a \"b\".gif|"},
      {"missing semicolons", "--b=_1|Content-Type: text/plain charset=koi8-r||\xC4", "д\r\n", ""},
      {"unclosed quotation mark", "--b=_1|Content-Type: image/gif; name=\"a.gif||x", "", "a.gif|"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    ParseParts(row.lines);
    EXPECT_EQ(message_.Body, row.body);
    std::string names;
    for (const std::string& name : Attachments()) names += name + "|";
    EXPECT_EQ(names, row.attachments);
  }
}

TEST_F(MimeBody, ASingleBodyIsDecodedWhereverItsEncodingStands) {
  const struct {
    const char *what, *headers, *body, *text;
  } rows[] = {
      {"quoted-printable after",
       "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: quoted-printable",
       "=D0=B4=\r\n=D0=B0", "да\r\n"},
      {"base64 before",
       "Content-Transfer-Encoding:\r\n base64\r\nContent-Type: text/plain;\r\n\tcharset=koi8-r",
       "xME=\r\n", "да"},
      {"base64 without a type", "Content-Transfer-Encoding: BASE64", "ZGE=", "da"},
      {"bare line feeds", "Content-Transfer-Encoding: base64", "YQpiCg==", "a\r\nb\r\n"},
      {"undeclared", "X: y", "\r\n \r\na\r\n\r\n", "a\r\n\r\n"},
      {"mime text of an unknown kind", "Content-Type: text/x-notes", "a", "a\r\n"},
      {"utf-16", "Content-Type: text/plain; charset=utf-16le\r\nContent-Transfer-Encoding: base64",
       "NAQwBA==", "да"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    Parse("Subject: s\r\n" + std::string(row.headers) + "\r\n\r\n" + row.body);
    EXPECT_EQ(message_.Body, row.text);
  }
}

TEST_F(MimeBody, HtmlWithoutAPlainPartLeavesReadableText) {
  Parse(
      "Content-Type: text/html; charset=windows-1251\r\nSubject: s\r\n\r\n"
      "<html><body>\xC4\xE0</body></html>\r\n");
  EXPECT_EQ(message_.HTMLBody, "<html><body>Да</body></html>\r\n");
  EXPECT_EQ(message_.Body, "Да");
  Parse(
      "Content-Type: text/html\r\nSubject: s\r\n\r\n"
      "<meta http-equiv=Content-Type content=\"text/html; charset=koi8-r\"><p>\xC4\xC1");
  EXPECT_EQ(message_.HTMLCharset, "koi8-r");
  EXPECT_EQ(message_.Body, "да");  // no BODY of its own
  Parse("Subject: s\r\n\r\n<html><body>undeclared</body></html>");
  EXPECT_EQ(message_.Body, "undeclared");
  ParseParts(
      "--b=_1|Content-Type: text/plain|| |\xC2\xA0\t|--b=_1|Content-Type: text/html||"
      "<html><head><title>t</title><font>words</font>");
  EXPECT_EQ(message_.Body, "words");  // the plain part is nothing but blanks, the head is open
  Parse(
      "Subject: s\r\nContent-Type: application/pdf; name=a.pdf\r\n"
      "Content-Transfer-Encoding: base64\r\n\r\nAAAA");
  EXPECT_EQ(message_.Body, "");
  EXPECT_EQ(Attachments(), Texts{"a.pdf"});
}

// "PGI+ZGE8L2I+" is "<b>da</b>".
TEST_F(MimeBody, HtmlIsKnownByItsTypeInWhateverShapeThatComes) {
  const Case rows[] = {
      {"encoding folded into the type",
       "Content-Type: text/html; charset=utf-8\r\n Content-Transfer-Encoding: base64\r\n\r\n"
       "PGI+ZGE8L2I+",
       "<b>da</b>"},
      {"encoding in quotes",
       "Content-Type: text/html\r\nContent-Transfer-Encoding: \"base64\"\r\n\r\nPGI+ZGE8L2I+",
       "<b>da</b>"},
      {"encoding not declared", "Content-Type: text/html\r\n\r\nPGI+\r\nZGE8L2I+\r\n", "<b>da</b>"},
      {"encoding declared in vain",
       "Content-Type: text/html\r\nContent-Transfer-Encoding: 7bit\r\n\r\nPGI+ZGE8L2I+",
       "<b>da</b>"},
      {"no colon",
       "Content-Type text/html\r\nContent-Transfer-Encoding: base64\r\n\r\nPGI+ZGE8L2I+",
       "<b>da</b>"},
      {"type of an old mailer", "Content-Type: text/htm\r\n\r\n<b>da</b>", "<b>da</b>\r\n"},
      {"a tag that begins like a header",
       "Content-Type: text/html\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n"
       "<meta http-equiv=3D=\r\nContent-Type content=3D\"text/html\">=\r\n<b>d=61</b>",
       "<meta http-equiv=\r\nContent-Type content=\"text/html\"><b>da</b>\r\n"},
      {"letters that could be base64", "Content-Type: text/html\r\n\r\nwords", "words\r\n"},
  };
  for (const Case& row : rows) {
    SCOPED_TRACE(row.what);
    ParseParts("--b=_1|" + row.given + "|--b=_1--");
    EXPECT_EQ(message_.HTMLBody, row.expected);
    EXPECT_EQ(message_.Body, std::string(row.expected) == "words\r\n" ? "words" : "da");
  }
}

TEST_F(MimeBody, APictureIsNoText) {
  for (const char* headers :
       {"Content-Type: image/gif", "Content-Type: image/gif; name=a.gif\r\nX: y",
        "Content-Type: audio/wav\r\nContent-Transfer-Encoding: base64",
        "Content-Type: video/mpeg; name=a.mpg\r\nContent-Transfer-Encoding: x-uuencode"}) {
    SCOPED_TRACE(headers);
    Parse("Subject: s\r\n" + std::string(headers) + "\r\n\r\nR0lGODdhAQABAIAAAP\r\n");
    EXPECT_EQ(message_.Body, "");
  }
  Parse(
      "Subject: s\r\nContent-Type: multipart/related\r\n\r\npreamble\r\n--x\r\n"
      "Content-Type: image/gif; name=a.gif\r\n\r\nR0lGODdh\r\n--x--\r\n");
  EXPECT_EQ(message_.Body, "");  // its container does not declare its boundary
  EXPECT_EQ(Attachments(), Texts{"a.gif"});
}

TEST_F(MimeBody, AnInlineFileLeavesTheTextAndIsWrittenOut) {
  Parse(
      Lines("Subject: s||See below|begin 644 note.txt|+:&5L;&\\@=V]R;&0|`|end|Bye|"
            "  BEGIN 600 ../../note.txt|#0V%T| |END"));
  EXPECT_EQ(message_.Body, "See below\r\nBye\r\n");
  EXPECT_EQ(Attachments(), (Texts{"note.txt", "../../note.txt"}));
  Texts files = Files();
  ASSERT_EQ(files.size(), 2U);
  EXPECT_EQ(File("note.txt"), "hello world");
  EXPECT_EQ(platform::ListFiles(folder_.Path()).size(), 1U);  // the message alone
}

TEST_F(MimeBody, TextThatOnlySaysBeginStays) {
  const std::string texts[] = {
      Lines("To begin with, hello.|The end"),
      Lines("begin 644 a.txt|no encoded line|end"),
      Lines("begin 644 a.txt|#0V%T"),
      Lines("begin 644 a.txt||end"),
      Lines("-----BEGIN PGP SIGNED MESSAGE-----|Hash: SHA1||text|-----BEGIN PGP SIGNATURE-----|"
            "iQCVAwUBMAAA|-----END PGP SIGNATURE-----"),
      Lines("begin 644 a|#0V%T|begin 644 b|lower case"),
  };
  for (const std::string& text : texts) {
    Parse("Subject: s\r\n\r\n" + text);
    EXPECT_EQ(message_.Body, text);
    EXPECT_EQ(message_.AttachCount, 0);
    EXPECT_TRUE(Files().empty());
  }
}

TEST_F(MimeBody, FilesOfOneNameAllFindTheirPlace) {
  std::string text = "Subject: s\r\n\r\n";
  for (int i = 0; i < 12; ++i) text += "begin 644 a.b\r\n#0V%T\r\nend\r\n";
  text += "begin 644 oeTempMessage.msg\r\n#0V%T\r\nend\r\nbegin 644\r\n#0V%T\r\nend\r\n";
  core::State().TempMessageFile = core::State().EmailFileFolder + "oeTempMessage.msg";
  Parse(text);
  EXPECT_EQ(Files().size(), 14U);
  EXPECT_FALSE(platform::FileExists(core::State().TempMessageFile));
  EXPECT_EQ(File("a (12).b"), "Cat");
  EXPECT_EQ(File("attachment"), "Cat");
}

TEST_F(MimeBody, FullListsSaySoAndDropTheRest) {
  std::string text = "Subject: s\r\nContent-Type: multipart/mixed; boundary=b0\r\n\r\n";
  for (int i = 1; i < 13; ++i) {
    text += "--b0\r\nContent-Type: multipart/mixed; boundary=x" + std::to_string(i) + "\r\n\r\n";
  }
  for (int i = 0; i < 22; ++i) {
    text += "--b0\r\nContent-Type: image/gif; name=" + std::to_string(i) + "\r\n\r\n";
  }
  Parse(text);
  EXPECT_EQ(message_.BoundaryCount, 10);
  EXPECT_EQ(message_.AttachCount, 20);
  EXPECT_EQ(message_.Attachments[19], "19");
  EXPECT_EQ(ui_.Shown("box"),
            (Texts{"A lot of boundary.", "A lot of boundary.", "A lot of boundary.",
                   "Attachment is great than 20", "Attachment is great than 20"}));
}

}  // namespace
}  // namespace tarnwick::intake
