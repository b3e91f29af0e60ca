// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a timeline shows and what the person does with it, without a window: the bars of the shown
// days, the chosen days (those of the list's filter), the cursor, and the way back.
//
// Shown is where nearly all mail lies (DayCounts::Main) until it is zoomed. What lies outside is
// reached by Edge: it shows the days before the first bar, or after the last.
#pragma once

#include <optional>
#include <vector>

#include "timeline/counts.h"

namespace tarnwick::timeline {

class TimelineState {
 public:
  struct Bar {
    DaySpan days;
    MessageCount count;
  };

  // Other messages; a zoomed view stays where it is.
  void SetCounts(DayCounts counts, int today);
  // The days of the filter. Those that were not chosen here put an end to zoom and way back.
  void SetChosen(DaySpan days);
  // So many bars fit side by side; the unit of the bars is the smallest that keeps to it.
  void SetRoom(int bars);

  const DayCounts& Counts() const { return counts_; }
  const std::vector<Bar>& Bars() const { return bars_; }
  PeriodUnit Unit() const { return unit_; }
  std::optional<DaySpan> Shown() const;  // nullopt without mail
  MessageCount Before() const;
  MessageCount After() const;

  DaySpan Chosen() const { return chosen_; }
  // No mail lies outside of what is chosen.
  bool ChoosesAll() const;

  // The bars from where a selection began to the cursor; nullopt before the cursor was ever put.
  std::optional<DaySpan> Selected() const;
  std::optional<int> CursorBar() const;
  void PutCursor(int bar, bool extend);
  // By bars; past the edge of a zoomed view the view moves on.
  void MoveCursor(int by, bool extend);
  // To the first or last bar, and from there to what lies beyond.
  void MoveToEdge(bool last, bool extend);
  void DropCursor();

  // Each of these remembers what was before, for Back. False when nothing changes.
  bool Choose(DaySpan days);
  bool ZoomIn(DaySpan days);
  bool ZoomOut();
  bool Edge(bool after);
  bool Back();

  // Where a click began, so that a double click is one step of the way back.
  size_t Steps() const { return history_.size(); }
  void MergeSteps(size_t since);

 private:
  struct View {
    std::optional<DaySpan> zoomed;
    DaySpan chosen;
  };
  bool Show(DaySpan days);
  void Rebuild();
  std::optional<int> BarOf(int day) const;

  DayCounts counts_;
  int room_ = 100;
  std::optional<DaySpan> main_;
  std::optional<DaySpan> zoomed_;
  DaySpan chosen_;
  std::vector<View> history_;

  PeriodUnit unit_ = PeriodUnit::kMonth;
  std::vector<Bar> bars_;
  std::optional<int> cursor_;  // days
  std::optional<int> anchor_;
};

}  // namespace tarnwick::timeline
