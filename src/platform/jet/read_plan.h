// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// How a SELECT is read by a recordset. Internal to the database.
//
// A keyed plan has two statements: one gives the keys of the rows in order, touching no more tables
// than conditions and order need, the other gives one row by its key. That takes a base table (the
// leftmost) each of whose rows stands for at most one row of the result: the other tables are
// joined by their keys, or are joined in any way under a DISTINCT that covers the base's key and
// nothing of theirs. Any other query is read whole.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/jet/catalog.h"
#include "platform/jet/dialect_tree.h"
#include "platform/jet/dialect_writer.h"

namespace tarnwick::jet {

// A condition that a row of the result must satisfy: a text that a column of its holds.
struct SearchTerm {
  std::string column;
  size_t literal = 0;  // what is looked for, where that is a text
  bool isPattern = false;
  std::optional<size_t> nought;  // a literal that has to be 0 for the term to be one
};

struct ReadPlan {
  bool keyed = false;
  EngineSql all;   // not keyed
  EngineSql keys;  // keyed: the key; with sortText also the text to sort by, unsorted
  EngineSql row;   // keyed: the items, by kKeyParameter
  enum class SortText { kNone, kAscending, kDescending };
  SortText sortText = SortText::kNone;
  bool repeatsKeys = false;   // a key may come more than once; only its first time counts
  std::optional<size_t> top;  // a literal: the number of rows wanted
  // What a text index can narrow all or keys to: the rows of searched that are listed in
  // temp.tw_search_found. Empty where there is nothing to narrow by.
  std::vector<SearchTerm> searches;
  std::string searched;
  EngineSql narrowed;
  // The table that rows are added to, changed and deleted in; "" when there is none.
  std::string base;
  // The rows are those of the base table, all of them, in the order of their keys.
  bool wholeTable = false;
};

// Changes the select only in ways that leave its result the same.
ReadPlan PlanSelect(Select& select, Catalog& schema, std::string_view otherSchema);

// A table opened as such.
Select WholeTable(std::string_view table);

}  // namespace tarnwick::jet
