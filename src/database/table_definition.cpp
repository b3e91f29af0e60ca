// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/table_definition.h"

#include <algorithm>
#include <set>

#include "database/connection_impl.h"
#include "database/engine/catalog.h"
#include "database/engine/engine.h"
#include "database/engine/functions.h"
#include "database/new_file.h"
#include "database/text/order.h"
#include "platform/files.h"
#include "platform/staged_file.h"

namespace tarnwick::jet {

namespace {

std::string DeclaredType(ColumnType type) {
  std::string collate = std::string(" COLLATE ") + kTextCollation;
  switch (type) {
    case ColumnType::kAutoNumber:
      // A key is never given again: rows that outlive the one they belong to must not be taken for
      // those of another.
      return "INTEGER PRIMARY KEY AUTOINCREMENT";
    case ColumnType::kKey:
      return "INTEGER PRIMARY KEY";
    case ColumnType::kLong:
      return "INTEGER";
    case ColumnType::kDouble:
      return "DOUBLE";
    case ColumnType::kText:
      return "TEXT" + collate;
    case ColumnType::kMemo:
      return "LONGTEXT" + collate;
    case ColumnType::kDateTime:
      return "DATETIME";
    case ColumnType::kBinary:
      return "BLOB";
  }
  return "";
}

std::string MakeTable(const TableDefinition& table) {
  std::string sql = "CREATE TABLE " + QuotedName(table.name) + " (";
  for (size_t i = 0; i < table.columns.size(); i++) {
    if (i > 0) sql += ", ";
    sql += QuotedName(table.columns[i].name) + " " + DeclaredType(table.columns[i].type);
  }
  return sql + ");\n";
}

std::string MakeIndex(const TableDefinition& table, const IndexDefinition& index) {
  std::string sql = index.unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ";
  sql += QuotedName(index.name) + " ON " + QuotedName(table.name) + " (";
  for (size_t i = 0; i < index.columns.size(); i++) {
    if (i > 0) sql += ", ";
    sql += QuotedName(index.columns[i]);
  }
  return sql + ");\n";
}

}  // namespace

void CreateDatabaseFile(const std::string& path, const std::string& password,
                        std::span<const TableDefinition> tables, int schemaVersion) {
  std::string sql = "BEGIN;\n";
  for (const TableDefinition& table : tables) {
    sql += MakeTable(table);
    for (const IndexDefinition& index : table.indexes) sql += MakeIndex(table, index);
  }
  sql += "PRAGMA user_version = " + std::to_string(schemaVersion) + ";\n";
  sql += "PRAGMA application_id = " + std::to_string(TextOrderVersion()) + ";\n";
  sql += "COMMIT;";
  platform::StagedFile made(path + std::string(platform::kUnfinished));
  {
    Database database(made.Path(), password, Database::Mode::kCreate);
    // Messages are long: pages of 16 KB cost a quarter less time than those of 4 KB when they are
    // stored, and take no more room.
    database.Run(
        "PRAGMA page_size = 16384; PRAGMA locking_mode = EXCLUSIVE; PRAGMA synchronous = FULL;");
    database.Run(sql.c_str());
  }
  PutInPlace(made, path);
}

namespace {

std::string AddColumns(const TableDefinition& table, const TableView& there) {
  std::string sql;
  for (const ColumnDefinition& column : table.columns) {
    if (there.Has(column.name)) continue;
    sql += "ALTER TABLE " + QuotedName(table.name) + " ADD COLUMN " + QuotedName(column.name) +
           " " + DeclaredType(column.type) + ";\n";
  }
  return sql;
}

// The named indexes of these tables that the file has; those without a text are the engine's own.
std::set<std::string> IndexesOf(Database& engine, std::span<const TableDefinition> tables) {
  std::set<std::string> indexes;
  Statement schema(engine,
                   "SELECT name, tbl_name FROM sqlite_schema WHERE type = 'index' AND sql IS NOT "
                   "NULL");
  while (schema.Step()) {
    bool isOurs = std::any_of(tables.begin(), tables.end(), [&](const TableDefinition& table) {
      return table.name == schema.Text(1);
    });
    if (isOurs) indexes.emplace(schema.Text(0));
  }
  return indexes;
}

int64_t VersionOf(Database& engine) {
  return engine.Number("PRAGMA user_version") & kSchemaMask;
}

}  // namespace

void RequireVersion(Connection& connection, int schemaVersion) {
  if (VersionOf(connection.GetImpl().session.Engine()) <= schemaVersion) return;
  throw Error(ErrorNumber::kNewerFile, "The file " + connection.DataSource() +
                                           " was written by a newer version of Tarnwick; install "
                                           "that version to open it");
}

void ReserveKeys(Connection& connection, std::string_view table,
                 std::span<const Reference> references) {
  // No file has more rows; a damaged reference beyond would leave no keys to give.
  constexpr int64_t kHighestKey = int64_t{1} << 40;
  Database& engine = connection.GetImpl().session.Engine();
  int64_t highest = 0;
  for (const Reference& reference : references) {
    std::string column = QuotedName(reference.column);
    std::string query = "SELECT ";
    query.append(column).append(" FROM main.").append(QuotedName(reference.table));
    query.append(" WHERE ").append(column).append(" <= ?1 ORDER BY ").append(column);
    Statement last(engine, query.append(" DESC LIMIT 1"));
    last.Bind(1, kHighestKey);
    if (connection.GetImpl().session.StepRead(last)) highest = std::max(highest, last.Int(0));
  }
  Statement given(engine, "SELECT seq FROM main.sqlite_sequence WHERE name = ?1");
  given.BindText(1, table);
  bool isKnown = connection.GetImpl().session.StepRead(given);
  if (highest <= (isKnown ? given.Int(0) : 0)) return;
  Statement reserve(engine, isKnown
                                ? "UPDATE main.sqlite_sequence SET seq = ?2 WHERE name = ?1"
                                : "INSERT INTO main.sqlite_sequence (name, seq) VALUES (?1, ?2)");
  reserve.BindText(1, table);
  reserve.Bind(2, highest);
  given.Reset();
  connection.GetImpl().session.RunWrite(reserve);
}

void UpdateTables(Connection& connection, std::span<const TableDefinition> tables,
                  int schemaVersion) {
  RequireVersion(connection, schemaVersion);
  Database& engine = connection.GetImpl().session.Engine();
  std::set<std::string> unknown = IndexesOf(engine, tables);
  Catalog catalog(engine);
  std::string sql;
  for (const TableDefinition& table : tables) {
    const TableView* there = catalog.Find(table.name);
    sql += there == nullptr ? MakeTable(table) : AddColumns(table, *there);
    for (const IndexDefinition& index : table.indexes) {
      if (unknown.erase(std::string(index.name)) == 0) sql += MakeIndex(table, index);
    }
  }
  for (const std::string& name : unknown) sql += "DROP INDEX " + QuotedName(name) + ";\n";
  if (VersionOf(engine) != schemaVersion) {
    int64_t mark = connection.Mark() << kSchemaBits;
    sql += "PRAGMA user_version = " + std::to_string(mark | schemaVersion) + ";\n";
  }
  if (sql.empty()) return;
  try {
    engine.Run(("BEGIN;\n" + sql + "COMMIT;").c_str());
  } catch (...) {
    if (engine.InTransaction()) engine.Run("ROLLBACK");
    throw;
  }
  connection.GetImpl().ForgetTables();
}

}  // namespace tarnwick::jet
