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
//
// Where the base table has a column cache (column_cache.h), and each part of the condition asks one
// table only, the keys come from there, and so does the result of a query that counts the rows, or
// counts them by day, kind or reference. The statements stay for what turns out unfit.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "database/dialect/dialect_tree.h"
#include "database/dialect/dialect_writer.h"
#include "database/engine/catalog.h"
#include "database/table_definition.h"

namespace tarnwick::jet {

// A condition that a row of the result must satisfy: a text that a column of its holds.
struct SearchTerm {
  std::string column;
  size_t literal = 0;  // what is looked for, where that is a text
  bool isPattern = false;
  std::optional<size_t> mustBeZero;  // a literal that has to be 0 for the term to be one
};

// What a query asks of the column cache. Numbers are those of literals.
struct ColumnCachePlan {
  struct Span {
    size_t from;
    size_t to;
  };
  struct KindTest {
    size_t kind;     // a place in the definition's kinds
    std::string op;  // "": whether it is Null
    size_t literal = 0;
    bool negated = false;
  };
  std::vector<Span> spans;
  std::vector<KindTest> kindTests;
  // The keys of those referenced rows, of the owners of those details (once for each), and of those
  // rows themselves on which the rest of the condition holds.
  std::optional<EngineSql> references;
  std::optional<EngineSql> details;
  std::optional<EngineSql> rows;
  EngineSql row;  // a row when it holds on the one of kKeyParameter
  // Looking at a row by itself costs little more than in a pass over all.
  bool rowsAreLong = false;

  enum class Order { kKey, kDate, kKind, kReference, kText };
  Order orderBy = Order::kKey;
  bool descending = false;
  size_t orderKind = 0;  // kKind
  // kReference: keys and texts of the referenced rows by their texts. kText: keys of the rows by
  // their texts.
  EngineSql order;
  EngineSql text;  // kText: of the row of kKeyParameter

  // A query that counts the rows of groups: what its items are, the groups' values among them.
  struct GroupItem {
    enum class Part { kCount, kDay, kKind, kReference };
    Part part = Part::kCount;
    size_t kind = 0;  // kKind: a place in the definition's kinds
  };
  std::vector<GroupItem> groupItems;

  bool countsDetails = false;  // a row counts once for each detail, at least once
};

struct ReadPlan {
  bool keyed = false;
  EngineSql all;              // not keyed
  EngineSql keys;             // keyed: the key
  EngineSql row;              // keyed: the items, by kKeyParameter
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
  std::optional<ColumnCachePlan> columnCache;
};

// Changes the select only in ways that leave its result the same. cache: nullptr when none is
// kept.
ReadPlan PlanSelect(Select& select, Catalog& schema, std::string_view otherSchema,
                    const ColumnCacheDefinition* cache);

// nullopt where the column cache is of no use to the select.
class SelectShape;
std::optional<ColumnCachePlan> PlanFromColumnCache(const SelectShape& shape,
                                                   const ColumnCacheDefinition& cache);

// A table opened as such.
Select WholeTable(std::string_view table);

}  // namespace tarnwick::jet
