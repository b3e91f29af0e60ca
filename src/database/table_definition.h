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

#include "database/connection.h"

namespace tarnwick::jet {

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

// Makes a new encrypted database file with these tables, empty and complete on disk: a single file
// that can be copied. An existing file of the name is replaced. Throws Error.
void CreateDatabaseFile(const std::string& path, const std::string& password,
                        std::span<const TableDefinition> tables, int schemaVersion);

// Gives the tables of an open file the indexes that they have here, and no others: how an older
// file is brought up to date. Files that are so already cost a look at their schema. Throws Error.
void UpdateIndexes(Connection& connection, std::span<const TableDefinition> tables);

}  // namespace tarnwick::jet
