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
struct DigestDefinition {
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

// Gives the tables of an open file the indexes that they have here, and no others: how an older
// file is brought up to date. Files that are so already cost a look at their schema. Throws Error.
void UpdateIndexes(Connection& connection, std::span<const TableDefinition> tables);

}  // namespace tarnwick::jet
