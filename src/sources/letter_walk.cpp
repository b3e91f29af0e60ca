// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/letter_walk.h"

#include <algorithm>
#include <utility>

#include "core/guard.h"
#include "core/text.h"
#include "intake/encoded_word.h"
#include "intake/header_parser.h"
#include "intake/mixed_text.h"
#include "platform/charset.h"
#include "platform/utf8.h"
#include "sources/letters_link.h"

namespace tarnwick::sources {

namespace {

// The first header of a name (lower case), with the lines that continue it; "" for none.
std::string HeaderOf(std::string_view letter, std::string_view name) {
  std::string value;
  bool isFound = false;
  while (!letter.empty()) {
    size_t end = std::min(letter.find('\n'), letter.size());
    std::string_view line = letter.substr(0, end);
    letter.remove_prefix(std::min(end + 1, letter.size()));
    if (line.ends_with('\r')) line.remove_suffix(1);
    if (line.empty()) break;
    if (isFound && line[0] != ' ' && line[0] != '\t') break;
    if (isFound) {
      value += core::CleanTrim(line).insert(0, " ");
    } else if (line.size() > name.size() && line[name.size()] == ':' &&
               platform::SameWord(line.substr(0, name.size()), name)) {
      value = core::CleanTrim(line.substr(name.size() + 1));
      isFound = true;
    }
  }
  return value;
}

std::string Decoded(const std::string& header) {
  intake::MixedText text;
  intake::Decode(header, text);
  return text.Finish("");
}

class LettersHere : public LetterWalk {
 public:
  explicit LettersHere(std::unique_ptr<LetterReader> letters) : letters_(std::move(letters)) {}

  LetterReading Next(bool /*wantsText*/) override {
    LetterReading reading;
    reading.isEnd = !letters_->Next(reading.entry);
    if (reading.isEnd) reading.damage = letters_->Damage();
    if (HasText(reading.entry)) Listen(*letters_, reading);
    return reading;
  }

  void ReadText(LetterReading& letter, const Sink& sink) override {
    if (letter.held) return sink(*letter.held);
    letters_->Copy(sink);
  }

 private:
  std::unique_ptr<LetterReader> letters_;
};

}  // namespace

void LetterListener::Add(std::string_view piece) {
  size_ += piece.size();
  if (size_ <= kMostKept || begin_.empty()) begin_.append(piece);
  key_.Add(piece);
}

LetterSays LetterListener::Finish() {
  LetterSays says;
  says.key = key_.Finish();
  says.size = size_;
  says.subject = Decoded(HeaderOf(begin_, "subject"));
  says.state = intake::StateOfHeaders(begin_);
  std::string from = HeaderOf(begin_, "from");
  if (from.empty()) return says;
  intake::AddressPair sender = intake::SplitAddress(from);
  if (sender.Address == intake::kNoAddress) return says;
  says.senderAddress = platform::EnsureUtf8(sender.Address);
  says.senderName = Decoded(sender.Name);
  return says;
}

void Listen(LetterReader& letters, LetterReading& reading) {
  try {
    LetterListener listener;
    letters.Copy([&](std::string_view piece) { listener.Add(piece); });
    reading.says = listener.Finish();
    if (listener.Begin().size() == reading.says->size) reading.held = std::move(listener.Begin());
  } catch (...) {
    reading.failure = CurrentFailure();
  }
}

core::Telling CurrentFailure() {
  Error error = core::CurrentError();
  return {
      .kind = core::Telling::Kind::kError, .text = error.Description(), .number = error.Number()};
}

std::unique_ptr<LetterWalk> OpenLetters(const Mailbox& mailbox, const intake::ReadingRules& rules) {
  std::unique_ptr<LetterWalk> linked = OpenLettersLink(mailbox, rules);
  if (linked) return linked;
  return std::make_unique<LettersHere>(OpenMailbox(mailbox));
}

}  // namespace tarnwick::sources
