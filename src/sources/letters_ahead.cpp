// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/letters_ahead.h"

#include <exception>
#include <string_view>
#include <utility>

#include "core/messages.h"
#include "core/run_state.h"
#include "sources/letter_key.h"

namespace tarnwick::sources {

namespace {

int64_t& Taken() {
  static int64_t taken = 0;
  return taken;
}

}  // namespace

size_t LetterAhead::Cost() const {
  size_t cost = sizeof *this + name.size();
  if (raw) cost += raw->Held()->size();
  return prepared ? cost + prepared->Cost() : cost;
}

// What the second thread works with.
struct LettersAhead::Reader {
  Reader(const Mailbox& mailbox, const intake::ReadingRules& by, int64_t done)
      : letters(OpenMailbox(mailbox)),
        rules(by),
        scratchFile(core::State().TempMessageFile),
        toSkip(done) {}

  std::optional<LetterAhead> Next() noexcept {
    try {
      LetterEntry entry;
      do {
        entry = {};
        if (!ComeTo(entry)) return std::nullopt;
      } while (toSkip-- > 0);
      LetterAhead letter;
      letter.name = entry.name;
      bool isText = entry.fault.empty() && entry.recordFile.empty() && !entry.state.isDeleted;
      if (isText) Read(entry, letter);
      return letter;
    } catch (const std::exception&) {
      return std::nullopt;  // the rest is read in its turn
    }
  }

  bool ComeTo(LetterEntry& entry) {
    core::AheadOfTurn ahead;
    return letters->Next(entry);
  }

  void Read(const LetterEntry& entry, LetterAhead& letter) {
    LetterKey key;
    std::string bytes;
    bool isLong = false;
    {
      core::AheadOfTurn ahead;
      letters->Copy([&](std::string_view piece) {
        isLong = isLong || bytes.size() + piece.size() > kMostKept;
        if (isLong) return;
        bytes.append(piece);
        key.Add(piece);
      });
    }
    if (isLong) return;
    letter.key = key.Finish();
    letter.raw.emplace(scratchFile, std::move(bytes));
    intake::StoreFacts facts;
    facts.state = entry.state;
    letter.prepared = intake::PrepareAhead(*letter.raw, rules, facts);
  }

  std::unique_ptr<LetterReader> letters;
  intake::ReadingRules rules;
  std::string scratchFile;
  int64_t toSkip;
};

LettersAhead::LettersAhead(std::shared_ptr<Reader> reader)
    : ahead_([reader = std::move(reader)] { return reader->Next(); }) {}

std::unique_ptr<LettersAhead> LettersAhead::Begin(const Mailbox& mailbox,
                                                  const intake::ReadingRules& rules, int64_t done) {
  if (platform::WorkThreads() < 2 || !rules.indexedText || !rules.anyDate) return nullptr;
  try {
    auto reader = std::make_shared<Reader>(mailbox, rules, done);
    return std::unique_ptr<LettersAhead>(new LettersAhead(std::move(reader)));
  } catch (const std::exception&) {
    return nullptr;  // all is read in its turn
  }
}

std::optional<LetterAhead> LettersAhead::Take(const std::string& name) {
  if (isAstray_) return std::nullopt;
  std::optional<LetterAhead> letter = ahead_.Take();
  // Where the mailbox was changed meanwhile, the two readings may have parted.
  isAstray_ = !letter || letter->name != name;
  if (isAstray_ || !letter->raw) return std::nullopt;
  ++Taken();
  return letter;
}

int64_t LettersAhead::LettersTaken() {
  return Taken();
}

}  // namespace tarnwick::sources
