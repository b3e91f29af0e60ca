// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/pst_link.h"

#include "core/run_state.h"
#include "outlook/pst_service.h"
#include "outlook/reader/node_store.h"
#include "outlook/type_name.h"
#include "samples/pst_builder.h"
#include "support/machine.h"
#include "support/own_reader.h"
#include "support/program_fixture.h"

namespace tarnwick::outlook {
namespace {

using reader::ItemPlace;

constexpr uint32_t kWhere = 3;  // the item that a reader goes wrong over

// --- A reader that goes wrong: this program itself.

class WrongStore : public reader::NodeStore {
 public:
  WrongStore(platform::InputFile& file, std::string fault)
      : NodeStore(file), fault_(std::move(fault)) {}

  void DescribeItem(const ItemPlace& place, reader::Answer& answer) override {
    if (fault_ == "dies over an item" && place.index == kWhere) std::_Exit(1);
    NodeStore::DescribeItem(place, answer);
  }
  void ReadAttachment(const ItemPlace& place, const reader::AttachmentPath& path,
                      const ByteSink& sink, reader::Answer& answer) override {
    if (fault_ == "dies over an attachment" && place.index == kWhere && path[0] == 1) {
      sink("half of it");
      std::_Exit(1);
    }
    NodeStore::ReadAttachment(place, path, sink, answer);
  }

 private:
  std::string fault_;
};

class WrongService : public intake::LetterService {
 public:
  WrongService(std::unique_ptr<intake::LetterService> sound, std::string fault)
      : sound_(std::move(sound)), fault_(std::move(fault)) {}

  Answer Next(std::string_view how, bool packs, const ByteSink& sink) override {
    Answer answer = sound_->Next(how, packs, sink);
    if (intake::RecordOf<PstRequest>(how).place.index != kWhere) return answer;
    if (fault_ == "says nonsense") answer.record.assign(100, '\xEE');
    if (fault_ == "says another text") sink("and what was not packed");
    for (; fault_ == "floods";) sink(std::string(60'000, 'b'));
    return answer;
  }
  std::string Text(std::string_view /*which*/, const ByteSink& /*sink*/) override { return {}; }

 private:
  std::unique_ptr<intake::LetterService> sound_;
  std::string fault_;
};

[[maybe_unused]] const auto* const kOwnReader =
    ::testing::AddGlobalTestEnvironment(new testing::OwnReader(
        [](const std::string& fault, const intake::LetterOpening& /*told*/, const auto& tell) {
          auto open = [&](platform::InputFile& file) {
            return std::make_unique<WrongStore>(file, fault);
          };
          return std::make_unique<WrongService>(MakePstService(open, tell), fault);
        }));

class PstLinkTest : public testing::ProgramFixture {
 protected:
  PstLinkTest() {
    samples::PstBuilder store;
    uint32_t inbox = store.AddFolder(samples::PstBuilder::kTop, "Inbox");
    for (uint32_t i = 0; i < 8; ++i) {
      samples::PstMessage mail = samples::PstMail("mail " + std::to_string(i));
      mail.properties.texts[0x1000] = std::string(i == 1 ? 1'500'000 : 10, 'a');
      mail.attachments.resize(3);
      for (size_t a = 0; a < 3; ++a) mail.attachments[a].data = NameOf(i, a);
      places_.push_back({inbox, i, store.AddMessage(inbox, mail)});
    }
    path_ = WriteTemp("a.pst", store.Build());
  }
  ~PstLinkTest() override { intake::SetLinkLimits({}); }

  static std::string NameOf(uint32_t item, size_t attachment) {
    // In base64 these are "AAAA", "BBBB", ...
    return std::string(3, static_cast<char>((3 * item + attachment) * 0x11 % 0x100));
  }
  // The texts of a letter; "" where it can't be had.
  std::string Letter(PstLink& link, const ItemPlace& place, ItemReading* read = nullptr) {
    uint64_t budget = 10'000'000;
    intake::ScratchLetter output;
    ItemReading reading;
    try {
      reading = link.Letter(place, intake::kDesigned, budget, output);
    } catch (const Error& error) {
      EXPECT_EQ(error.Description(), intake::kReaderLost);
      return {};
    }
    EXPECT_EQ(reading.type, kMailType);
    EXPECT_EQ(reading.prepared.message.Subject, "mail " + std::to_string(place.index));
    std::string text = platform::ReadFile(output.FinishInFile().File());
    EXPECT_EQ(10'000'000 - budget, text.size());
    if (read != nullptr) *read = std::move(reading);
    return text;
  }

  std::vector<ItemPlace> places_;
  std::string path_;
};

// Whatever becomes of what was asked for ahead, each letter comes in its time, and is the right
// one.
TEST_F(PstLinkTest, GivesLettersAskedForAheadInAnyOrderAndBehindALoss) {
  PstLink link(path_, TARNWICK_READER);
  EXPECT_EQ(link.Store().key.size(), 16u);
  std::map<uint32_t, std::string> letters;
  for (bool isKilled : {false, true, false}) {
    link.AskAhead(places_, intake::kDesigned);
    if (isKilled) testing::KillProcess(link.ProcessId());
    for (uint32_t i : {0, 2, 1, 5, 4, 3, 6, 7}) {
      std::string letter = Letter(link, places_[i]);
      EXPECT_GT(letter.size(), i == 1 ? 1'500'000u : 500u);
      EXPECT_TRUE(letters.try_emplace(i, letter).first->second == letter) << i;
    }
  }
  testing::KillProcess(link.ProcessId());
  EXPECT_EQ(link.Folder(places_[0].folder).items.size(), 8u);
}

TEST_F(PstLinkTest, AReaderThatGoesWrongCostsWhatItWasLostOverAndNoMore) {
  PstLink sound(path_, TARNWICK_READER);
  std::vector<std::string> whole;
  for (const ItemPlace& place : places_) whole.push_back(Letter(sound, place));
  for (std::string fault : {"dies over an item", "dies over an attachment", "says nonsense",
                            "says another text", "floods"}) {
    SCOPED_TRACE(fault);
    platform::SetEnvironmentText(testing::kReaderFault, fault);
    PstLink link(path_, platform::ProgramPath());
    for (bool isAhead : {true, false}) {
      if (isAhead) link.AskAhead(places_, intake::kDesigned);
      for (const ItemPlace& place : places_) {
        ItemReading reading;
        std::string letter = Letter(link, place, &reading);
        if (place.index != kWhere) {
          EXPECT_TRUE(letter == whole[place.index]) << letter.substr(0, 1000);
        } else if (fault == "dies over an attachment") {
          EXPECT_THAT(letter, HasSubstr("could not be read"));
          EXPECT_EQ(reading.damage, "an attachment");
          EXPECT_GT(letter.size(), 500u) << "the others are there";
        } else {
          EXPECT_EQ(letter, "");
        }
      }
    }
    platform::SetEnvironmentText(testing::kReaderFault, std::nullopt);
  }
}

TEST_F(PstLinkTest, StopsWaitingWhenThePersonStops) {
  intake::SetLinkLimits({3'600'000, 3'600'000, 3'600'000});
  std::string script = WriteTemp("script", "#!/bin/sh\nsleep 3600");
  testing::LetOwner(script, 7);
  core::State().ImportCancelFlag = true;
  EXPECT_THROW(PstLink(path_, script), Error);
  core::State().ImportCancelFlag = false;
}

TEST_F(PstLinkTest, AnswersOddRequestsWithAnError) {
  PstLink link(path_, TARNWICK_READER);
  int64_t id = link.ProcessId();
  EXPECT_THROW(link.Folder(0xFFFFFFFF), Error);
  EXPECT_THROW(link.Facts({0x8022, 0xFFFFFFFF, 0xFFFFFFFF}), Error);
  uint64_t budget = 1000;
  intake::ScratchLetter output;
  EXPECT_THROW(link.Letter({1, 2, 3}, intake::kDesigned, budget, output), Error);
  budget = 500;
  EXPECT_THROW(link.Letter(places_[1], intake::kDesigned, budget, output), Error);
  EXPECT_EQ(link.ProcessId(), id) << "the same reader lives on";
}

TEST_F(PstLinkTest, TellsWhatIsNoStore) {
  PstLink foreign(WriteTemp("b.pst", "this is no store"), TARNWICK_READER);
  EXPECT_THROW(foreign.Store(), Error);
  EXPECT_THROW(PstLink(folder_.File("none.pst"), TARNWICK_READER), Error);
  EXPECT_THROW(PstLink(path_, folder_.File("no-reader")), Error);
}

}  // namespace
}  // namespace tarnwick::outlook
