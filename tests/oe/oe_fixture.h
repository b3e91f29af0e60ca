// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the tests of this room share: the program started on an empty repository, and a profile.
#pragma once

#include "intake/load_account.h"
#include "oe/import.h"
#include "oe/state.h"
#include "samples/dbx_builder.h"
#include "samples/profile_builder.h"
#include "support/program_fixture.h"

namespace tarnwick::oe {

class OeFixture : public testing::ProgramFixture {
 protected:
  OeFixture() {
    ResetState();
    core::BeginLoadState();
    core::State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
  }
  ~OeFixture() override {
    ResetState();
    core::EndLoadState();
  }

  // Reads what was discovered, with the account of a load.
  static void ReadAll() {
    intake::LoadAccount& account = intake::Account();
    account.Open();
    AnnounceMessages();
    ImportOutlookExpress();
    account.Close();
  }

  // A plain letter; its text and its index entries name the subject.
  static samples::IndexedMessage MailOf(const std::string& subject, int minute = 0) {
    samples::IndexedMessage letter;
    letter.subject = subject;
    letter.date = DateTime::FromDate(2004, 1, 5).WithTime(10, minute, 0);
    letter.senderName = "Bob Kern";
    letter.senderAddress = "bob@example.org";
    letter.text =
        "From: Bob Kern <bob@example.org>\r\nTo: Ann <ann@example.org>\r\nSubject: " + subject +
        "\r\nDate: Mon, 5 Jan 2004 10:" + std::string(minute < 10 ? "0" : "") +
        std::to_string(minute) + ":00 +0000\r\n\r\nAbout " + subject + ".\r\n";
    return letter;
  }

  static std::string StoreWith(std::initializer_list<samples::IndexedMessage> letters) {
    samples::MessageStoreBuilder store;
    for (const samples::IndexedMessage& letter : letters) store.AddMessage(letter);
    store.Finish();
    return store.Bytes();
  }
  // A store file of such letters in one node.
  static std::string StoreOf(const std::vector<std::string>& subjects) {
    samples::MessageStoreBuilder store;
    int minute = 0;
    for (const std::string& subject : subjects) store.AddMessage(MailOf(subject, minute++));
    store.Finish();
    return store.Bytes();
  }

  // Subjects in the order in which the reader came to them.
  static std::vector<std::string> SubjectsRead() {
    std::vector<std::string> subjects;
    std::string log = Log();
    const std::string mark = "*****Email = 1/5/2004 ";
    for (size_t at = log.find(mark); at != std::string::npos; at = log.find(mark, at + 1)) {
      size_t end = log.find("\r\n", at);
      std::string line = log.substr(at + mark.size(), end - at - mark.size());
      subjects.push_back(line.substr(line.find(' ') + 1));  // behind the time of day
    }
    return subjects;
  }

  static void UseProfile(const std::string& folder) { repository::SetProfileFolder(folder); }

  // The counts of the load that are not 0.
  static std::string Summary() {
    const core::LoadCounts& counts = core::State().Counts;
    auto part = [](const char* name, int64_t number) {
      return number == 0 ? std::string() : std::string(name) + " " + std::to_string(number) + ", ";
    };
    EXPECT_EQ(counts.found, counts.stored + counts.alreadyStored + counts.refused + counts.ignored +
                                counts.unreadable + counts.notReached);
    return part("found", counts.found) + part("stored", counts.stored) +
           part("already", counts.alreadyStored) + part("refused", counts.refused) +
           part("ignored", counts.ignored) + part("unreadable", counts.unreadable) +
           part("not reached", counts.notReached);
  }
};

}  // namespace tarnwick::oe
