// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/engine/engine.h"

#include <sqlite3.h>

#include <cassert>
#include <climits>
#include <type_traits>
#include <utility>

#include "database/engine/file_uri.h"
#include "database/engine/functions.h"
#include "database/engine/packing.h"
#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::jet {

namespace {

constexpr char kCipher[] = "aegis";
// Passes and kilobytes of Argon2id; embedded in every file, do not change.
constexpr std::pair<const char*, int> kKeyDerivation[] = {
    {"tcost", 1}, {"default:tcost", 1}, {"mcost", 64}, {"default:mcost", 64}};
constexpr int kAegis256 = 4;
// A second process is told at once; the wait only spans a file that is just being closed.
constexpr int kBusyMilliseconds = 100;

int LengthOf(std::string_view data) {
  if (data.size() > INT_MAX) throw Error(SQLITE_TOOBIG, sqlite3_errstr(SQLITE_TOOBIG));
  return static_cast<int>(data.size());
}

}  // namespace

ColumnKind KindOfDeclared(std::string_view type) {
  if (type == "DATETIME") return ColumnKind::kDate;
  if (type == "LONGTEXT") return ColumnKind::kLongText;
  if (type == "BLOB") return ColumnKind::kBytes;
  return ColumnKind::kAny;
}

StoredType PassedRow::TypeOf(int place) const {
  return static_cast<StoredType>(sqlite3_value_type(values_[place]));
}

int64_t PassedRow::Int(int place) const {
  return sqlite3_value_int64(values_[place]);
}

std::string_view PassedRow::Text(int place) const {
  const void* data = sqlite3_value_text(values_[place]);
  int size = sqlite3_value_bytes(values_[place]);
  if (data == nullptr) return {};
  return {static_cast<const char*>(data), static_cast<size_t>(size)};
}

Statement::Statement(Database& database, std::string_view sql, bool readsKeys)
    : database_(&database) {
  // Of the engine's functions that make tables of themselves the one that lists keys is of use.
  unsigned flags = SQLITE_PREPARE_PERSISTENT | (readsKeys ? 0U : SQLITE_PREPARE_NO_VTAB);
  const char* tail = nullptr;
  int code =
      sqlite3_prepare_v3(database.Handle(), sql.data(), LengthOf(sql), flags, &handle_, &tail);
  if (code != SQLITE_OK) database.Fail(code);
  if (handle_ == nullptr) throw Error(SQLITE_ERROR, "empty statement");
  database.statementsPrepared_++;
  int count = sqlite3_column_count(handle_);
  kinds_.reserve(static_cast<size_t>(count));
  for (int i = 0; i < count; i++) {
    const char* declared = sqlite3_column_decltype(handle_, i);
    kinds_.push_back(declared != nullptr ? KindOfDeclared(declared) : ColumnKind::kAny);
  }
}

Statement::~Statement() {
  sqlite3_finalize(handle_);
}

void Statement::BindNull(int index) {
  int code = sqlite3_bind_null(handle_, index);
  if (code != SQLITE_OK) database_->Fail(code);
}

void Statement::Bind(int index, int64_t value) {
  int code = sqlite3_bind_int64(handle_, index, value);
  if (code != SQLITE_OK) database_->Fail(code);
}

void Statement::Bind(int index, double value) {
  int code = sqlite3_bind_double(handle_, index, value);
  if (code != SQLITE_OK) database_->Fail(code);
}

void Statement::BindText(int index, std::string_view text) {
  int code;
  if (platform::IsValidUtf8(text)) {
    code = sqlite3_bind_text64(handle_, index, text.empty() ? "" : text.data(), text.size(),
                               SQLITE_STATIC, SQLITE_UTF8);
  } else {
    std::string mended = platform::MendUtf8(text);
    code = sqlite3_bind_text64(handle_, index, mended.data(), mended.size(), SQLITE_TRANSIENT,
                               SQLITE_UTF8);
  }
  if (code != SQLITE_OK) database_->Fail(code);
}

void Statement::BindBytes(int index, std::string_view bytes) {
  int code = sqlite3_bind_blob64(handle_, index, bytes.empty() ? "" : bytes.data(), bytes.size(),
                                 SQLITE_STATIC);
  if (code != SQLITE_OK) database_->Fail(code);
}

void Statement::BindValue(int index, const Value& value) {
  std::visit(
      [&](const auto& data) {
        using Data = std::decay_t<decltype(data)>;
        if constexpr (std::is_same_v<Data, std::monostate>) {
          BindNull(index);
        } else if constexpr (std::is_same_v<Data, std::string>) {
          BindText(index, data);
        } else if constexpr (std::is_same_v<Data, DateTime>) {
          Bind(index, data.Seconds());
        } else if constexpr (std::is_same_v<Data, Bytes>) {
          BindBytes(index, data.data);
        } else {
          Bind(index, data);
        }
      },
      value.Data());
}

void Statement::BindKeys(int index, const std::vector<int64_t>& keys) {
  if (keys.size() > INT_MAX) throw Error(SQLITE_TOOBIG, sqlite3_errstr(SQLITE_TOOBIG));
  int code = sqlite3_carray_bind(handle_, index, const_cast<int64_t*>(keys.data()),
                                 static_cast<int>(keys.size()), SQLITE_CARRAY_INT64, SQLITE_STATIC);
  if (code != SQLITE_OK) database_->Fail(code);
}

void Statement::BindTaker(int index, const RowTaker& taker) {
  int code =
      sqlite3_bind_pointer(handle_, index, const_cast<RowTaker*>(&taker), kTakerType, nullptr);
  if (code != SQLITE_OK) database_->Fail(code);
}

void Statement::BindStored(int index, const Value& value, ColumnKind kind,
                           std::optional<std::string>& packed) {
  std::string_view plain;
  if (auto* text = std::get_if<std::string>(&value.Data())) plain = *text;
  if (auto* bytes = std::get_if<Bytes>(&value.Data())) plain = bytes->data;
  bool isLong = kind == ColumnKind::kLongText || kind == ColumnKind::kBytes;
  if (!isLong || plain.empty()) return BindValue(index, value);
  bool isText = kind == ColumnKind::kLongText;
  assert(!packed || *packed == Pack(plain));
  if (!packed) {
    if (isText && !platform::IsValidUtf8(plain)) {
      packed = platform::MendUtf8(plain);
      plain = *packed;
    }
    std::string_view made = Pack(plain);
    if (made.empty()) return isText ? BindText(index, plain) : BindBytes(index, plain);
    packed = made;
  } else if (packed->empty()) {
    return isText ? BindText(index, plain) : BindBytes(index, plain);
  }
  const std::string& stored = *packed;
  if (isText) return BindBytes(index, stored);
  int code =
      sqlite3_bind_text64(handle_, index, stored.data(), stored.size(), SQLITE_STATIC, SQLITE_UTF8);
  if (code != SQLITE_OK) database_->Fail(code);
}

bool Statement::Step() {
  database_->stepsRun_++;
  int code = sqlite3_step(handle_);
  if (code == SQLITE_ROW) return true;
  if (code != SQLITE_DONE) {
    try {
      database_->Fail(code);
    } catch (...) {
      sqlite3_reset(handle_);
      throw;
    }
  }
  return false;
}

void Statement::Reset() noexcept {
  sqlite3_reset(handle_);
}

void Statement::Run() {
  StatementUse use(*this);
  while (Step()) {
  }
}

int Statement::ColumnCount() const {
  return static_cast<int>(kinds_.size());
}

std::string Statement::ColumnName(int column) const {
  const char* name = sqlite3_column_name(handle_, column);
  return name != nullptr ? name : "";
}

std::string Statement::OriginTable(int column) const {
  const char* name = sqlite3_column_table_name(handle_, column);
  return name != nullptr ? name : "";
}

std::string Statement::OriginColumn(int column) const {
  const char* name = sqlite3_column_origin_name(handle_, column);
  return name != nullptr ? name : "";
}

Statement::Type Statement::TypeOf(int column) const {
  static_assert(SQLITE_INTEGER == 1 && SQLITE_FLOAT == 2 && SQLITE_TEXT == 3 && SQLITE_BLOB == 4 &&
                SQLITE_NULL == 5);
  return static_cast<Type>(sqlite3_column_type(handle_, column));
}

int64_t Statement::Int(int column) const {
  return sqlite3_column_int64(handle_, column);
}

std::string_view Statement::Text(int column) const {
  const void* data = sqlite3_column_text(handle_, column);
  int size = sqlite3_column_bytes(handle_, column);
  if (data == nullptr) return {};
  return {static_cast<const char*>(data), static_cast<size_t>(size)};
}

std::string_view Statement::Stored(int column) const {
  const void* data = sqlite3_column_blob(handle_, column);
  int size = sqlite3_column_bytes(handle_, column);
  if (data == nullptr) return {};
  return {static_cast<const char*>(data), static_cast<size_t>(size)};
}

Value Statement::ColumnValue(int column) const {
  switch (sqlite3_column_type(handle_, column)) {
    case SQLITE_INTEGER:
      if (Kind(column) == ColumnKind::kDate) return DateTime::FromSeconds(Int(column));
      return Int(column);
    case SQLITE_FLOAT:
      return sqlite3_column_double(handle_, column);
    case SQLITE_TEXT:
      if (Kind(column) == ColumnKind::kBytes && IsPacked(Stored(column))) {
        return Bytes{Unpack(Stored(column))};
      }
      return std::string(Text(column));
    case SQLITE_BLOB:
      if (Kind(column) == ColumnKind::kLongText && IsPacked(Stored(column))) {
        return Unpack(Stored(column));
      }
      return Bytes{std::string(Stored(column))};
    default:
      return {};
  }
}

Database::Database(const std::string& path, std::string_view password, Mode mode) {
  int flags = SQLITE_OPEN_EXRESCODE | SQLITE_OPEN_URI;
  flags |= mode == Mode::kReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE;
  if (mode == Mode::kCreate) flags |= SQLITE_OPEN_CREATE;
  std::string uri = FileUri(path, mode == Mode::kReadOnly);
  int code = sqlite3_open_v2(uri.c_str(), &handle_, flags, nullptr);
  try {
    if (code != SQLITE_OK) Fail(code);
    sqlite3_busy_timeout(handle_, kBusyMilliseconds);
    // The schema of a file from elsewhere runs nothing of its own.
    for (int option : {SQLITE_DBCONFIG_TRUSTED_SCHEMA, SQLITE_DBCONFIG_ENABLE_TRIGGER,
                       SQLITE_DBCONFIG_ENABLE_VIEW, SQLITE_DBCONFIG_ENABLE_FKEY}) {
      sqlite3_db_config(handle_, option, 0, nullptr);
    }
    sqlite3_db_config(handle_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
    sqlite3mc_config(handle_, "cipher", sqlite3mc_cipher_index(kCipher));
    sqlite3mc_config_cipher(handle_, kCipher, "algorithm", kAegis256);
    // A password that gets here is the program's own and long known to whoever has the program:
    // making a guess dear would cost each opening a tenth of a second and protect nothing. (Of a
    // person's own password a key comes here, and is taken as it is.) "default:" lets files that
    // are attached later be opened alike.
    for (const auto& [parameter, cost] : kKeyDerivation) {
      sqlite3mc_config_cipher(handle_, kCipher, parameter, cost);
    }
    code = sqlite3_key(handle_, password.data(), LengthOf(password));
    if (code != SQLITE_OK) Fail(code);
    RegisterFunctions(handle_);
    HearOfWrites();
  } catch (...) {
    sqlite3_close_v2(handle_);
    throw;
  }
}

bool Database::HasLog(const std::string& path) {
  return platform::FileExists(path + "-wal") || platform::FileExists(path + "-journal");
}

Database::~Database() {
  sqlite3_close_v2(handle_);
}

void Database::Run(const char* sql) {
  int code = sqlite3_exec(handle_, sql, nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) Fail(code);
}

int64_t Database::Number(const char* sql) {
  Statement statement(*this, sql);
  return statement.Step() ? statement.Int(0) : 0;
}

void Database::Attach(const std::string& path, std::string_view password, const std::string& alias,
                      bool isWritten) {
  std::string uri = FileUri(path, !isWritten);
  Statement statement(*this, "ATTACH ?1 AS ?2 KEY ?3");
  statement.BindText(1, uri);
  statement.BindText(2, alias);
  statement.BindText(3, password);
  statement.Run();
}

void Database::Detach(const std::string& alias) {
  Statement statement(*this, "DETACH ?1");
  statement.BindText(1, alias);
  statement.Run();
}

bool Database::CopyInto(Database& target, const std::function<bool(int64_t, int64_t)>& look) {
  constexpr int kPagesAtOnce = 256;  // some milliseconds
  // The file is of no use before all of it is there, and is flushed then. Pages of another size
  // could not be taken over as they are.
  target.Run(("PRAGMA page_size = " + std::to_string(Number("PRAGMA page_size")) +
              "; PRAGMA synchronous = OFF; PRAGMA journal_mode = MEMORY;")
                 .c_str());
  sqlite3_backup* copy = sqlite3_backup_init(target.handle_, "main", handle_, "main");
  if (copy == nullptr) target.Fail(sqlite3_errcode(target.handle_));
  int code = SQLITE_OK;
  bool goesOn = true;
  while (code == SQLITE_OK && goesOn) {
    code = sqlite3_backup_step(copy, kPagesAtOnce);
    int64_t pages = sqlite3_backup_pagecount(copy);
    goesOn = look(pages - sqlite3_backup_remaining(copy), pages);
  }
  sqlite3_backup_finish(copy);
  if (code != SQLITE_OK && code != SQLITE_DONE) target.Fail(code);
  return goesOn;
}

bool Database::IsReadOnly() const {
  return sqlite3_db_readonly(handle_, "main") == 1;
}

bool Database::InTransaction() const {
  return sqlite3_get_autocommit(handle_) == 0;
}

int64_t Database::RunWrite(Statement& statement) {
  int64_t before = rowsSeen_;
  statement.Run();
  int64_t changed = sqlite3_changes64(handle_);
  // The engine tells of each row that is written, but not where it empties a whole table at once.
  if (changed > 0 && rowsSeen_ == before && writeHooks_.any) writeHooks_.any();
  return changed;
}

int64_t Database::LastRowId() const {
  return sqlite3_last_insert_rowid(handle_);
}

void Database::SetLastRowId(int64_t key) {
  sqlite3_set_last_insert_rowid(handle_, key);
}

int64_t Database::PagesVisited() const {
  int64_t pages = 0;
  for (int what : {SQLITE_DBSTATUS_CACHE_HIT, SQLITE_DBSTATUS_CACHE_MISS}) {
    int count = 0;
    int highest = 0;
    sqlite3_db_status(handle_, what, &count, &highest, 0);
    pages += count;
  }
  return pages;
}

void Database::SyncLog() {
  sqlite3_file* log = nullptr;
  int code = sqlite3_file_control(handle_, "main", SQLITE_FCNTL_JOURNAL_POINTER, &log);
  if (code != SQLITE_OK || log == nullptr || log->pMethods == nullptr) return;
  code = log->pMethods->xSync(log, SQLITE_SYNC_NORMAL);
  if (code != SQLITE_OK) throw Error(code & 0xff, sqlite3_errstr(code));
}

void Database::BeginLogSync() {
  const char* path = sqlite3_db_filename(handle_, "main");
  if (path != nullptr) platform::BeginFlush(std::string(path) + "-wal");
}

void Database::SetProgress(int count, std::function<bool()> handler) {
  progress_ = std::move(handler);
  progressSteps_ = count;
  Watch(true);
}

void Database::Watch(bool on) {
  if (!on || !progress_) {
    sqlite3_progress_handler(handle_, 0, nullptr, nullptr);
    return;
  }
  sqlite3_progress_handler(
      handle_, progressSteps_,
      [](void* self) -> int {
        // An exception must not pass through the engine; it stops the statement instead.
        try {
          return static_cast<Database*>(self)->progress_() ? 1 : 0;
        } catch (...) {
          return 1;
        }
      },
      this);
}

void Database::HearOfWrites() {
  sqlite3_update_hook(
      handle_,
      [](void* self, int, const char* schema, const char* table, sqlite3_int64 key) {
        static_cast<Database*>(self)->RowWritten(schema, table, key);
      },
      this);
  sqlite3_rollback_hook(
      handle_,
      [](void* self) {
        const WriteHooks& hooks = static_cast<Database*>(self)->writeHooks_;
        if (hooks.any) hooks.any();
      },
      this);
}

void Database::RowWritten(std::string_view schema, std::string_view table, int64_t key) noexcept {
  // What lies in temp is the database's own.
  if (schema == "temp") return;
  rowsSeen_++;
  if (!writeHooks_.row || schema != "main") return;
  // An exception must not pass through the engine; a rollback says that all may be otherwise.
  try {
    writeHooks_.row(table, key);
  } catch (...) {
    writeHooks_.any();
  }
}

void Database::Fail(int code) const {
  int primary = code & 0xff;
  // Not every way to run out of room is told apart by the engine's number.
  if (primary == SQLITE_IOERR && handle_ != nullptr) {
    if (platform::IsOutOfRoom(sqlite3_system_errno(handle_))) code = primary = SQLITE_FULL;
  }
  // The handle's message belongs to its last call; for another code the general text is right.
  bool own = handle_ != nullptr && (sqlite3_errcode(handle_) & 0xff) == primary;
  throw Error(primary, own ? sqlite3_errmsg(handle_) : sqlite3_errstr(code));
}

}  // namespace tarnwick::jet
