// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/store_link.h"

#include <utility>

#include "core/guard.h"
#include "intake/reader_link.h"
#include "oe/store_record.h"
#include "platform/files.h"

namespace tarnwick::oe {

namespace {

// What the service has to know beside the conditions.
struct Root {
  uint32_t offset = 0;
};
template <typename Archive>
void Pass(Archive& archive, Root& root) {
  archive(root.offset);
}

// A request for a text.
struct Wanted {
  uint32_t firstBlock = 0;
  uint32_t indexedBlock = 0;
  intake::StoreFacts facts;
  uint32_t lastChainEnd = 0;
  uint64_t mostBytes = 0;
};
template <typename Archive>
void Pass(Archive& archive, Wanted& w) {
  archive(w.firstBlock, w.indexedBlock, w.facts, w.lastChainEnd, w.mostBytes);
}

class StoreLink : public StoreWalk {
 public:
  explicit StoreLink(std::unique_ptr<intake::ReaderLink> link) : link_(std::move(link)) {}

  MessageReading Next(bool wantsText) override {
    ahead_.reset();
    if (std::optional<std::string_view> record = link_->Next(wantsText)) {
      try {
        auto answer = intake::RecordOf<StoreReply>(*record);
        if (answer.text) Check(*answer.text);
        ahead_ = std::move(answer.text);
        return std::move(answer.message);
      } catch (const Error&) {
        link_->Distrust();
      }
    }
    MessageReading lost;
    lost.fault = {Fault::Kind::kReason, intake::kReaderLost};
    return lost;
  }

  std::unique_ptr<TextReading> Ahead() override { return std::move(ahead_); }

  TextReading ReadText(const MessageReading& message, const TextTurn& turn,
                       const ByteSink& longText) override {
    Wanted wanted{message.firstBlock, message.indexedBlock, message.facts, turn.lastChainEnd,
                  turn.mostBytes};
    uint64_t size = 0;
    auto take = [&](std::string_view piece) {
      size += piece.size();
      if (size > turn.mostBytes) intake::RefuseRecord();
      longText(piece);
    };
    TextReading text;
    std::optional<std::string_view> record = link_->Text(intake::BytesOf(wanted), take);
    try {
      if (!record) intake::RefuseRecord();
      text = intake::RecordOf<TextReading>(*record);
      if (!text.held && !text.fault && text.size != size) intake::RefuseRecord();
      Check(text);
    } catch (const Error&) {
      if (record) link_->Distrust();
      text = {};
      text.fault = {Fault::Kind::kReason, intake::kReaderLost};
    }
    return text;
  }

 private:
  std::unique_ptr<intake::ReaderLink> link_;
  std::unique_ptr<TextReading> ahead_;
};

class StoreService : public intake::LetterService {
 public:
  StoreService(const intake::ReadingRules& rules, uint32_t root)
      : rules_(rules), reading_(platform::kHandedName, rules_, [](const core::Telling& telling) {
          core::TellingsKept::Keep(telling);
        }) {
    reading_.EnterRoot(root);
  }

  void Skip(uint64_t messages) override {
    core::TellingsKept told;  // before
    while (messages > 0 && reading_.NextOffset()) --messages;
  }

  Answer Next(std::string_view how, bool packs) override {
    bool whole = how == intake::kWithText;
    StoreReply answer;
    bool isLong = false;
    {
      core::TellingsKept kept;
      try {
        answer.message = reading_.Next(whole);
      } catch (...) {
        Error error = core::CurrentError();
        answer.message.isEnd = true;
        answer.message.fault = {Fault::Kind::kError, error.Description(), error.Number()};
      }
      answer.message.tellings = kept.Take();
    }
    if (whole && !answer.message.isEnd && !answer.message.fault) {
      try {
        auto text = std::make_unique<TextReading>(
            reading_.ReadText(answer.message, {}, [](std::string_view) { throw TextTooLong(); }));
        Prepare(answer.message.facts, *text, packs);
        answer.text = std::move(text);
      } catch (const TextTooLong&) {
        isLong = true;
      }
    }
    return {intake::BytesOf(answer), isLong};
  }

  std::string Text(std::string_view which, const ByteSink& longText) override {
    auto wanted = intake::RecordOf<Wanted>(which);
    MessageReading message;
    message.firstBlock = wanted.firstBlock;
    message.indexedBlock = wanted.indexedBlock;
    TextReading text = reading_.ReadText(message, {wanted.lastChainEnd, wanted.mostBytes}, {});
    Prepare(wanted.facts, text, true);
    if (text.size > intake::kMostHeld) {
      longText(*text.held);
      text.held->clear();
    }
    return intake::BytesOf(text);
  }

 private:
  void Prepare(const intake::StoreFacts& facts, TextReading& text, bool packs) const {
    if (text.fault) {
      text.held.emplace();
      text.size = 0;
      return;
    }
    intake::RawMessage raw("", std::move(*text.held));
    text.prepared = intake::PrepareElsewhere(raw, rules_, facts, packs);
    text.held = std::move(raw).Bytes();
  }

  intake::ReadingRules rules_;
  StoreReading reading_;
};

}  // namespace

std::unique_ptr<StoreWalk> OpenStoreLink(const std::string& fileName, uint32_t root,
                                         const intake::ReadingRules& rules) {
  auto link = intake::ReaderLink::Begin(fileName, intake::Conversation::kDbx, rules,
                                        intake::BytesOf(Root{root}));
  return link ? std::make_unique<StoreLink>(std::move(link)) : nullptr;
}

std::unique_ptr<intake::LetterService> MakeStoreService(const intake::ReadingRules& rules,
                                                        std::string_view opening) {
  return std::make_unique<StoreService>(rules, intake::RecordOf<Root>(opening).offset);
}

}  // namespace tarnwick::oe
