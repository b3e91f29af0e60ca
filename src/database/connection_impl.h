// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a connection keeps for its statements and recordsets. Internal to the database.
#pragma once

#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "database/connection.h"
#include "database/engine/catalog.h"
#include "database/engine/session.h"
#include "database/engine/text_cache.h"
#include "database/index/column_cache.h"
#include "database/index/text_index.h"
#include "database/plan/read_plan.h"

namespace tarnwick::jet {

// A file's version number holds two: the schema's in its lower half, the connection's mark above
// it.
inline constexpr int kSchemaBits = 16;
inline constexpr int64_t kSchemaMask = (1 << kSchemaBits) - 1;

// A piece of engine SQL, prepared when it is first run.
struct PreparedSql {
  EngineSql sql;
  std::unique_ptr<Statement> statement;
};

struct FieldInfo {
  std::string name;
  std::string column;  // of the base table; "" when the field is none of its columns
  bool isKey = false;
  ColumnKind kind = ColumnKind::kAny;
};

// A statement of the dialect, translated. Those of one shape share it.
struct Program {
  bool isRead = false;
  std::optional<size_t> file;  // a literal: the other file it works on
  bool writesFile = false;     // and writes to
  PreparedSql write;           // not isRead
  ReadPlan plan;               // isRead
  PreparedSql all;
  PreparedSql keys;
  PreparedSql row;
  PreparedSql narrowed;           // isRead: all or keys, of the rows that the text index proposes
  std::shared_ptr<Insert> copy;   // whole rows from file to file: written when both are open
  std::string rewrites;           // a table that it empties or gives rows with keys of its choice
  std::vector<FieldInfo> fields;  // once all or row is prepared
  // What AddNew's last row was added with, and which of the fields it sets.
  struct Insertion {
    std::vector<bool> isSet;
    std::shared_ptr<Statement> statement;
  } insertion;
  // plan.columnCache
  PreparedSql cacheReferences;
  PreparedSql cacheDetails;
  PreparedSql cacheRows;
  PreparedSql cacheRow;
  PreparedSql cacheOrder;
  PreparedSql cacheText;
};

// Which rows a condition was tested on, and on which it holds, both by key; kept because the list
// and its counts ask the same one after the other.
struct TestedRows {
  std::string condition;  // with its literals
  uint64_t version = 0;
  bool all = false;
  std::vector<bool> tested;
  std::vector<bool> hold;
};

// Told when the connection closes.
class ConnectionUser {
 public:
  virtual ~ConnectionUser() = default;
  virtual void ConnectionCloses() = 0;
};

class Connection::Impl {
 public:
  Impl() = default;
  ~Impl();

  void Open();
  void Close();

  // The text is lifted into Lifted(), valid until the next call.
  std::shared_ptr<Program> Translate(std::string_view sql);
  std::shared_ptr<Program> TranslateTable(std::string_view table);
  LiftedSql& Lifted() { return lifted_; }

  // Prepared if need be, its literals and the clock bound.
  Statement& Ready(PreparedSql& prepared, const std::vector<Value>& literals);
  // What reads the rows of a program: all or keys, narrowed by the text index where that helps.
  PreparedSql& Reading(Program& program, const std::vector<Value>& literals);
  // The keys of all rows of plan.searched on which its searches can hold, and few others.
  std::optional<std::vector<int64_t>> Proposed(const ReadPlan& plan,
                                               const std::vector<Value>& literals);
  // Fills in what the columns of a reading program are.
  const std::vector<FieldInfo>& Fields(Program& program);
  int64_t Execute(std::string_view sql);
  void ReadRows(std::string_view sql, const std::function<void(const PassingRow&)>& take);
  std::optional<std::vector<int64_t>> MayHold(std::string_view table, std::string_view column,
                                              std::string_view text);

  bool HasTable(std::string_view table);
  // After the tables were changed: what is known of them is read anew.
  void ForgetTables();

  void KeepTextIndex(std::string_view table, std::vector<std::string> columns);
  TextIndex* Index() { return index_.get(); }
  // Before rows of a table get keys that are not the engine's choice, or all of them go.
  void BeforeRewriting(std::string_view table);
  void KeepColumnCache(ColumnCacheDefinition definition);
  ColumnCache* GetColumnCache() { return columnCache_.get(); }  // nullptr: none is kept
  TestedRows& LastTested() { return lastTested_; }

  void AddUser(ConnectionUser* user) { users_.insert(user); }
  void RemoveUser(ConnectionUser* user) { users_.erase(user); }

  std::string provider;
  std::string dataSource;
  std::string password;
  PasswordSource passwords;  // {}: password for every file
  bool readOnly = false;
  Session::Journal journal = Session::Journal::kLog;

  Session session;

 private:
  Statement& Prepared(PreparedSql& sql);
  std::shared_ptr<Program> MakeProgram(ParsedSql parsed);
  EngineSql CopyOf(Insert& copy);
  int64_t ExecuteOnOther(Program& program, const std::vector<Value>& literals);

  std::unique_ptr<Catalog> schema_;
  std::unique_ptr<ColumnCache> columnCache_;
  TestedRows lastTested_;
  TextCache<Program> programs_{200};
  LiftedSql lifted_;
  std::unique_ptr<TextIndex> index_;
  std::set<ConnectionUser*> users_;
};

}  // namespace tarnwick::jet
