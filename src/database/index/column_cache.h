// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A table's column cache (connection.h) in memory: twelve bytes a row, in the order of the date and
// then of the key. Internal to the database.
//
// It is read when it is first asked for, in one pass over an index that holds its columns, and
// brought up to date when it is asked for again: the rows that were written meanwhile, whatever
// became of the writing, are read anew. What does not fit (more kinds than kMostKinds, keys beyond
// 32 bits or too far apart, a date that is no whole number) makes the table as a whole unfit; it is
// then read through the engine as any other.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "database/engine/session.h"
#include "database/table_definition.h"

namespace tarnwick::jet {

class ColumnCache {
 public:
  static constexpr size_t kMostKinds = 1024;
  static constexpr uint32_t kNoReference = (1U << 22) - 1;

  struct Row {
    uint32_t key;
    int32_t seconds;          // of the date; the limits stand for what is in distant_
    uint32_t kind : 10;       // a place in Kinds
    uint32_t reference : 22;  // kNoReference for Null
  };
  // A row with more than one detail.
  struct Repeat {
    uint32_t key;
    uint32_t count;
  };

  ColumnCache(Session& session, ColumnCacheDefinition definition);

  const ColumnCacheDefinition& Definition() const { return definition_; }

  // Makes it current; false when the table is unfit. The rest is valid after a true, until
  // something is written.
  bool Refresh();
  const std::vector<Row>& Rows() const { return rows_; }
  int64_t SecondsOf(const Row& row) const;  // of its date; the least there is for Null
  // The first row dated at seconds or later, as an index.
  size_t From(int64_t seconds) const;
  // What the columns of kinds hold together, in the order of the definition's.
  const std::vector<std::vector<Value>>& Kinds() const { return kinds_; }
  // In the order of their keys. Read when first asked for.
  const std::vector<Repeat>& Repeats();
  // The keys of all rows in the order of a text that is not in the cache; nullptr where the order
  // is not known. Four bytes a row for the one that was asked for last, until a row is written.
  const std::vector<uint32_t>* TextOrder(const std::string& name) const {
    return textOrderName_ == name && !name.empty() ? &textOrder_ : nullptr;
  }
  const std::vector<uint32_t>& KeepTextOrder(const std::string& name, std::vector<uint32_t> keys);
  // Whether it can answer without a pass over all rows.
  bool IsRead() const { return isRead_; }
  uint32_t HighestKey() const { return highestKey_; }
  uint32_t HighestReference() const { return highestReference_; }

  // A row was written, or may have been.
  void RowChanged(std::string_view table, int64_t key);
  // Anything may have been written.
  void Forget();

  // How often all rows were read, and how many were read singly; for tests and benches.
  int64_t Readings() const { return readings_; }
  int64_t RowsReadAgain() const { return rowsReadAgain_; }

 private:
  static constexpr int64_t kNoDate = std::numeric_limits<int64_t>::min();

  void ForgetTextOrder();
  size_t LikelyRows();
  void ReadAll();
  void ReadChanged();
  // False when the row does not fit.
  bool Take(const PassedRow& values, Row& row);
  bool TakeKind(const PassedRow& values, Row& row);
  bool FindKind(const PassedRow& values, uint32_t& kind);
  bool IsBefore(const Row& a, const Row& b) const;
  void SortRows();

  Session& session_;
  ColumnCacheDefinition definition_;
  std::string readAll_;
  std::string readHighest_;
  std::string readOne_;
  std::string readDetails_;

  bool isRead_ = false;
  bool isFit_ = true;
  std::vector<Row> rows_;
  std::unordered_map<uint32_t, int64_t> distant_;  // by key: dates beyond 32 bits, kNoDate for Null
  std::vector<std::vector<Value>> kinds_;
  std::unordered_map<std::string, uint32_t> kindPlaces_;
  // The kinds seen last, by values that are short, as nearly all are: a pass over a million rows
  // meets them a million times.
  static constexpr size_t kShortKinds = 4;
  struct SeenKind {
    std::array<uint64_t, kShortKinds> words = {};  // all 0: none
    uint32_t kind = 0;
  };
  std::array<SeenKind, 256> seen_ = {};
  std::string kindText_;
  uint32_t highestKey_ = 0;
  uint32_t highestReference_ = 0;
  std::vector<int64_t> changed_;

  std::string textOrderName_;  // "": none is kept
  std::vector<uint32_t> textOrder_;

  bool repeatsRead_ = false;
  std::vector<Repeat> repeats_;

  int64_t readings_ = 0;
  int64_t rowsReadAgain_ = 0;
};

}  // namespace tarnwick::jet
