// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/attachments.h"

#include "samples/mail_encoding.h"
#include "support/testing.h"

namespace tarnwick::takeout {
namespace {

std::string Multipart(const Texts& parts) {
  std::string text = "Subject: Files\r\nContent-Type: multipart/mixed; boundary=\"b\"\r\n\r\n";
  for (const std::string& part : parts) text += "--b\r\n" + part + "\r\n";
  return text + "--b--\r\n";
}

// "name type size", with a star behind a program.
Texts Listed(const MessageAttachments& attachments) {
  Texts lines;
  for (const Attachment& attachment : attachments.List()) {
    lines.push_back(attachment.name + " " + attachment.type + " " +
                    std::to_string(attachment.size) + (attachment.isProgram ? "*" : ""));
  }
  return lines;
}

const std::string kBytes("\x00\x01 a\n\xFF=z", 8);

TEST(Attachments, EveryWayInWhichFilesAreSentGivesTheirBytesBack) {
  std::string message = "From: a@example.org\r\nSubject: =?utf-8?Q?Gr=C3=BC=C3=9Fe?=\r\n\r\nHi\r\n";
  MessageAttachments attachments(Multipart({
      "Content-Type: text/plain\r\n\r\nLetter.\r\n" + samples::Uuencode("plan.xls", kBytes),
      "Content-Type: image/png; name=\"=?iso-8859-1?Q?=FCber.png?=\"\r\n"
      "Content-Transfer-Encoding: base64\r\n\r\n" +
          samples::Base64Lines(kBytes) + "____________\r\nA list of lists\r\n",
      "Content-Disposition: attachment; filename*0*=utf-8''na%C3%AFve;\r\n filename*1=.txt\r\n"
      "Content-Transfer-Encoding: quoted-printable\r\n\r\na=3Db =\r\nc\nd\r\n",
      "Content-Type: message/rfc822\r\n\r\n" + message,
      "Content-Type: message/rfc822\r\nContent-Transfer-Encoding: base64\r\n\r\n" +
          samples::Base64Lines(Multipart({"Content-Type: audio/midi\r\n\r\nMThd"})),
      "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: "
      "quoted-printable\r\n\r\n" +
          samples::QuotedPrintable(samples::Uuencode("PLAN.XLS", "x")),
  }));
  EXPECT_THAT(Listed(attachments),
              ElementsAre("plan.xls application/octet-stream 8", "\u00FCber.png image/png 8",
                          "na\u00EFve.txt text/plain 9", "Gr\u00FC\u00DFe.eml message/rfc822 65",
                          "Files.eml message/rfc822 109", "audio.mid audio/midi 4",
                          "PLAN (2).XLS application/octet-stream 1"));
  EXPECT_EQ(attachments.Bytes(0), kBytes);
  EXPECT_EQ(attachments.Bytes(1), kBytes) << "a list's footer is no part of a picture";
  EXPECT_EQ(attachments.Bytes(2), "a=b c\nd\r\n") << "line ends as they were";
  EXPECT_EQ(attachments.Bytes(3), message);
  EXPECT_EQ(attachments.Bytes(5), "MThd");
}

TEST(Attachments, NamesAreSafeAndProgramsAreKnown) {
  const struct {
    const char* what;
    std::string declared, name;
    bool isProgram;
  } kRows[] = {
      {"path up", "../../.profile", "_.._.profile", false},
      {"path of a Windows", "C:\\\\boot\\\\autoexec.BAT", "C__boot_autoexec.BAT", true},
      {"behind a picture", "holiday.jpg.exe", "holiday.jpg.exe", true},
      {"far behind a picture", "holiday.jpg" + std::string(150, ' ') + ".scr", "holiday.jpg.scr",
       true},
      {"reversed", "holiday\u202Egpj.exe", "holiday_gpj.exe", true},
      {"dots and blanks at the end", "letter.vbs. . ", "letter.vbs", true},
      {"device", "aux.h", "_aux.h", false},
      {"device of a Windows", "COM\u00B9", "_COM\u00B9", false},
      {"script of a Unix", "run.sh", "run.sh", true},
      {"a word like one", "executive.summary", "executive.summary", false},
      {"query of a spreadsheet", "rates.IQY", "rates.IQY", true},
      {"image of a disk", "invoice.iso", "invoice.iso", true},
      {"settings that start a program", "a.settingcontent-ms", "a.settingcontent-ms", true},
      {"add-in", "sums.xll", "sums.xll", true},
      {"package of a desktop", "game.flatpakref", "game.flatpakref", true},
      {"like an option of a command", "-delete", "_-delete", false},
      {"nothing left", "...", "attachment.bin", false},
  };
  for (const auto& row : kRows) {
    MessageAttachments attachments(
        Multipart({"Content-Type: application/x-thing; name=\"" + row.declared + "\"\r\n\r\nx"}));
    ASSERT_EQ(attachments.List().size(), 1U) << row.what;
    EXPECT_EQ(attachments.List()[0].name, row.name) << row.what;
    EXPECT_EQ(attachments.List()[0].isProgram, row.isProgram) << row.what;
  }
}

TEST(Attachments, BrokenStructuresGiveWhatTheyHoldAndTheWholeWherePartsMayBeMissing) {
  const std::string picture = "Content-Type: image/gif\r\n\r\nGIF";
  std::string deep = "Content-Type: image/gif\r\n\r\nGIF";
  for (int i = 0; i < 3000; ++i) {
    std::string boundary = "b" + std::to_string(i);
    std::string container = "Content-Type: multipart/mixed; boundary=";
    container.append(boundary).append("\r\n\r\n--").append(boundary).append("\r\n");
    deep.insert(0, container);
  }
  const Case kRows[] = {
      {"cut off", "Content-Type: multipart/mixed; boundary=b\n\n--b\n" + picture, "image.gif|"},
      {"another boundary",
       "Content-Type: multipart/mixed; boundary=b\n\n--c\n" + picture + "\n--c--\n", "image.gif|"},
      {"parts behind the end",
       "Content-Type: multipart/mixed; boundary=b\n\n--b\n" + picture + "\n--b--\n\n--b\n" +
           picture,
       "image.gif|image (2).gif|"},
      {"no boundary", "Content-Type: multipart/mixed\n\nWords.\n", "whole message.eml|"},
      {"no end of uuencoding", "Subject: x\n\nbegin 644 a.txt\n#86)C\n", ""},
      {"nesting without end", deep, "whole message.eml|"},
      {"nothing", "", ""}};
  for (const Case& row : kRows) {
    MessageAttachments attachments(row.given);
    std::string names;
    for (const Attachment& attachment : attachments.List()) names += attachment.name + "|";
    EXPECT_EQ(names, row.expected) << row.what;
    if (names.ends_with("whole message.eml|")) {
      EXPECT_EQ(attachments.Bytes(attachments.List().size() - 1), row.given) << row.what;
    }
  }
  Texts many(5000, picture);
  MessageAttachments attachments(Multipart(many));
  EXPECT_EQ(attachments.List().size(), 1001U);
  EXPECT_EQ(attachments.List().back().name, "whole message.eml");
}

}  // namespace
}  // namespace tarnwick::takeout
