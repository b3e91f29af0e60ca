// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/timeline_query.h"

#include <algorithm>
#include <utility>

#include "board/list_query.h"
#include "core/guard.h"
#include "core/text.h"
#include "platform/clock.h"
#include "repository/repository.h"

namespace tarnwick::board {

namespace {

using platform::TickMilliseconds;

constexpr int64_t kStepMilliseconds = 25;
constexpr int kFirstPartDays = 365;
constexpr size_t kKeptCounts = 8;

// The conditions of the list, without its joins: a message stays one row.
std::string CountWhere(const ListFilter& filter) {
  ListFilter own = filter;
  own.FromTo.clear();
  own.FileName.clear();
  std::string where = BuildListWhere(own);
  if (!filter.FromTo.empty()) {
    where += " AND Email.FromTo IN (SELECT MeContact.ID FROM MeContact WHERE " +
             ContactCondition(filter) + ")";
  }
  if (!filter.FileName.empty()) {
    where += " AND Email.ID IN (SELECT Attachment.EmailID FROM Attachment WHERE " +
             AttachmentCondition(filter) + ")";
  }
  return where;
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

ListFilter WithWholeRange(const ListFilter& filter) {
  ListFilter whole = filter;
  DateRange range = WholeDateRange();
  whole.DateFrom = range.from;
  whole.DateTo = range.to;
  return whole;
}

}  // namespace

std::string DayCountQueryText(const ListFilter& filter) {
  return "SELECT DateValue(ReceivedTime) AS ReceivedDay, Direction, Count(*) AS Messages "
         "FROM Email " +
         CountWhere(filter) + " GROUP BY DateValue(ReceivedTime), Direction";
}

std::string CorrespondentCountQueryText(const ListFilter& filter) {
  return "SELECT FromTo, Count(*) AS Messages FROM Email " + CountWhere(filter) +
         " GROUP BY FromTo";
}

void SteppedQuery::Start(const ListFilter& filter, std::string (*text)(const ListFilter&)) {
  filter_ = filter;
  text_ = text;
  first_ = DayNumber(filter.DateFrom);
  last_ = DayNumber(filter.DateTo);
  days_ = kFirstPartDays;
  may_ = kStepMilliseconds;
  running_ = first_ <= last_;
}

std::vector<std::vector<jet::Value>> SteppedQuery::Step() {
  if (!running_) return {};
  int from = last_ - first_ < days_ ? first_ : last_ - days_ + 1;
  filter_.DateFrom = DayDate(from);
  filter_.DateTo = DayDate(last_);
  running_ = false;  // unless this part succeeds
  TimeLimit limit(repository::RepositoryDb(), may_);
  int64_t began = TickMilliseconds();
  std::vector<std::vector<jet::Value>> rows;
  try {
    rows = AllRows(text_(filter_));
  } catch (...) {
    if (!limit.Passed()) throw;
    running_ = true;
    days_ = std::max(1, (last_ - from + 1) / 4);
    may_ = may_ * 3 / 2;
    return {};
  }
  if (TickMilliseconds() - began < may_ / 3) days_ = std::min(days_, last_ - first_ + 1) * 2;
  last_ = from - 1;
  running_ = first_ <= last_;
  return rows;
}

void TimelineReader::Start(const ListFilter& filter) {
  query_.Stop();
  core::GuardedRun(
      "TimelineReader",
      [&] {
        ListFilter whole = WithWholeRange(filter);
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

void CorrespondentReader::Start(const ListFilter& filter) {
  ListFilter ofAll = filter;
  ofAll.FromTo.clear();
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

std::vector<Correspondent> CorrespondentReader::Top(size_t most) const {
  std::vector<Correspondent> top;
  core::GuardedRun(
      "CorrespondentReader",
      [&] {
        std::vector<std::pair<int64_t, int64_t>> ranked;  // messages, contact
        for (const auto& [contact, messages] : messages_) ranked.emplace_back(messages, -contact);
        std::sort(ranked.rbegin(), ranked.rend());
        for (const auto& [messages, contact] : ranked) {
          if (top.size() == most) break;
          jet::Recordset found;
          found.Open("SELECT Name FROM MeContact WHERE ID=" + std::to_string(-contact),
                     repository::RepositoryDb());
          std::string name = found.Eof() ? std::string() : found.Field(0).AsText();
          if (!name.empty()) top.push_back({name, messages});
        }
      },
      core::Report::kLog);
  return top;
}

std::string FilterTextFor(const std::string& name) {
  std::string_view longest;
  std::string_view rest = name;
  while (true) {
    size_t end = rest.find_first_of("'\"");
    std::string_view part = core::Trim(rest.substr(0, end));
    if (part.size() > longest.size()) longest = part;
    if (end == std::string_view::npos) break;
    rest.remove_prefix(end + 1);
  }
  return std::string(longest);
}

}  // namespace tarnwick::board
