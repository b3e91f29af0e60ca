// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "seeds.h"

#include <random>

#include "database/engine/packing.h"
#include "database/index/text_segment.h"
#include "oe/store_record.h"
#include "samples/sample_profile.h"

namespace tarnwick::fuzz {

namespace {

using namespace std::string_literals;  // texts with NULs
using Texts = std::vector<std::string>;

const Texts kMessages = {
    "From: =?koi8-r?B?4c7OwQ==?= <ann@example.org>\r\nTo: \"Holm, Berta\" <berta@example.org>,\r\n"
    " carl@example.org\r\nCc: dora@example.org\r\nSubject: =?utf-8?Q?f=C3=BCr?=\r\n "
    "=?utf-8?B?0LE=?="
    "\r\nDate: Mon, 5 Jan 2004 10:20:30 +0200\r\nReceived: from a by b;\r\n"
    "\tMon, 5 Jan 2004 10:21:00 -0500\r\nImportance: high\r\n\r\nHello\r\n",
    "Subject: s\r\nContent-Type: multipart/mixed;\r\n boundary=\"b1\"\r\n\r\npreamble\r\n--b1\r\n"
    "Content-Type: multipart/alternative; boundary=b2\r\n\r\n--b2\r\n"
    "Content-Type: text/plain; charset=koi8-r\r\nContent-Transfer-Encoding: quoted-printable\r\n"
    "\r\n=C4=C1=\r\n.\r\n--b2\r\nContent-Transfer-Encoding: base64\r\n"
    "Content-Type: text/html; charset=\"utf-8\"\r\n\r\nPGJvZHk+0LTQsDwvYm9keT4=\r\n--b2--\r\n"
    "--b1\r\nContent-Type: image/png; name*0*=utf-8''%D0; name*1=a.png\r\n"
    "Content-Disposition: attachment;\r\n filename=\"a.png\"\r\n\r\nAAAA\r\n--b1--\r\n",
    "From: a@b\n\nSee\nbegin 644 note.txt\n+:&5L;&\\@=V]R;&0\n`\nend\nBye",
    "From: a@b\r\nContent-Type: text/html; charset=x-sjis\r\n\r\n<html><body>x</body></html>\r\n",
    "Subject: x\r\nContent-Type: multipart/mixed; boundary=\"b\"\r\n\r\n--b\r\n"
    "Content-Type: message/rfc822\r\n\r\nSubject: y\r\nContent-Type: text/plain\r\n\r\nz\r\n--b--",
};

const Texts kTexts = {
    "koi8-r\nRe: =?koi8-r?B?8NLJ18XU?= =?utf-8?Q?a_=C3=BC?= \xC4\xC1",
    "iso-2022-jp\n=?iso-2022-jp?B?GyRCRnxLXBsoQg==?= \x1B$BF|K\\\x1B(B",
    "base64\nSGVsbG8g\nd29ybGQ=\n",
    "quoted-printable\na=3Db=\nc\n",
    "utf-7\n+AOQ-bc",
    "shift_jis\n\x93\xFA\x96\x7B",
    "utf-8\nContent-Type: text/plain; charset=\"utf-8\"; name*=utf-8'en'%D0%B4; boundary=\"x\"",
    "gb2312\nContent-Disposition: attachment; filename*0=\"a\"; filename*1*=%41",
};

const Texts kDates = {"Mon, 5 Jan 2004 10:20:30 +0200", "5 Jan 98 10:20 GMT",
                      "Mon Jan 5 10:20:30 2004",        "5 Jan 2004 10:00:00 x +-0300",
                      "31 Feb 102 7:05:00PM",           "5 September 0002 1:2:3 -0000",
                      "1 2 3 4 5 6 7 8 9 10 11",        "Jan 32 9999 23:59:59 +1"};

const Texts kDocuments = {
    "<!DOCTYPE html><html><head><title>t</title><style>p{}</style></head><body class='a'>"
    "<p>a<br>b&nbsp;&#150;&eacute;<ul><li>c<li>d</ul><table><tr><td>e<td>f</table>"
    "<pre>\n g\n h</pre><script>if (a<b) '</p>'</script><div style='display:none'>i</div>",
    "<body><!--[if mso]>x<![endif]--><![if !y]>z<![endif]><?xml:namespace prefix=o /><o:p>w</o:p>",
    "<p>no body",
};

const Texts kStatements = {
    "SELECT DISTINCT Email.ID, Format(Email.ReceivedTime, 'yyyymmdd') AS Day, Subject FROM (Email "
    "LEFT JOIN MeContact ON Email.FromTo = MeContact.ID) LEFT JOIN Attachment ON Email.ID = "
    "Attachment.EmailID WHERE Direction='In' AND ReceivedTime >= #01/05/2004# AND Active Is Not "
    "Null ORDER BY Email.ReceivedTime DESC",
    "SELECT Count(*) AS C FROM Email WHERE INSTR(Subject, 'x') > 0 OR Subject Like '%o''b%'",
    "DELETE * FROM Email WHERE ID In (SELECT ID FROM ObjectList)",
    "UPDATE [Email] SET Active = Null, Notes = 'a' & Subject & \"b\" WHERE Not ID Between 1 And 2;",
    "INSERT INTO Attachment (EmailID, FileName) VALUES (1, 'it''s')",
    "INSERT INTO Email SELECT * FROM  Email IN 'file'",
    "SELECT TOP 5 Direction, Max(ID) AS M FROM Email WHERE ReceivedTime < Date() - 30.5 GROUP BY "
    "Direction HAVING Count(*) > -1",
    "SELECT FileBody FROM FileRepository WHERE FileID=12ORDER BY ID",
    "' OR 1=1 --",
    "\"; DROP TABLE Email; /*",
    "%_[a-z]#",
    "\xF0\x9F\x93\xA7''\xE2\x80\x99",
};

const Texts kRegistries = {
    "\x01WINE REGISTRY Version 2\n\n[Identities\\\\{A}] 1073298030\n#time=1c0\n"
    "\"Username\"=\"Ann\"\n\"Directory Name\"=dword:00000007\n"
    "\"Store Root\"=str(2):\"%UserProfile%\\\\Mail\"\n\"Bytes\"=hex:01,02,\\\n  03\n",
    "\0\x20\0\xFF\xFF"s,
};

// Six bytes each: the first patches a pointer, the second a length, the last cuts the file.
const Texts kPatches = {"\1\0\0\2\0\0"s, "\2\4\1\xFF\xFF\xFF"s, "\3\x0C\4\5\0\0\6\1\1\0\0\x80"s,
                        "\0\0\0\0\0\0\0\0\0\0\x80"s};

const Texts kItems = {
    "\0\0\6\0letter\3\1\x10\0From: a@b\r\nX: y\r\n\5\1\x0C\0<body>x</body>"s,
    "{\\rtf1\\ansi\\fromhtml1 {\\*\\htmltag <b>}a\\'e9\\u1076?\\par b}",
    "\x0A\0\0\0\x07\0\0\0LZFu\0\0\0\0\0{\\rtf1"s,
};

const Texts kMailboxes = {
    "From - Tue Mar  5 13:07:00 2002\r\nX-Mozilla-Status: 0009\r\nA: 1\r\n\r\n>From a\r\n\r\n"
    "From - \nContent-Length: 3\n\nx\n\n",
    "From a@b Tue Mar  5 13:07:00 2002\nContent-Length: 4\nStatus: RO\n\nx\n\n\n"
    "From c Mon, 4 Mar 2002 1:02\n\n>>From \n\nFrom \"d e\"@f\nG: h",
    "From ???@??? Thu Jan 01 00:00:01 1998\nA: 1\nFrom ???@??? Thu Jan 01 00:00:01 1998\n",
};
const Texts kAppleLetters = {
    "5    \nA: 1\n<plist><key>flags</key>\n<integer>8623489</integer>",
    "1015333620.M1P1.host:2,FRS",
    ".Sent.&AOQ-rger.&-&",
};
const Texts kOutlookExpress4 = {
    "\0\x15\x20\0\0\0\x18\xFF\xFF\xFF\x7F\x17\0\0\0\0"s,
    std::string(80, '\0') + "\0\x7F\0\x7F\1\0\0\0\x14\0\0\0\4\0\0\0A: 1"s + std::string(100, '\1'),
};

// By their first byte: packed values, a segment's head and one of its parts, changes to a file.
Texts PackedSeeds(const Texts& letters) {
  Texts seeds = {"\2\0\0\1a\1\7\2\xFF\3\5\0x\7\1"s, "\2\x62\x7F\xFF\xFF\xFF\xFF\xFF\xFF\xFF"s};
  Texts texts(letters.begin(), letters.begin() + std::min<std::ptrdiff_t>(6, std::ssize(letters)));
  texts.emplace_back("Attached\r\n\r\n");
  for (char c = 'A'; c < 'M'; ++c) texts.back() += std::string(76, c) + "\r\n";
  for (const std::string& text : texts) {
    std::string packed(jet::Pack(text));
    if (packed.empty()) continue;
    seeds.push_back('\0' + packed);
    seeds.push_back("\2\3\4"s + static_cast<char>(packed.size() % 256) + packed);
  }
  jet::SegmentWriter writer;
  std::mt19937 random(7);
  for (int document = 0; document < 60; ++document) {
    std::vector<uint32_t> trigrams;
    for (uint32_t trigram = random() % 4; trigram < 300; trigram += 1 + random() % 40) {
      trigrams.push_back(trigram);
    }
    writer.Add(int64_t{document} * document, trigrams);
  }
  std::string head = writer.Head();
  writer.Finish([&](size_t part, std::string_view data) {
    if (part > 1) return;
    seeds.push_back('\1' + std::string(1, static_cast<char>(head.size())) + head);
    seeds.back() += data;
    std::string change = "\x80"s + static_cast<char>(part);
    change += {static_cast<char>(data.size() / 256), static_cast<char>(data.size() % 256)};
    seeds.push_back("\2" + change + std::string(data) + "\x20\x07"s +
                    static_cast<char>(head.size()) + head);
  });
  return seeds;
}

// A reader's answers: a message without its text, and some with it.
Texts AnswerSeeds(const Texts& letters) {
  oe::StoreReply reply;
  reply.message.info.subject = "s";
  reply.message.tellings.resize(1);
  Texts seeds = {intake::BytesOf(reply)};
  for (size_t i = 0; i < letters.size() && i < 6; ++i) {
    reply.text = std::make_unique<oe::TextReading>();
    reply.text->held = letters[i];
    reply.text->size = reply.text->chainSize = letters[i].size();
    intake::RawMessage raw("", letters[i]);
    reply.text->prepared = intake::PrepareElsewhere(raw, intake::kComplete, {});
    seeds.push_back(intake::BytesOf(reply));
  }
  return seeds;
}

}  // namespace

std::map<std::string, std::vector<std::string>> Seeds() {
  Texts letters = kMessages;
  for (const samples::SampleMessage& message : samples::SampleMessages()) {
    letters.push_back(message.raw);
  }
  return {{"message", letters},
          {"store", letters},
          {"text", kTexts},
          {"date", kDates},
          {"html", kDocuments},
          {"jet", kStatements},
          {"dbx", kPatches},
          {"registry", kRegistries},
          {"pst", kPatches},
          {"nodes", kPatches},
          {"lost", kPatches},
          {"outlook", kItems},
          {"attachments", letters},
          {"mbox", kMailboxes},
          {"emlx", kAppleLetters},
          {"oe4", kOutlookExpress4},
          {"msg", kPatches},
          {"packed", PackedSeeds(letters)},
          {"link", AnswerSeeds(letters)}};
}

}  // namespace tarnwick::fuzz
