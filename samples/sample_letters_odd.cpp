// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/sample_letters.h"

namespace tarnwick::samples {

namespace {

// The header with its Date line replaced; an empty one is left out.
std::string WithDate(std::string header, const std::string& line) {
  size_t start = header.find("\r\nDate: ") + 2;
  size_t end = header.find("\r\n", start) + 2;
  return header.replace(start, end - start, line);
}

void AddDated(std::vector<SampleMessage>& messages, const std::string& when,
              const std::string& subject, const std::string& dateLine, const std::string& text) {
  SampleMessage letter = InboxLetter(kEdmund, when, subject);
  letter.bodyLines = {text};
  letter.raw =
      WithDate(HeaderLines(letter, Mailbox(kEdmund), Mailbox(kClara), subject, ""), dateLine) +
      "\r\n" + text + "\r\n";
  messages.push_back(letter);
}

}  // namespace

void AddOddLetters(std::vector<SampleMessage>& messages) {
  AddDated(messages, "2000-02-29 06:00:00", "From the ferry's terminal",
           "Date: Tue, 29 Feb 100 06:00:00 GMT\r\n", "This machine believes in the year 100.");
  AddDated(messages, "2001-07-19 12:34:56", "Postcard", "Date: sometime on Thursday\r\n",
           "The clock in this hotel has one hand and no opinion.");
  AddDated(messages, "2006-12-24 16:00:00", "Tree", "", "It is in the hall. So is the resin.");

  SampleMessage nothing = InboxLetter(kMina, "2003-06-02 07:00:01", "");
  nothing.bodyLines = {"forgot the subject, as usual"};
  nothing.raw = HeaderLines(nothing, Mailbox(kMina), Mailbox(kClara), "", "");
  nothing.raw.erase(nothing.raw.find("Subject: \r\n"), 11);
  nothing.raw += "\r\nforgot the subject, as usual\r\n";
  messages.push_back(nothing);

  SampleMessage words = InboxLetter(kJonas, "2004-02-03 18:18:18", "Notes for the talk");
  words.bodyLines = {"To begin with, people want to touch things.",
                     "In the end they want to know what glue is made of."};
  words.raw = HeaderLines(words, Mailbox(kJonas), Mailbox(kClara), words.subject, "") + "\r\n" +
              Lines(words.bodyLines);
  messages.push_back(words);

  // The last line lacks its end, and the name holds what a statement must not stumble over.
  SampleMessage quoted =
      InboxLetter({"Pat O'Dell; \"100%\"", "pat@o-dell.example"}, "2005-05-05 05:05:05",
                  "It's 5 o'clock & I can't sleep: 'quotes', 100% and --");
  quoted.fromName = "Pat O'Dell; 100%";
  quoted.bodyLines = {"Robert'); said the tables."};
  quoted.raw = HeaderLines(quoted, "Pat O'Dell; 100% <pat@o-dell.example>", Mailbox(kClara),
                           quoted.subject, "") +
               "\r\nRobert'); said the tables.";
  messages.push_back(quoted);
}

}  // namespace tarnwick::samples
