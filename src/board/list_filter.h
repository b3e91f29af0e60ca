// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the message list is narrowed to and how it is ordered, and how that is kept between runs.
// Fields bear their known names.
#pragma once

#include <cstdint>
#include <string>

#include "repository/date_range.h"

namespace tarnwick::board {

using repository::DateRange;
using repository::WholeDateRange;

// The numbers of these three are stored: do not reorder.
enum class ListDirection : uint8_t { kBoth = 1, kIn = 2, kOut = 3 };
enum class ListSort : uint8_t { kNone = 0, kDate = 1, kSubject = 2, kFromTo = 3, kDirection = 4 };
enum class ListOrder : uint8_t { kDescending = 1, kAscending = 2 };

struct ListFilter {
  DateTime DateFrom;  // whole days, both included
  DateTime DateTo;
  // An end that nobody has chosen: it goes with WholeDateRange when the filter is kept.
  bool DateFromGrows = false;
  bool DateToGrows = false;
  bool DateFromIsOwn = false;  // a load chose it, not the person
  bool Active = false;         // only hot messages
  bool AttachedFile = false;
  // Parts of texts, as the person typed them; empty means any.
  std::string FromTo;
  std::string Subject;
  std::string FileName;
  std::string MailText;
  ListDirection Direction = ListDirection::kBoth;
  ListSort SortBy = ListSort::kDate;
  ListOrder SortOrder = ListOrder::kDescending;
  std::string UserName;  // one mailbox owner's messages; no control sets it
  std::string Project;   // kept between runs, narrows nothing
  // Whole names that a part of them would not find, for it loses quotation marks and edges on its
  // way into a query: these are looked for as they stand. MarkListed (list_query.h) sets both.
  bool FromToIsListed = false;
  bool FileNameIsListed = false;
};

// Everything, newest first: what the list shows when nothing was ever chosen. Both dates grow.
ListFilter EveryMessage();

// Both ends of the dates go with all mail from now on.
void TakeEveryDate(ListFilter& filter);

// The filter as the last run left it; what was not stored is as in EveryMessage. MarkListed is
// still to come.
ListFilter ReadSavedFilter();

// listed: how many messages the list holds, kept for information. An end of the date range that
// grows is stored as Null.
void SaveFilter(const ListFilter& filter, int64_t listed);

}  // namespace tarnwick::board
