// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "timeline/query.h"

#include <algorithm>
#include <utility>

#include "core/guard.h"
#include "platform/clock.h"
#include "repository/date_range.h"
#include "repository/repository.h"

namespace tarnwick::timeline {

namespace {

using platform::TickMilliseconds;

constexpr int64_t kStepMilliseconds = 15;      // aimed at
constexpr int64_t kMostStepMilliseconds = 50;  // then it is broken off
constexpr int kFirstPartDays = 120;
constexpr size_t kKeptCounts = 8;

std::string CountWhere(const Scope& scope) {
  return "WHERE ReceivedTime BETWEEN " + repository::FormatFilterDate(scope.from, true) + " AND " +
         repository::FormatFilterDate(scope.to, false) + scope.conditions + scope.ofCorrespondent;
}

// Stops what runs on a connection once it has taken too long.
class TimeLimit {
 public:
  TimeLimit(jet::Connection& connection, int64_t milliseconds) : connection_(connection) {
    connection_.SetProgressHandler([this, end = TickMilliseconds() + milliseconds] {
      passed_ = passed_ || TickMilliseconds() > end;
      return passed_;
    });
  }
  ~TimeLimit() { connection_.SetProgressHandler({}); }
  TimeLimit(const TimeLimit&) = delete;
  TimeLimit& operator=(const TimeLimit&) = delete;

  bool Passed() const { return passed_; }

 private:
  jet::Connection& connection_;
  bool passed_ = false;
};

std::vector<std::vector<jet::Value>> AllRows(const std::string& query) {
  jet::Recordset found;
  std::vector<std::vector<jet::Value>> rows;
  for (found.Open(query, repository::RepositoryDb()); !found.Eof(); found.MoveNext()) {
    std::vector<jet::Value>& row = rows.emplace_back();
    for (int i = 0; i < found.FieldCount(); ++i) row.push_back(found.Field(i));
  }
  return rows;
}

Scope WithWholeRange(const Scope& scope) {
  Scope whole = scope;
  repository::DateRange range = repository::WholeDateRange();
  whole.from = range.from;
  whole.to = range.to;
  return whole;
}

}  // namespace

std::string DayCountQueryText(const Scope& scope) {
  return "SELECT DateValue(ReceivedTime) AS ReceivedDay, Direction, Count(*) AS Messages "
         "FROM Email " +
         CountWhere(scope) + " GROUP BY DateValue(ReceivedTime), Direction";
}

std::string CorrespondentCountQueryText(const Scope& scope) {
  return "SELECT FromTo, Count(*) AS Messages FROM Email " + CountWhere(scope) + " GROUP BY FromTo";
}

void SteppedQuery::Start(const Scope& scope, std::string (*text)(const Scope&)) {
  scope_ = scope;
  text_ = text;
  first_ = DayNumber(scope.from);
  last_ = DayNumber(scope.to);
  days_ = kFirstPartDays;
  may_ = kMostStepMilliseconds;
  running_ = first_ <= last_;
}

std::vector<std::vector<jet::Value>> SteppedQuery::Step() {
  if (!running_) return {};
  int from = last_ - first_ < days_ ? first_ : last_ - days_ + 1;
  scope_.from = DayDate(from);
  scope_.to = DayDate(last_);
  running_ = false;  // unless this part succeeds
  TimeLimit limit(repository::RepositoryDb(), may_);
  int64_t began = TickMilliseconds();
  std::vector<std::vector<jet::Value>> rows;
  try {
    rows = AllRows(text_(scope_));
  } catch (...) {
    if (!limit.Passed()) throw;
    running_ = true;
    days_ = std::max(1, (last_ - from + 1) / 4);
    may_ = may_ * 3 / 2;
    return {};
  }
  int64_t took = std::max<int64_t>(1, TickMilliseconds() - began);
  int64_t right = int64_t{last_ - from + 1} * kStepMilliseconds / took;
  days_ = static_cast<int>(std::clamp<int64_t>(right, std::max(1, days_ / 4), int64_t{days_} * 4));
  last_ = from - 1;
  running_ = first_ <= last_;
  return rows;
}

void TimelineReader::Start(const Scope& scope) {
  query_.Stop();
  core::GuardedRun(
      "TimelineReader",
      [&] {
        Scope whole = WithWholeRange(scope);
        key_ = DayCountQueryText(whole);
        auto kept = std::find_if(kept_.begin(), kept_.end(),
                                 [&](const Counted& counted) { return counted.filter == key_; });
        if (kept != kept_.end()) {
          std::rotate(kept_.begin(), kept, kept + 1);
          counts_ = kept_.front().counts;
          return;
        }
        counts_ = {};
        query_.Start(whole, DayCountQueryText);
      },
      core::Report::kLog);
}

bool TimelineReader::Step() {
  if (!query_.IsRunning()) return false;
  core::GuardedRun(
      "TimelineReader",
      [&] {
        for (const std::vector<jet::Value>& row : query_.Step()) {
          bool isIn = row[1].AsText() == "In";
          int64_t messages = row[2].AsInt();
          counts_.Add(DayNumber(DateTime::FromSeconds(row[0].AsInt())),
                      isIn ? MessageCount{messages, 0} : MessageCount{0, messages});
        }
        if (query_.IsRunning()) return;
        kept_.push_front({key_, counts_});
        if (kept_.size() > kKeptCounts) kept_.pop_back();
      },
      core::Report::kLog);
  return query_.IsRunning();
}

void TimelineReader::Forget() {
  query_.Stop();
  kept_.clear();
}

void CorrespondentReader::Start(const Scope& scope) {
  Scope ofAll = scope;
  ofAll.ofCorrespondent.clear();
  messages_.clear();
  query_.Start(ofAll, CorrespondentCountQueryText);
}

bool CorrespondentReader::Step() {
  if (!query_.IsRunning()) return false;
  core::GuardedRun(
      "CorrespondentReader",
      [&] {
        for (const std::vector<jet::Value>& row : query_.Step()) {
          messages_[row[0].AsInt()] += row[1].AsInt();
        }
      },
      core::Report::kLog);
  return query_.IsRunning();
}

std::vector<Correspondent> TopCorrespondents(const std::map<int64_t, int64_t>& messages,
                                             size_t most) {
  std::vector<Correspondent> top;
  core::GuardedRun(
      "TopCorrespondents",
      [&] {
        std::vector<std::pair<int64_t, int64_t>> ranked;  // messages, contact
        ranked.reserve(messages.size());
        for (const auto& [contact, count] : messages) ranked.emplace_back(count, -contact);
        std::sort(ranked.rbegin(), ranked.rend());
        for (const auto& [count, contact] : ranked) {
          if (top.size() == most) break;
          jet::Recordset found;
          found.Open("SELECT Name FROM MeContact WHERE ID=" + std::to_string(-contact),
                     repository::RepositoryDb());
          std::string name = found.Eof() ? std::string() : found.Field(0).AsText();
          if (!name.empty()) top.push_back({name, count});
        }
      },
      core::Report::kLog);
  return top;
}

}  // namespace tarnwick::timeline
