// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Messages that no tree leads to: what is found of worn stores, and what a load makes of it.
#include "oe/lost_mail.h"

#include "oe/rescue.h"
#include "oe_fixture.h"
#include "samples/worn_store.h"

namespace tarnwick::oe {
namespace {

using samples::IndexedMessage;
using samples::MessagePlaces;
using samples::MessageStoreBuilder;
using samples::WornStore;
using Freeing = WornStore::Freeing;

class LostMailTest : public OeFixture {
 protected:
  std::vector<std::string> Recover(const std::string& bytes, bool isCopy = false) {
    std::string path = WriteTemp("Worn.dbx", bytes);
    auto goOn = [](int) { return true; };
    std::vector<std::string> texts;
    whole_.clear();
    for (FoundObjects& piece : FindObjects(path, goOn)) {
      LostMail mail(path, std::move(piece), isCopy, goOn);
      TakeAll(mail, texts);
    }
    return texts;
  }
  void TakeAll(LostMail& mail, std::vector<std::string>& texts) {
    while (auto message = mail.Next()) {
      std::string text;
      for (const TextPiece& piece : message->text) {
        size_t start = text.size();
        text += mail.File().Read(piece.offset, piece.length);
        size_t lost = std::min<size_t>(piece.lacksFirstWord ? kLostWord.size() : 0, piece.length);
        text.replace(start, lost, kLostWord.substr(0, lost));
      }
      EXPECT_EQ(text.size(), message->length);
      if (!text.empty()) texts.push_back(text);
      if (message->isWhole) whole_.push_back(text);
    }
  }
  std::vector<std::string> whole_;
};

using Wear = void (*)(WornStore&);

void Delete(WornStore& store, Freeing freeing) {
  store.DeleteEvery(1, freeing);
  store.Finish();
}
// All deleted, and new ones written over some, which are deleted too.
void DeleteTwice(WornStore& store, bool fromTheEnd, int overwritten) {
  store.DeleteEvery(1, overwritten == 0 ? Freeing::kFreed : Freeing::kUnlisted);
  store.Reuse(60, fromTheEnd, false);
  store.Finish();
  store.Overwrite(overwritten);
}

TEST_F(LostMailTest, WornStoresGiveBackWhatIsIntactAndNothingThatIsMixed) {
  const struct {
    const char* what;
    Wear wear;
    size_t leastShare = 100;  // of the intact messages, in percent
    size_t least = 0;         // messages, where no text stands as it was written
  } rows[] = {
      {"whole", [](WornStore& s) { s.Finish(), s.ZeroHead(); }},
      {"tenth overwritten", [](WornStore& s) { s.Finish(), s.ZeroHead(), s.Overwrite(10); }},
      {"half overwritten", [](WornStore& s) { s.Finish(), s.ZeroHead(), s.Overwrite(50); }},
      {"most overwritten", [](WornStore& s) { s.Finish(), s.ZeroHead(), s.Overwrite(90); }},
      {"texts overwritten", [](WornStore& s) { s.Finish(), s.ZeroHead(), s.Overwrite(10, true); }},
      {"unlisted", [](WornStore& s) { Delete(s, Freeing::kUnlisted); }},
      {"freed", [](WornStore& s) { Delete(s, Freeing::kFreed); }},
      {"blocks freed", [](WornStore& s) { Delete(s, Freeing::kBlocksToo); }, 0, 200},
      // A length that is right by chance makes a message that is intact look claimed by two.
      {"reused from the end", [](WornStore& s) { DeleteTwice(s, true, 0); }, 98},
      {"reused from the end, worn", [](WornStore& s) { DeleteTwice(s, true, 50); }},
      {"reused from the beginning", [](WornStore& s) { DeleteTwice(s, false, 0); }},
      {"reused from the beginning, worn", [](WornStore& s) { DeleteTwice(s, false, 50); }},
      {"cut", [](WornStore& s) { s.Finish(), s.Cut(60); }},
      {"a piece", [](WornStore& s) { s.Finish(), s.TakePiece(30, 100); }, 0, 140},
  };
  for (const auto& row : rows) {
    for (uint32_t seed = 1; seed <= 3; ++seed) {
      WornStore store(200, seed);
      row.wear(store);
      std::vector<std::string> recovered = Recover(store.Bytes());
      samples::Verdict verdict = samples::Judge(recovered, store.Texts(), kLostWord);
      size_t intact = 0;
      for (const std::string& text : store.Intact()) {
        intact += std::count(recovered.begin(), recovered.end(), text) == 1 ? 1U : 0U;
      }
      EXPECT_EQ(verdict.wrong, 0) << row.what << seed;
      EXPECT_GE(intact * 100, store.Intact().size() * row.leastShare) << row.what << seed;
      EXPECT_GE(static_cast<size_t>(verdict.whole), row.least) << row.what << seed;
      EXPECT_EQ(samples::Judge(whole_, store.Texts(), kLostWord).whole, std::ssize(whole_))
          << row.what << seed;
    }
  }
}

TEST_F(LostMailTest, OfPiecesOfSeveralStoresEachGivesBackItsOwn) {
  for (uint32_t seed = 1; seed <= 5; ++seed) {
    std::string disk;
    std::vector<std::string> texts;
    size_t alone = 0;
    for (int i = 0; i < 6; ++i) {
      WornStore store(100, seed + 100 * static_cast<uint32_t>(i % 3));
      store.Finish();
      texts.insert(texts.end(), store.Texts().begin(), store.Texts().end());
      store.TakePiece(i < 3 ? 5 : 55, i < 3 ? 45 : 95);
      alone += Recover(store.Bytes()).size();
      // A part of a sector is left at its end, over which the next one was written.
      disk += store.Bytes().substr(0, store.Bytes().size() / 512 * 512);
    }
    std::vector<std::string> recovered = Recover(disk);
    EXPECT_EQ(samples::Judge(recovered, texts, kLostWord).wrong, 0) << seed;
    EXPECT_GE(recovered.size() + 2 * 6, alone) << seed;
  }
}

TEST_F(LostMailTest, WhatTheTreeLeadsToIsNotLostAndABrokenNodeCostsNothing) {
  WornStore worn(200, 1);
  worn.DeleteEvery(2, Freeing::kFreed);
  worn.Reuse(20, true, true);
  worn.Finish();
  std::vector<std::string> recovered = Recover(worn.Bytes());
  EXPECT_EQ(samples::Judge(recovered, worn.Texts(), "").wrong, 0);
  size_t listed = 100 + 20;
  EXPECT_EQ(whole_.size(), worn.Intact().size() - listed);

  MessageStoreBuilder store;
  for (int i = 0; i < 60; ++i) store.AddMessage(MailOf(std::to_string(i), i));
  store.FinishInLevels(3, 3);
  EXPECT_EQ(Recover(store.Bytes()).size(), 0U);
  EXPECT_EQ(Recover(store.Bytes(), true).size(), 60U);  // a copy has no tree
  auto stop = [](int) { return false; };
  std::string path = WriteTemp("Worn.dbx", store.Bytes());
  LostMail stopped(path, FindObjects(path, stop)[0], true, stop);
  EXPECT_FALSE(stopped.Next());
  uint32_t root = store.Image().Get32(0xE4);
  store.Image().Put32(store.Image().Get32(root + 8), 1);
  EXPECT_GT(Recover(store.Bytes()).size(), 10U);
}

TEST_F(LostMailTest, HostileFilesCostNoMoreThanTheirSize) {
  // Every word its own offset; indexes that all lead to one long chain, and one that returns.
  MessageStoreBuilder words;
  for (uint32_t i = 0; i < 200'000; ++i) words.Image().AddObject(std::string(4, '\0'));
  EXPECT_EQ(Recover(words.Bytes()).size(), 0U);

  MessageStoreBuilder small;  // blocks without a text, one behind the other
  for (uint32_t i = 0; i < 20'000; ++i) {
    small.Image().AddObject(std::string(4, '\0') + '\4' + std::string(11, '\0'));
  }
  auto goOn = [](int) { return true; };
  std::string path = WriteTemp("Worn.dbx", small.Bytes());
  LostMail crowded(path, FindObjects(path, goOn)[0], false, goOn);
  EXPECT_THAT(crowded.Remark(), HasSubstr("more objects than it can hold"));

  MessageStoreBuilder chains;
  IndexedMessage letter = MailOf("long");
  letter.text += std::string(1 << 20, 'x');
  MessagePlaces places = chains.AddMessage(letter);
  std::string info = chains.Bytes().substr(places.info);
  for (int i = 0; i < 3000; ++i) {
    uint32_t copy = chains.Image().AddObject(info);
    chains.Image().Put8(copy + 12 + 9 * 4 + 1, static_cast<uint8_t>(i));  // other lengths
    chains.Image().Put8(copy + 12 + 9 * 4 + 2, static_cast<uint8_t>(i >> 8));
  }
  EXPECT_LE(Recover(chains.Bytes()).size(), 1U);
  chains.Image().Put32(places.blocks.back() + 12, places.blocks[5]);
  EXPECT_LE(Recover(chains.Bytes()).size(), 1U);
}

class RescueTest : public OeFixture {
 protected:
  std::string Load(const std::string& file, const std::string& bytes) {
    return Run([&] {
      ReadMessageTree(WriteTemp(file, bytes), kMsgToDb, {"Inbox", "", "ann"}, intake::kComplete);
    });
  }
  std::string Rescue(const std::string& file, const std::string& bytes) {
    return Run([&] {
      ReadLostMessages(WriteTemp(file, bytes), {"Inbox", "", "ann"}, false, intake::kComplete);
    });
  }
  std::string Run(const std::function<void()>& load) {
    core::State().Counts = {};
    intake::Account().Open();
    load();
    intake::Account().Close();
    return Summary();
  }
  std::string Column(const char* name, const std::string& subject) {
    return Query("SELECT " + std::string(name) + " FROM Email WHERE Subject = '" + subject + "'")
        .AsText();
  }
};

TEST_F(RescueTest, WhatIsFoundIsStoredApartOnceWithANoteOfHowWholeItIs) {
  MessageStoreBuilder store;
  store.AddMessage(MailOf("listed"));
  IndexedMessage large = MailOf("cut short", 1);
  large.text += std::string(2000, 'x');
  MessagePlaces cut = store.AddMessage(large);
  MessagePlaces overwritten = store.AddMessage(MailOf("overwritten", 2));
  store.AddMessage(MailOf("moved", 3));
  MessagePlaces alone = store.AddMessage(MailOf("without index", 4));
  store.AddMessage(MailOf("deleted", 5));
  IndexedMessage other = MailOf("listed instead", 6);
  other.reusedBlocks = overwritten.blocks;
  MessagePlaces instead = store.AddMessage(other);
  store.Image().Put32(cut.blocks[2], 1);
  store.Image().Put32(alone.info, 1);
  uint32_t deleted = store.Messages()[5].info;
  store.Image().Free(deleted, store.Image().Get32(deleted + 4) + 20, 0);
  store.SetRoot(store.Image().AddNode({{store.Messages()[0].info}, {instead.info}}));
  store.SetItemCount(2);

  EXPECT_EQ(Load("Inbox.dbx", store.Bytes()), "found 2, stored 2, ");
  EXPECT_EQ(Load("Archive.dbx", StoreWith({MailOf("moved", 3)})), "found 1, stored 1, ");
  EXPECT_EQ(Rescue("Inbox.dbx", store.Bytes()), "found 5, stored 3, already 1, unreadable 1, ");
  EXPECT_THAT(intake::Account().Text(), HasSubstr("another message stands where its text began"));
  EXPECT_THAT(intake::Account().Text(), HasSubstr("of lost texts whose beginnings"));
  EXPECT_EQ(Column("Folder", "deleted"), "Recovered from Inbox");
  EXPECT_EQ(Column("Direction", "deleted"), "In");
  EXPECT_THAT(Column("Notes", "deleted"), AllOf(HasSubstr(": deleted."), HasSubstr("whole")));
  EXPECT_THAT(Column("Notes", "without index"), HasSubstr("by its text alone"));
  EXPECT_THAT(Column("Notes", "cut short"), HasSubstr("1024 of its 2"));
  EXPECT_EQ(Rescue("Inbox.dbx", store.Bytes()), "found 5, already 4, unreadable 1, ");

  // A part does not stand for the message: it comes whole from elsewhere, and a text that came
  // with an index is known without one.
  EXPECT_EQ(Load("Whole.dbx", StoreWith({large})), "found 1, stored 1, ");
  MessageStoreBuilder textOnly;
  textOnly.Image().Put32(textOnly.AddMessage(MailOf("listed")).info, 1);
  EXPECT_EQ(Rescue("Inbox.dbx", textOnly.Bytes()), "found 1, already 1, ");
}

TEST_F(RescueTest, ALoadLooksThroughEveryFileAndTheCopiesThatCompactingLeft) {
  MessageStoreBuilder deleted;
  deleted.AddMessage(MailOf("deleted"));
  platform::MakeFolder(folder_.File("Mail"));
  WriteTemp("Mail/Inbox.dbx", StoreWith({MailOf("listed", 1)}));
  WriteTemp("Mail/Drafts.dbx", deleted.Bytes());
  WriteTemp("Mail/Inbox.dbk", StoreWith({MailOf("listed", 1), MailOf("left behind", 2)}));
  UseProfile(folder_.File("Mail/"));
  intake::ReadingRules rules = intake::kComplete;
  for (bool looks : {false, true}) {
    rules.lostMail = looks;
    auto source = MakeSource(rules);
    std::string counts = Run([&] {
      source->Announce(true);
      source->Read(true);
    });
    EXPECT_EQ(counts, looks ? "found 4, stored 2, already 2, " : "found 1, stored 1, ");
  }
  EXPECT_EQ(Column("Folder", "left behind"), "Recovered from Inbox");
  EXPECT_EQ(Column("Folder", "deleted"), "Recovered from Drafts");
}

}  // namespace
}  // namespace tarnwick::oe
