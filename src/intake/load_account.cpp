// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/load_account.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "core/guard.h"
#include "core/text.h"
#include "platform/charset.h"
#include "repository/repository.h"

namespace tarnwick::intake {

namespace {

using core::State;

// Fewer messages than these are told of one by one: of one place and reason, and of a whole load.
constexpr size_t kMostNamesOfGroup = 100;
constexpr int64_t kMostNames = 2000;
// The account is for a person to read.
constexpr size_t kMostGroups = 2000;
constexpr size_t kMostLineChars = 300;

// The one place where an outcome becomes a count. nullptr: the message was not come to.
int64_t* CounterOf(core::LoadCounts& counts, Outcome outcome) {
  switch (outcome) {
    case Outcome::kStored:
      return &counts.stored;
    case Outcome::kAlreadyStored:
      return &counts.alreadyStored;
    case Outcome::kRefused:
      return &counts.refused;
    case Outcome::kIgnored:
      return &counts.ignored;
    case Outcome::kStopped:
      return nullptr;
    case Outcome::kNone:
    case Outcome::kUnreadable:
      break;
  }
  // What a full disk ends over can be read: the next load will.
  return State().DiskIsFull ? nullptr : &counts.unreadable;
}

std::string WhyStopped() {
  if (State().DiskIsFull) return "the disk is full";
  return core::IsLoadStopped() ? "the load was stopped" : "the load could not go on";
}

std::string UsualReason(Outcome outcome, bool hasError) {
  if (outcome == Outcome::kIgnored) return "it was chosen to be ignored";
  if (outcome == Outcome::kRefused) return "its sender is refused";
  return hasError ? State().LastReportedError : "it has neither a sender nor a subject";
}

// Names of files and senders come from outside: one of them is one line, and commands nothing.
std::string OneLine(const std::string& text) {
  return core::OneLogLine(platform::FirstChars(platform::EnsureUtf8(text), kMostLineChars));
}

std::string Joined(const std::vector<std::string>& reasons) {
  std::string text;
  for (const std::string& reason : reasons) text += (text.empty() ? "" : "; ") + reason;
  return text;
}

}  // namespace

LoadAccount& Account() {
  static LoadAccount account;
  return account;
}

void LoadAccount::Open() {
  *this = LoadAccount();
  units_.emplace();
  errorsBefore_ = State().ReportedErrors;
}

int64_t LoadAccount::IndexOf(const std::string& place) {
  auto [entry, isNew] = indexes_.try_emplace(place, static_cast<int64_t>(places_.size()));
  if (isNew) places_.emplace_back().name = place;
  return entry->second;
}

LoadAccount::Place& LoadAccount::PlaceOf(const std::string& place) {
  return places_[static_cast<size_t>(IndexOf(place))];
}

void LoadAccount::Announce(const std::string& place, int64_t messages) {
  if (!IsOpen()) return;
  PlaceOf(place).announced += messages;
  State().Counts.found += messages;
}

void LoadAccount::Withdraw(const std::string& place, int64_t messages) {
  if (!IsOpen()) return;
  Place& entry = PlaceOf(place);
  messages = std::min(messages, entry.announced - entry.visited);
  entry.announced -= messages;
  State().Counts.found -= messages;
  ShowProgress();
}

void LoadAccount::SetReason(const std::string& place, const std::string& reason) {
  if (!IsOpen()) return;
  PlaceOf(place).reasons.clear();
  if (!reason.empty()) AddReason(place, reason);
}

void LoadAccount::AddReason(const std::string& place, const std::string& reason) {
  if (!IsOpen()) return;
  std::vector<std::string>& reasons = PlaceOf(place).reasons;
  if (std::find(reasons.begin(), reasons.end(), reason) == reasons.end()) reasons.push_back(reason);
}

void LoadAccount::Finish(const std::string& place) {
  if (IsOpen()) PlaceOf(place).finished = true;
}

void LoadAccount::Note(const std::string& text) {
  if (IsOpen()) notes_.push_back(OneLine(text));
}

void LoadAccount::Count(const std::string& place, Outcome outcome, const std::string& reason,
                        const std::string& name) {
  if (!IsOpen()) return;
  bool hasError = State().ReportedErrors > errorsBefore_;
  int64_t index = IndexOf(place);
  if (int64_t* counter = CounterOf(State().Counts, outcome)) {
    Place& entry = places_[static_cast<size_t>(index)];
    ++visited_;
    if (++entry.visited > entry.announced) {
      ++entry.announced;
      ++State().Counts.found;
    }
    ++*counter;
    if (outcome != Outcome::kStored && outcome != Outcome::kAlreadyStored) {
      Keep(entry, outcome, reason.empty() ? UsualReason(outcome, hasError) : reason, name);
    }
  }
  core::GuardedRun("LoadFromMailer", [&] {
    outcome == Outcome::kStored ? units_->EndStored(index) : units_->EndOther();
  });
  TakeOffLost();
  errorsBefore_ = State().ReportedErrors;
  ShowProgress();
}

void LoadAccount::ShowProgress() const {
  if (State().Ui != nullptr) State().Ui->ShowProgress(visited_, State().Counts.found);
}

void LoadAccount::Keep(Place& place, Outcome outcome, const std::string& reason,
                       const std::string& name) {
  if (outcome == Outcome::kNone) outcome = Outcome::kUnreadable;
  Group& group = place.left[{outcome, OneLine(reason)}];
  ++group.count;
  if (name.empty() || group.names.size() == kMostNamesOfGroup || named_ == kMostNames) return;
  group.names.push_back(OneLine(name));
  ++named_;
}

void LoadAccount::TakeOffLost() {
  for (int64_t index : units_->TakeLost()) {
    Place& place = places_[static_cast<size_t>(index)];
    --place.visited;
    --visited_;
    --State().Counts.stored;
    ++lost_;
    place.lost = true;
  }
}

void LoadAccount::Close() {
  if (!IsOpen()) return;
  assert(!repository::RepositoryDb().InGroup());
  TakeOffLost();
  units_.reset();
  for (Place& place : places_) {
    int64_t missing = place.announced - place.visited;
    if (missing <= 0) continue;
    State().Counts.notReached += missing;
    bool isBroken = place.visited > 0 && !place.finished && core::IsLoadStopped();
    if (place.lost && !State().DiskIsFull) {
      place.reasons.push_back("taken back: " + State().LastReportedError);
    } else if (place.lost || isBroken || (place.reasons.empty() && !place.finished)) {
      place.reasons.push_back(WhyStopped());
    } else if (place.reasons.empty()) {
      place.reasons.emplace_back("it holds fewer messages than announced");
    }
    place.left[{Outcome::kStopped, OneLine(Joined(place.reasons))}].count = missing;
  }
  int64_t found = State().Counts.found;
  if (State().Ui != nullptr) State().Ui->ShowProgress(found, found);
}

std::string LoadAccount::Text() const {
  constexpr std::array<std::pair<Outcome, const char*>, 4> kKinds = {{
      {Outcome::kUnreadable, "Unreadable"},
      {Outcome::kRefused, "Refused"},
      {Outcome::kIgnored, "Ignored"},
      {Outcome::kStopped, "Not reached"},
  }};
  std::string text;
  for (const std::string& note : notes_) text += note + "\r\n";
  if (lateStates_ > 0) {
    text +=
        "Messages stored before that have now been given their state (read, replied, flagged) = " +
        std::to_string(lateStates_) + "\r\n";
  }
  size_t groups = 0;
  int64_t untold = 0;
  for (const auto& [kind, title] : kKinds) {
    for (const Place& place : places_) {
      for (const auto& [key, group] : place.left) {
        if (key.first != kind) continue;
        if (++groups > kMostGroups) {
          untold += group.count;
          continue;
        }
        text += std::string(title) + " = " + std::to_string(group.count) + "\r\n" +
                OneLine(place.name) + "\r\n" + key.second + "\r\n";
        for (const std::string& name : group.names) text += "  " + name + "\r\n";
        int64_t rest = group.count - static_cast<int64_t>(group.names.size());
        if (!group.names.empty() && rest > 0) {
          text += "  and " + std::to_string(rest) + " more\r\n";
        }
      }
    }
  }
  if (untold > 0) text += "And " + std::to_string(untold) + " more, not listed here.\r\n";
  if (text.ends_with("\r\n")) text.resize(text.size() - 2);
  return text;
}

std::string CountsSummary(const core::LoadCounts& counts) {
  return "found " + std::to_string(counts.found) + ", stored " + std::to_string(counts.stored) +
         ", already stored " + std::to_string(counts.alreadyStored) + ", refused " +
         std::to_string(counts.refused) + ", ignored " + std::to_string(counts.ignored) +
         ", unreadable " + std::to_string(counts.unreadable) + ", not reached " +
         std::to_string(counts.notReached);
}

}  // namespace tarnwick::intake
