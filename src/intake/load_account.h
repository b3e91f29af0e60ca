// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The account of one load, whatever sources it reads: every message that they say they hold ends in
// exactly one of the counts of core::LoadCounts, and whatever is not stored has its reason here.
//
// A source announces how many messages each of its places (a file, a folder of a store) holds, then
// counts each message that it comes to by its outcome. What a place announced and nobody came to is
// not reached; a place that yields more than it announced raises what was found. A message that the
// engine takes back again (a full disk) is no longer stored but not reached.
//
// The load command opens the account before the sources are asked and closes it however the load
// ends; while it is closed nothing is counted. core::State().Counts holds its numbers as they grow.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "core/run_state.h"
#include "intake/outcome.h"
#include "intake/stored_units.h"

namespace tarnwick::intake {

class LoadAccount {
 public:
  void Open();
  // Books what is left as not reached. REQUIRES: the group in which the messages were written has
  // ended, for then it is known what is in the file.
  void Close();
  bool IsOpen() const { return units_.has_value(); }

  // A place holds so many messages, beside those that it has announced before.
  void Announce(const std::string& place, int64_t messages);
  // So many of those announced turned out to be no messages.
  void Withdraw(const std::string& place, int64_t messages);
  // Why messages of a place are not come to; "" for one that will be read. Set replaces, Add adds
  // to it once.
  void SetReason(const std::string& place, const std::string& reason);
  void AddReason(const std::string& place, const std::string& reason);
  // The place was read to its end.
  void Finish(const std::string& place);
  // Something that can't be counted in messages, such as a store that can't be opened.
  void Note(const std::string& text);

  // A message of the place has ended so, and with it its unit in the repository. name: how the
  // person knows it, such as date and subject. An empty reason is filled in with what is known.
  void Count(const std::string& place, Outcome outcome, const std::string& reason = {},
             const std::string& name = {});

  // A message stored before got the state that it lacked.
  void CountLateState() { ++lateStates_; }

  // All that was come to, in every place.
  int64_t Visited() const { return visited_; }
  // True when something that had been stored was taken back.
  bool HasLost() const { return lost_ > 0; }

  // What was not stored, and why: places, reasons and, where there are few, each message. Lines are
  // ended by CR LF. Of a closed account.
  std::string Text() const;

 private:
  struct Group {  // messages of one place that ended alike
    int64_t count = 0;
    std::vector<std::string> names;
  };
  struct Place {
    int64_t announced = 0;
    int64_t visited = 0;
    bool finished = false;
    bool lost = false;  // something of it was taken back
    std::string name;
    std::vector<std::string> reasons;
    std::map<std::pair<Outcome, std::string>, Group> left;
  };
  void ShowProgress() const;
  int64_t IndexOf(const std::string& place);
  Place& PlaceOf(const std::string& place);
  void Keep(Place& place, Outcome outcome, const std::string& reason, const std::string& name);
  void TakeOffLost();

  std::vector<Place> places_;
  std::map<std::string, int64_t, std::less<>> indexes_;
  std::vector<std::string> notes_;
  std::optional<StoredUnits> units_;
  int64_t visited_ = 0;
  int64_t lost_ = 0;
  int64_t lateStates_ = 0;
  int64_t named_ = 0;         // messages told of by name
  int64_t errorsBefore_ = 0;  // reported until the last message
};

// The account of the load that runs, or of the last one.
LoadAccount& Account();

// "found N, stored N, already stored N, refused N, ignored N, unreadable N, not reached N"; scripts
// read it.
std::string CountsSummary(const core::LoadCounts& counts);

}  // namespace tarnwick::intake
