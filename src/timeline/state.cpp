// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "timeline/state.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace tarnwick::timeline {

namespace {

constexpr int kLongAgo = std::numeric_limits<int>::min() / 2;
constexpr int kFarAway = std::numeric_limits<int>::max() / 2;
constexpr int kLeastDays = 7;  // that a view has
constexpr size_t kMostSteps = 50;

int Periods(DaySpan span, PeriodUnit unit) {
  CivilTime first = DayDate(span.first).ToCivil();
  CivilTime last = DayDate(span.last).ToCivil();
  switch (unit) {
    case PeriodUnit::kDay:
      return span.Days();
    case PeriodUnit::kMonth:
      return (last.year - first.year) * 12 + last.month - first.month + 1;
    default:
      return last.year - first.year + 1;
  }
}

}  // namespace

void TimelineState::SetCounts(DayCounts counts, int today) {
  counts_ = std::move(counts);
  main_ = counts_.Main(today);
  if (main_) main_ = WholePeriods(*main_, PeriodUnit::kMonth);
  if (!main_) zoomed_.reset();
  Rebuild();
}

void TimelineState::SetChosen(DaySpan days) {
  if (days == chosen_) return;
  chosen_ = days;
  history_.clear();
  zoomed_.reset();
  DropCursor();
  Rebuild();
}

void TimelineState::SetRoom(int bars) {
  bars = std::max(1, bars);
  if (bars == room_) return;
  room_ = bars;
  Rebuild();
}

std::optional<DaySpan> TimelineState::Shown() const {
  return zoomed_ ? zoomed_ : main_;
}

MessageCount TimelineState::Before() const {
  if (bars_.empty()) return {};
  return counts_.Within({kLongAgo, bars_.front().days.first - 1});
}

MessageCount TimelineState::After() const {
  if (bars_.empty()) return {};
  return counts_.Within({bars_.back().days.last + 1, kFarAway});
}

bool TimelineState::ChoosesAll() const {
  auto whole = counts_.Whole();
  return !whole || chosen_.Holds(*whole);
}

std::optional<DaySpan> TimelineState::Selected() const {
  auto cursor = CursorBar();
  if (!cursor) return std::nullopt;
  auto anchor = anchor_ ? BarOf(*anchor_) : std::nullopt;
  DaySpan at = bars_[static_cast<size_t>(*cursor)].days;
  // A selection that began beyond the view goes on from there.
  DaySpan from = anchor    ? bars_[static_cast<size_t>(*anchor)].days
                 : anchor_ ? PeriodAround(*anchor_, unit_)
                           : at;
  return DaySpan{std::min(at.first, from.first), std::max(at.last, from.last)};
}

std::optional<int> TimelineState::CursorBar() const {
  return cursor_ ? BarOf(*cursor_) : std::nullopt;
}

void TimelineState::PutCursor(int bar, bool extend) {
  if (bars_.empty()) return;
  size_t place = static_cast<size_t>(std::clamp(bar, 0, static_cast<int>(bars_.size()) - 1));
  if (!extend || !anchor_) anchor_ = extend && cursor_ ? cursor_ : bars_[place].days.first;
  cursor_ = bars_[place].days.first;
}

void TimelineState::MoveCursor(int by, bool extend) {
  if (bars_.empty()) return;
  auto cursor = CursorBar();
  if (!cursor) {
    // It comes to where the chosen days begin, or else to the latest mail.
    auto chosen = ChoosesAll() ? std::nullopt : BarOf(chosen_.first);
    PutCursor(chosen.value_or(static_cast<int>(bars_.size()) - 1), false);
    return;
  }
  int target = *cursor + by;
  if (zoomed_ && target < 0 && Before().Total() > 0) {
    zoomed_ = DaySpan{PeriodAround(bars_.front().days.first - 1, unit_).first,
                      std::max(bars_.back().days.first - 1, bars_.front().days.last)};
    Rebuild();
  } else if (zoomed_ && target >= static_cast<int>(bars_.size()) && After().Total() > 0) {
    zoomed_ = DaySpan{std::min(bars_.front().days.last + 1, bars_.back().days.first),
                      PeriodAround(bars_.back().days.last + 1, unit_).last};
    Rebuild();
    target = static_cast<int>(bars_.size()) - 1;
  }
  PutCursor(target, extend);
}

void TimelineState::MoveToEdge(bool last, bool extend) {
  if (bars_.empty()) return;
  int edge = last ? static_cast<int>(bars_.size()) - 1 : 0;
  if (CursorBar() == edge && !extend && Edge(last)) {
    edge = last ? static_cast<int>(bars_.size()) - 1 : 0;
  }
  PutCursor(edge, extend);
}

void TimelineState::DropCursor() {
  cursor_.reset();
  anchor_.reset();
}

bool TimelineState::Choose(DaySpan days) {
  if (days == chosen_) return false;
  history_.push_back({zoomed_, chosen_});
  if (history_.size() > kMostSteps) history_.erase(history_.begin());
  chosen_ = days;
  return true;
}

bool TimelineState::Show(DaySpan days) {
  if (Shown() == days) return false;
  history_.push_back({zoomed_, chosen_});
  if (history_.size() > kMostSteps) history_.erase(history_.begin());
  zoomed_ = days == main_ ? std::nullopt : std::optional<DaySpan>(days);
  Rebuild();
  return true;
}

bool TimelineState::ZoomIn(DaySpan days) {
  auto shown = Shown();
  if (!shown) return false;
  if (days.Days() < kLeastDays) days = PeriodAround(days.first, PeriodUnit::kMonth);
  return days.Days() < shown->Days() && Show(days);
}

bool TimelineState::ZoomOut() {
  auto shown = Shown();
  auto whole = counts_.Whole();
  if (!shown || !whole) return false;
  int middle = shown->first + shown->Days() / 2;
  DaySpan everything = WholePeriods(*whole, PeriodUnit::kMonth);
  for (DaySpan wider : {PeriodAround(middle, PeriodUnit::kMonth),
                        PeriodAround(middle, PeriodUnit::kYear), *main_, everything}) {
    if (wider.Holds(*shown) && wider != *shown) return Show(wider);
  }
  return false;
}

bool TimelineState::Edge(bool after) {
  if (bars_.empty()) return false;
  auto beyond = counts_.WholeWithin(after ? DaySpan{bars_.back().days.last + 1, kFarAway}
                                          : DaySpan{kLongAgo, bars_.front().days.first - 1});
  return beyond && Show(WholePeriods(*beyond, PeriodUnit::kMonth));
}

bool TimelineState::Back() {
  if (history_.empty()) return false;
  View before = history_.back();
  history_.pop_back();
  zoomed_ = before.zoomed;
  chosen_ = before.chosen;
  DropCursor();
  Rebuild();
  return true;
}

void TimelineState::MergeSteps(size_t since) {
  if (history_.size() > since + 1) history_.resize(since + 1);
}

void TimelineState::Rebuild() {
  bars_.clear();
  auto shown = Shown();
  if (!shown) return;
  unit_ = PeriodUnit::kYear;
  for (PeriodUnit unit : {PeriodUnit::kDay, PeriodUnit::kMonth}) {
    if (Periods(*shown, unit) <= room_) {
      unit_ = unit;
      break;
    }
  }
  int last = PeriodAround(shown->last, unit_).last;
  for (int day = shown->first; day <= last;) {
    DaySpan period = PeriodAround(day, unit_);
    bars_.push_back({period, counts_.Within(period)});
    day = period.last + 1;
  }
}

std::optional<int> TimelineState::BarOf(int day) const {
  auto bar = std::find_if(bars_.begin(), bars_.end(), [day](const Bar& b) {
    return b.days.first <= day && day <= b.days.last;
  });
  if (bar == bars_.end()) return std::nullopt;
  return static_cast<int>(bar - bars_.begin());
}

}  // namespace tarnwick::timeline
