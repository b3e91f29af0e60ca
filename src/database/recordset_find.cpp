// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Find: the next row that a condition on one column holds for.
#include <algorithm>

#include "database/engine/functions.h"
#include "database/recordset_impl.h"

namespace tarnwick::jet {

void Recordset::Impl::Find(std::string_view text) {
  FinishEdit();
  FindCriteria criteria = ReadCriteria(text, connection_->Lifted());
  if (place_ == Place::kEnd) return;
  bool inTable = IsKeyed() && program_->plan.wholeTable;
  const FieldInfo& field = Fields()[FieldIndex(criteria.field)];
  if (inTable && !field.column.empty()) {
    criteria.field = field.column;
    FindInTable(criteria, field.kind);
  } else {
    FindInRows(criteria);
  }
}

void Recordset::Impl::FindInTable(const FindCriteria& criteria, ColumnKind kind) {
  std::optional<int64_t> from;
  if (place_ == Place::kKey) from = key_;
  if (place_ == Place::kIndex) {
    if (index_ >= keys_.Size()) {
      place_ = Place::kEnd;
      return;
    }
    from = keys_[index_];
  }
  std::string column = QuotedName(criteria.field);
  if (kind == ColumnKind::kLongText) {
    column = "(tw_long_text(" + column + ") COLLATE " + kTextCollation + ")";
  }
  if (kind == ColumnKind::kBytes) column = "tw_bytes(" + column + ")";
  std::string sql = "SELECT _rowid_ FROM main." + QuotedName(program_->plan.base) + " WHERE ";
  sql += criteria.op == "LIKE" ? "tw_like(" + column + ", ?1)" : column + " " + criteria.op + " ?1";
  if (from) sql += " AND _rowid_ >= ?2";
  sql += " ORDER BY _rowid_ LIMIT 1";
  std::shared_ptr<Statement> find = connection_->session.Own(sql);
  StatementUse use(*find);
  find->BindValue(1, criteria.value);
  if (from) find->Bind(2, *from);
  deleted_ = false;
  if (!connection_->session.StepRead(*find)) {
    place_ = Place::kEnd;
    return;
  }
  place_ = Place::kKey;
  key_ = find->Int(0);
  seenVersion_ = connection_->session.Version();
}

void Recordset::Impl::FindInRows(const FindCriteria& criteria) {
  size_t field = FieldIndex(criteria.field);
  for (int64_t index = std::max<int64_t>(Index(), 0); index < Count(); index++) {
    PlaceAt(index);
    if (Holds(CurrentRow()[field], criteria)) return;
  }
  PlaceAt(Count());
}

}  // namespace tarnwick::jet
