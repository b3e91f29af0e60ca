// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/table_definition.h"

#include <set>

#include "database/connection_impl.h"
#include "database/engine/engine.h"
#include "database/engine/functions.h"
#include "database/new_file.h"
#include "database/text/order.h"
#include "platform/files.h"

namespace tarnwick::jet {

namespace {

constexpr char kTemporarySuffix[] = ".making";

std::string DeclaredType(ColumnType type) {
  std::string collate = std::string(" COLLATE ") + kTextCollation;
  switch (type) {
    case ColumnType::kAutoNumber:
      // A key is never given again: rows that outlive the one they belong to must not be taken for
      // those of another.
      return "INTEGER PRIMARY KEY AUTOINCREMENT";
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
  // Made beside its place and moved there: the file is whole or not there.
  std::string making = path + kTemporarySuffix;
  platform::RemoveFile(making);
  try {
    Database database(making, password, Database::Mode::kCreate);
    // Messages are long: pages of 16 KB cost a quarter less time than those of 4 KB when they are
    // stored, and take no more room.
    database.Run(
        "PRAGMA page_size = 16384; PRAGMA locking_mode = EXCLUSIVE; PRAGMA synchronous = FULL;");
    database.Run(sql.c_str());
  } catch (...) {
    platform::RemoveFile(making);
    throw;
  }
  PutInPlace(making, path);
}

void UpdateIndexes(Connection& connection, std::span<const TableDefinition> tables) {
  Database& engine = connection.GetImpl().session.Engine();
  std::set<std::string> known;
  std::set<std::string> unknown;
  for (const TableDefinition& table : tables) known.emplace(table.name);
  {
    // Indexes without a text are the engine's own.
    Statement schema(engine,
                     "SELECT type, name, tbl_name FROM sqlite_schema WHERE type = 'table' OR "
                     "(type = 'index' AND sql IS NOT NULL)");
    std::set<std::string> there;
    while (schema.Step()) {
      bool isIndex = schema.Text(0) == "index";
      if (isIndex && known.count(std::string(schema.Text(2))) != 0) {
        unknown.emplace(schema.Text(1));
      }
      if (!isIndex) there.emplace(schema.Text(1));
    }
    known = std::move(there);
  }
  std::string sql;
  for (const TableDefinition& table : tables) {
    for (const IndexDefinition& index : table.indexes) {
      bool isThere = unknown.erase(std::string(index.name)) != 0;
      if (!isThere && known.count(std::string(table.name)) != 0) sql += MakeIndex(table, index);
    }
  }
  for (const std::string& name : unknown) sql += "DROP INDEX " + QuotedName(name) + ";\n";
  if (!sql.empty()) engine.Run(("BEGIN;\n" + sql + "COMMIT;").c_str());
}

}  // namespace tarnwick::jet
