// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/store_link.h"

#include <utility>

#include "core/guard.h"
#include "oe/store_record.h"
#include "platform/files.h"

namespace tarnwick::oe {

namespace {

// What the service has to know beside the conditions.
struct Root {
  uint32_t offset = 0;
  bool asksForSenders = false;
};
template <typename Archive>
void Pass(Archive& archive, Root& root) {
  archive(root.offset, root.asksForSenders);
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
    return AskForText(*link_, intake::BytesOf(wanted), turn.mostBytes, longText);
  }

 private:
  std::unique_ptr<intake::ReaderLink> link_;
  std::unique_ptr<TextReading> ahead_;
};

void Prepare(const intake::StoreFacts& facts, const intake::ReadingRules& rules, bool packs,
             TextReading& text) {
  if (text.fault) {
    text.held.emplace();
    text.size = 0;
    return;
  }
  text.prepared = intake::PrepareElsewhere(*text.held, rules, facts, packs);
}

class StoreService : public intake::LetterService {
 public:
  StoreService(const intake::ReadingRules& rules, const Root& root)
      : rules_(rules),
        asksForSenders_(root.asksForSenders),
        reading_(platform::kHandedName, rules_,
                 [](const core::Telling& telling) { core::TellingsKept::Keep(telling); }) {
    reading_.EnterRoot(root.offset);
  }

  void Skip(uint64_t messages) override {
    core::TellingsKept told;  // before
    while (messages > 0 && reading_.NextOffset()) --messages;
  }

  Answer Next(std::string_view how, bool packs, const ByteSink& /*sink*/) override {
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
        Prepare(answer.message.facts, rules_, packs, *text);
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
    if (asksForSenders_ && !text.fault) text.sender = ReadSender({"", *text.held});
    return AnswerWithText(text, rules_, wanted.facts, longText);
  }

 private:
  intake::ReadingRules rules_;
  bool asksForSenders_;
  StoreReading reading_;
};

}  // namespace

TextReading AskForText(intake::ReaderLink& link, std::string_view request, uint64_t mostBytes,
                       const StoreWalk::ByteSink& longText) {
  uint64_t size = 0;
  auto take = [&](std::string_view piece) {
    size += piece.size();
    if (size > mostBytes) intake::RefuseRecord();
    longText(piece);
  };
  TextReading text;
  std::optional<std::string_view> record = link.Text(request, take);
  try {
    if (!record) intake::RefuseRecord();
    text = intake::RecordOf<TextReading>(*record);
    if (!text.held && !text.fault && text.size != size) intake::RefuseRecord();
    Check(text);
  } catch (const Error&) {
    if (record) link.Distrust();
    text = {};
    text.fault = {Fault::Kind::kReason, intake::kReaderLost};
  }
  return text;
}

std::string AnswerWithText(TextReading& text, const intake::ReadingRules& rules,
                           const intake::StoreFacts& facts,
                           const intake::LetterService::ByteSink& longText) {
  Prepare(facts, rules, true, text);
  if (text.size > intake::kMostHeld) {
    longText(*text.held);
    text.held->clear();
  }
  return intake::BytesOf(text);
}

std::unique_ptr<StoreWalk> OpenStoreLink(const std::string& fileName, uint32_t root,
                                         const intake::ReadingRules& rules, bool asksForSenders) {
  auto link = intake::ReaderLink::Begin(fileName, intake::Conversation::kDbx, rules,
                                        intake::BytesOf(Root{root, asksForSenders}));
  return link ? std::make_unique<StoreLink>(std::move(link)) : nullptr;
}

std::unique_ptr<intake::LetterService> MakeStoreService(const intake::ReadingRules& rules,
                                                        std::string_view opening) {
  return std::make_unique<StoreService>(rules, intake::RecordOf<Root>(opening));
}

}  // namespace tarnwick::oe
