// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The two ways to read a store, side by side: they must say the same of every sound one.

#include <algorithm>
#include <random>

#include "outlook/reader/node_store.h"
#include "samples/pst_builder.h"
#include "support/real_data.h"
#include "support/testing.h"

namespace tarnwick::outlook::reader {
namespace {

using samples::PstAttachment;
using samples::PstBuilder;
using samples::PstMessage;
using samples::PstProperties;

// An answer; the properties of a row in order.
struct Said {
  std::vector<std::string> rows;
  std::vector<uint32_t> folders;
  std::vector<uint32_t> items;
  std::vector<uint32_t> otherItems;
  size_t attachments = 0;
  std::string bytes;
  bool isMarked = false;  // as damaged
  bool failed = false;
};

std::string TextOf(const RawRow& row) {
  std::vector<std::string> properties;
  for (const RawProperty& property : row) {
    properties.push_back(std::to_string(property.number) + "," + std::to_string(property.type) +
                         "=" + property.bytes);
  }
  std::sort(properties.begin(), properties.end());
  std::string text;
  for (const std::string& property : properties) text += property + "|";
  return text;
}

Said Ask(const std::function<void(Answer&, std::string& bytes)>& request) {
  Answer answer;
  Said said;
  try {
    request(answer, said.bytes);
  } catch (const ReadError&) {
    said.failed = true;
  }
  said.rows.push_back(TextOf(answer.properties));
  for (const auto* rows : {&answer.recipients, &answer.attachments}) {
    said.rows.emplace_back("rows");
    for (const RawRow& row : *rows) said.rows.push_back(TextOf(row));
  }
  said.folders = answer.folders;
  said.items = answer.items;
  said.otherItems = answer.otherItems;
  said.attachments = answer.attachments.size();
  said.isMarked = !answer.lost.empty();
  // A list of searches is one of theirs only.
  std::erase_if(said.folders, [](uint32_t node) { return (node & 0x1F) != 2; });
  return said;
}

Said AskBytes(StoreFile& store, const ItemPlace& place, const AttachmentPath& path) {
  return Ask([&](Answer& answer, std::string& bytes) {
    store.ReadAttachment(
        place, path, [&](std::string_view piece) { bytes += piece; }, answer);
  });
}

// Everything that a store says of one of its items.
struct WholeItem {
  std::string content;
  bool isMarked = false;
  bool failed = false;
  bool operator==(const WholeItem&) const = default;
};

struct WholeStore {
  std::string folders;                  // what it says of itself and of its folders
  std::map<uint32_t, WholeItem> items;  // by node
  size_t listed = 0;  // how many the folders name; SIZE_MAX when a folder is marked itself
  int64_t attachments = 0;
  int64_t embedded = 0;
};

std::string TextOf(const Said& said) {
  std::string text = said.failed ? "failed " : "";
  for (const std::string& row : said.rows) text += row + "|";
  for (const auto* nodes : {&said.folders, &said.items, &said.otherItems}) {
    for (uint32_t node : *nodes) text += std::to_string(node) + " ";
    text += "|";
  }
  return text + said.bytes;
}

void AddAll(StoreFile& store, const ItemPlace& place, AttachmentPath path, const Said& said,
            WholeStore& whole) {
  WholeItem& item = whole.items[place.node];
  item.isMarked = item.isMarked || said.isMarked;
  item.content += TextOf(said);
  path.push_back(0);
  for (size_t i = 0; i < said.attachments; ++i) {
    ++whole.attachments;
    Said bytes = AskBytes(store, place, path);
    item.isMarked = item.isMarked || bytes.isMarked;
    item.content += TextOf(bytes);
    if (bytes.failed && path.size() < kMaxEmbedding) {
      Said inner = Ask([&](Answer& answer, auto&) { store.DescribeEmbedded(place, path, answer); });
      item.failed = item.failed || inner.failed;
      if (!inner.failed) ++whole.embedded;
      AddAll(store, place, path, inner, whole);
    }
    ++path.back();
  }
}

WholeStore ReadAll(StoreFile& store) {
  WholeStore whole;
  bool isMarked = false;
  whole.folders = TextOf(Ask([&](Answer& answer, auto&) { store.DescribeStore(answer); }));
  std::vector<uint32_t> waiting = {0x122};
  std::set<uint32_t> seen;
  while (!waiting.empty()) {
    uint32_t folder = waiting.back();
    waiting.pop_back();
    if (!seen.insert(folder).second) continue;
    Said said = Ask([&](Answer& answer, auto&) { store.DescribeFolder(folder, answer); });
    whole.folders += TextOf(said);
    waiting.insert(waiting.end(), said.folders.begin(), said.folders.end());
    whole.listed += said.items.size();
    isMarked = isMarked || said.isMarked;
    for (uint32_t i = 0; i < said.items.size(); ++i) {
      ItemPlace place{folder, i, said.items[i]};
      Said head = Ask([&](Answer& answer, auto&) { store.DescribeItem(place, answer); });
      whole.items[place.node].failed = head.failed;
      AddAll(store, place, {}, head, whole);
    }
  }
  if (isMarked) whole.listed = SIZE_MAX;
  return whole;
}

WholeStore ReadAll(const std::string& path) {
  platform::InputFile file(path);
  return ReadAll(*OpenStore(file));
}

// What ours says; the library must say the same.
WholeStore Compare(const std::string& path) {
  platform::InputFile file(path);
  NodeStore store(file);
  std::unique_ptr<StoreFile> library = OpenByLibrary(file, false);
  WholeStore ours = ReadAll(store);
  WholeStore theirs = ReadAll(*library);
  EXPECT_TRUE(ours.folders == theirs.folders);
  EXPECT_EQ(ours.items.size(), theirs.items.size());
  for (const auto& [node, item] : ours.items) EXPECT_TRUE(item == theirs.items[node]) << node;
  return ours;
}

PstMessage Mail(size_t number, bool hasFiles) {
  PstMessage mail;
  std::string text = std::to_string(number);
  mail.properties.texts = {{0x001A, "IPM.Note"},
                           {0x0037, "mail " + text},
                           {0x1000, std::string(number % 400 * 37, 'b')}};
  mail.properties.times = {{0x0039, 126'598'072'200'000'000}};
  mail.properties.numbers = {{0x0017, 2}};
  PstProperties to;
  to.texts = {{0x3001, "Bob " + text}, {0x3003, "b" + text + "@x.test"}};
  to.numbers = {{0x0C15, 1}};
  mail.recipients.assign(hasFiles ? 700 : 2, to);
  if (!hasFiles) return mail;
  PstAttachment file;
  file.properties.texts = {{0x3707, "a.bin"}};
  file.data = std::string(300, 'f');
  PstAttachment letter;
  letter.properties.texts = {{0x3001, "inner"}};
  letter.embedded = {Mail(number + 1, false)};
  letter.embedded[0].attachments = {file};
  mail.attachments.assign(320, file);
  mail.attachments[7] = letter;
  mail.attachments[8].data.clear();
  mail.attachments[9].data = std::string(30'000, 'g');
  return mail;
}

class ReaderTest : public ::testing::Test {
 protected:
  testing::TempFolder folder_;
};

TEST_F(ReaderTest, SaysOfBuiltStoresWhatTheLibrarySays) {
  for (Variant variant : {Variant::kAnsi, Variant::kUnicode, Variant::kLargePages}) {
    for (uint8_t cipher : {0, 1, 2}) {
      size_t items = cipher > 0                  ? 20
                     : variant != Variant::kAnsi ? 1200
                                                 : 300;  // a list of many takes several blocks
      PstBuilder store(variant);
      store.SetCipher(cipher);
      uint32_t inbox = store.AddFolder(PstBuilder::kTop, "Inbox");
      for (size_t i = 0; i < items; ++i) store.AddMessage(inbox, Mail(i, false));
      uint32_t deep = store.AddFolder(store.AddFolder(inbox, "A"), "B");
      store.AddMessage(deep, Mail(1, true));
      PstMessage huge = Mail(2, false);
      huge.properties.texts[0x1000] = std::string(3'000'000, 'h');
      // Of packed blocks in a list the library undoes this cipher in a way of its own.
      bool isOdd = variant == Variant::kLargePages && cipher == 1;
      if (!isOdd) store.AddMessage(deep, huge);
      platform::WriteFile(folder_.File("a.pst"), store.Build());
      WholeStore said = Compare(folder_.File("a.pst"));
      EXPECT_EQ(said.listed, items + (isOdd ? 1 : 2)) << static_cast<int>(variant) << int{cipher};
      EXPECT_EQ(said.attachments, 321);
      EXPECT_EQ(said.embedded, 1);
    }
  }
}

// Beyond what one list of blocks holds, which the library gives up.
TEST_F(ReaderTest, GivesValuesOfAnyLengthWhole) {
  for (Variant variant : {Variant::kAnsi, Variant::kUnicode, Variant::kLargePages}) {
    PstBuilder store(variant);
    PstMessage mail = Mail(0, false);
    mail.attachments.resize(1);
    for (int i = 0; i < 10'000'000; i += 10) mail.attachments[0].data += std::to_string(i) + ";";
    uint32_t inbox = store.AddFolder(PstBuilder::kTop, "Inbox");
    uint32_t node = store.AddMessage(inbox, mail);
    platform::WriteFile(folder_.File("a.pst"), store.Build());
    platform::InputFile file(folder_.File("a.pst"));
    NodeStore reader(file);
    Said said = AskBytes(reader, {inbox, 0, node}, {0});
    EXPECT_FALSE(said.failed);
    EXPECT_TRUE(said.bytes == mail.attachments[0].data) << said.bytes.size();
  }
}

// Of 200 bits turned over behind the file's head, none may change an item that is not marked, or
// take one away without a word.
void ExpectDamageIsTold(const std::string& sound, const std::string& scratch, uint32_t seed) {
  const WholeStore before = ReadAll(sound);
  std::string bytes = platform::ReadFile(sound);
  std::mt19937 random(seed);
  for (int i = 0; i < 200; ++i) {
    size_t at = 564 + random() % (bytes.size() - 564);
    bytes[at] = static_cast<char>(bytes[at] ^ 1 << random() % 8);
  }
  platform::WriteFile(scratch, bytes);
  WholeStore after;
  try {
    after = ReadAll(scratch);
  } catch (const ReadError&) {
    return;  // nothing of it is taken
  }
  int silent = 0;
  for (const auto& [node, item] : before.items) {
    EXPECT_FALSE(item.isMarked) << sound << " " << node;
  }
  for (const auto& [node, item] : after.items) {
    auto former = before.items.find(node);
    bool isChanged = former == before.items.end() || former->second.content != item.content;
    silent += isChanged && !item.isMarked && !item.failed ? 1 : 0;
  }
  EXPECT_GE(after.listed, before.listed) << sound << " " << seed;
  EXPECT_EQ(silent, 0) << sound << " " << seed << ": of " << after.items.size() << " items";
}

TEST_F(ReaderTest, ABitThatTurnedOverIsToldOfTheItem) {
  for (Variant variant : {Variant::kAnsi, Variant::kUnicode, Variant::kLargePages}) {
    PstBuilder store(variant);
    store.SetCipher(1);
    uint32_t inbox = store.AddFolder(PstBuilder::kTop, "Inbox");
    for (size_t i = 0; i < 150; ++i) store.AddMessage(inbox, Mail(i, false));
    store.AddMessage(store.AddFolder(inbox, "Deep"), Mail(1, true));
    platform::WriteFile(folder_.File("sound.pst"), store.Build());
    for (uint32_t seed = 1; seed <= 5; ++seed) {
      ExpectDamageIsTold(folder_.File("sound.pst"), folder_.File("a.pst"), seed);
    }
  }
  for (const char* file : {"testPST.pst", "test_ansi.pst"}) {
    std::string path = testing::RealData("pst/" + std::string(file));
    if (!path.empty()) ExpectDamageIsTold(path, folder_.File("a.pst"), 1);
  }
}

TEST_F(ReaderTest, SaysOfRealStoresWhatTheLibrarySays) {
  for (const char* file : {"sample1.pst", "testPST.pst", "testPST_variousBodyTypes.pst",
                           "test_ansi.pst", "test_unicode.pst"}) {
    std::string path = testing::RealData("pst/" + std::string(file));
    if (path.empty()) GTEST_SKIP();
    EXPECT_GT(Compare(path).listed, 0U) << file;
  }
}

}  // namespace
}  // namespace tarnwick::outlook::reader
