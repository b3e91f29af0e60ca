// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The whole way: the sample profile is written, loaded by the load command, and every stored
// message compared with what was written.

#include "board/load_command.h"
#include "samples/sample_profile.h"
#include "support/program_fixture.h"

namespace tarnwick::board {
namespace {

using samples::SampleMessage;

class SampleLoad : public testing::ProgramFixture {
 protected:
  SampleLoad() {
    samples::WriteSampleProfile(folder_.File("profile/"));
    repository::SetProfileFolder(folder_.File("profile/"));
  }

  static LoadResult Load() {
    LoadOptions options;
    options.everyMailer = true;
    options.senders = SenderPolicy::kAcceptAll;
    return LoadFromMailer(options);
  }

  static std::vector<std::string> Column(const std::string& sql) {
    std::vector<std::string> values;
    jet::Recordset rows;
    for (rows.Open(sql, repository::RepositoryDb()); !rows.Eof(); rows.MoveNext()) {
      values.push_back(rows.Field(0).AsText());
    }
    return values;
  }

  static std::map<std::string, std::string> IdsByRaw() {
    std::map<std::string, std::string> ids;
    for (const std::string& id : Column("SELECT ID FROM Email")) {
      std::string raw;
      for (const std::string& piece :
           Column("SELECT FileBody FROM FileRepository WHERE FileID=" + id + " ORDER BY ID")) {
        raw += piece;
      }
      ids[raw] = id;
    }
    return ids;
  }
};

TEST_F(SampleLoad, EveryMessageIsStoredAsItWasWritten) {
  LoadResult result = Load();
  ASSERT_TRUE(result.ran);
  EXPECT_FALSE(result.failed);
  auto all = static_cast<int64_t>(samples::SampleMessages().size());
  EXPECT_EQ(result.counts.found, all);
  EXPECT_EQ(result.counts.stored, all - 1);
  EXPECT_EQ(result.counts.notReached, 1);  // the draft
  EXPECT_THAT(ui_.Shown("error"), IsEmpty());

  std::map<std::string, std::string> ids = IdsByRaw();
  EXPECT_EQ(ids.size(), static_cast<size_t>(all - 1));
  for (const SampleMessage& message : samples::SampleMessages()) {
    SCOPED_TRACE(message.subject + " of " + message.date.ToIso());
    auto id = ids.find(message.raw);
    if (!message.isTaken) {
      EXPECT_EQ(id, ids.end());
      continue;
    }
    if (id == ids.end()) {
      ADD_FAILURE() << "the raw text is not in the repository";
      continue;
    }
    auto field = [&](const std::string& name) {
      return Query("SELECT " + name + " FROM Email WHERE ID=" + id->second).AsText();
    };
    EXPECT_EQ(field("Folder"), message.folder);
    EXPECT_EQ(field("Parent"), message.parent);
    EXPECT_EQ(field("Direction"), message.direction);
    EXPECT_EQ(field("NameFrom"), message.fromName);
    EXPECT_EQ(field("AddressFrom"), message.fromAddress);
    if (!message.subject.empty()) {
      EXPECT_EQ(field("Subject"), message.subject);
    }
    std::string body = field("Body");
    for (const std::string& line : message.bodyLines) EXPECT_THAT(body, HasSubstr(line));
    EXPECT_EQ(
        Column("SELECT FileName FROM Attachment WHERE EmailID=" + id->second + " ORDER BY ID"),
        message.attachments);
  }
}

TEST_F(SampleLoad, ASecondLoadFindsEverythingStored) {
  Load();
  int64_t rows = CountRows("FileRepository");
  LoadResult again = Load();
  EXPECT_EQ(again.counts.stored, 0);
  EXPECT_EQ(again.counts.alreadyStored, static_cast<int64_t>(samples::SampleMessages().size()) - 1);
  EXPECT_EQ(CountRows("FileRepository"), rows);
  EXPECT_THAT(ui_.Shown("box"), Contains("There isn't new message."));
}

}  // namespace
}  // namespace tarnwick::board
