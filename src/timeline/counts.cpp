// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "timeline/counts.h"

#include <algorithm>
#include <vector>

#include "platform/locale.h"

namespace tarnwick::timeline {

namespace {

constexpr int64_t kDaySeconds = 86400;
constexpr int kGapDays = 3 * 365;  // that parts strays from the rest
constexpr int kStrayShare = 50;    // of which strays are less than one
constexpr int kFirstMailYear = 1990;

constexpr int kLastYear = 9999;

int Day(int year, int month, int day) {
  return DayNumber(DateTime::FromDate(year, month, day));
}

int FirstDay() {
  static const int day = Day(100, 1, 1);
  return day;
}

int LastDay() {
  static const int day = Day(kLastYear, 12, 31);
  return day;
}

std::string EndName(int day, const char* pattern) {
  return platform::FormatDate(DayDate(day), pattern);
}

}  // namespace

int DayNumber(DateTime date) {
  return static_cast<int>(date.DatePart().Seconds() / kDaySeconds);
}

DateTime DayDate(int day) {
  return DateTime::FromSeconds(day * kDaySeconds);
}

DaySpan PeriodAround(int day, PeriodUnit unit) {
  day = std::clamp(day, FirstDay(), LastDay());
  if (unit == PeriodUnit::kDay) return {day, day};
  CivilTime date = DayDate(day).ToCivil();
  if (unit == PeriodUnit::kYear) return {Day(date.year, 1, 1), Day(date.year, 12, 31)};
  int last = date.month == 12 ? Day(date.year, 12, 31) : Day(date.year, date.month + 1, 1) - 1;
  return {Day(date.year, date.month, 1), last};
}

DaySpan WholePeriods(DaySpan span, PeriodUnit unit) {
  return {PeriodAround(span.first, unit).first, PeriodAround(span.last, unit).last};
}

std::string SpanName(DaySpan span) {
  struct Form {
    PeriodUnit unit;
    const char* pattern;
  };
  for (const Form& form : {Form{PeriodUnit::kYear, "yyyy"}, {PeriodUnit::kMonth, "mmmm yyyy"}}) {
    if (WholePeriods(span, form.unit) != span) continue;
    std::string first = EndName(span.first, form.pattern);
    if (PeriodAround(span.first, form.unit) == span) return first;
    return first + " – " + EndName(span.last, form.pattern);
  }
  std::string first = EndName(span.first, "d mmmm yyyy");
  return span.Days() == 1 ? first : first + " – " + EndName(span.last, "d mmmm yyyy");
}

MessageCount& MessageCount::operator+=(const MessageCount& other) {
  in += other.in;
  out += other.out;
  return *this;
}

void DayCounts::Add(int day, MessageCount count) {
  if (day < FirstDay() || day > LastDay()) return;
  days_[day] += count;
  total_ += count;
}

MessageCount DayCounts::Within(DaySpan span) const {
  MessageCount sum;
  for (auto day = days_.lower_bound(span.first); day != days_.end() && day->first <= span.last;
       ++day) {
    sum += day->second;
  }
  return sum;
}

std::optional<DaySpan> DayCounts::Whole() const {
  if (days_.empty()) return std::nullopt;
  return DaySpan{days_.begin()->first, days_.rbegin()->first};
}

std::optional<DaySpan> DayCounts::WholeWithin(DaySpan span) const {
  auto first = days_.lower_bound(span.first);
  auto end = days_.upper_bound(span.last);
  if (first == days_.end() || first == end || first->first > span.last) return std::nullopt;
  return DaySpan{first->first, std::prev(end)->first};
}

std::optional<DaySpan> DayCounts::Main(int today) const {
  if (days_.empty()) return std::nullopt;
  struct Cluster {
    DaySpan span;
    int64_t messages;
  };
  std::vector<Cluster> clusters;
  for (const auto& [day, count] : days_) {
    if (clusters.empty() || day - clusters.back().span.last > kGapDays) {
      clusters.push_back({{day, day}, 0});
    }
    clusters.back().span.last = day;
    clusters.back().messages += count.Total();
  }
  auto largest =
      std::max_element(clusters.begin(), clusters.end(),
                       [](const Cluster& a, const Cluster& b) { return a.messages < b.messages; });
  DaySpan span = largest->span;
  int firstMail = Day(kFirstMailYear, 1, 1);
  for (const Cluster& cluster : clusters) {
    bool absurd = cluster.span.last < firstMail || cluster.span.first > today;
    if (absurd || cluster.messages * kStrayShare < total_.Total()) continue;
    span.first = std::min(span.first, cluster.span.first);
    span.last = std::max(span.last, cluster.span.last);
  }
  return span;
}

}  // namespace tarnwick::timeline
