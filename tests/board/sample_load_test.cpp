// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The whole way: the sample profile is written, loaded by the load command, and every stored
// message compared with what was written.

#include "board/load_command.h"
#include "samples/sample_profile.h"
#include "support/program_fixture.h"
#include "takeout/stored_file.h"

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

  static std::map<std::string, std::string> IdsByRaw() {
    std::map<std::string, std::string> ids;
    int64_t last = Query("SELECT Max(ID) AS Last FROM Email").AsInt();
    for (int64_t id = 1; id <= last; ++id) {
      ids[takeout::ReadStoredFile(id).value_or("")] = std::to_string(id);
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
    const std::string where = " FROM Email WHERE ID=" + id->second;
    EXPECT_EQ(Rows("SELECT Folder, Parent, Direction, NameFrom, AddressFrom" + where),
              message.folder + "|" + message.parent + "|" + message.direction + "|" +
                  message.fromName + "|" + message.fromAddress);
    if (!message.subject.empty()) {
      EXPECT_EQ(Rows("SELECT Subject" + where), message.subject);
    }
    std::string body = Rows("SELECT Body" + where);
    for (const std::string& line : message.bodyLines) EXPECT_THAT(body, HasSubstr(line));
    std::string names;
    for (const std::string& name : message.attachments) names += (names.empty() ? "" : "\n") + name;
    EXPECT_EQ(Rows("SELECT FileName FROM Attachment WHERE EmailID=" + id->second + " ORDER BY ID"),
              names);
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
