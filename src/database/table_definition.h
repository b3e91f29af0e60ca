// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// How a database file is described and made. The declared types are embedded in the files; do not
// change the meaning of one.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::jet {

class Connection;

enum class ColumnType {
  kAutoNumber,  // 64-bit key given by the engine, one a table, its primary key
  kKey,         // 64-bit primary key that the program gives
  kLong,        // whole number
  kDouble,
  kText,      // compares, sorts and is found without regard to case
  kMemo,      // long text; compares likewise
  kDateTime,  // civil seconds (DateTime::Seconds)
  kBinary,    // bytes
};

struct ColumnDefinition {
  std::string_view name;
  ColumnType type;
};

struct IndexDefinition {
  std::string_view name;
  std::vector<std::string_view> columns;
  bool unique = false;
};

struct TableDefinition {
  std::string_view name;
  std::vector<ColumnDefinition> columns;
  std::vector<IndexDefinition> indexes;
};

// A table of which a few columns are kept in memory, at twelve bytes a row, once a query can make
// use of them: queries that narrow, sort or count its rows by these columns take milliseconds for a
// million rows, and give what they would give without. What else a condition asks of the rows, of
// the row that the reference names, or of the details, is looked up for itself.
struct ColumnCacheDefinition {
  std::string table;               // with a key
  std::string date;                // its column that the rows are mostly narrowed and sorted by
  std::string reference;           // its column that holds the key of a row of another table
  std::vector<std::string> kinds;  // its columns of few different values
  std::string details;             // a table whose rows belong to those of table
  std::string detailKey;           // its column that holds the key of the row it belongs to
};

// Makes a new encrypted database file with these tables, empty and complete on disk: a single file
// that can be copied. An existing file of the name is replaced. Throws Error.
void CreateDatabaseFile(const std::string& path, const std::string& password,
                        std::span<const TableDefinition> tables, int schemaVersion);

// Brings an older file, just opened, up to date: in one transaction it is given the tables, columns
// and indexes that it lacks, loses indexes of these tables that are not here, and bears the version
// from then on. No row is rewritten; a new column is Null in the rows that are there. A file that
// is up to date costs a look at its schema. Throws Error, kNewerFile for a file of a later version,
// which is left alone.
void UpdateTables(Connection& connection, std::span<const TableDefinition> tables,
                  int schemaVersion);

// Rows of other tables that name a key of this one.
struct Reference {
  std::string_view table;
  std::string_view column;  // indexed, or the look is long
};
// Keys that such rows name are not given again, though the row they named is gone and, copied from
// file to file, has left no trace. Throws Error.
void ReserveKeys(Connection& connection, std::string_view table,
                 std::span<const Reference> references);

// Throws Error kNewerFile when the open file is of a later version than this.
void RequireVersion(Connection& connection, int schemaVersion);

}  // namespace tarnwick::jet
