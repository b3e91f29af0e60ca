// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Loads with a search for lost messages, by the real reader, of stores in all states of decay.
#include "outlook/rescue.h"

#include "outlook/pst_provider.h"
#include "outlook_load.h"
#include "samples/pst_builder.h"
#include "samples/worn_outlook.h"
#include "support/real_data.h"

namespace tarnwick::outlook {
namespace {

using reader::Variant;
using samples::PstBuilder;
using samples::WornOutlook;
using samples::WornPart;

class OutlookRescue : public OutlookLoad {
 protected:
  core::LoadCounts LoadFile(const std::string& path) {
    PstNamespace outlook({path}, TARNWICK_READER);
    intake::ReadingRules rules;
    rules.lostMail = true;
    SCOPED_TRACE(path);
    return LoadFrom(outlook, true, rules);
  }
  core::LoadCounts Load(const std::string& bytes) {
    return LoadFile(WriteTemp("built.pst", bytes));
  }
  // Forgets all messages.
  void Empty() {
    Run("DELETE * FROM Email");
    Run("DELETE * FROM FileRepository");
  }
  std::string LetterOf(const std::string& id) {
    jet::Recordset pieces;
    pieces.Open("SELECT FileBody FROM FileRepository WHERE FileID=" + id + " ORDER BY ID",
                repository::RepositoryDb(), jet::CursorType::kKeyset);
    std::string letter;
    for (; !pieces.Eof(); pieces.MoveNext()) letter += pieces.Field("FileBody").AsText();
    return letter;
  }
  // How the letters in the repository compare with what was written.
  std::map<WornPart, int> Judge() {
    std::map<WornPart, int> verdict;
    jet::Recordset rows;
    rows.Open("SELECT ID, Notes FROM Email", repository::RepositoryDb(), jet::CursorType::kKeyset);
    for (; !rows.Eof(); rows.MoveNext()) {
      WornPart part = samples::JudgeWorn(LetterOf(rows.Field("ID").AsText()));
      ++verdict[part];
      std::string note = rows.Field("Notes").AsText();
      bool saysWhole = note.find("whole") != std::string::npos || note.empty();
      EXPECT_TRUE(!saysWhole || part == WornPart::kWhole) << note;
    }
    return verdict;
  }
};

using Wear = void (*)(WornOutlook&);

TEST_F(OutlookRescue, WornStoresGiveBackWhatIsThereAndNothingThatIsMixed) {
  constexpr int kAll = 60;
  const struct {
    const char* what;
    Wear wear;
    int leastWhole;
    int leastInAll;
  } kCases[] = {{"nothing wrong", [](WornOutlook& store) { store.Finish(); }, kAll, kAll},
                {"every third deleted",
                 [](WornOutlook& store) {
                   store.DeleteEvery(3);
                   store.Finish();
                 },
                 kAll, kAll},
                {"all deleted, and the head zeroed",
                 [](WornOutlook& store) {
                   store.DeleteEvery(1);
                   store.Finish();
                   store.ZeroHead();
                 },
                 kAll, kAll},
                {"bits turned over",
                 [](WornOutlook& store) {
                   store.Finish();
                   store.ZeroHead();
                   store.TurnBits(10);
                 },
                 kAll / 4, kAll / 2},
                {"half of the index overwritten",
                 [](WornOutlook& store) {
                   store.Finish();
                   store.OverwriteIndex(50);
                 },
                 kAll / 4, kAll},
                {"all of the index overwritten",
                 [](WornOutlook& store) {
                   store.Finish();
                   store.OverwriteIndex(100);
                 },
                 0, kAll},
                {"the last third cut off",
                 [](WornOutlook& store) {
                   store.Finish();
                   store.Cut(67);
                 },
                 kAll / 3, kAll / 2}};
  for (const auto& each : kCases) {
    for (Variant variant : {Variant::kAnsi, Variant::kUnicode, Variant::kLargePages}) {
      SCOPED_TRACE(each.what + (", variant " + std::to_string(static_cast<int>(variant))));
      Empty();
      WornOutlook store(variant, kAll);
      each.wear(store);
      core::LoadCounts counts = Load(store.Bytes());
      auto verdict = Judge();
      EXPECT_GE(verdict[WornPart::kWhole], each.leastWhole);
      EXPECT_GE(counts.stored, each.leastInAll);
      EXPECT_LE(counts.stored, kAll);
      EXPECT_EQ(verdict[WornPart::kMixed], 0);
      EXPECT_EQ(Load(store.Bytes()).stored, 0) << "the second time";
    }
  }
}

TEST_F(OutlookRescue, TellsWhereAnItemLayAndHowItWasFound) {
  PstBuilder store;
  uint32_t sent = store.AddFolder(PstBuilder::kTop, "Sent Items");
  uint32_t hidden = store.AddFolder(0x122, "Recoverable Items");
  uint32_t gone = store.AddMessage(sent, samples::WornMail(1));
  store.AddMessage(sent, samples::WornMail(2));
  store.AddMessage(hidden, samples::WornMail(3));
  samples::PstMessage appointment = samples::WornMail(4);
  appointment.properties.texts[0x001A] = "IPM.Appointment";
  uint32_t noMail = store.AddMessage(sent, appointment);
  // The same letter as one that is there.
  uint32_t again = store.AddMessage(sent, samples::WornMail(2));
  store.Checkpoint();
  for (uint32_t node : {gone, noMail, again}) store.DeleteMessage(node);
  EXPECT_EQ(Load(store.Build()).stored, 3);
  EXPECT_EQ(core::State().Counts.alreadyStored, 1) << "the same letter under another number";
  EXPECT_EQ(Rows("SELECT Subject, Folder, Direction, Notes FROM Email ORDER BY Subject"),
            "subject-1;|Recovered from Sent Items|Out|Found in built.pst: deleted.\r\nIt is whole."
            "\nsubject-2;|Sent Items|Out|Null"
            "\nsubject-3;|Recovered from Recoverable Items|Out|Found in built.pst: in no folder "
            "that Outlook shows.\r\nIt is whole.");
}

TEST_F(OutlookRescue, TellsOfAPartAndTakesTheWholeFromABetterCopy) {
  PstBuilder store(Variant::kAnsi);
  store.AddMessage(store.AddFolder(PstBuilder::kTop, "Inbox"), samples::WornMail(4));
  const std::string sound = store.Build();
  std::string broken = sound;
  broken[broken.find("body-4;")] = 'x';  // of a text in a block of its own
  broken.replace(0, 1024, 1024, '\0');
  EXPECT_EQ(Load(broken).stored, 1);
  EXPECT_EQ(Rows("SELECT Folder, Notes FROM Email"),
            "Recovered from Inbox|Found in built.pst: where the index of the store is lost.\r\n"
            "Not all of it is there (body).");
  EXPECT_EQ(Load(broken).alreadyStored, 1);
  EXPECT_EQ(Load(sound).stored, 1);
  EXPECT_EQ(Judge()[WornPart::kWhole], 1);
}

// A sound store holds nothing lost; without its head all that it held is found by its ends alone.
TEST_F(OutlookRescue, FindsTheMailOfRealStoresWithoutTheirHeads) {
  const std::pair<const char*, int64_t> kStores[] = {
      {"sample1.pst", 1}, {"testPST.pst", 7}, {"testPST_variousBodyTypes.pst", 4}};
  for (const auto& [file, mails] : kStores) {
    std::string path = testing::RealData("pst/" + std::string(file));
    if (path.empty()) GTEST_SKIP();
    std::string bytes = platform::ReadFile(path);
    Empty();
    EXPECT_EQ(Load(bytes).stored, mails) << file;
    EXPECT_EQ(CountRows("Email WHERE Folder Like 'Recovered%'"), 0) << file;
    bytes.replace(0, 1024, 1024, '\0');
    Empty();
    EXPECT_EQ(Load(bytes).stored, mails) << file;
    EXPECT_EQ(CountRows("Email WHERE Folder Like 'Recovered%' AND Notes Like '%whole%'"), mails);
  }
}

}  // namespace
}  // namespace tarnwick::outlook
