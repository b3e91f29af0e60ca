// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What complete reading takes of a store's files beyond the designed.

#include "oe_fixture.h"

namespace tarnwick::oe {
namespace {

using intake::kComplete;
using samples::DbxImage;
using samples::IndexedMessage;
using samples::MessagePlaces;
using samples::MessageStoreBuilder;

class CompleteTree : public OeFixture {
 protected:
  // Subjects of what a walk comes to, in its order.
  std::vector<std::string> Walk(const MessageStoreBuilder& store,
                                const intake::ReadingRules& rules = kComplete) {
    RemoveLog();
    ReadMessageTree(WriteTemp("Inbox.dbx", store.Bytes()), "Look", {"Inbox", "", "ann"}, rules);
    return SubjectsRead();
  }
  // Loads the store as a folder; gives the counts.
  std::string Load(const MessageStoreBuilder& store, const intake::ReadingRules& rules,
                   const std::string& name = "Inbox.dbx") {
    std::string path = WriteTemp(name, store.Bytes());
    core::State().Counts = {};
    intake::Account().Open();
    intake::Account().Announce(path, AnnouncedMessages(path));
    ReadMessageTree(path, kMsgToDb, {"Inbox", "", "ann"}, rules);
    intake::Account().Close();
    return Summary();
  }
  static MessageStoreBuilder Numbered(int messages) {
    MessageStoreBuilder store;
    for (int i = 0; i < messages; ++i) store.AddMessage(MailOf(std::to_string(i), i % 60));
    return store;
  }
  static std::vector<std::string> Numbers(int messages) {
    std::vector<std::string> numbers;
    for (int i = 0; i < messages; ++i) numbers.push_back(std::to_string(i));
    return numbers;
  }
};

// Every node of a tree with the number of messages at and below it.
std::map<uint32_t, size_t> NodesOf(const DbxImage& image, uint32_t root) {
  std::map<uint32_t, size_t> nodes;
  std::function<size_t(uint32_t)> visit = [&](uint32_t node) -> size_t {
    if (node == 0) return 0;
    uint32_t count = image.Get32(node + 16) >> 8 & 0xFF;
    size_t below = count + visit(image.Get32(node + 8));
    for (uint32_t i = 0; i < count; ++i) below += visit(image.Get32(node + 28 + 12 * i));
    return nodes[node] = below;
  };
  visit(root);
  return nodes;
}

TEST_F(CompleteTree, BothReadingsTakeTheStateOfAMessage) {
  const struct {
    uint32_t flags;
    std::string state;
  } cases[] = {{0x81, "S"},      {0x01, "U"},  {0xA1, "SF"},       {0x80081, "SR"},
               {0x100081, "SP"}, {0x89, "SD"}, {0x180021, "URPF"}, {0xC14001, "U"}};
  MessageStoreBuilder store;
  std::string expected;
  for (const auto& test : cases) {
    for (bool isDirect : {true, false}) {
      std::string subject(1, static_cast<char>('a' + store.Messages().size()));
      IndexedMessage letter = MailOf(subject);
      letter.text = "Status: RO\r\nX-Status: F\r\n" + letter.text;  // of another program
      letter.flags = test.flags;
      letter.flagsDirect = isDirect;
      store.AddMessage(letter);
      expected += (expected.empty() ? "" : "\n") + subject + "|" + test.state;
    }
  }
  store.Finish();
  for (const auto& rules : {intake::kDesigned, kComplete}) {
    ASSERT_TRUE(repository::ClearRepository());
    Load(store, rules);
    EXPECT_EQ(Rows("SELECT Subject, State FROM Email ORDER BY Subject"), expected);
    Run("UPDATE Email SET State = Null");  // as stored by a version that kept none
    Load(store, rules);
    EXPECT_EQ(Rows("SELECT Subject, State FROM Email ORDER BY Subject"), expected);
  }
}

TEST_F(CompleteTree, EveryLevelIsReadInItsOrderAndADamagedNodeCostsWhatHangsOnIt) {
  constexpr int kMessages = 60;
  for (int levels = 1; levels <= 5; ++levels) {
    MessageStoreBuilder store = Numbered(kMessages);
    store.FinishInLevels(levels, levels == 1 ? 60 : 2);
    EXPECT_EQ(Walk(store), Numbers(kMessages)) << levels;
    EXPECT_EQ(Walk(store, intake::kDesigned).size() < size_t{kMessages}, levels > 2) << levels;
    if (levels != 4) continue;
    uint32_t root = store.Image().Get32(0xE4);
    std::map<uint32_t, size_t> nodes = NodesOf(store.Image(), root);
    for (const auto& [node, messages] : nodes) {
      store.Image().Put32(node, 1);
      EXPECT_EQ(Walk(store).size(), kMessages - messages) << node;
      store.Image().Put32(node, node);
      uint32_t left = store.Image().Get32(node + 8);
      store.Image().Put32(node + 8, root);  // leads back
      std::vector<std::string> read = Walk(store);
      EXPECT_EQ(read.size(), kMessages - (left == 0 ? 0 : nodes[left])) << node;
      EXPECT_EQ(std::set<std::string>(read.begin(), read.end()).size(), read.size()) << node;
      store.Image().Put32(node + 8, left);
    }
  }
}

TEST_F(CompleteTree, NoTreeCostsMoreThanItsFile) {
  // As deep as there are messages.
  MessageStoreBuilder deep = Numbered(3000);
  uint32_t node = 0;
  for (const MessagePlaces& message : deep.Messages()) {
    node = deep.Image().AddNode({{message.info, 0}}, node);
  }
  deep.SetRoot(node);
  EXPECT_EQ(Walk(deep).size(), 3000U);

  // Nodes that overlap: each a head whose 255 entries are the nodes behind it.
  MessageStoreBuilder woven = Numbered(1);
  uint32_t first = woven.Image().Size();
  for (int i = 0; i < 3000; ++i) {
    std::string head(24, '\0');
    head[17] = '\xFF';
    uint32_t at = woven.Image().AddObject(head);
    woven.Image().Put32(at + 8, at + 24);
    woven.Image().Put32(at + 20, woven.Messages()[0].info);
  }
  woven.SetRoot(first);
  woven.SetItemCount(1);
  Load(woven, kComplete);
  EXPECT_LT(intake::Account().Visited(), static_cast<int64_t>(woven.Bytes().size() / 12));

  // A thousand entries for one info object of a megabyte.
  MessageStoreBuilder same = Numbered(1);
  std::string large(1 << 20, '\0');
  uint32_t info = same.Image().AddObject(large);
  same.Image().Put32(info + 4, (1U << 20) - 12);
  std::vector<uint32_t> leaves(4);
  for (uint32_t& leaf : leaves)
    leaf = same.Image().AddNode(std::vector(250, DbxImage::Entry{info}));
  same.SetRoot(same.Image().AddNode({{info, leaves[1]}, {info, leaves[2]}}, leaves[0]));
  Load(same, kComplete);
  EXPECT_THAT(intake::Account().Text(), HasSubstr("its info object overlaps others"));
}

TEST_F(CompleteTree, MessagesOfAnyDateAreReadOnceWithTheirOwn) {
  const struct {
    const char* date;  // of the store's index
    bool isSound = true;
  } rows[] = {{"1985-03-01 10:00:00"},
              {"2004-03-01 10:00:00"},
              {"2010-01-01 00:00:00"},
              {"2019-07-01 10:00:00"},
              {"1601-01-01 00:00:00", false}};
  MessageStoreBuilder store;
  for (const auto& row : rows) {
    IndexedMessage message = MailOf(row.date);
    message.date = *DateTime::FromIso(row.date);
    size_t date = message.text.find("Date: ");
    message.text.erase(date, message.text.find("\r\n", date) + 2 - date);
    store.AddMessage(message);
  }
  store.Finish();
  EXPECT_EQ(Load(store, intake::kDesigned), "found 5, stored 1, unreadable 4, ");
  EXPECT_EQ(Load(store, kComplete), "found 5, stored 4, already 1, ");
  EXPECT_EQ(Load(store, kComplete), "found 5, already 5, ");
  EXPECT_EQ(Load(store, intake::kDesigned), "found 5, already 1, unreadable 4, ");
  for (const auto& row : rows) {
    if (row.date == std::string("2004-03-01 10:00:00")) continue;
    int64_t utc = DateTime::FromIso(row.date)->Seconds();
    EXPECT_EQ(
        Query("SELECT CreationTime FROM Email WHERE Subject = '" + std::string(row.date) + "'")
            .AsDate(),
        row.isSound ? platform::LocalFromUnix(utc) : DateTime::FromDate(1990, 1, 1));
  }
}

TEST_F(CompleteTree, NoMessageIsTakenForAnothers) {
  MessageStoreBuilder store;
  store.AddMessage(MailOf("first"));
  MessagePlaces headers = store.AddMessage(MailOf("without its text", 1));
  MessagePlaces lost = store.AddMessage(MailOf("lost", 2));
  store.AddMessage(MailOf("last", 3));
  store.Image().Put8(headers.info + 24, 0xFF);               // has no entry 04
  store.Image().Put32(lost.info + 24, 15'998U << 8 | 0x84);  // one that leads to no block
  store.Finish();
  State().LastChainEnd = lost.blocks.front();
  EXPECT_EQ(Load(store, kComplete), "found 4, stored 2, unreadable 2, ");
  EXPECT_THAT(intake::Account().Text(), HasSubstr("its text is not in the file"));
  EXPECT_EQ(CountRows("Email"), 2);
}

TEST_F(CompleteTree, BlocksBeyondSixteenMegabytesAreFoundByTheIndex) {
  MessageStoreBuilder store;
  store.Image().PadTo(1U << 24);
  for (bool direct : {true, false}) {
    IndexedMessage message = MailOf(direct ? "one" : "two");
    message.flagsDirect = direct;
    message.date = DateTime::FromDate(2015, 1, 5);
    store.AddMessage(message);
  }
  store.Finish();
  EXPECT_EQ(Load(store, kComplete), "found 2, stored 2, ");
}

TEST_F(CompleteTree, FolderListsOfAnySizeAreReadWithTheNumbersThatTheyHave) {
  samples::FolderListBuilder list;
  std::string store = folder_.File("Mail/");
  platform::MakeFolder(store);
  list.Add({0, 0, "Outlook Express", ""}, samples::FolderForm::kMark);
  list.Add({1, 0, "Local Folders", "LocalStore"}, samples::FolderForm::kNameIsFifth);
  list.Add({2, 1, "Never opened", ""}, samples::FolderForm::kNoFile);
  constexpr uint32_t kFolders = 700;
  for (uint32_t i = 3; i < kFolders; ++i) {
    std::string name = "f" + std::to_string(i);
    list.Add({i, i == 699 ? 300U : 2U, name, name + ".dbx"});
    platform::WriteFile(store + name + ".dbx", "");
  }
  list.Finish(51);
  State().FolderFiles = {{WriteTemp("Mail/Folders.dbx", list.Bytes()), "ann", store}};
  ReadFolderTree(0, kComplete);
  EXPECT_FALSE(State().IsListDamaged);
  EXPECT_EQ(State().Folders[0].size(), kFolders - 1);
  EXPECT_EQ(State().Folders[0].back().displayName, "f699");
  EXPECT_EQ(State().Folders[0].back().parent, 300);
  EXPECT_EQ(State().Folders[0][1].fileName, "");

  ResetState();
  State().FolderFiles = {{folder_.File("Mail/Folders.dbx"), "ann", store}};
  list.Image().Put32(list.Image().Get32(list.Image().Get32(0x30) + 28), 1);  // a node's own place
  WriteTemp("Mail/Folders.dbx", list.Bytes());
  ReadFolderTree(0, kComplete);
  EXPECT_TRUE(State().IsListDamaged);
  EXPECT_EQ(State().Folders[0].size(), kFolders - 1 - 51);
}

}  // namespace
}  // namespace tarnwick::oe
