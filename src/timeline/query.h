// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Counting the messages of a scope by day or by correspondent, in the background of one thread: a
// count is made in steps, the latest messages first, each short enough that nobody waits for it.
// Between two steps the filter may change, and then a new count begins. No step may run while
// another statement is under way. An error ends the count with what there is, and is logged.
#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "database/recordset.h"
#include "timeline/counts.h"

namespace tarnwick::timeline {

// Which messages are counted, as conditions on a row of Email alone: none that joins another table,
// so that a message stays one row. Each begins with " AND "; both texts may be empty.
struct Scope {
  DateTime from;  // whole days, both included
  DateTime to;
  std::string conditions;  // all but those on the correspondent
  std::string ofCorrespondent;
  // What is searched for besides, in any words that tell one search from another, or "". No
  // statement knows what a search found; whoever searches tells it.
  std::string search = {};
};

struct FoundMessage {
  int day = 0;
  bool isIn = false;
  int64_t contact = 0;  // 0: nobody
};

// Messages of the scope by the day they were received on and by direction. Every message counts
// once, whatever it has attached.
std::string DayCountQueryText(const Scope& scope);
// Likewise by correspondent.
std::string CorrespondentCountQueryText(const Scope& scope);

// A query over a range of dates, run over parts of it. A part that takes longer than a step may is
// broken off and begun again with less; where that does not help, steps become longer.
class SteppedQuery {
 public:
  // Nothing is read yet. The dates of the scope are the range.
  void Start(const Scope& scope, std::string (*text)(const Scope&));
  void Stop() { running_ = false; }
  bool IsRunning() const { return running_; }

  // Runs the query over the next part. Its rows, none when it was broken off. Throws Error, and
  // then is at its end.
  std::vector<std::vector<jet::Value>> Step();

 private:
  Scope scope_;
  std::string (*text_)(const Scope&) = nullptr;
  bool running_ = false;
  int first_ = 0;  // days: what is left
  int last_ = 0;
  int days_ = 0;     // of the next part
  int64_t may_ = 0;  // milliseconds of a step
};

class TimelineReader {
 public:
  // Begins to count the messages of a scope, whatever its dates. What was counted before for the
  // same filter is there at once.
  void Start(const Scope& scope);
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

// Of messages by contacts those with most, at most so many. Messages of nobody count for nobody.
std::vector<Correspondent> TopCorrespondents(const std::map<int64_t, int64_t>& messages,
                                             size_t most);

class CorrespondentReader {
 public:
  // Begins to count the messages of a scope, dates included, whatever its correspondent.
  void Start(const Scope& scope);
  bool Step();
  bool IsRunning() const { return query_.IsRunning(); }
  void Stop() { query_.Stop(); }
  std::vector<Correspondent> Top(size_t most) const { return TopCorrespondents(messages_, most); }

 private:
  SteppedQuery query_;
  std::map<int64_t, int64_t> messages_;
};

}  // namespace tarnwick::timeline
