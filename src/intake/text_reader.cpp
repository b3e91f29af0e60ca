// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/text_reader.h"

#include <utility>

#include "intake/reader_link.h"
#include "intake/scratch_letter.h"
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

SingleReader::SingleReader(Conversation conversation, size_t mostSent)
    : conversation_(conversation), mostSent_(mostSent) {}
SingleReader::~SingleReader() = default;

// What takes long says that it goes on.
std::unique_ptr<ReaderLink> SingleReader::Begin(const std::string& file,
                                                const ReadingRules& rules) const {
  auto link = ReaderLink::Begin(file, conversation_, rules, {});
  if (link) link->TellProgress([](int) {});
  return link;
}

ReaderLink* SingleReader::Link(const ReadingRules& rules) {
  if (!link_) link_ = Begin({}, rules);
  return link_.get();
}

bool SingleReader::AskAhead(const std::string& file, const ReadingRules& rules,
                            const std::string& how) {
  ReaderLink* link = Link(rules);
  if (link == nullptr) return false;
  std::string bytes;
  try {
    platform::InputFile input(file);
    if (input.Size() > mostSent_) return true;
    if (!link->MayAsk(input.Size())) return false;
    bytes.resize(input.Size());
    bytes.resize(input.ReadAt(0, bytes.data(), bytes.size()));
    link->Ask(bytes, how);
  } catch (const Error&) {
    return true;  // the file, or a reader that was lost too often: told in the file's turn
  }
  ahead_.push_back({file, how, std::move(bytes)});
  return true;
}

// The text that was sent ahead and comes next to be answered; answers that nobody wants any more
// are passed over.
std::optional<std::string> SingleReader::TakeAsked(const std::string& file,
                                                   const std::string& how) {
  while (!ahead_.empty()) {
    Asked asked = std::move(ahead_.front());
    ahead_.pop_front();
    if (asked.file == file && asked.how == how) return std::move(asked.sent);
    link_->Answer([](std::string_view) {});
  }
  return std::nullopt;
}

bool SingleReader::Ask(const RawMessage& raw, const ReadingRules& rules, const std::string& how,
                       ScratchLetter* output, const TakeRecord& take) {
  RawReader bytes(raw);
  ReaderLink::ByteSink sink;
  if (output != nullptr) sink = [&](std::string_view piece) { output->Add(piece); };
  auto restart = [&](bool /*isAlone*/) -> std::optional<std::string> {
    if (output != nullptr) output->Restart();
    return std::nullopt;
  };
  std::optional<std::string> sent;
  std::unique_ptr<ReaderLink> own;  // of a file that is handed
  if (bytes.Size() > mostSent_) {
    own = Begin(raw.File(), rules);
  } else if (Link(rules) != nullptr) {
    sent = TakeAsked(raw.File(), how);
    if (!sent) link_->Ask(sent.emplace(bytes.Read(0, bytes.Size())), how);
  }
  ReaderLink* link = sent ? link_.get() : own.get();
  if (link == nullptr) return false;
  std::optional<std::string_view> record =
      sent ? link->Answer(sink, restart) : link->Text(how, sink);
  try {
    if (!record) RefuseRecord();
    take(*record, sent);
  } catch (const Error&) {
    if (record) link->Distrust();
    throw Error(ErrorNumber::kPathAccess, kReaderLost);
  }
  return true;
}

LetterService::Answer SingleService::Next(std::string_view how, bool /*packs*/,
                                          const ByteSink& sink) {
  return {Read({"", Taken()}, how, sink)};
}

std::string SingleService::Text(std::string_view which, const ByteSink& longText) {
  return Read(platform::kHandedName, which, longText);
}

PreparedMessage TextReader::Read(const RawMessage& raw, const ReadingRules& rules,
                                 const StoreFacts& facts) {
  PreparedMessage prepared;
  bool isRead = reader_.Ask(raw, rules, BytesOf(Wanted{rules, facts}), nullptr,
                            [&](std::string_view record, const std::optional<std::string>& sent) {
                              prepared = RecordOf<PreparedMessage>(record);
                              CheckPrepared(prepared, sent);
                            });
  if (!isRead) return ReadMessage(raw, rules, facts);
  TellOf(prepared);
  return prepared;
}

bool TextReader::ReadAhead(const std::string& file, const ReadingRules& rules,
                           const StoreFacts& facts) {
  return reader_.AskAhead(file, rules, BytesOf(Wanted{rules, facts}));
}

std::unique_ptr<LetterService> MakeTextService() {
  return std::make_unique<TextService>();
}

}  // namespace tarnwick::intake
