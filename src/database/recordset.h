// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The rows of a table or a query, in the shape of ADO's Recordset. All failures throw Error.
//
// A keyset cursor keeps the keys of its rows in their order (8 bytes a row) and reads a row when a
// field of it is asked for; keys are fetched when a move or a count first needs them, so opening a
// table to add a row costs nothing however many it holds. A row deleted meanwhile reads as Null in
// every field. Queries without a usable key (aggregates, DISTINCT over columns without a key) are
// read once and kept. A dynamic cursor behaves as a keyset that is fetched anew by Requery.
//
// Moving off a row writes what was set in it, as Update does. With LockType::kReadOnly, and where
// rows were read once and kept, nothing can be changed (Error 3251).
//
// Positions: after Open on the first row, or Eof and Bof both true when there is none.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "database/connection.h"
#include "database/value.h"

namespace tarnwick::jet {

enum class CursorType { kForwardOnly = 0, kKeyset = 1, kDynamic = 2, kStatic = 3 };
enum class LockType { kReadOnly = 1, kPessimistic = 2, kOptimistic = 3 };
enum class CommandType { kText = 1, kTable = 2 };

class Recordset {
 public:
  Recordset();
  ~Recordset();  // closes; an unfinished AddNew is dropped
  Recordset(const Recordset&) = delete;
  Recordset& operator=(const Recordset&) = delete;
  Recordset(Recordset&&) noexcept;
  Recordset& operator=(Recordset&&) noexcept;

  // source: the text of a SELECT, or a table's name with CommandType::kTable. The connection must
  // outlive the recordset's use. Throws Error 3705 when it is open already.
  void Open(std::string_view source, Connection& connection,
            CursorType cursor = CursorType::kForwardOnly, LockType lock = LockType::kReadOnly,
            CommandType command = CommandType::kText);
  void Close();  // Error 3704 when it is not open
  bool IsOpen() const;
  void Requery();  // runs the query anew; the position becomes the first row

  bool Eof();
  bool Bof();
  int64_t RecordCount();

  void MoveFirst();
  void MoveLast();
  void MoveNext();
  void MovePrevious();
  // 1..RecordCount; 0 when at the end or the beginning.
  int64_t AbsolutePosition();
  void SetAbsolutePosition(int64_t position);

  // The position of the row with this key of the first table, by a pass over the keys in memory; 0
  // when there is none, or the rows have no keys. Moves nowhere.
  int64_t PositionOfKey(int64_t key);
  // The keys of all rows in their order. Error 3251 where rows were read once and kept.
  std::vector<int64_t> Keys();
  void EachKey(const std::function<void(int64_t key)>& use);
  // Gives each row, in their order, another place, from 0. Requery brings them in the query's order
  // again. Error 3251 as above. REQUIRES: each place once, and all of them.
  void Arrange(const std::vector<uint32_t>& places);
  // From now on the recordset holds those rows of its query alone that have these keys, in the
  // order given; the caller vouches that the query gives them. Requery brings those of them that
  // the query still gives, in its order. HoldMore adds rows behind the last; the position stays.
  // For lists that grow while they are looked at. Error 3251 as above. REQUIRES: the source is no
  // table as such.
  void Hold(const std::vector<int64_t>& keys);
  void HoldMore(const std::vector<int64_t>& keys);

  // Searches from the current row on for "column = literal" (also <>, <, >, <=, >=, Like), with
  // the column plain or in [brackets]; moves to the first row that holds, or to the end. On an
  // indexed column of a whole table it costs a lookup.
  void Find(std::string_view criteria);

  int FieldCount();
  std::string FieldName(int index);  // from 0
  bool HasField(std::string_view name);
  // The current row's value, by name without regard to case, or by place from 0. Error 3021
  // without a current row, 3265 for a name that is none. During AddNew the values set so far.
  Value Field(std::string_view name);
  Value Field(int index);

  // AddNew begins a row, SetField fills it (or changes the current row), Update writes it and makes
  // it the current row, its key readable at once. CancelUpdate drops what was set, and so does a
  // SetField or Update that fails: the next row begins empty, and the current row is as before.
  void AddNew();
  void SetField(std::string_view name, Value value);
  // The same with what PackAhead made of the value, and TrigramsAhead of the texts that AddNew's
  // row is given (ahead.h). REQUIRES: it was made of these.
  void SetPacked(std::string_view name, Value value, std::string packed);
  void SetTrigrams(std::vector<uint32_t> trigrams);
  void Update();
  void CancelUpdate();
  void Delete();  // the current row

  class Impl;

 private:
  std::unique_ptr<Impl> impl_;
};

}  // namespace tarnwick::jet
