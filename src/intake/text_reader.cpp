// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/text_reader.h"

#include <optional>
#include <string>
#include <utility>

#include "intake/letter_record.h"
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

// held: the text, nothing where it is too long.
PreparedMessage Take(ReaderLink& link, std::optional<std::string_view> record,
                     const std::optional<std::string>& held) {
  try {
    if (!record) RefuseRecord();
    auto prepared = RecordOf<PreparedMessage>(*record);
    CheckPrepared(prepared, held);
    return prepared;
  } catch (const Error&) {
    if (record) link.Distrust();
    throw Error(ErrorNumber::kPathAccess, kReaderLost);
  }
}

class TextService : public SentMessages {
 public:
  Answer Next(std::string_view how) override {
    auto wanted = RecordOf<Wanted>(how);
    std::string text = Taken();
    return {BytesOf(*PrepareElsewhere(text, wanted.rules, wanted.facts))};
  }
};

class TextFileService : public LetterService {
 public:
  explicit TextFileService(Wanted wanted) : wanted_(std::move(wanted)) {}

  Answer Next(std::string_view /*how*/) override { return {}; }
  std::string Text(std::string_view /*which*/, const ByteSink& /*longText*/) override {
    RawMessage raw(platform::kHandedName);
    return BytesOf(*PrepareElsewhere(raw, wanted_.rules, wanted_.facts));
  }

 private:
  Wanted wanted_;
};

}  // namespace

TextReader::TextReader() = default;
TextReader::~TextReader() = default;

PreparedMessage TextReader::Read(const RawMessage& raw, const ReadingRules& rules,
                                 const StoreFacts& facts) {
  std::string wanted = BytesOf(Wanted{rules, facts});
  std::optional<PreparedMessage> prepared;
  RawReader bytes(raw);
  if (bytes.Size() > kMostHeld) {
    auto link = ReaderLink::Begin(raw.File(), Conversation::kTextFile, rules, std::move(wanted));
    if (link) prepared = Take(*link, link->Text({}, {}), {});
  } else {
    if (!link_) link_ = ReaderLink::Begin({}, Conversation::kTexts, rules, {});
    if (link_) {
      std::string held(bytes.Read(0, bytes.Size()));
      link_->Ask(held, wanted);
      prepared = Take(*link_, link_->Answer(), held);
    }
  }
  if (!prepared) return ReadMessage(raw, rules, facts);
  TellOf(*prepared);
  return std::move(*prepared);
}

std::unique_ptr<LetterService> MakeTextService() {
  return std::make_unique<TextService>();
}

std::unique_ptr<LetterService> MakeTextFileService(std::string_view opening) {
  return std::make_unique<TextFileService>(RecordOf<Wanted>(opening));
}

}  // namespace tarnwick::intake
