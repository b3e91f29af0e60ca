// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Writes seed inputs for the fuzz targets that read texts: make_fuzz_corpus DIR.
#include <cstdio>
#include <string>
#include <vector>

#include "platform/error.h"
#include "platform/files.h"

namespace {

using Seeds = std::vector<std::string>;

const Seeds kMessages = {
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

const Seeds kTexts = {
    "koi8-r\nRe: =?koi8-r?B?8NLJ18XU?= =?utf-8?Q?a_=C3=BC?= \xC4\xC1",
    "iso-2022-jp\n=?iso-2022-jp?B?GyRCRnxLXBsoQg==?= \x1B$BF|K\\\x1B(B",
    "base64\nSGVsbG8g\nd29ybGQ=\n",
    "quoted-printable\na=3Db=\nc\n",
    "utf-7\n+AOQ-bc",
    "shift_jis\n\x93\xFA\x96\x7B",
    "utf-8\nContent-Type: text/plain; charset=\"utf-8\"; name*=utf-8'en'%D0%B4; boundary=\"x\"",
    "gb2312\nContent-Disposition: attachment; filename*0=\"a\"; filename*1*=%41",
};

const Seeds kDates = {"Mon, 5 Jan 2004 10:20:30 +0200", "5 Jan 98 10:20 GMT",
                      "Mon Jan 5 10:20:30 2004",        "5 Jan 2004 10:00:00 x +-0300",
                      "31 Feb 102 7:05:00PM",           "5 September 0002 1:2:3 -0000",
                      "1 2 3 4 5 6 7 8 9 10 11",        "Jan 32 9999 23:59:59 +1"};

const Seeds kDocuments = {
    "<!DOCTYPE html><html><head><title>t</title><style>p{}</style></head><body class='a'>"
    "<p>a<br>b&nbsp;&#150;&eacute;<ul><li>c<li>d</ul><table><tr><td>e<td>f</table>"
    "<pre>\n g\n h</pre><script>if (a<b) '</p>'</script><div style='display:none'>i</div>",
    "<body><!--[if mso]>x<![endif]--><![if !y]>z<![endif]><?xml:namespace prefix=o /><o:p>w</o:p>",
    "<p>no body",
};

void Write(const std::string& folder, const Seeds& seeds) {
  tarnwick::platform::MakeFolder(folder);
  for (size_t i = 0; i < seeds.size(); ++i) {
    tarnwick::platform::WriteFile(folder + "seed" + std::to_string(i), seeds[i]);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: make_fuzz_corpus DIR\n");
    return 2;
  }
  try {
    std::string folder = tarnwick::platform::WithSeparator(argv[1]);
    Write(folder + "message/", kMessages);
    Write(folder + "text/", kTexts);
    Write(folder + "date/", kDates);
    Write(folder + "html/", kDocuments);
  } catch (const tarnwick::Error& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  return 0;
}
