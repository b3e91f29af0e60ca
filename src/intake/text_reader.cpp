// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/text_reader.h"

#include <utility>

#include "intake/reader_link.h"
#include "platform/files.h"

namespace tarnwick::intake {

namespace {

// How a text is to be read.
struct Wanted {
  ReadingRules rules;
  StoreFacts facts;
};
template <typename Archive>
void Pass(Archive& archive, Wanted& w) {
  archive(w.rules, w.facts);
}

class TextService : public SingleService {
 protected:
  std::string Read(const RawMessage& raw, std::string_view how, const ByteSink& /*sink*/) override {
    auto wanted = RecordOf<Wanted>(how);
    return BytesOf(*PrepareElsewhere(raw, wanted.rules, wanted.facts));
  }
};

}  // namespace

SingleReader::SingleReader(Conversation conversation) : conversation_(conversation) {}
SingleReader::~SingleReader() = default;

bool SingleReader::Ask(const RawMessage& raw, const ReadingRules& rules, const std::string& how,
                       const ByteSink& sink, const TakeRecord& take) {
  RawReader bytes(raw);
  std::optional<std::string> sent;
  std::unique_ptr<ReaderLink> own;  // of a file that is handed
  if (bytes.Size() > kMostHeld) {
    own = ReaderLink::Begin(raw.File(), conversation_, rules, {});
  } else {
    if (!link_) link_ = ReaderLink::Begin({}, conversation_, rules, {});
    sent = bytes.Read(0, bytes.Size());
  }
  ReaderLink* link = sent ? link_.get() : own.get();
  if (link == nullptr) return false;
  if (sent) link->Ask(*sent, how);
  std::optional<std::string_view> record = sent ? link->Answer(sink) : link->Text(how, sink);
  try {
    if (!record) RefuseRecord();
    take(*record, sent);
  } catch (const Error&) {
    if (record) link->Distrust();
    throw Error(ErrorNumber::kPathAccess, kReaderLost);
  }
  return true;
}

LetterService::Answer SingleService::Next(std::string_view how, bool /*packs*/) {
  Answer answer;
  answer.record = Read({"", Taken()}, how, [&](std::string_view piece) { answer.text += piece; });
  return answer;
}

std::string SingleService::Text(std::string_view which, const ByteSink& longText) {
  return Read(platform::kHandedName, which, longText);
}

PreparedMessage TextReader::Read(const RawMessage& raw, const ReadingRules& rules,
                                 const StoreFacts& facts) {
  PreparedMessage prepared;
  bool isRead = reader_.Ask(raw, rules, BytesOf(Wanted{rules, facts}), {},
                            [&](std::string_view record, const std::optional<std::string>& sent) {
                              prepared = RecordOf<PreparedMessage>(record);
                              CheckPrepared(prepared, sent);
                            });
  if (!isRead) return ReadMessage(raw, rules, facts);
  TellOf(prepared);
  return prepared;
}

std::unique_ptr<LetterService> MakeTextService() {
  return std::make_unique<TextService>();
}

}  // namespace tarnwick::intake
