// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/run.h"

#include <algorithm>
#include <map>

#include "core/text.h"
#include "intake/message_state.h"
#include "platform/clock.h"
#include "repository/repository.h"

namespace tarnwick::search {

namespace {

using platform::TickMilliseconds;
using repository::RepositoryDb;

// A text that many messages hold has filled the screen by then.
constexpr int64_t kPlainMilliseconds = 25;
constexpr size_t kScreen = 60;
constexpr int64_t kBlockMilliseconds = 8;  // aimed at
constexpr size_t kFirstBlock = 16;
constexpr size_t kLargestBlock = 4096;

// INSTR(column, 'text') <> 0, of several columns one by one.
std::string AnyHolds(std::initializer_list<const char*> columns, const std::string& text) {
  std::string condition;
  for (const char* column : columns) {
    condition += condition.empty() ? "INSTR(" : " OR INSTR(";
    condition.append(column).append(", '").append(core::QuoteSql(text)).append("') <> 0");
  }
  return condition;
}

// Email.key IN those of a table's rows that go with it and on which the condition holds.
std::string HasRow(const std::string& key, const std::string& table, const std::string& column,
                   const std::string& condition) {
  std::string own = table + "." + column;
  return "Email." + key + " IN (SELECT " + own + " FROM " + table + " WHERE " + own + " = Email." +
         key + " AND (" + condition + "))";
}

std::string FileCondition(const std::string& text) {
  return HasRow("ID", "Attachment", "EmailID", AnyHolds({"Attachment.FileName"}, text));
}

std::string ContactCondition(const std::string& text) {
  return "(" + HasRow("FromTo", "MeContact", "ID", AnyHolds({"MeContact.Name"}, text)) + " OR " +
         HasRow("FromTo", "ContactEmail", "ContactID", AnyHolds({"ContactEmail.Address"}, text)) +
         ")";
}

std::string SenderCondition(const std::string& text) {
  return AnyHolds({"Email.AddressFrom", "Email.NameFrom"}, text);
}

std::string RecipientCondition(const std::string& text) {
  return HasRow("ID", "ToRecipient", "EmailID",
                AnyHolds({"ToRecipient.Address", "ToRecipient.Name"}, text)) +
         " OR " +
         HasRow("ID", "ccRecipient", "EmailID",
                AnyHolds({"ccRecipient.Address", "ccRecipient.Name"}, text));
}

const intake::StateMark& MarkOf(const Term& term) {
  return *std::find_if(std::begin(intake::kStateMarks), std::end(intake::kStateMarks),
                       [&](const intake::StateMark& mark) { return mark.word == term.text; });
}

std::string TextCondition(const Term& term) {
  if (term.field == Field::kSubject) return "(" + AnyHolds({"Email.Subject"}, term.text) + ")";
  return "(" + AnyHolds({"Email.Subject", "Email.Body"}, term.text) + ")";
}

// "(1, 2, 3)"
std::string KeyList(const std::vector<int64_t>& keys) {
  std::string list = "(";
  for (int64_t key : keys) list.append(list.size() == 1 ? "" : ", ").append(std::to_string(key));
  return list + ")";
}

// Those of the keys on which a condition holds, in their order.
std::vector<int64_t> Holding(const std::vector<int64_t>& keys, const std::string& condition) {
  std::vector<int64_t> found;
  RepositoryDb().ReadRows(
      "SELECT ID FROM Email WHERE Email.ID IN " + KeyList(keys) + " AND " + condition,
      [&](const jet::PassingRow& row) { found.push_back(row.Int(0)); });
  std::sort(found.begin(), found.end());
  std::vector<int64_t> holding;
  std::copy_if(keys.begin(), keys.end(), std::back_inserter(holding),
               [&](int64_t key) { return std::binary_search(found.begin(), found.end(), key); });
  return holding;
}

std::vector<int64_t> Without(const std::vector<int64_t>& keys, std::vector<int64_t> others) {
  std::sort(others.begin(), others.end());
  std::vector<int64_t> rest;
  std::copy_if(keys.begin(), keys.end(), std::back_inserter(rest),
               [&](int64_t key) { return !std::binary_search(others.begin(), others.end(), key); });
  return rest;
}

}  // namespace

std::string TermCondition(const Term& term) {
  switch (term.field) {
    case Field::kFrom:
      return "(" + SenderCondition(term.text) + " OR (Email.Direction = 'In' AND " +
             ContactCondition(term.text) + "))";
    case Field::kTo:
      return "(" + RecipientCondition(term.text) + " OR (Email.Direction = 'Out' AND " +
             ContactCondition(term.text) + "))";
    case Field::kSubject:
      break;
    case Field::kFile:
      return FileCondition(term.text);
    case Field::kFolder:
      return "(" + AnyHolds({"Email.Folder"}, term.text) + ")";
    case Field::kState:
      return "(" + AnyHolds({"Email.State"}, std::string(1, MarkOf(term).letter)) + ")";
    case Field::kAny:
      return "(" + AnyHolds({"Email.Subject"}, term.text) + " OR " + SenderCondition(term.text) +
             " OR " + RecipientCondition(term.text) + " OR " + FileCondition(term.text) + " OR " +
             ContactCondition(term.text) + " OR " + AnyHolds({"Email.Body"}, term.text) + ")";
  }
  return TextCondition(term);
}

Run::Run(Request request, std::vector<int64_t> messages)
    : request_(std::move(request)), messages_(std::move(messages)), block_(kFirstBlock) {
  for (const Term& term : request_.query.terms) {
    TermState& state = terms_.emplace_back();
    state.term = term;
    state.isDecided = term.field != Field::kAny && term.field != Field::kSubject;
  }
}

bool Run::Step(int64_t milliseconds) {
  int64_t end = TickMilliseconds() + milliseconds;
  while (stage_ != Stage::kDone) {
    switch (stage_) {
      case Stage::kPlain:
        TestPlainly(std::min(milliseconds, kPlainMilliseconds), kScreen);
        stage_ = Stage::kMap;
        break;
      case Stage::kMap:
        ReadMap(milliseconds);
        break;
      case Stage::kNames:
        if (learned_ < terms_.size()) {
          LearnNames(terms_[learned_++]);
        } else {
          stage_ = Stage::kTexts;
          learned_ = 0;
        }
        break;
      case Stage::kTexts:
        if (learned_ < terms_.size()) {
          LearnTexts(terms_[learned_++]);
        } else if (learned_ < terms_.size() + request_.held.size()) {
          LearnHeld(request_.held[learned_++ - terms_.size()]);
        } else {
          stage_ = Stage::kTest;
        }
        break;
      case Stage::kTest:
        TestBlock();
        break;
      case Stage::kDone:
        break;
    }
    if (next_ == messages_.size()) stage_ = Stage::kDone;
    if (TickMilliseconds() >= end) break;
  }
  return stage_ != Stage::kDone;
}

void Run::ReadMap(int64_t milliseconds) {
  if (!Map().IsComplete()) {
    bool isAtEnd = Map().Read(milliseconds / 2);
    // Where the map can't be had, every message is tested as it is.
    if (!Map().IsComplete()) {
      return isAtEnd ? TestPlainly(milliseconds, messages_.size())
                     : TestPlainly(milliseconds / 2, kScreen);
    }
  }
  if (request_.folder) {
    folder_.emplace();
    Map().AddInFolder(request_.folder->first, request_.folder->second, *folder_);
  }
  stage_ = Stage::kNames;
}

void Run::LearnNames(TermState& state) const {
  const Term& term = state.term;
  switch (term.field) {
    case Field::kAny:
      Map().AddWrittenBy(term.text, state.known);
      Map().AddReceivedBy(term.text, state.known);
      Map().AddWithFile(term.text, state.known);
      Map().AddOfContacts(term.text, true, true, state.known);
      break;
    case Field::kFrom:
      Map().AddWrittenBy(term.text, state.known);
      Map().AddOfContacts(term.text, true, false, state.known);
      break;
    case Field::kTo:
      Map().AddReceivedBy(term.text, state.known);
      Map().AddOfContacts(term.text, false, true, state.known);
      break;
    case Field::kFile:
      Map().AddWithFile(term.text, state.known);
      break;
    case Field::kFolder:
      Map().AddInFolders(term.text, state.known);
      break;
    case Field::kState:
      Map().AddInState(MarkOf(term).letter, state.known);
      break;
    case Field::kSubject:
      break;
  }
}

void Run::LearnTexts(TermState& state) const {
  if (state.isDecided || state.term.excluded) return;
  KeySet may;
  for (const char* column : {"Subject", "Body"}) {
    if (state.term.field == Field::kSubject && column != std::string_view("Subject")) continue;
    auto keys = RepositoryDb().MayHold("Email", column, state.term.text);
    if (!keys) return;
    for (int64_t key : *keys) may.Add(key);
  }
  state.mayBeAny = false;
  state.may = std::move(may);
}

void Run::LearnHeld(const Request::Held& held) {
  auto keys = RepositoryDb().MayHold("Email", held.column, held.text);
  if (!keys) return;
  KeySet& may = held_.emplace_back();
  for (int64_t key : *keys) may.Add(key);
}

bool Run::CanFit(int64_t key) const {
  if (folder_ && !folder_->Holds(key)) return false;
  for (const KeySet& held : held_) {
    if (!held.Holds(key)) return false;
  }
  return std::all_of(terms_.begin(), terms_.end(), [&](const TermState& state) {
    bool known = state.known.Holds(key);
    if (state.term.excluded) return !known;
    return known || (!state.isDecided && (state.mayBeAny || state.may.Holds(key)));
  });
}

// The next block, of a size that takes the time that a block should take.
template <typename Test>
void Run::Timed(const Test& test) {
  int64_t began = TickMilliseconds();
  size_t tested = test();
  if (tested < block_) return;
  auto took = static_cast<size_t>(std::max<int64_t>(1, TickMilliseconds() - began));
  size_t right = block_ * kBlockMilliseconds / took;
  block_ = std::clamp(std::clamp(right, block_ / 4, block_ * 2), kFirstBlock, kLargestBlock);
}

void Run::TestPlainly(int64_t milliseconds, size_t enough) {
  std::string fits = request_.condition;
  std::string excluded;
  auto add = [](std::string& conditions, const char* word, const std::string& condition) {
    conditions.append(conditions.empty() ? "" : word).append(condition);
  };
  for (const TermState& state : terms_) {
    if (!state.term.excluded) add(fits, " AND ", TermCondition(state.term));
    if (state.term.excluded) add(excluded, " OR ", TermCondition(state.term));
  }
  if (request_.folder) {
    add(fits, " AND ",
        "Email.Identity = '" + core::QuoteSql(request_.folder->first) + "' AND Email.Folder = '" +
            core::QuoteSql(request_.folder->second) + "'");
  }
  int64_t end = TickMilliseconds() + milliseconds;
  // Where there is no other way, each step gets on.
  bool mustMove = enough == messages_.size();
  for (; next_ < messages_.size() && found_ < enough; mustMove = false) {
    if (!mustMove && TickMilliseconds() >= end) break;
    Timed([&] {
      auto first = messages_.begin() + static_cast<std::ptrdiff_t>(next_);
      size_t count = std::min(block_, messages_.size() - next_);
      std::vector<int64_t> keys(first, first + static_cast<std::ptrdiff_t>(count));
      if (!fits.empty()) keys = Holding(keys, fits);
      if (!keys.empty() && !excluded.empty()) {
        keys = Without(keys, Holding(keys, "(" + excluded + ")"));
      }
      Keep(keys);
      next_ += count;
      return count;
    });
  }
}

void Run::TestBlock() {
  Timed([&] {
    // By the terms that their texts have to decide; most have the same ones.
    std::map<uint32_t, std::vector<int64_t>> groups;
    std::vector<int64_t> block;
    size_t looked = 0;
    constexpr size_t kMostLooked = 200000;
    while (next_ < messages_.size() && block.size() < block_ && looked < kMostLooked) {
      int64_t key = messages_[next_++];
      ++looked;
      if (!CanFit(key)) continue;
      uint32_t open = 0;
      for (size_t i = 0; i < terms_.size(); ++i) {
        if (!terms_[i].isDecided && !terms_[i].known.Holds(key)) open |= 1U << i;
      }
      groups[open].push_back(key);
      block.push_back(key);
    }
    std::vector<int64_t> hits;
    for (const auto& [open, keys] : groups) {
      std::vector<int64_t> fitting = Fitting(keys, open);
      hits.insert(hits.end(), fitting.begin(), fitting.end());
    }
    Keep(groups.size() > 1 ? Without(block, Without(block, hits)) : hits);
    return block.size();
  });
}

std::vector<int64_t> Run::Fitting(const std::vector<int64_t>& keys, uint32_t open) const {
  std::string fits = request_.condition;
  std::string excluded;
  for (size_t i = 0; i < terms_.size(); ++i) {
    if ((open >> i & 1) == 0) continue;
    std::string& conditions = terms_[i].term.excluded ? excluded : fits;
    const char* word = terms_[i].term.excluded ? " OR " : " AND ";
    conditions.append(conditions.empty() ? "" : word).append(TextCondition(terms_[i].term));
  }
  std::vector<int64_t> fitting = fits.empty() ? keys : Holding(keys, fits);
  if (fitting.empty() || excluded.empty()) return fitting;
  return Without(fitting, Holding(fitting, "(" + excluded + ")"));
}

void Run::Keep(const std::vector<int64_t>& hits) {
  hits_.insert(hits_.end(), hits.begin(), hits.end());
  found_ += hits.size();
}

}  // namespace tarnwick::search
