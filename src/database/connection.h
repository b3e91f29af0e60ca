// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A connection to one database file, in the shape of ADO's. Statements are Jet SQL (dialect.h says
// what of it); underneath works an encrypted SQLite (AEGIS-256, WAL). Any failure throws Error with
// the engine's number and description: 26 for another password or another format, 5 for a file that
// another process has open, 14 for a file that can't be opened (a missing file is never created).
//
// A connection holds its file for itself while it is open. It belongs to one thread and outlives
// the recordsets opened on it.
//
// Commits. Each statement is committed by itself, flushed to disk (synchronous=FULL), until
// BeginGroup. Between BeginGroup and EndGroup writes are collected into commits of at most 250
// milliseconds, and a commit falls only where EndUnit or FlushGroup was called: what a unit wrote
// is on disk whole or not at all after a crash. What is collected for one commit is a batch. Where
// the engine itself has to take a batch back (disk full), every unit in it is gone, and what the
// unfinished unit still writes is refused.
//
// Other files. One that a statement reads (IN 'file' behind FROM) is opened for reading, and
// neither it nor its folder is changed; where its indexes are of another text order they stay so,
// and a condition on its texts may miss rows. What a statement writes into another file (INSERT
// INTO table IN 'file') is taken back when the statement fails, but is not flushed to disk: such a
// file is being made, and its maker flushes it once when it is complete.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "database/value.h"
#include "platform/error.h"
#include "platform/secret.h"

namespace tarnwick::jet {

struct ColumnCacheDefinition;

// The row that a reading has come to; columns count from 0, in the order of the SELECT. What it
// gives is valid until the reading goes on.
class PassingRow {
 public:
  virtual ~PassingRow() = default;
  virtual int64_t Int(int column) const = 0;            // 0 for Null
  virtual std::string_view Text(int column) const = 0;  // "" for Null. Not for columns of memos
};

inline constexpr std::string_view kProvider = "Microsoft.Jet.OLEDB.4.0";
inline constexpr std::string_view kDataSourceProperty = "Data Source";
inline constexpr std::string_view kPasswordProperty = "JET OLEDB:Database Password";
// "Read" opens a file without ever changing it, wherever it lies. Otherwise it is opened for
// writing where that is allowed.
inline constexpr std::string_view kModeProperty = "Mode";
inline constexpr std::string_view kModeRead = "Read";
// "Rollback" is for a file that is seldom written: each write costs more flushes then, but none are
// needed to open and close it. "Memory" is for a file that is being made: nothing is flushed, which
// its maker does at the end, and a kill leaves it useless. Otherwise writes go through a log.
inline constexpr std::string_view kJournalProperty = "Journal";
inline constexpr std::string_view kJournalRollback = "Rollback";
inline constexpr std::string_view kJournalMemory = "Memory";

// The number of the error that a statement stopped by a progress handler ends with.
inline constexpr int kInterrupted = 9;

class Connection {
 public:
  Connection();
  ~Connection();  // closes; an open group is committed
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  void SetProvider(std::string_view provider);
  void SetProperty(std::string_view name, std::string_view value);
  const std::string& DataSource() const;
  // Asked for the password of each file that is opened, here or by a statement, in place of the
  // property, which holds one for all of them. It throws where it knows none.
  void SetPasswords(std::function<platform::Secret(const std::string& file)> passwords);

  // Opens the file named by the properties.
  void Open();
  void Close();  // an open group is committed; recordsets still open are closed. Closed: no error
  bool IsOpen() const;

  // Runs a statement that returns no rows; gives the number of rows it changed.
  int64_t Execute(std::string_view sql);

  // Reads the rows of a SELECT once, in one pass, without keeping any. take runs no statement.
  void ReadRows(std::string_view sql, const std::function<void(const PassingRow&)>& take);

  // The key that the last AddNew or INSERT gave its row.
  int64_t LastIdentity() const;

  void BeginGroup();  // nests; the outermost EndGroup commits
  void EndUnit();
  void FlushGroup();  // commits what is collected; the group goes on
  void EndGroup();
  bool InGroup() const;
  // The number of the batch that is being collected; 0 while there is none.
  int64_t Batch() const;
  bool IsTakenBack(int64_t batch) const;
  int64_t BatchesTakenBack() const;  // since the connection was opened
  // Rolls back what is collected, as the engine does on a full disk; what the present unit still
  // writes is refused with the reason.
  void TakeBackGroup(const Error& reason);

  // While on, what is written goes straight into the file, with a rollback journal beside it and
  // each commit flushed, not into the log first, and deleted rows are not overwritten: as safe, and
  // less is written where much is added or replaced. REQUIRES: no group is open.
  void SetBulk(bool on);

  // From now until it is closed, texts in these columns of a table are looked for (InStr, Like)
  // with the help of an index that the file then carries. It changes what a search costs, never
  // what it finds; where it can't be had there is none.
  void KeepTextIndex(std::string_view table, std::vector<std::string> columns);
  // The keys of all rows in which such a column can hold the text, as InStr finds it, and of few
  // others, ascending; nullopt where the index can't tell.
  std::optional<std::vector<int64_t>> MayHold(std::string_view table, std::string_view column,
                                              std::string_view text);
  // Takes rows in that the index lacks; until then searches read texts one by one. look is called
  // with the rows done and all there are; returning false ends it for now, and the next call goes
  // on from there. True when nothing is missing.
  bool CatchUpTextIndex(const std::function<bool(int64_t, int64_t)>& look);

  // A number of the program's own in the file, from 0 (as the file is made) to 32767, written as
  // safely as a row.
  int64_t Mark() const;
  void SetMark(int64_t mark);

  bool HasTable(std::string_view table) const;

  // The engine's own check of the whole file, every page and row, and, a third of the time, whether
  // the indexes hold what the rows do: "" when it is sound, else what is wrong.
  enum class Checked { kAll, kAllButIndexes };
  std::string IntegrityCheck(Checked checked = Checked::kAll);

  // Keeps a column cache (table_definition.h) until the connection is closed. An index that begins
  // with the date and holds the other columns lets the column cache be read in one quick pass.
  void KeepColumnCache(ColumnCacheDefinition definition);

  // Called every few milliseconds while a statement runs; returning true stops the statement (Error
  // kInterrupted). {} takes it out.
  void SetProgressHandler(std::function<bool()> handler);
  // Rows that statements have written, in every file of theirs; grows while a statement runs, so
  // that a progress handler can tell how far it is. A table emptied whole is not counted row by
  // row.
  int64_t RowsSeen() const;

  // Engine-side state shared with Recordset.
  class Impl;
  Impl& GetImpl() const { return *impl_; }

 private:
  std::unique_ptr<Impl> impl_;
};

// Bulk for its lifetime.
class BulkScope {
 public:
  explicit BulkScope(Connection& connection) : connection_(connection) {
    connection_.SetBulk(true);
  }
  ~BulkScope();  // where the log can't be had again, the file goes on without
  BulkScope(const BulkScope&) = delete;
  BulkScope& operator=(const BulkScope&) = delete;

 private:
  Connection& connection_;
};

// Commits as a group for its lifetime; the destructor's commit failure is swallowed, so call End
// where it matters.
class CommitGroup {
 public:
  explicit CommitGroup(Connection& connection) : connection_(&connection) {
    connection_->BeginGroup();
  }
  ~CommitGroup();
  CommitGroup(const CommitGroup&) = delete;
  CommitGroup& operator=(const CommitGroup&) = delete;
  void End();

 private:
  Connection* connection_;
};

}  // namespace tarnwick::jet
