// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/sample_letters.h"

#include <array>
#include <cstdio>

namespace tarnwick::samples {

namespace {

std::string DateHeader(DateTime date) {
  constexpr std::array<const char*, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  CivilTime civil = date.ToCivil();
  char text[64];
  std::snprintf(text, sizeof text, "%s, %d %s %d %02d:%02d:%02d +0000",
                kDays[static_cast<size_t>(date.Weekday())], civil.day,
                kMonths[static_cast<size_t>(civil.month - 1)], civil.year, civil.hour, civil.minute,
                civil.second);
  return text;
}

// A letter of plain ASCII, as most are.
void AddPlain(std::vector<SampleMessage>& messages, SampleMessage message,
              const SamplePerson& other, const std::vector<std::string>& lines) {
  bool isOut = message.direction == "Out";
  SamplePerson from = {message.fromName.c_str(), message.fromAddress.c_str()};
  message.raw = HeaderLines(message, Mailbox(from), Mailbox(isOut ? other : kClara),
                            message.subject, PlainContent("us-ascii")) +
                "\r\n" + Lines(lines);
  message.bodyLines = lines;
  messages.push_back(std::move(message));
}

}  // namespace

std::string Mailbox(const SamplePerson& person) {
  return "\"" + std::string(person.name) + "\" <" + person.address + ">";
}

std::string PlainContent(const std::string& charset, const std::string& encoding) {
  return "MIME-Version: 1.0\r\nContent-Type: text/plain;\r\n\tcharset=\"" + charset +
         "\"\r\nContent-Transfer-Encoding: " + encoding + "\r\n";
}

std::string Lines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\r\n";
  return text;
}

std::string HeaderLines(const SampleMessage& message, const std::string& from,
                        const std::string& to, const std::string& subject,
                        const std::string& content) {
  std::string lines;
  std::string date = DateHeader(message.date);
  if (!message.messageId.empty()) {
    lines += "Received: from relay.example.net by mx.hollis-marsh.example with ESMTP;\r\n\t" +
             date + "\r\nMessage-ID: " + message.messageId + "\r\n";
  }
  return lines + "From: " + from + "\r\nTo: " + to + "\r\nSubject: " + subject +
         "\r\nDate: " + date + "\r\n" + content + "X-Priority: 3\r\n";
}

void AddPlainLetters(std::vector<SampleMessage>& m) {
  AddPlain(m, InboxLetter(kEdmund, "1998-03-02 18:04:11", "It works!"), kClara,
           {"Clara,", "the modem has stopped singing, so I suppose this is our first electronic",
            "letter. I am in the next room. Tea?", "", "E."});
  AddPlain(m, SentLetter(kEdmund, "1998-03-02 18:09:40", "Re: It works!"), kEdmund,
           {"Yes please. Two sugars, and bring the manual.", "", "> I am in the next room. Tea?"});
  AddPlain(m, InboxLetter(kJonas, "1999-05-17 07:55:00", "Keys to the new shop"), kClara,
           {"Morning partner,", "",
            "the landlord leaves the keys with the baker. The press comes on Thursday,",
            "four men and a piano trolley. Wear old shoes.", "", "Jonas"});
  AddPlain(m, WorkshopLetter(kPaper, "1999-06-08 10:12:30", "Your order 1184: end papers"), kClara,
           {"Dear Mrs Hollis,", "",
            "we confirm 250 sheets, laid, cream, 120 g. The marbled sheets follow in July.",
            "Please note that prices rise by 4% on 1 August.", "", "Penrose Paper Mill"});
  AddPlain(m, SentLetter(kPaper, "1999-06-08 14:40:02", "Re: Your order 1184: end papers"), kPaper,
           {"Thank you. Could you add 20 sheets of the blue? The library wants it for the",
            "parish registers.", "", "C. Hollis"});
  AddPlain(m, InboxLetter(kLibrary, "2000-01-03 09:00:59", "No harm done at midnight"), kClara,
           {"Dear Clara,", "",
            "our catalogue thinks it is 1900, which suits most of the books. The computer",
            "people come on Monday. Your volumes 3 and 7 are ready to be picked up.", "",
            "Happy new year from all at the desk"});
  AddPlain(m, InboxLetter(kMina, "2001-09-30 20:31:17", "Settled in"), kClara,
           {"Mum, Dad,", "", "room is small, window is large, roommate plays the cello (well!).",
            "Lectures start at nine. I found the only decent bread in town.", "", "love, M.",
            "PS: please send the blue jumper"});
  AddPlain(m, SentLetter(kMina, "2001-10-01 19:05:44", "Jumper"), kMina,
           {"On its way, with a jar of quince jelly wrapped inside it. Don't shake.", "", "Mum"});
  AddPlain(m, WorkshopLetter(kJonas, "2002-02-19 16:22:08", "Estimate for the harbour log books"),
           kClara,
           {"12 volumes, quarter leather, sewn on tapes:", "", "  leather    310.00",
            "  boards      84.50", "  time       960.00", "",
            "I'd say 1,400 and we keep the old labels. Agreed?"});
  AddPlain(m, SentLetter(kJonas, "2002-02-19 16:30:51", "Re: Estimate for the harbour log books"),
           kJonas, {"Agreed. Ask for half in advance, they paid late last time."});
  AddPlain(m, InboxLetter(kEdmund, "2002-11-23 12:00:00", "Sunday's walk"), kClara,
           {"The Petersens bring soup, we bring cake, it will rain at three o'clock.",
            "Meet at the weir at half past ten."});
  AddPlain(
      m, InboxLetter(kLibrary, "2003-04-11 11:48:36", "Reminder: 2 books overdue"), kClara,
      {"Dear reader,", "", "these loans have passed their date:", "",
       "  The Care of Fine Books     due 28 March", "  Soups of Three Rivers      due  4 April", "",
       "(We know which of the two is Edmund's.)"});
  AddPlain(m, WorkshopLetter(kPaper, "2003-10-06 08:15:23", "Delivery on Wednesday"), kClara,
           {"The lorry is with you between 8 and 10. Please have somebody at the yard gate;",
            "last time the driver left the pallet with the greengrocer."});
  AddPlain(m, InboxLetter(kMina, "2004-05-14 22:10:09", "Passed!!!"), kClara,
           {"With distinction. I may sleep until Tuesday.", "", "M."});
  AddPlain(m, SentLetter(kMina, "2004-05-15 06:40:27", "Re: Passed!!!"), kMina,
           {"Your father has told the postman, the baker and both dogs.",
            "We are so proud of you. Come home soon, the cherries are nearly ripe."});
  AddPlain(m, WorkshopLetter(kJonas, "2005-08-30 17:17:17", "Glue"), kClara,
           {"Whoever left the pot on: it is now a sculpture. Bought a new one, 38.20."});
  AddPlain(m, InboxLetter(kLibrary, "2007-01-15 10:00:00", "Talk on bookbinding, 8 February"),
           kClara,
           {"Could you and Mr Marsh speak for about forty minutes, with things to pass round?",
            "Last year's talk on bees was full to the last chair."});
  AddPlain(m, SentLetter(kLibrary, "2007-01-15 18:25:13", "Re: Talk on bookbinding, 8 February"),
           kLibrary, {"With pleasure. We bring a sewing frame and no bees."});
  AddPlain(m, InboxLetter(kJonas, "2009-11-27 16:59:58", "Ten years"), kClara,
           {"Ten years of Hollis & Marsh next week. I counted: 4,312 books, one fire alarm.",
            "Dinner's on me.", "", "J."});
}

}  // namespace tarnwick::samples
