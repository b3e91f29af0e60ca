// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/mail_encoding.h"
#include "samples/sample_letters.h"

namespace tarnwick::samples {

namespace {

constexpr const char* kMultipartNote = "This is a multi-part message in MIME format.\r\n";

std::string Multipart(const std::string& kind, const std::string& boundary) {
  return "MIME-Version: 1.0\r\nContent-Type: multipart/" + kind + ";\r\n\tboundary=\"" + boundary +
         "\"\r\n";
}

std::string Part(const std::string& boundary, const std::string& headers,
                 const std::string& content) {
  return "--" + boundary + "\r\n" + headers + "\r\n" + content + "\r\n";
}

std::string End(const std::string& boundary) {
  return "--" + boundary + "--\r\n";
}

std::string TextPart(const std::string& type, const std::string& charset,
                     const std::string& encoding) {
  return "Content-Type: text/" + type + ";\r\n\tcharset=\"" + charset +
         "\"\r\nContent-Transfer-Encoding: " + encoding + "\r\n";
}

std::string FilePart(const std::string& type, const std::string& name) {
  return "Content-Type: " + type + ";\r\n\tname=\"" + name +
         "\"\r\nContent-Transfer-Encoding: base64\r\nContent-Disposition: attachment;\r\n"
         "\tfilename=\"" +
         name + "\"\r\n";
}

// Bytes of no meaning, always the same.
std::string FileBytes(size_t size) {
  std::string bytes;
  unsigned value = 7;
  while (bytes.size() < size) {
    value = value * 1103515245U + 12345U;
    bytes += static_cast<char>(value >> 16);
  }
  return bytes;
}

std::string Html(const std::string& body) {
  return "<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.0 Transitional//EN\">\r\n<HTML><HEAD>\r\n"
         "<STYLE>P { color: navy }</STYLE>\r\n</HEAD>\r\n<BODY bgColor=#ffffff>\r\n" +
         body + "</BODY></HTML>\r\n";
}

void AddHtmlOnly(std::vector<SampleMessage>& messages) {
  SampleMessage news = InboxLetter(kPaper, "2005-11-02 09:00:00", "Our autumn papers");
  news.bodyLines = {"New this autumn", "Oak leaf, 90 g, from 0.35 a sheet", "Rain & slate, 120 g"};
  news.raw =
      HeaderLines(news, Mailbox(kPaper), Mailbox(kClara), news.subject,
                  "MIME-Version: 1.0\r\n" + TextPart("html", "iso-8859-1", "quoted-printable")) +
      "\r\n" +
      QuotedPrintable(Html("<H2>New this autumn</H2>\r\n<UL>\r\n"
                           "<LI>Oak leaf, 90&nbsp;g, from <B>0.35</B> a sheet</LI>\r\n"
                           "<LI>Rain &amp; slate, 120 g</LI></UL>\r\n"));
  news.bodyLines[1] = "from 0.35 a sheet";
  messages.push_back(news);
}

void AddAlternative(std::vector<SampleMessage>& messages) {
  const std::string boundary = "----=_NextPart_000_0001_01C2A1B0.3F4D2C10";
  SampleMessage invitation =
      InboxLetter(kJonas, "2002-12-12 13:30:45", "Workshop party on the 20th");
  invitation.bodyLines = {"Mulled wine at six, the press is decorated already."};
  invitation.raw =
      HeaderLines(invitation, Mailbox(kJonas), Mailbox(kClara), invitation.subject,
                  Multipart("alternative", boundary)) +
      "\r\n" + kMultipartNote + "\r\n" +
      Part(boundary, TextPart("plain", "iso-8859-1", "7bit"), Lines(invitation.bodyLines)) +
      Part(boundary, TextPart("html", "iso-8859-1", "7bit"),
           Html("<P>Mulled wine at <B>six</B>, the press is decorated already.</P>\r\n")) +
      End(boundary);
  messages.push_back(invitation);
}

void AddNested(std::vector<SampleMessage>& messages) {
  const std::string outer = "----=_NextPart_000_0010_01C41D2E.7A6B5C40";
  const std::string inner = "----=_NextPart_001_0011_01C41D2E.7A6B5C40";
  SampleMessage offer = WorkshopLetter(kPaper, "2004-04-07 07:45:00", "Offer and a sample scan");
  offer.bodyLines = {"Dear Mrs Hollis,", "our offer and a scan of the laid paper are attached."};
  offer.attachments = {"offer 2004.pdf", "laid.jpg"};
  offer.raw =
      HeaderLines(offer, Mailbox(kPaper), Mailbox(kClara), offer.subject,
                  Multipart("mixed", outer)) +
      "\r\n" + kMultipartNote + "\r\n" +
      Part(outer, "Content-Type: multipart/alternative;\r\n\tboundary=\"" + inner + "\"\r\n",
           "\r\n" + Part(inner, TextPart("plain", "us-ascii", "7bit"), Lines(offer.bodyLines)) +
               Part(inner, TextPart("html", "us-ascii", "7bit"),
                    Html("<P>Dear Mrs Hollis,</P>\r\n<P>our offer is attached.</P>\r\n")) +
               End(inner)) +
      Part(outer, FilePart("application/pdf", "offer 2004.pdf"), Base64Lines(FileBytes(3000))) +
      Part(outer, FilePart("image/jpeg", "laid.jpg"), Base64Lines(FileBytes(1200))) + End(outer);
  messages.push_back(offer);
}

void AddFilesSent(std::vector<SampleMessage>& messages) {
  const std::string boundary = "----=_NextPart_000_0020_01C7E5A0.10203040";
  SampleMessage photos = SentLetter(kMina, "2007-08-24 19:19:00", "Harbour fair");
  photos.bodyLines = {"Dad won a ham. See for yourself."};
  photos.attachments = {"ham.jpg", "the winner's face.jpg"};
  photos.raw =
      HeaderLines(photos, Mailbox(kClara), Mailbox(kMina), photos.subject,
                  Multipart("mixed", boundary)) +
      "\r\n" + kMultipartNote + "\r\n" +
      Part(boundary, TextPart("plain", "us-ascii", "7bit"), Lines(photos.bodyLines)) +
      Part(boundary, FilePart("image/jpeg", photos.attachments[0]), Base64Lines(FileBytes(9000))) +
      Part(boundary, FilePart("image/jpeg", photos.attachments[1]), Base64Lines(FileBytes(40000))) +
      End(boundary);
  messages.push_back(photos);
}

void AddInline(std::vector<SampleMessage>& messages) {
  SampleMessage list = InboxLetter(kLibrary, "1998-10-05 15:00:00", "Shelf list");
  list.bodyLines = {"Here is the list you asked for.", "The desk closes at five."};
  list.attachments = {"shelves.txt"};
  list.raw = HeaderLines(list, Mailbox(kLibrary), Mailbox(kClara), list.subject, "") + "\r\n" +
             list.bodyLines[0] + "\r\n\r\n" +
             Uuencode("shelves.txt",
                      "A1 maps\r\nA2 atlases\r\nB1 weather, tides, currents\r\n"
                      "B2 lighthouses\r\n") +
             "\r\n" + list.bodyLines[1] + "\r\n";
  messages.push_back(list);
}

}  // namespace

void AddStructuredLetters(std::vector<SampleMessage>& messages) {
  AddHtmlOnly(messages);
  AddAlternative(messages);
  AddNested(messages);
  AddFilesSent(messages);
  AddInline(messages);
}

}  // namespace tarnwick::samples
