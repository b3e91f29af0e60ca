// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/lost_walk.h"

#include <algorithm>
#include <utility>

#include "core/guard.h"
#include "intake/reader_link.h"
#include "oe/store_link.h"
#include "oe/store_record.h"
#include "oe/text_keeper.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::oe {

std::string BytesText(uint64_t bytes) {
  return std::to_string(bytes) + (bytes == 1 ? " byte" : " bytes");
}

template <typename Archive>
void Pass(Archive& archive, TextPiece& piece) {
  archive(piece.offset, piece.length, piece.lacksFirstWord);
}

template <typename Archive>
void Pass(Archive& archive, PeekedMessage& message) {
  archive(message.info, message.facts, message.firstBlock);
}

template <typename Archive>
void Pass(Archive& archive, LostMessage& m) {
  archive(m.place, m.origin, m.index, m.how, m.text, m.length, m.declared, m.isWhole, m.why);
}

template <typename Archive>
void Pass(Archive& archive, LostReading& r) {
  archive(r.isEnd, r.message, r.fault, r.remarks);
}

namespace {

struct Opening {
  bool isCopy = false;
};
template <typename Archive>
void Pass(Archive& archive, Opening& o) {
  archive(o.isCopy);
}

void Remark(const LostMail& mail, std::vector<std::string>& remarks) {
  if (!mail.Remark().empty()) remarks.push_back("it holds " + mail.Remark());
  LostMail::Rest rest = mail.CountRest();
  if (rest.blocks == 0) return;
  remarks.push_back(BytesText(rest.bytes) +
                    " of lost texts whose beginnings were overwritten are not stored");
}

class LostLink : public LostWalk {
 public:
  explicit LostLink(std::unique_ptr<intake::ReaderLink> link)
      : link_(std::move(link)), bytesLeft_(2 * link_->StoreSize()) {}

  LostReading Next() override {
    LostReading reading;
    std::optional<std::string_view> record = link_->Next(false);
    try {
      if (!record) intake::RefuseRecord();
      reading = intake::RecordOf<LostReading>(*record);
      // No text lies in another.
      if (reading.message.length > bytesLeft_) intake::RefuseRecord();
      bytesLeft_ -= reading.message.length;
    } catch (const Error&) {
      if (record) link_->Distrust();
      reading = {};
      reading.fault = {Fault::Kind::kReason, intake::kReaderLost};
    }
    return reading;
  }

  TextReading ReadText(const LostMessage& lost, const StoreWalk::ByteSink& longText) override {
    return AskForText(*link_, intake::BytesOf(lost), lost.length, longText);
  }

 private:
  std::unique_ptr<intake::ReaderLink> link_;
  uint64_t bytesLeft_;  // of all texts
};

class LostService : public intake::LetterService {
 public:
  LostService(const intake::ReadingRules& rules, bool isCopy, const std::function<void(int)>& tell)
      : rules_(rules), search_(platform::kHandedName, isCopy, [tell](int percent) {
          tell(percent);
          return true;
        }) {}

  // The search is made here, where there is most time for it.
  void Skip(uint64_t messages) override {
    first_ = NextOrEnd();
    for (; messages > 0 && !first_->isEnd; --messages) first_ = NextOrEnd();
  }

  Answer Next(std::string_view /*how*/, bool /*packs*/, const ByteSink& /*sink*/) override {
    LostReading reading = first_ ? std::move(*first_) : NextOrEnd();
    first_.reset();
    return {intake::BytesOf(reading)};
  }

  std::string Text(std::string_view which, const ByteSink& longText) override {
    auto lost = intake::RecordOf<LostMessage>(which);
    TextReading text = search_.ReadText(lost, {});
    return AnswerWithText(text, rules_, lost.index ? lost.index->facts : intake::StoreFacts(),
                          longText);
  }

 private:
  LostReading NextOrEnd() {
    try {
      return search_.Next();
    } catch (...) {
      Error error = core::CurrentError();
      LostReading end;
      end.isEnd = true;
      end.fault = {Fault::Kind::kError, error.Description(), error.Number()};
      return end;
    }
  }

  intake::ReadingRules rules_;
  LostSearch search_;
  std::optional<LostReading> first_;  // found and not asked for yet
};

}  // namespace

LostReading LostSearch::Next() {
  if (!pieces_) {
    pieces_.emplace();  // and nothing more, where the file can't be read
    pieces_ = FindObjects(fileName_, goOn_);
  }
  LostReading reading;
  while (mail_ || piecesDone_ < pieces_->size()) {
    if (!mail_) mail_.emplace(fileName_, std::move((*pieces_)[piecesDone_++]), isCopy_, goOn_);
    if (std::optional<LostMessage> message = mail_->Next()) {
      reading.message = std::move(*message);
      return reading;
    }
    Remark(*mail_, reading.remarks);
    mail_.reset();
  }
  reading.isEnd = true;
  return reading;
}

TextReading LostSearch::ReadText(const LostMessage& lost, const StoreWalk::ByteSink& longText) {
  TextReading text;
  TextKeeper keeper(text, longText);
  try {
    if (!texts_ || textsOrigin_ != lost.origin) texts_.emplace(fileName_, lost.origin);
    textsOrigin_ = lost.origin;
    for (const TextPiece& piece : lost.text) {
      std::string bytes(texts_->Read(piece.offset, piece.length));
      if (bytes.size() < piece.length) {
        throw Error(ErrorNumber::kPathAccess, "the file became shorter");
      }
      size_t words = std::min<size_t>(piece.lacksFirstWord ? kLostWord.size() : 0, bytes.size());
      bytes.replace(0, words, kLostWord.substr(0, words));
      keeper.Add(bytes);
    }
    text.chainSize = text.size;
  } catch (const Error& error) {
    text.fault = {Fault::Kind::kError, error.Description(), error.Number()};
  }
  return text;
}

std::unique_ptr<LostWalk> OpenLostWalk(const std::string& fileName, bool isCopy,
                                       const intake::ReadingRules& rules,
                                       const std::function<bool(int)>& goOn) {
  auto link = intake::ReaderLink::Begin(fileName, intake::Conversation::kLostMail, rules,
                                        intake::BytesOf(Opening{isCopy}));
  if (!link) return std::make_unique<LostSearch>(fileName, isCopy, goOn);
  link->TellProgress([goOn](int percent) { goOn(std::clamp(percent, 0, 100)); });
  return std::make_unique<LostLink>(std::move(link));
}

std::unique_ptr<intake::LetterService> MakeLostService(const intake::ReadingRules& rules,
                                                       std::string_view opening,
                                                       const std::function<void(int)>& tell) {
  return std::make_unique<LostService>(rules, intake::RecordOf<Opening>(opening).isCopy, tell);
}

}  // namespace tarnwick::oe
