// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Answers a query out of a column cache. Internal to the database.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "database/connection_impl.h"
#include "database/row_places.h"

namespace tarnwick::jet {

class ColumnCacheReader {
 public:
  // REQUIRES: program.plan.columnCache, and a connection with a column cache.
  ColumnCacheReader(Connection::Impl& connection, Program& program,
                    const std::vector<Value>& literals);

  // The keys of the rows in their order, or the rows of a query that counts, with groups or
  // without. nullopt when the table or a literal is unfit: the query's statement has the answer.
  std::optional<std::vector<uint32_t>> Keys();
  std::optional<std::vector<std::vector<Value>>> Counts();

 private:
  using Marks = std::vector<bool>;

  bool Begin();
  // By the place in Kinds; false when a literal is unfit.
  bool TestKinds(Marks& holds) const;
  RowPlaces Matching();
  // The keys that a statement gives, as marks; all of them one by one in given, if wanted.
  Marks Marked(PreparedSql& statement, size_t size, std::vector<uint32_t>* given = nullptr);
  void KeepHolding(RowPlaces& places);
  void LookUp(const RowPlaces& places, TestedRows& last);
  int64_t Count(const RowPlaces& places);
  std::vector<std::vector<Value>> Groups(const RowPlaces& places) const;
  // Of each kind the first one whose values the groups can't tell from its own.
  std::vector<uint32_t> GroupKinds() const;
  bool IsCheapOneByOne(size_t rows) const;
  Marks MatchingKeys(const RowPlaces& places) const;

  std::vector<uint32_t> KeysOf(const RowPlaces& places) const;
  // By rank, rows of one rank by their keys.
  template <typename RankOf>
  std::vector<uint32_t> ByRank(const RowPlaces& places, uint32_t ranks, const RankOf& rankOf) const;
  std::vector<uint32_t> ByKind(const RowPlaces& places) const;
  std::optional<std::vector<uint32_t>> ByReference(const RowPlaces& places);
  std::vector<uint32_t> ByText(const RowPlaces& places);
  std::vector<uint32_t> ByLookedUpText(const RowPlaces& places);
  std::vector<uint32_t> ReadTextOrder();

  Connection::Impl& connection_;
  Program& program_;
  const ColumnCachePlan& plan_;
  const std::vector<Value>& literals_;
  ColumnCache& cache_;
  size_t from_ = 0;  // the rows within the spans
  size_t to_ = 0;
  Marks kinds_;
  // With a condition on details: their owners' keys, one for each.
  std::vector<uint32_t> owners_;
};

}  // namespace tarnwick::jet
