// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/pst_client.h"

#include "core/run_state.h"
#include "outlook/pst_protocol.h"
#include "samples/pst_builder.h"
#include "support/machine.h"
#include "support/real_data.h"
#include "support/testing.h"

namespace tarnwick::outlook {
namespace {

const std::string kReader = TARNWICK_READER;

class PstClientTest : public ::testing::Test {
 protected:
  // A reader that is a shell script, which finds the channel on its standard input.
  PstClient Scripted(const std::string& script, ReaderLimits limits) {
    std::string path = folder_.File("script");
    platform::WriteFile(path, "#!/bin/sh\n" + script);
    testing::LetOwner(path, 7);
    return PstClient(path, path, limits);
  }
  testing::TempFolder folder_;
};

TEST_F(PstClientTest, OutlivesReadersThatMisbehave) {
  // Each frame is one that may be; all of them are more than the store can hold.
  const std::string property("P\xFF\xFF\0\0\0\0\0\0\xF7\xFF\0\0", 13);
  std::string overlong;
  for (int i = 0; i < 40; ++i) overlong += property + std::string(0xFFF7, 'x');
  platform::WriteFile(folder_.File("answer"), overlong + std::string("Z\0\0\0\0", 5));
  const std::pair<const char*, std::string> kRows[] = {
      {"sends more than any store holds", "cat '" + folder_.File("answer") + "' >&0; sleep 60"},
      {"ends at once", "exit 1"},
      {"hangs", "sleep 60"},
      {"sends an overlong frame", "printf 'P\\377\\377\\377\\177' >&0; sleep 60"},
      {"sends half a frame", "printf 'P\\10' >&0; sleep 60"},
      {"sends a property cut short", "printf 'P\\2\\0\\0\\0ab' >&0; sleep 60"},
      {"sends more of a property than it told",
       "printf 'P\\12\\0\\0\\0\\0\\0\\0\\0\\1\\0\\0\\0abZ\\0\\0\\0\\0' >&0; sleep 60"},
      {"continues no property", "printf 'C\\2\\0\\0\\0ab' >&0; sleep 60"},
      {"sends an unknown frame", "printf '?\\0\\0\\0\\0' >&0; sleep 60"},
      {"sends rows without end", "yes 'R' | tr '\\n' '\\0' >&0"}};
  ReaderLimits limits;
  limits.openMilliseconds = 300;
  limits.requestMilliseconds = 300;
  limits.restarts = 1;
  for (const auto& [name, script] : kRows) {
    PstClient client = Scripted(script, limits);
    EXPECT_THROW(client.Ask(frame::kStore, {}), Error) << name;
    EXPECT_THROW(client.Ask(frame::kStore, {}), Error) << name;
    EXPECT_TRUE(client.GivenUp()) << name;
    EXPECT_THROW(client.Ask(frame::kStore, {}), Error) << name;
  }
}

TEST_F(PstClientTest, GoesOnBehindTheRequestThatKilledTheReader) {
  std::string store = testing::RealData("pst/sample1.pst");
  if (store.empty()) GTEST_SKIP();
  PstClient client(store, kReader);
  EXPECT_FALSE(client.Ask(frame::kStore, {}).properties.empty());
  testing::KillProcess(client.ProcessId());
  EXPECT_THROW(client.Ask(frame::kStore, {}), Error);
  EXPECT_FALSE(client.Ask(frame::kStore, {}).properties.empty());
  EXPECT_FALSE(client.GivenUp());
}

// Whatever becomes of what was asked for ahead, each item comes in its time, and is the right one.
TEST_F(PstClientTest, GivesItemsAskedForAheadInAnyOrderAndBehindALoss) {
  samples::PstBuilder store;
  uint32_t inbox = store.AddFolder(samples::PstBuilder::kTop, "Inbox");
  std::vector<PstClient::Numbers> items;
  for (uint32_t i = 0; i < 6; ++i) {
    samples::PstMessage mail = samples::PstMail("a mail");
    mail.properties.texts[0x1000] = std::string(i == 1 ? 700'000 : 10, 'a');
    mail.attachments.resize(1);
    mail.attachments[0].data = std::string(i + 1, 'f');
    items.push_back({inbox, i, store.AddMessage(inbox, mail)});
  }
  platform::WriteFile(folder_.File("a.pst"), store.Build());
  PstClient client(folder_.File("a.pst"), kReader);
  client.Ask(frame::kStore, {});
  for (bool isKilled : {false, true}) {
    client.ReadAhead(items);
    if (isKilled) testing::KillProcess(client.ProcessId());
    for (uint32_t i : {2, 0, 1, 5, 4, 3}) {
      RawAnswer answer = client.Ask(frame::kItem, items[i]);
      ASSERT_EQ(answer.attachments.size(), 1u) << i;
      // The second is too long to lie ready; behind the loss none does.
      EXPECT_EQ(answer.attachmentBytes.size(), isKilled || i == 1 ? 0u : 1u) << i;
      PstClient::Numbers path = items[i];
      path.push_back(0);
      std::string bytes;
      std::set<std::string> lost;
      client.AskBytes(
          path, [&](std::string_view piece) { bytes += piece; }, lost);
      EXPECT_EQ(bytes.size(), i + 1);
    }
  }
}

TEST_F(PstClientTest, StopsWaitingWhenThePersonStops) {
  ReaderLimits limits;
  limits.openMilliseconds = limits.requestMilliseconds = 3'600'000;
  PstClient client = Scripted("sleep 3600", limits);
  core::State().ImportCancelFlag = true;
  EXPECT_THROW(client.Ask(frame::kStore, {}), Error);
  core::State().ImportCancelFlag = false;
}

TEST_F(PstClientTest, AnswersOddRequestsWithAnError) {
  std::string store = testing::RealData("pst/sample1.pst");
  if (store.empty()) GTEST_SKIP();
  PstClient client(store, kReader);
  int64_t id = 0;
  for (auto [kind, numbers] : std::vector<std::pair<char, std::vector<uint32_t>>>{
           {'?', {}},
           {frame::kFolder, {}},
           {frame::kFolder, {0xFFFFFFFF}},
           {frame::kItem, {1, 2}},
           {frame::kItem, {0x8022, 0xFFFFFFFF, 0xFFFFFFFF}},
           {frame::kEmbedded, {0x8082, 0, 0x200024, 0xFFFFFFFF}},
           {frame::kEmbedded, std::vector<uint32_t>(100, 0)}}) {
    EXPECT_THROW(client.Ask(kind, numbers), Error) << kind << numbers.size();
    if (id == 0) id = client.ProcessId();
    EXPECT_EQ(client.ProcessId(), id) << "the same reader lives on";
  }
}

TEST_F(PstClientTest, TellsWhatIsNoStore) {
  platform::WriteFile(folder_.File("a.pst"), "this is no store");
  PstClient foreign(folder_.File("a.pst"), kReader);
  EXPECT_THROW(foreign.Ask(frame::kStore, {}), Error);
  EXPECT_THROW(PstClient(folder_.File("none.pst"), kReader), Error);
  PstClient noReader(folder_.File("a.pst"), folder_.File("no-reader"));
  EXPECT_THROW(noReader.Ask(frame::kStore, {}), Error);
}

}  // namespace
}  // namespace tarnwick::outlook
