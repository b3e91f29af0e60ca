// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Malicious mail, taken from its file to its rows. Whatever a kind holds, it is stored byte
// for byte or refused, its texts are UTF-8, its rows are as many as it counts, its neighbours in
// the repository stay, and nothing is written outside the scratch folder. What else must come of it
// stands beside it.

#include "samples/hostile_mail.h"
#include "intake/header_parser.h"
#include "maintenance/check.h"
#include "platform/charset.h"
#include "support/program_fixture.h"
#include "support/repository_content.h"
#include "takeout/stored_file.h"
#include "takeout/stored_message.h"

namespace tarnwick::board {
namespace {

using samples::HostileKind;

class HostileMail : public testing::ProgramFixture {
 protected:
  HostileMail() {
    testing::StoreVariedMessages(2);
    core::State().RunWideAnswer = core::SenderAnswer::kAcceptAll;
    core::State().LogEvents = false;
    neighbours_ = Neighbours();
  }

  static std::vector<std::string> Neighbours() {
    std::vector<std::string> rows;
    for (int64_t id : {1, 2}) {
      rows.push_back(takeout::ReadStoredMessage(id)->subject +
                     takeout::ReadStoredFile(id).value_or(""));
    }
    return rows;
  }

  static std::string Joined(const std::vector<intake::AddressPair>& pairs) {
    std::string text;
    for (size_t i = 0; i < pairs.size() && i < 3; ++i) {
      text += (i == 0 ? "" : "|") + pairs[i].Name + "<" + pairs[i].Address + ">";
    }
    return text;
  }

  // A stored message's field as the table names it.
  static std::string FieldOf(const takeout::StoredMessage& message, const std::string& name) {
    if (name == "body") return message.body;
    if (name == "to") return Joined(message.to);
    if (name == "to count") return std::to_string(message.to.size());
    if (name == "cc count") return std::to_string(message.cc.size());
    if (name == "body length") return std::to_string(message.body.size());
    if (name == "files") {
      std::string text;
      for (const std::string& file : message.attachments) text += (text.empty() ? "" : "|") + file;
      return text;
    }
    jet::Recordset rows;
    rows.Open("SELECT " + name + " FROM Email WHERE ID=" + std::to_string(message.id),
              RepositoryDb());
    jet::Value value = rows.Field(0);
    auto date = value.AsDate();
    return value.IsDate() && date ? date->ToIso() : value.AsText();
  }

  std::vector<std::string> neighbours_;
};

TEST_F(HostileMail, BecomesWhatItIsAndNothingElse) {
  std::vector<std::string> outside = platform::ListFiles(folder_.Path());
  std::vector<HostileKind> kinds = samples::HostileKinds(4000);
  for (size_t i = 0; i < samples::RepeatedWordCount(); ++i) {
    kinds.push_back(samples::RepeatedWord(i, 400));
  }
  EXPECT_GE(kinds.size(), 60U);
  int64_t last = 2;
  int number = 0;
  for (const HostileKind& kind : kinds) {
    SCOPED_TRACE(kind.name);
    platform::WriteFile(core::State().TempMessageFile, kind.raw);
    bool taken =
        intake::dbxParseMessage(core::State().TempMessageFile, {"Inbox", "Local Folders", "Text"},
                                "", "key " + std::to_string(++number));
    EXPECT_EQ(taken, !kind.isRefused);
    if (!taken) {
      EXPECT_EQ(CountRows("Email"), last);
      continue;
    }
    std::optional<takeout::StoredMessage> message = takeout::ReadStoredMessage(++last);
    ASSERT_TRUE(message.has_value());
    EXPECT_TRUE(takeout::ReadStoredFile(last) == kind.raw);
    for (const std::string* text : {&message->subject, &message->fromName, &message->fromAddress,
                                    &message->body, &message->htmlBody}) {
      EXPECT_TRUE(platform::IsValidUtf8(*text));
    }
    for (const auto& [name, expected] : kind.expected) {
      EXPECT_EQ(FieldOf(*message, name).substr(0, 300), expected.substr(0, 300)) << name;
    }
  }
  EXPECT_EQ(CountRows("Email"), last);
  EXPECT_EQ(Neighbours(), neighbours_);
  EXPECT_EQ(platform::ListFiles(folder_.Path()), outside);
  EXPECT_TRUE(platform::ListFolders(core::State().EmailFileFolder).empty());
  for (const std::string& name : platform::ListFiles(core::State().EmailFileFolder)) {
    EXPECT_EQ(name, platform::SafeFileName(name));
  }
  maintenance::CheckReport report;
  EXPECT_EQ(maintenance::CheckRepository(report), maintenance::Result::kDone);
  EXPECT_TRUE(report.IsSound());
}

}  // namespace
}  // namespace tarnwick::board
