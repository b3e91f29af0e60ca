// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/msg_file.h"

#include "outlook/compound_file.h"
#include "samples/mailbox_builder.h"
#include "support/program_fixture.h"
#include "takeout/compound_file_writer.h"

namespace tarnwick::outlook {
namespace {

class MsgFile : public testing::ProgramFixture {
 protected:
  intake::MailMessage ReadMsgFile(const std::string& path, const intake::SourceDescriptor& place) {
    return MsgFileReader().Read(path, place, false).message;
  }
};

TEST_F(MsgFile, BecomesAMessageWithWhatHangsOnIt) {
  std::string path = WriteTemp("saved.msg", samples::SampleMsgFile("Saved"));
  intake::MailMessage message = ReadMsgFile(path, {"Letters", "", "Message files"});
  EXPECT_EQ(message.Subject, "Saved");
  EXPECT_EQ(message.FromAddress, "bob@firm.test");
  EXPECT_EQ(message.SentTime.ToIso(), "2002-03-05 13:07:00");
  EXPECT_EQ(message.ToCount, 1);
  EXPECT_EQ(message.Cc[0].Address, "carl@firm.test");
  EXPECT_GT(message.Body.size(), 6000U);
  EXPECT_EQ(message.Attachments[0], "picture.png");
  EXPECT_EQ(message.Folder, "Letters");
  EXPECT_EQ(message.Direction, "In");
  std::string raw = platform::ReadFile(core::State().TempMessageFile);
  EXPECT_THAT(raw, HasSubstr("Subject: The inner one"));
  EXPECT_THAT(raw, HasSubstr("iYmJiYmJ"));

  std::string contact =
      takeout::CompoundFileBytes({{"__substg1.0_001A001E", "IPM.Contact"},
                                  {"__properties_version1.0", std::string(32, '\0')}});
  EXPECT_THROW(ReadMsgFile(WriteTemp("contact.msg", contact), {}), Error);
  EXPECT_THROW(ReadMsgFile(WriteTemp("text.msg", "From: a@b\r\n\r\n"), {}), Error);
}

// Every word of the file's own tables set to what leads astray: it ends, and no chain that returns
// to itself or passes the file's end gives bytes.
TEST_F(MsgFile, DamageCostsNoMoreThanTheFile) {
  const std::string sound = samples::SampleMsgFile();
  std::string path = folder_.File("damaged.msg");
  int read = 0;
  for (size_t place = 0; place + 4 <= sound.size(); place += place < 512 ? 12 : 172) {
    for (const char* word : {"\0\0\0\0", "\x7\0\0\0", "\xFF\xFF\xFF\x7F", "\xFE\xFF\xFF\xFF"}) {
      std::string bytes = sound;
      bytes.replace(place, 4, word, 4);
      platform::WriteFile(path, bytes);
      try {
        ReadMsgFile(path, {});
        ++read;
      } catch (const Error&) {
        // Refused.
      }
    }
  }
  EXPECT_GT(read, 0);
  for (size_t size : {0U, 8U, 512U, 4000U}) {
    platform::WriteFile(path, sound.substr(0, size));
    EXPECT_THROW(ReadMsgFile(path, {}), Error) << size;
  }
}

// Four thousand storages that share one stream of a megabyte would be read four thousand times.
TEST_F(MsgFile, SharedStreamsAreNotReadOverAndOver) {
  std::vector<std::pair<std::string, std::string>> streams = {
      {"big", std::string(size_t{1} << 20, 'x')}};
  CompoundFile file(takeout::CompoundFileBytes(streams));
  CompoundFile::Entry big = file.Children(CompoundFile::kRoot).at(0);
  EXPECT_EQ(file.Read(big), streams[0].second);
  EXPECT_THROW(
      {
        for (int i = 0; i < 100; ++i) file.Read(big);
      },
      Error);
}

}  // namespace
}  // namespace tarnwick::outlook
