// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The reader of message files, on sound stores and on hostile ones.
#include "oe/dbx_read.h"

#include "oe/byte_reader.h"
#include "oe_fixture.h"

namespace tarnwick::oe {
namespace {

using samples::DbxImage;
using samples::IndexedMessage;
using samples::MessagePlaces;
using samples::MessageStoreBuilder;

class DbxRead : public OeFixture {
 protected:
  // Writes the store and reads it, each message becoming a file.
  std::vector<std::string> Read(const MessageStoreBuilder& store) {
    std::string path = WriteTemp("Inbox.dbx", store.Bytes());
    ReadMessageTree(path, kMsgToFiles, {"Inbox", "", "ann"});
    return SubjectsRead();
  }

  static std::string FileOf(const std::string& subject) {
    return platform::ReadFile(core::State().EmailFileFolder + subject + ".eml");
  }
  static bool WasCopied(const std::string& subject) {
    return platform::FileExists(core::State().EmailFileFolder + subject + ".eml");
  }
};

TEST_F(DbxRead, CopiesEveryByteOfATextWhateverItsBlocks) {
  MessageStoreBuilder store;
  std::string all;
  for (int c = 0; c < 256; ++c) all += static_cast<char>(c);
  IndexedMessage message = MailOf("bytes");
  message.text += all + all + all;
  for (size_t size : {7, 512, 100'000}) {
    message.blockSize = size;
    message.fraction = static_cast<uint32_t>(size);
    store.AddMessage(message);
  }
  message.fraction = 1;
  message.text.resize(size_t{512} * 2);  // ends with a full block
  message.blockSize = 512;
  store.AddMessage(message);
  store.Finish();
  Read(store);
  std::string longer = MailOf("bytes").text + all + all + all;
  for (const char* name : {"bytes", "bytes (2)", "bytes (3)"}) EXPECT_EQ(FileOf(name), longer);
  EXPECT_EQ(FileOf("bytes (4)"), message.text);
}

TEST_F(DbxRead, ATreeOfTwoLevelsIsReadLeftChildFirst) {
  MessageStoreBuilder store;
  auto info = [&](const char* subject) { return store.AddMessage(MailOf(subject)).info; };
  uint32_t third = store.Image().AddNode({{info("third level"), 0}});
  uint32_t left = store.Image().AddNode({{info("left 1"), third}, {info("left 2"), 0}});
  uint32_t right1 = store.Image().AddNode({{info("right 1"), 0}});
  uint32_t right2 = store.Image().AddNode({{info("right 2"), 0}});
  store.SetRoot(
      store.Image().AddNode({{info("root 1"), right1}, {0, right2}, {info("root 3"), 0}}, left));
  EXPECT_THAT(Read(store),
              ElementsAre("left 1", "left 2", "right 1", "root 1", "right 2", "root 3"));
  // The last entry has no child: a node is looked for at offset 0.
  EXPECT_EQ(ui_.Shown("error").size(), 1U);
}

TEST_F(DbxRead, ChildrenOfARootWithoutALeftChildAreNotVisited) {
  MessageStoreBuilder store;
  uint32_t child = store.Image().AddNode({{store.AddMessage(MailOf("below")).info, 0}});
  store.SetRoot(store.Image().AddNode({{store.AddMessage(MailOf("root")).info, child}}));
  EXPECT_THAT(Read(store), ElementsAre("root"));
}

TEST_F(DbxRead, AnEmptyOrMissingFileIsAnEmptyFolder) {
  EXPECT_THAT(Read(MessageStoreBuilder()), IsEmpty());
  ReadMessageTree(folder_.File("none.dbx"), kMsgToFiles, {"None", "", "ann"});
  for (const char* bytes : {"", "\xCF\xAD", "no store at all"}) {
    ReadMessageTree(WriteTemp("odd.dbx", bytes), kMsgToFiles, {"Odd", "", "ann"});
  }
  EXPECT_THAT(ui_.shown, IsEmpty());
  EXPECT_THAT(Log(), HasSubstr("Reads = None\r\n" + folder_.File("none.dbx")));
}

TEST_F(DbxRead, StopIsHeededBetweenEntries) {
  MessageStoreBuilder store;
  for (int i = 0; i < 5; ++i) store.AddMessage(MailOf("letter " + std::to_string(i), i));
  store.Finish(2, true);
  ui_.onYield = [] { core::State().ImportCancelFlag = true; };
  EXPECT_THAT(Read(store), ElementsAre("letter 0"));
  EXPECT_THAT(Read(store), ElementsAre("letter 0"));  // and before the tree
}

TEST_F(DbxRead, AFirstBlockBelow16000MeansTheEndOfTheMessageBefore) {
  MessageStoreBuilder store;
  store.AddMessage(MailOf("first"));
  MessagePlaces second = store.AddMessage(MailOf("second"));
  store.Image().Put32(second.info + 24, 15'998U << 8 | 0x84);
  store.Finish();
  Read(store);
  EXPECT_TRUE(WasCopied("first"));
  EXPECT_FALSE(WasCopied("second"));  // no block stands behind the first letter's

  // In another file: a block stands where the last chain ended.
  ResetState();
  MessageStoreBuilder other;
  MessagePlaces lost = other.AddMessage(MailOf("lost"));
  other.Image().Put32(lost.info + 24, 15'998U << 8 | 0x84);
  other.Finish();
  State().LastChainEnd = lost.blocks.front();
  Read(other);
  EXPECT_EQ(FileOf("lost"), MailOf("lost").text);
  // 15999 is an offset like any other.
  State().LastChainEnd = lost.blocks.front();
  other.Image().Put32(lost.info + 24, 15'999U << 8 | 0x84);
  Read(other);
  EXPECT_FALSE(WasCopied("lost (2)"));
}

TEST_F(DbxRead, ASmallFourthEntryMeansAWordBehindTheTimestamp) {
  MessageStoreBuilder store;
  store.Image().PadTo(1U << 24);  // offsets that no index entry can hold
  IndexedMessage message = MailOf("far away");
  message.flagsDirect = false;
  store.AddMessage(message);
  store.Finish();
  EXPECT_THAT(Read(store), ElementsAre("far away"));
  EXPECT_EQ(FileOf("far away"), message.text);
}

TEST_F(DbxRead, ATimestampFoundInTheWrongPlaceDoesNotLoseTheText) {
  MessageStoreBuilder store;
  store.Image().PadTo(1U << 24);
  IndexedMessage message = MailOf("misdated");
  // The low half of this time, behind the last index entry, is the high half of a time of 2004.
  uint64_t time = samples::ToFileTime(message.date) >> 32 << 32 | 0x01C4D400;
  message.date = DateTime::FromSeconds(static_cast<int64_t>(time / 10'000'000) - 11'644'473'600);
  message.fraction = static_cast<uint32_t>(time % 10'000'000);
  MessagePlaces places = store.AddMessage(message);
  store.Finish();
  ByteReader reader(WriteTemp("far.dbx", store.Bytes()));
  size_t found = FindInfoDate(reader, places.info, store.Bytes()[places.info + 10]);
  ASSERT_EQ(places.info + 12 + found, places.date - 4);
  ReadMessageTree(folder_.File("far.dbx"), kMsgToFiles, {"Inbox", "", "ann"});
  EXPECT_EQ(FileOf("misdated"), message.text);
}

TEST_F(DbxRead, DatesOutside1990To2009AreNotFound) {
  const DateTime first = DateTime::FromDate(1990, 1, 1);
  const DateTime end = DateTime::FromDate(2010, 1, 1);
  const struct {
    const char* what;
    DateTime date;
    bool found;
  } rows[] = {{"the first second of 1990", first, false},
              {"the second after it", first.AddSeconds(1), true},
              {"the last second of 2009", end.AddSeconds(-1), true},
              {"2010", end, false},
              {"2021", DateTime::FromDate(2021, 12, 12), false},
              {"1601", DateTime::FromDate(1601, 1, 1), false}};
  for (const auto& row : rows) {
    MessageStoreBuilder store;
    IndexedMessage message = MailOf("dated");
    message.date = row.date;
    MessagePlaces places = store.AddMessage(message);
    ByteReader reader(WriteTemp("dated.dbx", store.Bytes()));
    size_t found = FindInfoDate(reader, places.info, store.Bytes()[places.info + 10]);
    EXPECT_EQ(found, row.found ? places.date - places.info - 12 : 0) << row.what;
  }
}

TEST_F(DbxRead, FileTimesBecomeDates) {
  EXPECT_THROW(Get32("abcdef", 3), Error) << "a number that passes the end of its bytes";
  uint64_t known = samples::ToFileTime(DateTime::FromDate(2002, 6, 17).WithTime(19, 42, 7));
  EXPECT_EQ(known, 0x01C21637102A1180U);
  EXPECT_EQ(FileTimeToDate(known + 9'999'999, false).ToIso(), "2002-06-17 19:42:07");
  const DateTime none = DateTime::FromDate(1900, 1, 1);
  EXPECT_EQ(FileTimeToDate(samples::ToFileTime(DateTime::FromDate(1900, 12, 31)), false), none);
  EXPECT_EQ(FileTimeToDate(samples::ToFileTime(DateTime::FromDate(2050, 1, 1)), false), none);
  EXPECT_EQ(FileTimeToDate(0x8000000000000000U, true), none);
  try {
    FileTimeToDate(0x8000000000000000U, false);
    FAIL() << "a time that the system refuses was taken";
  } catch (const Error& error) {
    EXPECT_EQ(error.Number(), 200);
  }
  EXPECT_THAT(Log(), HasSubstr("System message code is 87"));
}

TEST_F(DbxRead, KeysTellLettersOfOneSecondApart) {
  auto keyOf = [&](const IndexedMessage& message) {
    MessageStoreBuilder store;
    MessagePlaces places = store.AddMessage(message);
    ReadMessage read;
    EXPECT_TRUE(dbxMessageToFile(places.info, WriteTemp("key.dbx", store.Bytes()), read));
    return read.entryKey;
  };
  IndexedMessage received = MailOf("received");
  received.messageId = "<1@example.org>";
  EXPECT_EQ(keyOf(received), "<1@example.org>_137_5ce9b481b2264acb_20040105100000");
  IndexedMessage copied = received;  // in another folder, by another program's index
  copied.flagsDirect = false;
  copied.blockSize = 64;
  EXPECT_EQ(keyOf(copied), keyOf(received));

  IndexedMessage written = MailOf("written");
  std::vector<IndexedMessage> others(6, written);
  others[0].subject = "Written";
  others[1].senderAddress = "bab@example.org";
  others[2].text += "!";
  others[3].receiverName = "Ann";
  others[4].fraction = 1;
  others[5].date = written.date.AddSeconds(1);
  std::set<std::string> keys = {keyOf(written)};
  for (const IndexedMessage& other : others) {
    EXPECT_TRUE(keys.insert(keyOf(other)).second) << keyOf(other);
  }
  EXPECT_EQ(keyOf(written), keyOf(written));

  // However long the parts, what makes two letters different is not cut away when it is stored.
  IndexedMessage longOne = received;
  longOne.messageId = "<" + std::string(400, 'a') + "1@example.org>";
  IndexedMessage longTwo = received;
  longTwo.messageId = "<" + std::string(400, 'a') + "2@example.org>";
  IndexedMessage wordy = MailOf(std::string(300, 'w'));
  wordy.senderAddress = std::string(300, 's');
  for (const IndexedMessage& message : {longOne, longTwo, wordy}) {
    std::string key = keyOf(message);
    EXPECT_LE(key.size(), 255U);
    EXPECT_TRUE(keys.insert(key).second);
  }
}

TEST_F(DbxRead, ASubjectIsOneLineOfTheLog) {
  IndexedMessage message = MailOf("a\r\n\r\n1/5/2004 10:00:00\r\nError: 61 Disk full");
  MessageStoreBuilder store;
  MessagePlaces places = store.AddMessage(message);
  ReadMessage read;
  EXPECT_TRUE(dbxMessageToFile(places.info, WriteTemp("forged.dbx", store.Bytes()), read));
  EXPECT_THAT(Log(), HasSubstr(" a\\r\\n\\r\\n1/5/2004"));
  EXPECT_THAT(Log(), Not(HasSubstr("\nError: 61")));
}

TEST_F(DbxRead, AnInfoObjectWithoutTextsHasNoSubject) {
  const DateTime date = DateTime::FromDate(2004, 1, 5);
  MessageInfo info = ParseMessageInfo("", date, {});
  EXPECT_EQ(info.subject, "no subject");
  EXPECT_EQ(info.keyText, "no subject");
  EXPECT_EQ(ParseMessageInfo(std::string("Only bytes\0more", 15), date, {}).subject, "Only bytes");
  // A text that a hostile index puts outside the object is none.
  InfoIndex index;
  index.entries = {{0x08, 0xFFFFFF}, {0x0E, 3}};
  index.firstByte = 4;
  index.dataSize = 10;
  EXPECT_EQ(ParseMessageInfo("abcdef", date, index).subject, "no subject");
}

// One change to the first letter of a store of two. The second is still read.
struct Damage {
  const char* what;
  std::function<void(MessageStoreBuilder&, const MessagePlaces&)> make;
  const char* report;  // in the log, "" for silence
};

TEST_F(DbxRead, DamageCostsTheMessageOrTheNodeOnly) {
  constexpr const char* kUnknown = "Program can't recognize file format.";
  const Damage rows[] = {
      {"an info object without its own offset",
       [](auto& s, auto& m) { s.Image().Put32(m.info, m.info + 4); }, kUnknown},
      {"an info object of 4 GB", [](auto& s, auto& m) { s.Image().Put32(m.info + 4, 0xFFFFFFFF); },
       "Error: 9 Subscript out of range dbxMessageToFile idStep = 2 "},
      {"an info object of 27 bytes", [](auto& s, auto& m) { s.Image().Put32(m.info + 4, 27); },
       "Error: 9 "},
      {"an info object of 255 entries", [](auto& s, auto& m) { s.Image().Put8(m.info + 10, 255); },
       "its date is missing"},
      {"no plausible date",
       [](auto& s, auto& m) {
         for (uint32_t place = m.info + 12; place < s.Image().Size(); place += 4) {
           s.Image().Put32(place, 0);
         }
       },
       "its date is missing"},
      {"a block without its own offset", [](auto& s, auto& m) { s.Image().Put32(m.blocks[1], 12); },
       ""},
      {"a block of 4 GB", [](auto& s, auto& m) { s.Image().Put32(m.blocks[1] + 8, 0xFFFFFFFF); },
       ""},
      {"a block that passes the end",
       [](auto& s, auto& m) { s.Image().Put32(m.blocks[1] + 8, s.Image().Size()); }, ""},
      {"a chain that returns to its start",
       [](auto& s, auto& m) { s.Image().Put32(m.blocks.back() + 12, m.blocks[0]); }, ""},
      {"a block that follows itself",
       [](auto& s, auto& m) { s.Image().Put32(m.blocks[1] + 12, m.blocks[1]); }, ""},
      {"a chain that leaves the file",
       [](auto& s, auto& m) { s.Image().Put32(m.blocks[0] + 12, 0xFFFFFFF0); }, ""},
      {"a first block beyond the file",
       [](auto& s, auto& m) { s.Image().Put32(m.info + 24, 0xFFFFFF84); }, ""},
  };
  for (const Damage& row : rows) {
    SCOPED_TRACE(row.what);
    ResetState();
    core::BeginLoadState();
    MessageStoreBuilder store;
    IndexedMessage first = MailOf("first");
    first.blockSize = 32;
    store.AddMessage(MailOf("second"));
    MessagePlaces places = store.AddMessage(first);
    // The second letter's node entry comes last.
    store.SetItemCount(2);
    store.SetRoot(store.Image().AddNode({{places.info, 0}, {store.Messages().front().info, 0}}));
    uint32_t root = store.Image().Get32(0xE4);
    std::string node = store.Bytes().substr(root);
    row.make(store, places);
    for (uint32_t i = 0; i < node.size(); ++i) {
      store.Image().Put8(root + i, static_cast<uint8_t>(node[i]));
    }
    Read(store);
    EXPECT_FALSE(WasCopied("first"));
    EXPECT_TRUE(WasCopied("second"));
    if (row.report[0] != '\0') {
      EXPECT_THAT(Log(), HasSubstr(row.report));
    } else {
      EXPECT_THAT(Log(), Not(HasSubstr("Error: ")));
    }
    platform::RemoveFile(core::State().EmailFileFolder + "second.eml");
    RemoveLog();
  }
}

TEST_F(DbxRead, ChainsThatReturnTakeNothingFromTheOtherMessages) {
  MessageStoreBuilder store;
  IndexedMessage circle = MailOf("circle");
  circle.blockSize = 32;
  MessagePlaces places = store.AddMessage(circle);
  store.Image().Put32(places.blocks.back() + 12, places.blocks[0]);
  uint32_t sound = store.AddMessage(MailOf("sound")).info;
  std::vector<DbxImage::Entry> entries(20, {places.info, 0});
  entries.push_back({sound, 0});
  store.SetRoot(store.Image().AddNode(entries));
  Read(store);
  EXPECT_FALSE(WasCopied("circle"));
  EXPECT_TRUE(WasCopied("sound"));
}

TEST_F(DbxRead, ATreeThatPointsToItselfEnds) {
  MessageStoreBuilder store;
  uint32_t info = store.AddMessage(MailOf("once")).info;
  uint32_t node = store.Image().AddNode(std::vector<DbxImage::Entry>(255, {info, 0}));
  for (uint32_t i = 0; i < 255; ++i) store.Image().Put32(node + 24 + 12 * i + 4, node);
  store.Image().Put32(node + 8, node);
  store.SetRoot(node);
  Read(store);
  EXPECT_EQ(SubjectsRead().size(), 255U);  // the root's own entries, each once
  EXPECT_THAT(Log(), HasSubstr("Program can't recognize file format."));
}

TEST_F(DbxRead, MessagesThatShareTheirBlocksCostNoMoreThanTheFileTwice) {
  // 200 objects, each with a chain through the whole file.
  MessageStoreBuilder store;
  IndexedMessage big = MailOf("big");
  big.text += std::string(200'000, 'x');
  MessagePlaces first = store.AddMessage(big);
  std::vector<DbxImage::Entry> entries;
  std::string object = store.Bytes().substr(first.info);
  for (char i = 0; i < 100; ++i) {
    object[static_cast<size_t>(first.date - first.info)] = i;
    entries.push_back({store.Image().AddObject(object), 0});
  }
  store.SetRoot(store.Image().AddNode(entries));
  Read(store);
  EXPECT_EQ(SubjectsRead().size(), 100U);
  EXPECT_TRUE(WasCopied("big"));
  EXPECT_FALSE(WasCopied("big (3)"));
}

TEST_F(DbxRead, AFileCutAnywhereIsReadAsFarAsItGoes) {
  MessageStoreBuilder store;
  store.AddMessage(MailOf("one"));
  store.AddMessage(MailOf("two", 1));
  store.Finish(1, true);
  std::string whole = store.Bytes();
  for (size_t size = 0; size < whole.size(); size += size < 0xEA00 ? 997 : 13) {
    ReadMessageTree(WriteTemp("cut.dbx", whole.substr(0, size)), kMsgToFiles, {"Cut", "", "ann"});
  }
  EXPECT_FALSE(WasCopied("two"));
}

}  // namespace
}  // namespace tarnwick::oe
