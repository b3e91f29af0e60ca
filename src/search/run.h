// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One search: goes over messages in the order of the list and finds those that a query fits, in
// steps, so that the first of them are there at once, whatever is looked for and however many
// messages there are, and the window answers all the while.
//
// The first messages are tested as they are. Then the map of the mail (mail_map.h) tells which
// messages a term fits by its names, and the text index which can have it in subject or text; only
// those are looked at, a block of them at a time. Until the map is complete
// the search reads on in it and tests messages as they are meanwhile.
//
// What is written between two steps may or may not be noticed. All throw Error.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "search/mail_map.h"
#include "search/query.h"

namespace tarnwick::search {

struct Request {
  Query query;  // its terms; dates and has:file are for the caller's choice of messages
  // Of one folder: identity and name.
  std::optional<std::pair<std::string, std::string>> folder = {};
  // A further condition on Email in SQL, or "", and the texts that its columns must hold for it, as
  // far as they are known.
  std::string condition = {};
  struct Held {
    std::string column;
    std::string text;
  };
  std::vector<Held> held = {};
};

// The condition of a term in SQL, on Email as it is: what a search finds, whichever way.
std::string TermCondition(const Term& term);

class Run {
 public:
  // messages: the keys of those that are looked at, in the order of the list.
  Run(Request request, std::vector<int64_t> messages);

  // Goes on for about so many milliseconds; true while there is more to do.
  bool Step(int64_t milliseconds);
  bool IsDone() const { return stage_ == Stage::kDone; }
  // The hits since the last call.
  std::vector<int64_t> TakeHits() { return std::exchange(hits_, {}); }
  size_t Found() const { return found_; }
  // How many messages are done with.
  size_t Looked() const { return next_; }
  size_t Total() const { return messages_.size(); }

 private:
  enum class Stage : uint8_t { kPlain, kMap, kNames, kTexts, kTest, kDone };
  struct TermState {
    Term term;
    KeySet known;            // fits, by names
    bool isDecided = false;  // what is not known does not fit
    bool mayBeAny = true;
    KeySet may;  // unless mayBeAny: can fit by subject and text
  };

  void ReadMap(int64_t milliseconds);
  void LearnNames(TermState& state) const;
  void LearnTexts(TermState& state) const;
  void LearnHeld(const Request::Held& held);
  bool CanFit(int64_t key) const;
  void TestPlainly(int64_t milliseconds, size_t enough);
  void TestBlock();
  template <typename Test>
  void Timed(const Test& test);
  std::vector<int64_t> Fitting(const std::vector<int64_t>& keys, uint32_t open) const;
  void Keep(const std::vector<int64_t>& hits);

  Request request_;
  std::vector<int64_t> messages_;
  std::vector<TermState> terms_;
  std::vector<KeySet> held_;
  std::optional<KeySet> folder_;
  Stage stage_ = Stage::kPlain;
  size_t learned_ = 0;  // terms, in the stage
  size_t next_ = 0;
  size_t block_;
  std::vector<int64_t> hits_;
  size_t found_ = 0;
};

}  // namespace tarnwick::search
