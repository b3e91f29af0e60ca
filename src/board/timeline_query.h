// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Counting the messages of a filter by day or by correspondent, in the background of one thread: a
// count is made in steps, the latest messages first, each short enough that nobody waits for it.
// Between two steps the filter may change, and then a new count begins. No step may run while
// another statement is under way. An error ends the count with what there is, and is logged.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "board/list_filter.h"
#include "board/timeline_counts.h"
#include "database/recordset.h"

namespace tarnwick::board {

// Messages of the filter by the day they were received on and by direction. Every message counts
// once, whatever it has attached.
std::string DayCountQueryText(const ListFilter& filter);
// Likewise by correspondent.
std::string CorrespondentCountQueryText(const ListFilter& filter);

// A query over a range of dates, run over parts of it. A part that takes longer than a step may is
// broken off and begun again with less; where that does not help, steps become longer.
class SteppedQuery {
 public:
  // Nothing is read yet. The dates of the filter are the range.
  void Start(const ListFilter& filter, std::string (*text)(const ListFilter&));
  void Stop() { running_ = false; }
  bool IsRunning() const { return running_; }

  // Runs the query over the next part. Its rows, none when it was broken off. Throws Error, and
  // then is at its end.
  std::vector<std::vector<jet::Value>> Step();

 private:
  ListFilter filter_;
  std::string (*text_)(const ListFilter&) = nullptr;
  bool running_ = false;
  int first_ = 0;  // days: what is left
  int last_ = 0;
  int days_ = 0;     // of the next part
  int64_t may_ = 0;  // milliseconds of a step
};

class TimelineReader {
 public:
  // Begins to count the messages of a filter, whatever its dates. What was counted before for the
  // same filter is there at once.
  void Start(const ListFilter& filter);
  // True while there is more to count.
  bool Step();
  bool IsRunning() const { return query_.IsRunning(); }
  const DayCounts& Counts() const { return counts_; }

  // After messages came, went or changed: nothing that was counted holds any more.
  void Forget();

 private:
  struct Counted {
    std::string filter;
    DayCounts counts;
  };
  SteppedQuery query_;
  std::string key_;
  DayCounts counts_;
  std::deque<Counted> kept_;  // the last used first
};

struct Correspondent {
  std::string name;
  int64_t messages = 0;
  friend bool operator==(const Correspondent&, const Correspondent&) = default;
};

class CorrespondentReader {
 public:
  // Begins to count the messages of a filter, dates included, whatever its correspondent.
  void Start(const ListFilter& filter);
  bool Step();
  bool IsRunning() const { return query_.IsRunning(); }
  void Stop() { query_.Stop(); }
  // Those with most mail, at most so many. Messages of nobody count for nobody.
  std::vector<Correspondent> Top(size_t most) const;

 private:
  SteppedQuery query_;
  std::map<int64_t, int64_t> messages_;
};

}  // namespace tarnwick::board
