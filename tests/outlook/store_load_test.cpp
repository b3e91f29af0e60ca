// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Whole loads by the real reader, of stores built for the purpose and of real ones, sound and
// damaged.

#include <random>
#include <utility>

#include "outlook/pst_provider.h"
#include "outlook_load.h"
#include "samples/pst_builder.h"
#include "support/real_data.h"

namespace tarnwick::outlook {
namespace {

using reader::Variant;
using samples::PstAttachment;
using samples::PstBuilder;
using samples::PstMessage;
using samples::PstProperties;

uint16_t Tag(Prop property) {
  return static_cast<uint16_t>(property);
}

PstMessage Mail(const std::string& subject) {
  PstMessage mail;
  mail.properties.texts[Tag(Prop::kMessageClass)] = "IPM.Note";
  mail.properties.texts[Tag(Prop::kSubject)] = subject;
  mail.properties.texts[Tag(Prop::kSenderName)] = "Ann";
  mail.properties.texts[Tag(Prop::kSenderAddress)] = "ann@firm.test";
  mail.properties.texts[Tag(Prop::kBody)] = "Body of " + subject;
  mail.properties.times[Tag(Prop::kClientSubmitTime)] = 126'598'072'200'000'000;
  PstProperties bob;
  bob.numbers[Tag(Prop::kRecipientType)] = 1;
  bob.texts[Tag(Prop::kDisplayName)] = "Bob";
  bob.texts[Tag(Prop::kAddress)] = "bob@x.test";
  mail.recipients = {bob};
  return mail;
}

std::string BuiltStore(Variant variant) {
  PstBuilder store(variant);
  uint32_t folder = PstBuilder::kTop;
  for (int i = 0; i < 30; ++i) {
    if (i % 5 == 0) folder = store.AddFolder(folder, "Folder");
    store.AddMessage(folder, Mail("mail " + std::to_string(i)));
  }
  return store.Build();
}

class StoreLoad : public OutlookLoad {
 protected:
  core::LoadCounts LoadFile(const std::string& path, bool everyStore = true) {
    intake::SetLinkLimits({20'000, 10'000, 20'000});
    PstNamespace outlook({path}, TARNWICK_READER);
    ui_.yesNo = {true};  // for a store with a password
    SCOPED_TRACE(path);
    core::LoadCounts counts = LoadFrom(outlook, everyStore);
    ui_.yesNo.clear();
    intake::SetLinkLimits({});
    return counts;
  }
  core::LoadCounts Load(const std::string& bytes, bool everyStore = true) {
    return LoadFile(WriteTemp("built.pst", bytes), everyStore);
  }
};

TEST_F(StoreLoad, IsTakenWhetherUnicodeOrAnsi) {
  for (Variant variant : {Variant::kUnicode, Variant::kAnsi}) {
    PstBuilder store(variant);
    uint32_t inbox = store.AddFolder(PstBuilder::kTop, "Inbox");
    uint32_t deep = store.AddFolder(inbox, "Deep");
    PstMessage long_ = Mail("long");
    long_.properties.texts[Tag(Prop::kBody)] = std::string(30'000, 'x') + "end";
    PstAttachment file;
    file.properties.texts[Tag(Prop::kAttachLongName)] = "table.xls";
    file.data = std::string(20'000, 'y') + "END";
    long_.attachments = {file};
    store.AddMessage(inbox, Mail("wide or narrow"));
    store.AddMessage(deep, long_);
    // Entry identifiers of the two stores are the same.
    Run("DELETE * FROM Email");
    Run("DELETE * FROM FileRepository");
    EXPECT_EQ(Load(store.Build()).stored, 2) << static_cast<int>(variant);
    EXPECT_EQ(Query("SELECT FromToAddress FROM Email WHERE Folder = 'Inbox'").AsText(),
              "ann@firm.test");
    EXPECT_THAT(Query("SELECT Body FROM Email WHERE Folder = 'Deep'").AsText(), EndsWith("xxend"));
    EXPECT_EQ(Query("SELECT FileName FROM Attachment").AsText(), "table.xls");
    EXPECT_EQ(Query("SELECT Address FROM ToRecipient").AsText(), "bob@x.test");
  }
}

TEST_F(StoreLoad, OfAnsiTextsReadsThemInTheMessagesCodepage) {
  // The names are in the code page of the machine, which the first message tells.
  PstBuilder store(Variant::kAnsi, "\xCB\xE8\xF7\xED\xFB\xE5 \xEF\xE0\xEF\xEA\xE8");
  uint32_t inbox = store.AddFolder(PstBuilder::kTop, "\xC2\xF5\xEE\xE4");
  PstMessage cyrillic = Mail("\xCF\xF0\xE8\xE2\xE5\xF2");
  cyrillic.properties.numbers[Tag(Prop::kMessageCodepage)] = 1251;
  cyrillic.recipients[0].texts[Tag(Prop::kDisplayName)] = "\xC1\xEE\xE1";
  PstMessage japanese = Mail("\x83\x65\x83\x58\x83\x67");
  japanese.properties.numbers[Tag(Prop::kMessageLocale)] = 0x0411;
  japanese.properties.bytes[Tag(Prop::kHtml)] = "<html>\x1B$B%F\x1B(B</html>";
  japanese.properties.numbers[Tag(Prop::kInternetCodepage)] = 50220;
  store.AddMessage(inbox, cyrillic);
  store.AddMessage(inbox, japanese);
  store.AddMessage(inbox, Mail("\xCF\xF0"));  // tells nothing itself
  EXPECT_EQ(Load(store.Build(), false).stored, 3) << "by its name it is the default store";
  EXPECT_EQ(Rows("SELECT Folder, Subject FROM Email ORDER BY ID"),
            "Вход|Привет\nВход|テスト\nВход|Пр");
  EXPECT_EQ(Query("SELECT Name FROM ToRecipient ORDER BY ID").AsText(), "Боб");
  EXPECT_EQ(Query("SELECT HTMLBody FROM Email WHERE Subject = 'テスト'").AsText(),
            "<html>テ</html>");
}

// An item that is stored is not looked at again: not even its loss shows.
TEST_F(StoreLoad, IsReadAgainWithoutItsStoredItems) {
  PstBuilder store(Variant::kAnsi);
  uint32_t inbox = store.AddFolder(PstBuilder::kTop, "Inbox");
  for (int i = 0; i < 50; ++i) store.AddMessage(inbox, Mail("mail " + std::to_string(i)));
  std::string bytes = store.Build();
  EXPECT_EQ(Load(bytes).stored, 50);
  // Each item's properties begin with its class.
  for (size_t at = 0; (at = bytes.find("IPM.Note", at)) != std::string::npos; ++at) {
    bytes.replace(at - 12, 12, 12, '\0');
  }
  EXPECT_EQ(Load(bytes).alreadyStored, 50);
  Run("DELETE * FROM Email WHERE Subject = 'mail 7'");
  core::LoadCounts counts = Load(bytes);
  EXPECT_EQ(counts.alreadyStored, 49);
  EXPECT_EQ(counts.unreadable, 1);
}

TEST_F(StoreLoad, TakesOfADamagedMessageWhatThereIsAndSaysSo) {
  PstBuilder store(Variant::kAnsi);
  PstMessage mail = Mail("long");
  mail.properties.texts[Tag(Prop::kBody)] = std::string(30'000, 'x');
  store.AddMessage(store.AddFolder(PstBuilder::kTop, "Inbox"), mail);
  std::string bytes = store.Build();
  constexpr size_t kBlock = 8180;
  // Behind its bytes a block bears its number: the second one loses it.
  size_t second = bytes.find(std::string(kBlock, 'x')) + kBlock + 12;
  bytes.replace(second + kBlock, 12, 12, '\0');
  EXPECT_EQ(Load(bytes).stored, 1);
  EXPECT_EQ(Query("SELECT Body FROM Email").AsText(), std::string(kBlock, 'x'));
  EXPECT_THAT(Log(), HasSubstr("not all of it is taken as it was written (body): long"));
  EXPECT_THAT(Query("SELECT Notes FROM Email").AsText(), HasSubstr("damaged"));
}

// The text of a block is taken as it is where its checksum does not match, and marked; so is what
// an attachment holds, read ahead or in its time.
TEST_F(StoreLoad, MarksAMessageThatIsNotAsItWasWritten) {
  PstBuilder store;
  uint32_t inbox = store.AddFolder(PstBuilder::kTop, "Inbox");
  for (size_t size : {0, 100, 600'000}) {
    PstMessage mail = Mail("mail " + std::to_string(size));
    if (size > 0) mail.attachments.resize(1);
    if (size > 0) mail.attachments[0].data = std::string(size, 'y') + "END";
    store.AddMessage(inbox, mail);
  }
  store.AddMessage(inbox, Mail("sound"));
  std::string bytes = store.Build();
  for (size_t at = 0; (at = bytes.find("yEND", at)) != std::string::npos; ++at) bytes[at] = 'z';
  size_t body = bytes.find(std::string("m\0a\0i\0l\0 \0\x30", 11));
  ASSERT_NE(body, std::string::npos);
  bytes[body] = 'n';
  EXPECT_EQ(Load(bytes).stored, 4);
  EXPECT_EQ(CountRows("Email WHERE Notes Like '%checksum%'"), 3);
  EXPECT_TRUE(Query("SELECT Notes FROM Email WHERE Subject = 'sound'").IsNull());
}

// Neither stopped nor left aside, a load finds mail only where there is mail.
TEST_F(StoreLoad, FindsNoMailInWhatIsNone) {
  PstBuilder store(Variant::kUnicode, "Archive");
  uint32_t inbox = store.AddFolder(PstBuilder::kTop, "Inbox");
  for (const char* itsClass :
       {"IPM.Note", "REPORT.IPM.Note.NDR", "IPM.Schedule.Meeting.Request", "IPM.Post"}) {
    PstMessage item = Mail(itsClass);
    item.properties.texts[Tag(Prop::kMessageClass)] = itsClass;
    store.AddMessage(inbox, item);
  }
  core::LoadCounts counts = Load(store.Build(), false);
  EXPECT_EQ(counts.found, 1);
  EXPECT_EQ(counts.notReached, 1);
  EXPECT_EQ(Load(store.Build()).found, 1);
  store.AddMessage(inbox, PstMessage{});  // of no class, it could be mail
  EXPECT_EQ(Load(store.Build()).unreadable, 1);
}

// What the table of a folder names and the nodes do not, or lists twice, is left for the nodes.
TEST_F(StoreLoad, LeavesATableThatLiesForTheNodes) {
  PstBuilder store;
  uint32_t inbox = store.AddFolder(PstBuilder::kTop, "Inbox");
  uint32_t other = store.AddFolder(PstBuilder::kTop, "Other");
  for (int i = 0; i < 3; ++i) store.AddMessage(inbox, Mail("mail " + std::to_string(i)));
  store.ListMessage(inbox, store.AddMessage(other, Mail("elsewhere")));
  store.ListMessage(inbox, inbox);
  EXPECT_EQ(Load(store.Build()).found, 4);
  EXPECT_EQ(core::State().Counts.stored, 4);
  EXPECT_EQ(Query("SELECT Folder FROM Email WHERE Subject = 'elsewhere'").AsText(), "Other");
}

TEST_F(StoreLoad, NamesAStoreThatCannotBeRead) {
  std::string path = WriteTemp("secret.pst", BuiltStore(Variant::kUnicode));
  platform::SetFileFault([&](platform::FileOperation, const std::string& file) {
    if (file == path) throw Error(ErrorNumber::kPermissionDenied, "Permission denied: " + file);
  });
  EXPECT_EQ(LoadFile(path).found, 0);
  platform::SetFileFault(nullptr);
  std::string newer = BuiltStore(Variant::kUnicode);
  newer[10] = 37;
  EXPECT_EQ(Load(newer).found, 0);
  EXPECT_THAT(ui_.Shown("box"),
              ::testing::IsSupersetOf({HasSubstr("secret.pst\r\n    It may not be read."),
                                       HasSubstr("made by a newer Outlook")}));
}

struct RealStore {
  const char* file;
  int64_t stored;
  int64_t unreadable;
};
constexpr RealStore kRealStores[] = {{"sample1.pst", 1, 0},
                                     {"testPST.pst", 7, 0},
                                     {"testPST_variousBodyTypes.pst", 4, 0},
                                     {"test_ansi.pst", 0, 0},      // nothing but posts,
                                     {"test_unicode.pst", 0, 0}};  // behind a password

TEST_F(StoreLoad, TakesEveryMailOfRealStoresOnce) {
  for (const RealStore& real : kRealStores) {
    std::string path = testing::RealData("pst/" + std::string(real.file));
    if (path.empty()) GTEST_SKIP();
    EXPECT_EQ(LoadFile(path).stored, real.stored) << real.file;
    EXPECT_EQ(core::State().Counts.unreadable, real.unreadable) << real.file;
    EXPECT_EQ(LoadFile(path).alreadyStored, real.stored) << real.file;
  }
  EXPECT_EQ(Query("SELECT FromToName FROM Email WHERE Subject = 'Feature Generators'").AsText(),
            "Kenig Ma");
  EXPECT_EQ(CountRows("Email WHERE Folder = 'Début du fichier de données Outlook'"), 7);
}

// Any place may be wrong, or all be gone behind one; no outcome is wrong but a load that ends,
// hangs or miscounts, and what is not reached by the damage is still taken.
TEST_F(StoreLoad, SurvivesDamage) {
  std::vector<std::pair<std::string, std::string>> stores = {
      {"Unicode", BuiltStore(Variant::kUnicode)}, {"ANSI", BuiltStore(Variant::kAnsi)}};
  for (const RealStore& real : kRealStores) {
    std::string path = testing::RealData("pst/" + std::string(real.file));
    if (!path.empty()) stores.emplace_back(real.file, platform::ReadFile(path));
  }
  std::mt19937 random(20020305);
  int64_t stored = 0;
  for (const auto& [name, sound] : stores) {
    size_t used = sound.find_first_not_of('\0', 600);
    for (int round = 0; round < 24; ++round) {
      std::string bytes = sound;
      if (round % 4 == 0) bytes.resize(used + random() % (bytes.size() - used));
      constexpr int kBits[] = {0, 3, 60, 4000};
      for (int i = 0; i < kBits[round % 4]; ++i) {
        char& byte = bytes[used + random() % (bytes.size() - used)];
        byte = static_cast<char>(byte ^ static_cast<char>(1U << random() % 8));
      }
      Run("DELETE * FROM Email");
      stored += Load(bytes).stored;
    }
  }
  EXPECT_GT(stored, 0);
  EXPECT_EQ(Load("no store at all").found, 0);
  EXPECT_THAT(Log(), HasSubstr("Outlook store skipped"));
}

}  // namespace
}  // namespace tarnwick::outlook
