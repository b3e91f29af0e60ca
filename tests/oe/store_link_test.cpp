// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A load through the reader leaves what a load leaves that the program reads itself, however it
// ends.
#include "oe/store_link.h"

#include <chrono>
#include <cstdlib>
#include <thread>

#include "intake/letter_record.h"
#include "intake/letter_service.h"
#include "intake/reader_link.h"
#include "intake/text_reader.h"
#include "oe/folder_list.h"
#include "oe/lost_walk.h"
#include "oe/rescue.h"
#include "oe/sample.h"
#include "oe_fixture.h"
#include "platform/child_process.h"
#include "platform/environment.h"
#include "repository/schema.h"
#include "samples/worn_store.h"
#include "support/own_reader.h"

namespace tarnwick::oe {
namespace {

using core::SenderAnswer;
using samples::IndexedMessage;
using samples::MessagePlaces;
using samples::MessageStoreBuilder;

// --- A reader that goes wrong: this program, started with the words that say how and where.

class WrongService : public intake::LetterService {
 public:
  WrongService(std::unique_ptr<intake::LetterService> sound, std::string fault)
      : sound_(std::move(sound)), fault_(std::move(fault)) {}

  void Skip(uint64_t messages) override {
    count_ = messages;
    sound_->Skip(messages);
  }
  void Take(std::string_view piece) override { sound_->Take(piece); }
  Answer Next(std::string_view how, bool packs, const ByteSink& sink) override {
    Answer answer = sound_->Next(how, packs, sink);
    if (++count_ == kWhere) GoWrong(answer.record, how);
    return answer;
  }
  std::string Text(std::string_view which, const ByteSink& sink) override {
    std::string record = sound_->Text(which, sink);
    bool isThere = count_ == kWhere || which.find("letter 60") != std::string_view::npos;
    if (isThere && fault_.ends_with("its text")) std::_Exit(1);
    return record;
  }
  static constexpr uint64_t kWhere = 60;

 private:
  void GoWrong(std::string& record, std::string_view how) {
    bool hasText = how == intake::kWithText;
    if (fault_ == "dies" || (fault_ == "dies over its text" && hasText)) std::_Exit(1);
    if (fault_ == "hangs") std::this_thread::sleep_for(std::chrono::hours(1));
    if (fault_ == "says nonsense") record.assign(100, '\xEE');
    if (fault_ == "says half") record.resize(record.size() / 2);
    if (fault_ == "says more") record += "more";
    if (fault_ == "forges what is packed" && hasText) {
      size_t packed = record.rfind("\x01\x28\xB5\x2F\xFD");
      record.replace(packed + 5, 6, "\xE0\xFF\xFF\xFF\xFF\x7F");
    }
    for (; fault_ == "floods";) platform::WriteToParent(std::string(70'000, 'b'));
    if (fault_ == "promises gigabytes") platform::WriteToParent("r\xFF\xFF\xFF\xFF");
    if (fault_ == "sends another frame") platform::WriteToParent(std::string("?\0\0\0\0", 5));
  }

  std::unique_ptr<intake::LetterService> sound_;
  std::string fault_;
  uint64_t count_ = 0;
};

[[maybe_unused]] const auto* const kOwnReader = ::testing::AddGlobalTestEnvironment(
    new testing::OwnReader([](const std::string& fault, const intake::LetterOpening& told,
                              const auto& tell) -> std::unique_ptr<intake::LetterService> {
      const intake::ReadingRules& rules = told.conditions.rules;
      if (told.conversation == intake::Conversation::kFolderList) {
        return std::make_unique<testing::WrongThroughout>(MakeFolderListService(rules), fault);
      }
      if (told.conversation == intake::Conversation::kStoreSample) {
        return std::make_unique<testing::WrongThroughout>(MakeStoreSampleService(), fault);
      }
      std::unique_ptr<intake::LetterService> sound;
      if (told.conversation == intake::Conversation::kText) sound = intake::MakeTextService();
      if (told.conversation == intake::Conversation::kLostMail) {
        sound = MakeLostService(rules, told.store, tell);
      }
      if (!sound) sound = MakeStoreService(rules, told.store);
      return std::make_unique<WrongService>(std::move(sound), fault);
    }));

// What happens to a load, and where.
enum class Pass : uint8_t { kLoad, kSenders, kRescue };
struct Course {
  std::string name;
  std::deque<SenderAnswer> answers = {SenderAnswer::kAcceptAll};
  int stopsAtYield = -1;
  int diskIsFullAtWrite = -1;  // of the scratch file
  bool isSecond = false;       // half of it is there already
  Pass pass = Pass::kLoad;
  const intake::ReadingRules* rules = &intake::kComplete;
};

// All that can be seen of it afterwards.
struct Left {
  std::vector<std::string> tables;
  std::string log;
  std::string account;
  std::string summary;
  int64_t stored = 0;
  int64_t unreadable = 0;
  std::vector<std::pair<std::string, std::string>> shown;
  std::vector<std::string> files;
  std::optional<std::vector<int64_t>> found;
  bool operator==(const Left&) const = default;
};

class StoreLinkTest : public OeFixture {
 protected:
  StoreLinkTest() {
    repository::DisconnectRepository();
    platform::CopyFile(folder_.File("Tarnwick.twr"), folder_.File("empty"));
    EXPECT_TRUE(repository::OpenRepository(false));
  }
  ~StoreLinkTest() override {
    intake::SetReader("");
    intake::SetLinkLimits({});
  }

  static IndexedMessage Letter(int number) {
    IndexedMessage letter = MailOf("letter " + std::to_string(number), number % 60);
    letter.senderName = "Person " + std::to_string(number % 7);
    std::string& text = letter.text;
    text.replace(text.find("Bob Kern"), 8, letter.senderName);
    switch (number % 11) {
      case 3:
        text.insert(text.find("\r\n\r\n"), "\r\nContent-Type: text/html");
        text += "<html><body><p>a <b>table</b></body></html>\r\n";
        break;
      case 5:  // leaves a file behind
        text += "begin 644 note.txt\r\n#0V%T\r\n`\r\nend\r\n";
        break;
      case 7: {  // brings up a box
        text.insert(text.find("\r\n\r\n"), "\r\nContent-Type: multipart/mixed; boundary=edge");
        for (int i = 0; i < 25; ++i) {
          text +=
              "--edge\r\nContent-Type: application/x; name=f" + std::to_string(i) + "\r\n\r\nx\r\n";
        }
        break;
      }
      case 1:  // too long to be held
        if (number == 243) text += std::string(4'500'000, 'x') + "\r\n";
        break;
      case 9:  // several rows, in parts beyond packing
        for (int i = 0; i < 3000; ++i) text += std::to_string(int64_t{i} * i * number) + "\r\n";
        break;
    }
    return letter;
  }

  // Of 330 letters in three levels, some of them damaged, one there twice.
  static MessageStoreBuilder Store(int letters = 330) {
    MessageStoreBuilder store;
    for (int i = 0; i < letters; ++i) {
      MessagePlaces places = store.AddMessage(Letter(i == 100 ? 99 : i));
      if (i % 50 == 20) store.Image().Put32(places.info, 1);
      if (i % 50 == 21) store.Image().Put32(places.date, 0xFFFFFFFF);
      if (i % 50 == 22) store.Image().Put32(places.blocks.front(), 1);
    }
    store.FinishInLevels(3, 12);
    return store;
  }

  static std::string Piece(uint32_t seed) {
    samples::WornStore store(100, seed);
    store.Finish();
    store.TakePiece(5, 80);
    return store.Bytes().substr(0, store.Bytes().size() / 512 * 512);
  }

  Left Load(const std::string& path, const std::string& reader, const Course& course) {
    repository::DisconnectRepository();
    platform::CopyFile(folder_.File("empty"), folder_.File("Tarnwick.twr"));
    EXPECT_TRUE(repository::OpenRepository(false));
    intake::SetReader(reader);
    if (course.isSecond) Read(WriteTemp("half.dbx", Store(180).Bytes()), {});
    RemoveLog();
    ui_.shown.clear();
    Read(path, course);
    Left left;
    for (const jet::TableDefinition& table : repository::RepositoryTables()) {
      left.tables.push_back(Rows("SELECT * FROM " + std::string(table.name)));
    }
    left.log = Log();
    left.account = intake::Account().Text();
    left.summary = Summary();
    left.stored = core::State().Counts.stored;
    left.unreadable = core::State().Counts.unreadable;
    left.shown = ui_.shown;
    left.files = platform::ListFiles(core::State().EmailFileFolder);
    left.found = RepositoryDb().MayHold("Email", "Body", "letter 17");
    return left;
  }

  void Read(const std::string& path, const Course& course) {
    core::EndLoadState();
    core::BeginLoadState();
    ui_.senders = course.answers;
    int yields = 0;
    ui_.onYield = [&] {
      if (yields++ == course.stopsAtYield) core::State().ImportCancelFlag = true;
    };
    int writes = 0;
    const std::string scratch = core::State().TempMessageFile;
    platform::SetFileFault([&](platform::FileOperation operation, const std::string& file) {
      if (operation != platform::FileOperation::kWrite || file != scratch) return;
      if (writes++ == course.diskIsFullAtWrite) throw Error(ErrorNumber::kDiskFull, "Disk full");
    });
    jet::CommitGroup group(RepositoryDb());
    intake::Account().Open();
    intake::Account().Announce(path, AnnouncedMessages(path));
    const FolderRecord folder{"Inbox", "", "ann"};
    if (course.pass == Pass::kRescue) {
      ReadLostMessages(path, folder, true, *course.rules);
    } else {
      bool learns = course.pass == Pass::kSenders;
      ReadMessageTree(path, learns ? kMeAddress : kMsgToDb, folder, *course.rules);
    }
    group.End();
    intake::Account().Close();
    platform::SetFileFault(nullptr);
    ui_.onYield = {};
  }
};

TEST_F(StoreLinkTest, TheReaderLeavesWhatTheProgramLeavesHoweverALoadEnds) {
  using enum SenderAnswer;
  const Course courses[] = {
      {.name = "to its end"},
      {.name = "half is there", .isSecond = true},
      {.name = "asked", .answers = {kAccept, kIgnore, kReject, kAccept, kIgnore, kAcceptAll}},
      {.name = "cancelled", .answers = {kAccept, kAccept, kAccept, kIgnore, kCancel}},
      {.name = "stopped", .stopsAtYield = 215},
      {.name = "disk full", .diskIsFullAtWrite = 150},
      {.name = "designed", .rules = &intake::kDesigned},
      {.name = "senders", .pass = Pass::kSenders},
      {.name = "rescue", .pass = Pass::kRescue},
      {.name = "rescue, half is there", .isSecond = true, .pass = Pass::kRescue},
      {.name = "rescue, stopped", .stopsAtYield = 215, .pass = Pass::kRescue},
      {.name = "rescue, disk full", .diskIsFullAtWrite = 150, .pass = Pass::kRescue},
      {.name = "rescue of pieces", .pass = Pass::kRescue},
  };
  // Nothing yields while it waits for the reader.
  intake::SetLinkLimits({.patienceMilliseconds = 60'000});
  const std::string store = WriteTemp("Inbox.dbx", Store().Bytes());
  const std::string pieces = WriteTemp("Pieces.dbx", Piece(1) + Piece(2));
  for (const Course& course : courses) {
    const std::string& path = course.name.ends_with("pieces") ? pieces : store;
    int64_t before = intake::RecordsRead();
    Left here = Load(path, "", course);
    EXPECT_EQ(intake::RecordsRead(), before);
    Left there = Load(path, TARNWICK_READER, course);
    bool wentFar = course.name != "cancelled";
    EXPECT_EQ(intake::RecordsRead() > before + 40, wentFar) << course.name;
    EXPECT_EQ(here.summary, there.summary) << course.name;
    EXPECT_EQ(here.shown, there.shown) << course.name;
    EXPECT_EQ(here.log, there.log) << course.name;
    EXPECT_TRUE(here == there) << course.name;
  }
}

// Whatever becomes of the reader costs the one message, and is told.
TEST_F(StoreLinkTest, AReaderThatGoesWrongCostsTheMessageAndNoOther) {
  const std::string path = WriteTemp("Inbox.dbx", Store(150).Bytes());
  Left loaded = Load(path, "", {});
  const Course rescue{.name = "rescue", .pass = Pass::kRescue};
  Left rescued = Load(path, "", rescue);
  const struct {
    std::string fault;
    int lost = 1;
    bool rescues = false;
  } kRows[] = {{"dies"},
               {"dies over its text"},
               {"hangs"},
               {"says nonsense"},
               {"says half"},
               {"says more"},
               {"forges what is packed"},
               {"floods"},
               {"promises gigabytes"},
               {"sends another frame"},
               {"is no reader", 0},
               {std::string(testing::kStartsOnlyWith) + folder_.File("started"), 0},
               {"dies", 1, true},
               {"says half", 1, true},
               {"dies over its text", 1, true},
               {"is no reader", 0, true}};
  for (const auto& [fault, lost, rescues] : kRows) {
    const Left& sound = rescues ? rescued : loaded;
    bool hangs = fault == "hangs";
    intake::SetLinkLimits({.silentMilliseconds = hangs ? 2000 : 60'000});
    platform::SetEnvironmentText(testing::kReaderFault, fault);
    Left left = Load(path, platform::ProgramPath(), rescues ? rescue : Course());
    platform::SetEnvironmentText(testing::kReaderFault, std::nullopt);
    EXPECT_EQ(left.stored, sound.stored - lost) << fault;
    EXPECT_EQ(left.unreadable, sound.unreadable + lost) << fault;
    EXPECT_EQ(left.account.find(intake::kReaderLost) != std::string::npos, lost == 1) << fault;
    EXPECT_EQ(left.tables == sound.tables, lost == 0) << fault;
    bool isNone = fault == "is no reader";
    EXPECT_EQ(left.log.find("the program reads them itself") != std::string::npos, isNone) << fault;
  }
}

// The same of what is asked of a whole file: what that says is missing, and the load or look goes
// on.
TEST_F(StoreLinkTest, AReaderThatGoesWrongOverAFileCostsWhatTheFileSays) {
  samples::FolderListBuilder list;
  list.Add({1, 0, "Inbox", "Inbox.dbx"});
  list.Finish();
  const std::string folders = WriteTemp("Folders.dbx", list.Bytes());
  const std::string store = WriteTemp("Inbox.dbx", Store(10).Bytes());
  for (const char* fault : {"dies", "says nonsense", "says half", ""}) {
    bool isSound = *fault == '\0';
    ResetState();
    ui_.shown.clear();
    State().FolderFiles = {{folders, "ann", folder_.Path()}};
    intake::SetReader(isSound ? TARNWICK_READER : platform::ProgramPath());
    platform::SetEnvironmentText(testing::kReaderFault, fault);
    ReadFolderTree(0, intake::kComplete);
    StoreSampler sampler;
    StoreSample samples[] = {sampler.Sample(store), sampler.Sample(store)};
    platform::SetEnvironmentText(testing::kReaderFault, std::nullopt);
    EXPECT_EQ(State().Folders[0].size(), isSound ? 1U : 0U) << fault;
    EXPECT_EQ(State().IsListDamaged, !isSound) << fault;
    std::vector<std::string> told = ui_.Shown("error");
    ASSERT_EQ(told.size(), isSound ? 0U : 1U) << fault;
    for (const std::string& text : told) EXPECT_THAT(text, HasSubstr(intake::kReaderLost));
    for (const StoreSample& sample : samples) {
      EXPECT_EQ(sample.isDamaged, !isSound) << fault;
      EXPECT_EQ(sample.messages, isSound ? 10 : 0) << fault;
    }
  }
}

// The same of texts that are sent to it.
TEST_F(StoreLinkTest, AReaderThatGoesWrongCostsTheOneTextThatItWasSent) {
  for (const char* fault : {"dies", "says nonsense", "says half", "promises gigabytes"}) {
    intake::SetReader(platform::ProgramPath());
    platform::SetEnvironmentText(testing::kReaderFault, fault);
    intake::TextReader texts;
    std::vector<int> lost;
    for (int i = 1; i <= 100; ++i) {
      try {
        const std::string subject = "letter " + std::to_string(i);
        intake::RawMessage raw("", MailOf(subject).text);
        EXPECT_EQ(texts.Read(raw, intake::kComplete, {}).message.Subject, subject);
      } catch (const Error& error) {
        EXPECT_EQ(error.Description(), intake::kReaderLost);
        lost.push_back(i);
      }
    }
    platform::SetEnvironmentText(testing::kReaderFault, std::nullopt);
    EXPECT_THAT(lost, ElementsAre(static_cast<int>(WrongService::kWhere))) << fault;
  }
}

}  // namespace
}  // namespace tarnwick::oe
