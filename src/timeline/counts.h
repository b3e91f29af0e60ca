// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// How many messages there are of each day, and the days, months and years into which a timeline
// sums them. A day is a number: days since 1 January 1970, negative before it.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "platform/date_time.h"

namespace tarnwick::timeline {

int DayNumber(DateTime date);
DateTime DayDate(int day);  // midnight

// Days from first to last, both included.
struct DaySpan {
  int first = 0;
  int last = 0;
  int Days() const { return last - first + 1; }
  bool Holds(const DaySpan& other) const { return first <= other.first && other.last <= last; }
  friend bool operator==(const DaySpan&, const DaySpan&) = default;
};

enum class PeriodUnit { kDay, kMonth, kYear };

// The day, month or year of the calendar that a day lies in.
DaySpan PeriodAround(int day, PeriodUnit unit);
// The span grown to whole periods.
DaySpan WholePeriods(DaySpan span, PeriodUnit unit);

// In the locale's words: "2004", "March 2004", "7 March 2004"; for what is none of these its two
// ends, with a dash between them.
std::string SpanName(DaySpan span);

struct MessageCount {
  int64_t in = 0;
  int64_t out = 0;
  int64_t Total() const { return in + out; }
  MessageCount& operator+=(const MessageCount& other);
  friend bool operator==(const MessageCount&, const MessageCount&) = default;
};

class DayCounts {
 public:
  // Days that no calendar of ours has are left out.
  void Add(int day, MessageCount count);

  bool IsEmpty() const { return days_.empty(); }
  MessageCount Total() const { return total_; }
  MessageCount Within(DaySpan span) const;
  // From the first to the last day with mail; nullopt without any.
  std::optional<DaySpan> Whole() const;
  // Likewise, of the days within a span.
  std::optional<DaySpan> WholeWithin(DaySpan span) const;

  // Where nearly all of the mail lies. A few messages that a wrong clock put years away from the
  // rest are not in it: less than a fiftieth of all beyond a gap of three years, or whatever lies
  // beyond such a gap and before 1990 or after today, where the most mail does not. nullopt without
  // mail.
  std::optional<DaySpan> Main(int today) const;

 private:
  std::map<int, MessageCount> days_;
  MessageCount total_;
};

}  // namespace tarnwick::timeline
