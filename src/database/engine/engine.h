// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The engine's handles, owned. Internal to the database: the engine's own header is seen by the
// sources beside this one and by nothing else.
//
// Every failure throws Error with the engine's primary result code and its message.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "database/value.h"
#include "platform/secret.h"

struct sqlite3;
struct sqlite3_stmt;
struct sqlite3_value;

namespace tarnwick::jet {

// The engine's number for a statement that was stopped.
inline constexpr int kStopped = 9;

// What a declared column type says about the values below it. Long texts and bytes may be packed.
enum class ColumnKind { kAny, kDate, kLongText, kBytes };
ColumnKind KindOfDeclared(std::string_view type);

class Database;

// Gives the password of a database file; throws where it is not known.
using PasswordSource = std::function<platform::Secret(const std::string& file)>;

enum class StoredType : char { kInteger = 1, kReal, kText, kBytes, kNull };

// The values of a row that a statement passes on (Statement::BindTaker), from 0.
class PassedRow {
 public:
  explicit PassedRow(sqlite3_value** values) : values_(values) {}
  StoredType TypeOf(int place) const;
  int64_t Int(int place) const;
  std::string_view Text(int place) const;

 private:
  sqlite3_value** values_;
};
// True ends the statement's step.
using RowTaker = std::function<bool(const PassedRow&)>;

// A prepared statement. It is reset after each use, so that none is left half read: one prepared
// statement may serve several owners.
class Statement {
 public:
  // readsKeys: keys are to be bound.
  Statement(Database& database, std::string_view sql, bool readsKeys = false);
  ~Statement();
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  // Parameters count from 1. Text is bound with its length, NULs included; what is not valid UTF-8
  // in it is read as windows-1252, byte by byte. Texts and bytes are not copied: they must last
  // until the statement is reset.
  void BindNull(int index);
  void Bind(int index, int64_t value);
  void Bind(int index, double value);
  void BindText(int index, std::string_view text);
  void BindBytes(int index, std::string_view bytes);
  void BindValue(int index, const Value& value);
  // For carray(?index), which gives each of them as a row. They must last as long as the statement,
  // or until others are bound.
  void BindKeys(int index, const std::vector<int64_t>& keys);
  // For tw_pass(?index, value, ...), which gives each row's values to the taker, and is what that
  // returns. As a condition it goes over many rows in one step, in half the time that a step for
  // each takes. The taker must last as long as the statement, or until another is bound.
  void BindTaker(int index, const RowTaker& taker);
  // A value for a column that may pack it, or has it packed already ("" for one that stays as it
  // is). What was made of it lies in packed, which must last likewise.
  void BindStored(int index, const Value& value, ColumnKind kind,
                  std::optional<std::string>& packed);

  // True when there is a row; columns count from 0 and are valid until the next step.
  bool Step();
  void Reset() noexcept;
  // Steps to the end and resets.
  void Run();

  int ColumnCount() const;
  std::string ColumnName(int column) const;
  ColumnKind Kind(int column) const { return kinds_[static_cast<size_t>(column)]; }
  // The table and column that a result column is taken from; "" for an expression.
  std::string OriginTable(int column) const;
  std::string OriginColumn(int column) const;

  using Type = StoredType;
  Type TypeOf(int column) const;
  bool IsNull(int column) const { return TypeOf(column) == Type::kNull; }
  int64_t Int(int column) const;
  std::string_view Text(int column) const;
  std::string_view Stored(int column) const;  // the bytes as they lie in the file
  Value ColumnValue(int column) const;        // plain, where the column's kind is known

 private:
  Database* database_;
  sqlite3_stmt* handle_ = nullptr;
  std::vector<ColumnKind> kinds_;
};

// Resets a statement at the end of a scope.
class StatementUse {
 public:
  explicit StatementUse(Statement& statement) : statement_(statement) {}
  ~StatementUse() { statement_.Reset(); }
  StatementUse(const StatementUse&) = delete;
  StatementUse& operator=(const StatementUse&) = delete;

 private:
  Statement& statement_;
};

// An open file. REQUIRES for destruction: its statements are gone.
class Database {
 public:
  enum class Mode { kExisting, kCreate, kReadOnly };

  // Opens the file and gives it its key; whether the key fits shows with the first read. With
  // kReadOnly the file stays as it is and nothing is put beside it; one with a log is refused.
  Database(const std::string& path, std::string_view password, Mode mode);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  // True when a log of the engine lies beside a file.
  static bool HasLog(const std::string& path);

  // Runs fixed SQL of the program's own, without parameters.
  void Run(const char* sql);
  int64_t Number(const char* sql);  // the first column of the first row; 0 without a row

  // A file that is not written to stays as it is, and nothing is put beside it.
  void Attach(const std::string& path, std::string_view password, const std::string& alias,
              bool isWritten);
  void Detach(const std::string& alias);

  // Copies everything, page by page, into a file that was just made and is still empty. look is
  // called with the pages done and all there are; its false ends the copy, and the result is false.
  bool CopyInto(Database& target, const std::function<bool(int64_t, int64_t)>& look);

  bool IsReadOnly() const;
  bool InTransaction() const;
  // Runs a bound statement that changes something; gives the rows it changed.
  int64_t RunWrite(Statement& statement);
  int64_t LastRowId() const;
  void SetLastRowId(int64_t key);  // after rows of the database's own
  // Forces what has been committed to the disk.
  void SyncLog();
  // Has the system begin with that, which goes on meanwhile.
  void BeginLogSync();
  // Called about every count engine steps; true stops the statement.
  void SetProgress(int count, std::function<bool()> handler);
  // For work outside of statements: whether there is a handler, and what it says now.
  bool IsWatched() const { return progress_ != nullptr; }
  bool AsksToStop() const { return progress_ && progress_(); }
  // Without the handler for its lifetime: what is stopped within a transaction takes all of it
  // back.
  class Unwatched {
   public:
    explicit Unwatched(Database& database) : database_(database) { database_.Watch(false); }
    ~Unwatched() { database_.Watch(true); }
    Unwatched(const Unwatched&) = delete;
    Unwatched& operator=(const Unwatched&) = delete;

   private:
    Database& database_;
  };
  // Rows written one by one; grows while a statement runs.
  int64_t RowsSeen() const { return rowsSeen_; }

  // The work done so far: how many rows statements have given and how many have ended, how many
  // pages of the file they looked at, and how many statements were prepared.
  int64_t StepsRun() const { return stepsRun_; }
  int64_t PagesVisited() const;
  int64_t StatementsPrepared() const { return statementsPrepared_; }

  // Called for each row of main that a statement writes, and where any may have been written: when
  // something was rolled back, or a statement that RunWrite ran has emptied a whole table.
  struct WriteHooks {
    std::function<void(std::string_view table, int64_t key)> row;
    std::function<void()> any;
  };
  void SetWriteHooks(WriteHooks hooks) { writeHooks_ = std::move(hooks); }

  [[noreturn]] void Fail(int code) const;
  sqlite3* Handle() const { return handle_; }

 private:
  void Watch(bool on);
  void HearOfWrites();
  void RowWritten(std::string_view schema, std::string_view table, int64_t key) noexcept;

  sqlite3* handle_ = nullptr;
  std::function<bool()> progress_;
  int progressSteps_ = 0;
  int64_t rowsSeen_ = 0;
  WriteHooks writeHooks_;
  int64_t stepsRun_ = 0;
  int64_t statementsPrepared_ = 0;
  friend class Statement;
};

}  // namespace tarnwick::jet
