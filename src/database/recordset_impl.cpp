// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/recordset_impl.h"

#include <algorithm>
#include <cassert>

#include "database/column_cache_reader.h"
#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

// Rows of at most this size are kept, so that a list painted row by row reads each one once.
constexpr size_t kNarrowRow = 4096;
constexpr size_t kNarrowRows = 64;

size_t SizeOf(const Value& value) {
  if (auto* text = std::get_if<std::string>(&value.Data())) return text->size();
  if (auto* bytes = std::get_if<Bytes>(&value.Data())) return bytes->data.size();
  return 0;
}

}  // namespace

void NoCurrentRow() {
  throw Error(ErrorNumber::kNoCurrentRow,
              "Either BOF or EOF is True, or the current record has been deleted. Requested "
              "operation requires a current record.");
}

Recordset::Impl::~Impl() {
  if (connection_ != nullptr) connection_->RemoveUser(this);
}

void Recordset::Impl::RequireOpen() const {
  if (connection_ == nullptr) {
    throw Error(ErrorNumber::kObjectClosed, "Operation is not allowed when the object is closed.");
  }
}

void Recordset::Impl::Open(std::string_view source, Connection& connection, LockType lock,
                           CommandType command) {
  if (connection_ != nullptr) {
    throw Error(ErrorNumber::kObjectOpen, "Operation is not allowed when the object is open.");
  }
  Connection::Impl& opened = connection.GetImpl();
  program_ =
      command == CommandType::kTable ? opened.TranslateTable(source) : opened.Translate(source);
  if (!program_->isRead) RefuseSql("a recordset needs a statement that gives rows");
  literals_ = std::move(opened.Lifted().literals);
  lock_ = lock;
  connection_ = &opened;
  try {
    Requery();
    if (!program_->file) Fields();
  } catch (...) {
    connection_ = nullptr;
    program_.reset();
    throw;
  }
  connection_->AddUser(this);
}

void Recordset::Impl::Close() {
  RequireOpen();
  connection_->RemoveUser(this);
  ConnectionCloses();
}

void Recordset::Impl::ConnectionCloses() {
  connection_ = nullptr;
  program_.reset();
  literals_.clear();
  keys_.Clear();
  held_.reset();
  rows_ = {};
  wide_ = {};
  narrow_ = {};
  edit_ = Edit::kNone;
  edited_.clear();
}

void Recordset::Impl::Requery() {
  CancelUpdate();
  fetched_ = false;
  keys_.Clear();
  rows_.clear();
  firstKey_.reset();
  place_ = Place::kFirst;
  deleted_ = false;
  wide_ = {};
  narrow_.clear();
  nextNarrow_ = 0;
  // Rows that are kept are those of now, not of the first look at them.
  if (!IsKeyed()) ReadAll();
}

void Recordset::Impl::ReadAll() {
  if (CountFromColumnCache()) return;
  std::optional<OtherFile> other;
  if (program_->file)
    other.emplace(connection_->session, literals_[*program_->file].AsText(), false);
  struct Drop {
    Program& program;
    ~Drop() {
      if (program.file) program.all.statement.reset();
    }
  } drop{*program_};
  Fields();
  Statement& all = connection_->Ready(connection_->Reading(*program_, literals_), literals_);
  StatementUse use(all);
  while (connection_->session.StepRead(all)) {
    Row row;
    row.reserve(static_cast<size_t>(all.ColumnCount()));
    for (int i = 0; i < all.ColumnCount(); i++) row.push_back(all.ColumnValue(i));
    rows_.push_back(std::move(row));
  }
  fetched_ = true;
}

void Recordset::Impl::FetchKeys() {
  if (fetched_) return;
  int64_t most = -1;
  if (program_->plan.top) most = literals_[*program_->plan.top].AsInt();
  keys_.Clear();
  if (!FetchFromColumnCache()) {
    Statement& keys = connection_->Ready(connection_->Reading(*program_, literals_), literals_);
    StatementUse use(keys);
    while (static_cast<int64_t>(keys_.Size()) != most && connection_->session.StepRead(keys)) {
      AddKey(keys.Int(0));
    }
  }
  if (held_) KeepHeld();
  fetched_ = true;
  fetchedVersion_ = connection_->session.Version();
}

// Of the rows that the query gives, those that are wanted.
void Recordset::Impl::KeepHeld() {
  std::vector<int64_t> wanted(held_->Size());
  for (size_t i = 0; i < wanted.size(); i++) wanted[i] = (*held_)[i];
  std::sort(wanted.begin(), wanted.end());
  RowKeys kept;
  for (size_t i = 0; i < keys_.Size(); i++) {
    if (std::binary_search(wanted.begin(), wanted.end(), keys_[i])) kept.Add(keys_[i]);
  }
  keys_ = std::move(kept);
}

void Recordset::Impl::RequireKeyed() {
  FinishEdit();
  if (IsKeyed()) return;
  throw Error(ErrorNumber::kNotUpdatable,
              "Current Recordset does not support this. Its rows were read once and kept.");
}

std::vector<int64_t> Recordset::Impl::Keys() {
  RequireKeyed();
  std::vector<int64_t> keys;
  keys.reserve(RowCount());
  EachKey([&](int64_t key) { keys.push_back(key); });
  return keys;
}

void Recordset::Impl::EachKey(const std::function<void(int64_t key)>& use) {
  RequireKeyed();
  FetchKeys();
  for (size_t i = 0; i < keys_.Size(); i++) use(keys_[i]);
}

void Recordset::Impl::Arrange(const std::vector<uint32_t>& places) {
  RequireKeyed();
  FetchKeys();
  assert(places.size() == keys_.Size());
  keys_.Arrange(places);
  place_ = Place::kFirst;
  deleted_ = false;
}

void Recordset::Impl::Hold(const std::vector<int64_t>& keys) {
  RequireKeyed();
  held_.emplace();
  held_->Reserve(keys.size());
  keys_.Clear();
  keys_.Reserve(keys.size());
  place_ = Place::kFirst;
  deleted_ = false;
  fetched_ = true;
  fetchedVersion_ = connection_->session.Version();
  HoldMore(keys);
}

void Recordset::Impl::HoldMore(const std::vector<int64_t>& keys) {
  RequireKeyed();
  FetchKeys();
  if (!held_) held_ = keys_;
  for (int64_t key : keys) {
    held_->Add(key);
    keys_.Add(key);
  }
}

// The key is the last thing that is sorted by, so equal ones are neighbours.
void Recordset::Impl::AddKey(int64_t key) {
  bool again = program_->plan.repeatsKeys && !keys_.IsEmpty() && keys_.Back() == key;
  if (!again) keys_.Add(key);
}

bool Recordset::Impl::FetchFromColumnCache() {
  if (!program_->plan.columnCache || connection_->GetColumnCache() == nullptr) return false;
  std::optional<std::vector<uint32_t>> keys =
      ColumnCacheReader(*connection_, *program_, literals_).Keys();
  if (keys) keys_.Assign(std::move(*keys));
  return keys.has_value();
}

bool Recordset::Impl::CountFromColumnCache() {
  if (!program_->plan.columnCache || connection_->GetColumnCache() == nullptr) return false;
  std::optional<std::vector<Row>> counts =
      ColumnCacheReader(*connection_, *program_, literals_).Counts();
  if (!counts) return false;
  rows_ = std::move(*counts);
  fetched_ = true;
  return true;
}

std::optional<int64_t> Recordset::Impl::FirstKey() {
  if (!program_->plan.wholeTable) FetchKeys();
  if (fetched_) return keys_.IsEmpty() ? std::nullopt : std::optional<int64_t>(keys_[0]);
  if (!firstKey_) {
    std::shared_ptr<Statement> first =
        connection_->session.Own("SELECT _rowid_ FROM main." + QuotedName(program_->plan.base) +
                                 " ORDER BY _rowid_ LIMIT 1");
    StatementUse use(*first);
    firstKey_.emplace();
    if (connection_->session.StepRead(*first)) *firstKey_ = first->Int(0);
  }
  return *firstKey_;
}

bool Recordset::Impl::IsEmpty() {
  if (!IsKeyed()) return rows_.empty();
  return !FirstKey();
}

size_t Recordset::Impl::RowCount() {
  if (IsKeyed()) FetchKeys();
  return IsKeyed() ? keys_.Size() : rows_.size();
}

int64_t Recordset::Impl::Count() {
  return static_cast<int64_t>(RowCount());
}

int64_t Recordset::Impl::Index() {
  size_t count = RowCount();
  switch (place_) {
    case Place::kBefore:
      return -1;
    case Place::kFirst:
      return 0;
    case Place::kIndex:
      return static_cast<int64_t>(index_);
    case Place::kEnd:
      return static_cast<int64_t>(count);
    case Place::kKey:
      break;
  }
  index_ = keys_.Find(key_, program_->plan.wholeTable);
  // A row that came after the keys were fetched stands behind them.
  if (index_ == keys_.Size()) keys_.Add(key_);
  place_ = Place::kIndex;
  return static_cast<int64_t>(index_);
}

void Recordset::Impl::PlaceAt(int64_t index) {
  deleted_ = false;
  if (index < 0) {
    place_ = Place::kBefore;
  } else if (static_cast<size_t>(index) >= RowCount()) {
    place_ = Place::kEnd;
  } else {
    place_ = Place::kIndex;
    index_ = static_cast<size_t>(index);
    seenVersion_ = 0;
  }
}

// Leaving a row writes what was set in it.
void Recordset::Impl::FinishEdit() {
  RequireOpen();
  if (edit_ != Edit::kNone) Update();
}

bool Recordset::Impl::Eof() {
  RequireOpen();
  if (edit_ == Edit::kAdd) return false;
  return place_ == Place::kEnd || (place_ <= Place::kFirst && IsEmpty());
}

bool Recordset::Impl::Bof() {
  RequireOpen();
  if (edit_ == Edit::kAdd) return false;
  return place_ == Place::kBefore ||
         ((place_ == Place::kFirst || place_ == Place::kEnd) && IsEmpty());
}

void Recordset::Impl::MoveFirst() {
  FinishEdit();
  place_ = Place::kFirst;
  deleted_ = false;
}

void Recordset::Impl::MoveLast() {
  FinishEdit();
  int64_t count = Count();
  if (count == 0) {
    MoveFirst();
  } else {
    PlaceAt(count - 1);
  }
}

void Recordset::Impl::MoveNext() {
  FinishEdit();
  int64_t index = Index();
  if (index >= Count() && !deleted_) NoCurrentRow();
  PlaceAt(deleted_ ? index : index + 1);
}

void Recordset::Impl::MovePrevious() {
  FinishEdit();
  int64_t index = Index();
  if ((index < 0 || Count() == 0) && !deleted_) NoCurrentRow();
  PlaceAt(index - 1);
}

int64_t Recordset::Impl::Position() {
  RequireOpen();
  int64_t index = Index();
  return index < Count() && !deleted_ ? index + 1 : 0;
}

void Recordset::Impl::SetPosition(int64_t position) {
  FinishEdit();
  if (position < 1 || position > Count()) NoCurrentRow();
  PlaceAt(position - 1);
}

int64_t Recordset::Impl::PositionOfKey(int64_t key) {
  FinishEdit();
  if (!IsKeyed()) return 0;
  Count();  // the keys may not have been fetched yet
  size_t index = keys_.Find(key, program_->plan.wholeTable);
  return index == keys_.Size() ? 0 : static_cast<int64_t>(index) + 1;
}

int Recordset::Impl::FieldCount() {
  RequireOpen();
  return static_cast<int>(Fields().size());
}

std::string Recordset::Impl::FieldName(int index) {
  RequireOpen();
  if (index < 0 || index >= FieldCount()) {
    throw Error(ErrorNumber::kNoSuchItem, "No such field: " + std::to_string(index));
  }
  return Fields()[static_cast<size_t>(index)].name;
}

bool Recordset::Impl::HasField(std::string_view name) {
  RequireOpen();
  const std::vector<FieldInfo>& fields = Fields();
  return std::any_of(fields.begin(), fields.end(),
                     [&](const FieldInfo& field) { return platform::SameWord(field.name, name); });
}

size_t Recordset::Impl::FieldIndex(std::string_view name) {
  const std::vector<FieldInfo>& fields = Fields();
  for (size_t i = 0; i < fields.size(); i++) {
    if (fields[i].name == name) return i;
  }
  for (size_t i = 0; i < fields.size(); i++) {
    if (platform::SameWord(fields[i].name, name)) return i;
  }
  throw Error(ErrorNumber::kNoSuchItem,
              "Item cannot be found in the collection corresponding to the requested name: " +
                  std::string(name));
}

Value Recordset::Impl::Field(std::string_view name) {
  RequireOpen();
  return Field(static_cast<int>(FieldIndex(name)));
}

Value Recordset::Impl::Field(int index) {
  FieldName(index);
  auto field = static_cast<size_t>(index);
  if (edit_ != Edit::kNone && edited_[field]) return *edited_[field];
  if (edit_ == Edit::kAdd) return {};
  if (Fields()[field].isKey && !deleted_) {
    // Nothing was written since: the row is there, whatever it holds.
    if (place_ == Place::kKey && seenVersion_ == connection_->session.Version()) return key_;
    if (place_ == Place::kIndex && index_ < keys_.Size() &&
        fetchedVersion_ == connection_->session.Version()) {
      return keys_[index_];
    }
  }
  return CurrentRow()[field];
}

std::optional<int64_t> Recordset::Impl::CurrentKey() {
  if (deleted_) return std::nullopt;
  switch (place_) {
    case Place::kFirst:
      return FirstKey();
    case Place::kIndex:
      return keys_[index_];
    case Place::kKey:
      return key_;
    default:
      return std::nullopt;
  }
}

const Recordset::Impl::Row& Recordset::Impl::CurrentRow() {
  if (deleted_) {
    wide_ = {};
    wide_.values.resize(Fields().size());
    return wide_.values;
  }
  if (!IsKeyed()) {
    int64_t index = Index();
    if (index < 0 || index >= Count()) NoCurrentRow();
    return rows_[static_cast<size_t>(index)];
  }
  std::optional<int64_t> key = CurrentKey();
  if (!key) NoCurrentRow();
  return ReadRow(*key);
}

const Recordset::Impl::Row& Recordset::Impl::ReadRow(int64_t key) {
  uint64_t version = connection_->session.Version();
  if (wide_.version == version && wide_.key == key) return wide_.values;
  for (const CachedRow& row : narrow_) {
    if (row.version == version && row.key == key) return row.values;
  }
  Statement& statement = connection_->Ready(program_->row, literals_);
  StatementUse use(statement);
  statement.Bind(kKeyParameter, key);
  Row values(Fields().size());
  size_t size = 0;
  if (connection_->session.StepRead(statement)) {
    for (size_t i = 0; i < values.size(); i++) {
      values[i] = statement.ColumnValue(static_cast<int>(i));
      size += SizeOf(values[i]);
    }
  }
  CachedRow* cached = &wide_;
  if (size <= kNarrowRow) {
    if (narrow_.size() < kNarrowRows) narrow_.emplace_back();
    cached = &narrow_[nextNarrow_];
    nextNarrow_ = (nextNarrow_ + 1) % kNarrowRows;
  }
  *cached = {key, version, std::move(values)};
  return cached->values;
}

}  // namespace tarnwick::jet
