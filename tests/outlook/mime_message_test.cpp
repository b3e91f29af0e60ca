// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/mime_message.h"

#include "intake/header_parser.h"
#include "outlook/mime_text.h"
#include "samples/memory_outlook.h"
#include "support/program_fixture.h"

namespace tarnwick::outlook {
namespace {

using samples::MailNamed;
using samples::MemoryItem;
using samples::MemoryOutlook;

class MimeMessage : public testing::ProgramFixture {
 protected:
  std::string Write(MemoryItem& item) {
    MemoryOutlook::ItemView view(item);
    std::string text;
    uint64_t budget = 1 << 24;
    result_ =
        WriteMime(view, ReadLetter(view), budget, [&](std::string_view bytes) { text += bytes; });
    return text;
  }
  // What our own parser makes of it.
  intake::MailMessage Parsed(MemoryItem& item) {
    intake::MailMessage message;
    EXPECT_TRUE(intake::ParseMessageFile(
        WriteTemp("mime.eml", Write(item)), {}, [](const std::string&) { return false; }, message));
    return message;
  }
  MimeResult result_;
};

TEST_F(MimeMessage, ReadsBackAsTheLetterItWas) {
  MemoryItem item =
      MailNamed("1", "Привет, a long subject that does not fit into one encoded word");
  item.Text(Prop::kSenderName, "Ann \"A\" É");
  item.Recipient(RecipientType::kTo, "Bob, Jr.", "SMTP", "bob@x.test");
  item.Recipient(RecipientType::kCc, "Carl", "EX", "/O=FIRM/CN=CARL");
  item.Recipient(RecipientType::kBcc, "Dora", "SMTP", "dora@x.test");
  item.Text(Prop::kBody, "plain € = 1\r\n-- \r\nsignature\n");
  item.Text(Prop::kHtml, "<html><img src=\"cid:pic1\">テ</html>");
  item.Attachment("bild.png", "PNGDATA").SetText(Prop::kAttachContentId, "pic1");
  item.Attachment("план.doc", std::string(100, '\0'));
  std::string text = Write(item);
  intake::MailMessage message = Parsed(item);
  EXPECT_EQ(message.Subject, item.properties.Text(Prop::kSubject));
  EXPECT_EQ(message.FromAddress, "ann@firm.test");
  EXPECT_EQ(message.SentTime, DateTime::FromDate(2002, 3, 5).WithTime(13, 7, 0));
  EXPECT_THAT(message.Body, HasSubstr("plain € = 1\r\n-- \r\nsignature\r\n"));
  EXPECT_THAT(message.HTMLBody, HasSubstr("cid:pic1\">テ</html>"));
  EXPECT_EQ(message.AttachCount, 2);
  EXPECT_EQ(message.Attachments[0], "bild.png");
  for (const char* piece :
       {"Bcc: \"Dora\" <dora@x.test>\r\n", "Cc: \"Carl\"\r\n", "Content-ID: <pic1>",
        "UE5HREFUQQ==", "filename*=utf-8''%D0%BF%D0%BB%D0%B0%D0%BD.doc"}) {
    EXPECT_THAT(text, HasSubstr(piece));
  }
  EXPECT_THAT(text, Not(HasSubstr("X-Unsent")));
}

TEST_F(MimeMessage, KeepsTheHeadersItCameWithButNotTheirForm) {
  MemoryItem item = MailNamed("1", "ours");
  item.Text(Prop::kTransportHeaders,
            "Microsoft Mail Internet Headers Version 2.0\r\n"
            "Received: from a by b;\n\tTue, 5 Mar 2002 13:08:00 +0000\n"
            "From: Ann <ann@firm.test>\r\nSubject: theirs\r\nX-Odd: 1\r\n"
            "Content-Type: multipart/mixed;\r\n\tboundary=\"abc\"\r\nMIME-Version: 1.0\r\n\r\n"
            "--abc\r\nContent-Type: text/plain\r\nX-Part: 1\r\n");
  std::string text = Write(item);
  EXPECT_THAT(text, StartsWith("Received: from a by b;\r\n\tTue, 5 Mar 2002"));
  for (const char* kept :
       {"X-Odd: 1\r\n", "Subject: theirs\r\n", "Date: Tue, 5 Mar 2002 13:07:00 +0000\r\n"}) {
    EXPECT_THAT(text, HasSubstr(kept));
  }
  for (const char* gone : {"ours\r\nDate", "abc", "X-Part"})
    EXPECT_THAT(text, Not(HasSubstr(gone)));
}

TEST_F(MimeMessage, LetsNoPropertySmuggleAHeader) {
  MemoryItem item = MailNamed("1", "a\r\nBcc: x@y.test\r\n\r\nbody");
  item.Text(Prop::kSenderName, "Ann\r\nX-Evil: 1").Text(Prop::kBody, "nothing");
  item.Text(Prop::kMessageId, "<1>\nX-Evil: 2");
  item.Attachment("a\"\r\nX-Evil: 3", "x").SetText(Prop::kAttachMimeType, "text/x\r\nX-Evil: 4");
  EXPECT_THAT(Write(item), Not(HasSubstr("\nX-Evil")));
  EXPECT_THAT(Write(item), Not(HasSubstr("\nBcc")));
}

TEST_F(MimeMessage, EmbedsMessagesAndNotesWhatIsLost) {
  MemoryItem inner = MailNamed("", "inner");
  inner.Attachment("deep.txt", "deep");
  MemoryItem item = MailNamed("1", "outer");
  item.Embed("inner mail", inner);
  item.Attachment("lost.doc", "");
  item.attachmentBytes.erase(1);
  std::string text = Write(item);
  for (const char* piece : {"Content-Type: message/rfc822", "Subject: inner\r\n",
                            "ZGVlcA==", "The attachment \"lost.doc\" could not be read."}) {
    EXPECT_THAT(text, HasSubstr(piece));
  }
  EXPECT_EQ(result_.attachmentsLost, 1);
  EXPECT_THAT(Log(), HasSubstr("Attachment lost: lost.doc"));
}

TEST_F(MimeMessage, KeepsSignedAndEncryptedMailByteForByte) {
  MemoryItem item =
      MailNamed("1", "signed").Text(Prop::kMessageClass, "IPM.Note.SMIME.MultipartSigned");
  item.Text(Prop::kBody, "");
  std::string body =
      "Content-Type: multipart/signed; boundary=\"sig=_1\"\r\n\r\n--sig=_1\r\nContent-Type: "
      "text/plain\r\n\r\nexactly  this\r\n--sig=_1--\r\n";
  item.Attachment("smime.p7m", body).SetText(Prop::kAttachMimeType, "multipart/signed");
  EXPECT_THAT(Write(item), EndsWith("MIME-Version: 1.0\r\n" + body));
  EXPECT_THAT(Parsed(item).Body, HasSubstr("exactly  this"));
  item.Text(Prop::kMessageClass, "IPM.Note.SMIME");
  item.attachments[0].SetText(Prop::kAttachMimeType, "application/x-pkcs7-mime");
  item.attachmentBytes[0] = "cipher";
  EXPECT_THAT(Write(item), HasSubstr("Content-Type: application/pkcs7-mime;"));
  EXPECT_THAT(Write(item), EndsWith("\r\n\r\nY2lwaGVy\r\n"));
}

TEST_F(MimeMessage, PassesOnWhatTheSinkThrows) {
  MemoryItem item = MailNamed("1", "s");
  item.Attachment("a.bin", std::string(3000, 'x'));
  MemoryOutlook::ItemView view(item);
  uint64_t budget = 1 << 20;
  int64_t written = 0;
  auto full = [&](std::string_view bytes) {
    written += static_cast<int64_t>(bytes.size());
    if (written > 2000) throw Error(ErrorNumber::kDiskFull, "disk full");
  };
  EXPECT_THROW(WriteMime(view, ReadLetter(view), budget, full), Error);
}

TEST(EncodeBody, ChoosesWhatSuitsTheText) {
  EXPECT_EQ(EncodeBody("a\nb\rc").text, "a\r\nb\r\nc\r\n");
  EXPECT_EQ(EncodeBody("a").encoding, "7bit");
  EXPECT_EQ(EncodeBody("--=_part_1_of_letter--").encoding, "quoted-printable");
  EXPECT_THAT(EncodeBody("--=_part_1_of_letter--").text, Not(HasSubstr("=_")));
  EXPECT_EQ(EncodeBody(std::string(2000, 'x')).encoding, "quoted-printable");
  EXPECT_EQ(EncodeBody("mostly ascii text \xC3\xA9").text, "mostly ascii text =C3=A9\r\n");
  EXPECT_EQ(EncodeBody("\xE3\x83\x86\xE3\x83\x86").encoding, "base64");
  EXPECT_EQ(EncodeBody("").text, "\r\n");
}

TEST(Base64Lines, GivesTheSameForAnyPieces) {
  std::string bytes;
  for (int i = 0; i < 300; ++i) bytes.push_back(static_cast<char>(i));
  Base64Lines whole;
  std::string expected = whole.Add(bytes);
  expected += whole.End();
  for (size_t piece : {1u, 2u, 56u, 57u, 58u, 114u}) {
    Base64Lines lines;
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += piece) text += lines.Add(bytes.substr(i, piece));
    text += lines.End();
    EXPECT_EQ(text, expected) << piece;
  }
}

}  // namespace
}  // namespace tarnwick::outlook
