// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Adding, changing and deleting rows of a recordset.
#include "database/recordset_impl.h"
#include "platform/utf8.h"

namespace tarnwick::jet {

// Where a step of an edit fails, all of the edit goes: a recordset that lives on would write what
// is left of it with its next row.
class Recordset::Impl::DropOnFailure {
 public:
  explicit DropOnFailure(Impl& recordset) : recordset_(&recordset) {}
  ~DropOnFailure() {
    if (recordset_ != nullptr) recordset_->DropEdit();
  }
  DropOnFailure(const DropOnFailure&) = delete;
  DropOnFailure& operator=(const DropOnFailure&) = delete;
  void Keep() { recordset_ = nullptr; }

 private:
  Impl* recordset_;
};

void Recordset::Impl::RequireUpdatable() {
  RequireOpen();
  if (lock_ == LockType::kReadOnly || !IsKeyed()) {
    throw Error(ErrorNumber::kNotUpdatable,
                "Current Recordset does not support updating. This may be a limitation of the "
                "provider, or of the selected locktype.");
  }
}

void Recordset::Impl::AddNew() {
  FinishEdit();
  RequireUpdatable();
  BeginEdit(Edit::kAdd);
}

void Recordset::Impl::SetField(std::string_view name, Value value) {
  RequireUpdatable();
  DropOnFailure drop(*this);
  size_t field = FieldIndex(name);
  if (Fields()[field].column.empty()) {
    throw Error(ErrorNumber::kNotUpdatable, "Field cannot be updated: " + std::string(name));
  }
  if (edit_ == Edit::kNone) {
    if (!CurrentKey()) NoCurrentRow();
    BeginEdit(Edit::kChange);
  }
  edited_[field] = std::move(value);
  packed_[field].reset();
  drop.Keep();
}

void Recordset::Impl::SetPacked(std::string_view name, Value value, std::string packed) {
  SetField(name, std::move(value));
  packed_[FieldIndex(name)] = std::move(packed);
}

void Recordset::Impl::SetTrigrams(std::vector<uint32_t> trigrams) {
  trigrams_ = std::move(trigrams);
}

void Recordset::Impl::BeginEdit(Edit edit) {
  edited_.assign(Fields().size(), std::nullopt);
  packed_.assign(Fields().size(), std::nullopt);
  trigrams_.reset();
  edit_ = edit;
}

void Recordset::Impl::Update() {
  RequireOpen();
  DropOnFailure drop(*this);
  if (edit_ == Edit::kAdd) {
    InsertRow();
  } else if (edit_ == Edit::kChange) {
    ChangeRow();
  }
}

// What is bound lasts until the edit ends.
void Recordset::Impl::BindEdited(Statement& statement, int parameter) {
  const std::vector<FieldInfo>& fields = Fields();
  for (size_t i = 0; i < fields.size(); i++) {
    if (edited_[i]) statement.BindStored(++parameter, *edited_[i], fields[i].kind, packed_[i]);
  }
}

// The statement that adds a row with the fields that were set. Rows of one kind come one after the
// other: the last one's is kept with the program.
Statement& Recordset::Impl::Insertion() {
  const std::vector<FieldInfo>& fields = Fields();
  Program::Insertion& last = program_->insertion;
  bool isSame = last.statement != nullptr;
  for (size_t i = 0; i < fields.size() && isSame; i++) {
    isSame = last.isSet[i] == edited_[i].has_value();
  }
  if (isSame) return *last.statement;
  std::string columns;
  std::string values;
  int parameters = 0;
  last.statement.reset();
  last.isSet.assign(fields.size(), false);
  for (size_t i = 0; i < fields.size(); i++) {
    if (!edited_[i]) continue;
    last.isSet[i] = true;
    columns += (parameters == 0 ? "" : ", ") + QuotedName(fields[i].column);
    values += (parameters == 0 ? "?" : ", ?") + std::to_string(parameters + 1);
    parameters++;
  }
  std::string sql = "INSERT INTO main." + QuotedName(program_->plan.base);
  sql += parameters == 0 ? " DEFAULT VALUES" : " (" + columns + ") VALUES (" + values + ")";
  last.statement = connection_->session.Own(sql);
  return *last.statement;
}

void Recordset::Impl::InsertRow() {
  const std::vector<FieldInfo>& fields = Fields();
  for (size_t i = 0; i < fields.size(); i++) {
    if (edited_[i] && fields[i].isKey) connection_->BeforeRewriting(program_->plan.base);
  }
  Statement& insert = Insertion();
  BindEdited(insert, 0);
  connection_->session.RunWrite(insert);
  key_ = connection_->session.Engine().LastRowId();
  HandToIndex();
  deleted_ = false;
  firstKey_.reset();
  place_ = Place::kKey;
  seenVersion_ = connection_->session.Version();
  if (fetched_) keys_.Add(key_);
}

// The texts of the row that was just added, while they are at hand.
void Recordset::Impl::HandToIndex() {
  TextIndex* index = connection_->Index();
  if (index == nullptr || !index->IsNext(program_->plan.base, key_)) return;
  if (trigrams_) return index->HandOver(key_, *trigrams_);
  const std::vector<FieldInfo>& fields = Fields();
  std::vector<std::string_view> texts;
  for (const std::string& column : index->Columns()) {
    for (size_t i = 0; i < fields.size(); i++) {
      if (!edited_[i] || !platform::SameWord(fields[i].column, column)) continue;
      if (const auto* text = std::get_if<std::string>(&edited_[i]->Data())) texts.push_back(*text);
      break;
    }
  }
  // What the file makes of no text, or of a number, only the file knows.
  if (texts.size() == index->Columns().size()) index->HandOver(key_, texts);
}

void Recordset::Impl::ChangeRow() {
  std::optional<int64_t> key = CurrentKey();
  if (!key) NoCurrentRow();
  const std::vector<FieldInfo>& fields = Fields();
  std::string sql = "UPDATE main." + QuotedName(program_->plan.base) + " SET ";
  int parameter = 1;
  for (size_t i = 0; i < fields.size(); i++) {
    if (!edited_[i]) continue;
    if (parameter > 1) sql += ", ";
    sql += QuotedName(fields[i].column) + " = ?" + std::to_string(++parameter);
  }
  sql += " WHERE _rowid_ = ?1";
  std::shared_ptr<Statement> update = connection_->session.Own(sql);
  update->Bind(1, *key);
  BindEdited(*update, 1);
  bool known = place_ == Place::kKey && seenVersion_ == connection_->session.Version();
  if (connection_->session.RunWrite(*update) == 0) NoCurrentRow();
  if (known) seenVersion_ = connection_->session.Version();
}

void Recordset::Impl::CancelUpdate() {
  RequireOpen();
  DropEdit();
}

void Recordset::Impl::DropEdit() noexcept {
  edit_ = Edit::kNone;
  edited_.clear();
  packed_.clear();
}

void Recordset::Impl::Delete() {
  RequireUpdatable();
  CancelUpdate();
  std::optional<int64_t> key = CurrentKey();
  if (!key) NoCurrentRow();
  int64_t index = Index();
  std::shared_ptr<Statement> statement = connection_->session.Own(
      "DELETE FROM main." + QuotedName(program_->plan.base) + " WHERE _rowid_ = ?1");
  statement->Bind(1, *key);
  connection_->session.RunWrite(*statement);
  keys_.Erase(static_cast<size_t>(index));
  place_ = Place::kIndex;
  index_ = static_cast<size_t>(index);
  deleted_ = true;
}

}  // namespace tarnwick::jet
