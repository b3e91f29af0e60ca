// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The list while something is searched for besides the filter: both narrow. What is there at once
// is listed at once, and the list grows at its end until the search (search/run.h) is through.
// Whatever takes the listed messages as a whole completes the list first.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "database/recordset.h"
#include "search/run.h"
#include "timeline/query.h"

namespace tarnwick::board {

struct FoundState {
  // What the person typed, and the folder that was chosen: identity and name.
  std::string text;
  std::optional<std::pair<std::string, std::string>> folder;

  std::shared_ptr<search::Run> run;  // of the list that is shown; nullptr without one
  std::optional<search::KeySet> incoming;
  int64_t counted = 0;  // rows of the list, from the first
  int64_t countedIncoming = 0;
  size_t told = 0;  // rows of the list, from the first: to the timeline
  void ForgetCounts() { incoming.reset(); }
};

// True when there is anything to search for besides the filter.
bool IsSearching();
// True while the list may still grow.
bool IsListGrowing();

// Makes a list that was opened for Board().Filter one of what is found, as far as it is found at
// once. Throws Error.
void BeginSearch(jet::Recordset& list);

enum class Growth : uint8_t { kNone, kMore, kFirst };
// Goes on for about so many milliseconds. kMore: there are rows behind those that there were.
// kFirst: the list took the place of the row that stands for none, and is to be bound anew. An
// error is reported and ends the search.
Growth GrowList(int64_t milliseconds);

// Goes on to the end, with events running; false when the person stopped it, or on an error, which
// has been reported.
bool CompleteList();

// Reads on in the map of the mail for some milliseconds; true when there is nothing left to read.
// An error is logged.
bool PrepareMap(int64_t milliseconds);
// The folders that the map knows. Empty on an error, which has been logged.
std::vector<search::Folder> CountedFolders();

// What tells the search from others for the timeline; "" where the filter alone narrows or the map
// of the mail can't be had.
std::string SearchName();
// Rows of the list that no call since Found.told was 0 has given, some at a time; none until the
// map has been read. An error is logged.
std::vector<timeline::FoundMessage> TakeFound();
// True when they have given all there will be.
bool IsAllTaken();

// How far the search is, in hundredths.
int SearchedPercent();
// Incoming messages among those that are listed. Throws Error.
int64_t CountFoundIncoming();

}  // namespace tarnwick::board
