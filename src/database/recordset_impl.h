// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What stands behind a Recordset. Internal to the database.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "database/connection_impl.h"
#include "database/recordset.h"
#include "database/row_keys.h"

namespace tarnwick::jet {

// What Find looks for: a field, an operator ("=", "<>", ..., "LIKE") and a value.
struct FindCriteria {
  std::string field;
  std::string op;
  Value value;
};
// Throws Error when the text is no such criteria.
FindCriteria ReadCriteria(std::string_view text, LiftedSql& scratch);
// The test itself, for rows that are at hand.
bool Holds(const Value& value, const FindCriteria& criteria);

[[noreturn]] void NoCurrentRow();

class Recordset::Impl final : public ConnectionUser {
 public:
  Impl() = default;
  ~Impl() override;
  Impl(const Impl&) = delete;
  Impl& operator=(const Impl&) = delete;

  void Open(std::string_view source, Connection& connection, LockType lock, CommandType command);
  void Close();
  void ConnectionCloses() override;
  bool IsOpen() const { return connection_ != nullptr; }
  void RequireOpen() const;
  void Requery();

  bool Eof();
  bool Bof();
  int64_t Count();
  void MoveFirst();
  void MoveLast();
  void MoveNext();
  void MovePrevious();
  int64_t Position();
  void SetPosition(int64_t position);
  int64_t PositionOfKey(int64_t key);
  void Find(std::string_view criteria);

  std::vector<int64_t> Keys();
  void EachKey(const std::function<void(int64_t key)>& use);
  void Arrange(const std::vector<uint32_t>& places);
  void Hold(const std::vector<int64_t>& keys);
  void HoldMore(const std::vector<int64_t>& keys);

  int FieldCount();
  std::string FieldName(int index);
  bool HasField(std::string_view name);
  Value Field(std::string_view name);
  Value Field(int index);

  void AddNew();
  void SetField(std::string_view name, Value value);
  void SetPacked(std::string_view name, Value value, std::string packed);
  void SetTrigrams(std::vector<uint32_t> trigrams);
  void Update();
  void CancelUpdate();
  void Delete();

 private:
  // Where the recordset stands. Keys are only fetched when a place needs them: kFirst and kEnd
  // need none, and a row that was found or added is known by its key.
  enum class Place { kBefore, kFirst, kIndex, kKey, kEnd };
  enum class Edit { kNone, kAdd, kChange };
  class DropOnFailure;

  using Row = std::vector<Value>;
  struct CachedRow {
    int64_t key = 0;
    uint64_t version = 0;  // 0: empty
    Row values;
  };

  bool IsKeyed() const { return program_->plan.keyed; }
  const std::vector<FieldInfo>& Fields() { return connection_->Fields(*program_); }
  size_t FieldIndex(std::string_view name);

  void ReadAll();
  void FetchKeys();
  void AddKey(int64_t key);
  void KeepHeld();
  void RequireKeyed();
  bool FetchFromColumnCache();
  bool CountFromColumnCache();
  bool IsEmpty();
  std::optional<int64_t> FirstKey();
  size_t RowCount();
  // The present place as an index of the fetched rows: -1 before the first, the count at the end.
  int64_t Index();
  void PlaceAt(int64_t index);
  void FinishEdit();

  std::optional<int64_t> CurrentKey();
  const Row& CurrentRow();
  const Row& ReadRow(int64_t key);

  void FindInTable(const FindCriteria& criteria, ColumnKind kind);
  void FindInRows(const FindCriteria& criteria);
  void RequireUpdatable();
  void BindEdited(Statement& statement, int parameter);
  Statement& Insertion();
  void InsertRow();
  void HandToIndex();
  void ChangeRow();
  void BeginEdit(Edit edit);
  void DropEdit() noexcept;

  Connection::Impl* connection_ = nullptr;
  std::shared_ptr<Program> program_;
  std::vector<Value> literals_;
  LockType lock_ = LockType::kReadOnly;

  bool fetched_ = false;
  uint64_t fetchedVersion_ = 0;                     // of the connection, when the keys were fetched
  RowKeys keys_;                                    // keyed
  std::optional<RowKeys> held_;                     // the only rows that are wanted
  std::vector<Row> rows_;                           // not keyed
  std::optional<std::optional<int64_t>> firstKey_;  // of a whole table, before keys are fetched

  Place place_ = Place::kFirst;
  size_t index_ = 0;
  int64_t key_ = 0;
  // kKey, kIndex: the row was seen under this number of the connection, so it is there still.
  uint64_t seenVersion_ = 0;
  // The row at index_ was deleted; what is at index_ now is the one behind it.
  bool deleted_ = false;

  Edit edit_ = Edit::kNone;
  // By field: what was set, and how it is stored, once that is known.
  std::vector<std::optional<Value>> edited_;
  std::vector<std::optional<std::string>> packed_;
  std::optional<std::vector<uint32_t>> trigrams_;  // of the row to be added

  CachedRow wide_;  // the last row read, whatever its size
  std::vector<CachedRow> narrow_;
  size_t nextNarrow_ = 0;
};

}  // namespace tarnwick::jet
