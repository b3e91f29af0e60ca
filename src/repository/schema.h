// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Every table and column of the databases: files are made, checked and copied from it. The columns
// of Email are those of email_fields.h.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "database/table_definition.h"

namespace tarnwick::repository {

// Goes up with every table, column or form of packed values that comes to be. Tables and columns
// never go or change what they hold: programs of other versions read the files.
inline constexpr int kSchemaVersion = 4;

inline constexpr const char* kRepositoryFile = "Tarnwick.twr";
inline constexpr const char* kParameterFile = "emlParameter.twr";
inline constexpr const char* kTemplateFile = "emlTemplate.twr";

std::span<const jet::TableDefinition> RepositoryTables();
std::span<const jet::TableDefinition> ParameterTables();
// What the list filters and sorts by; its columns are those of the index EmailList.
jet::ColumnCacheDefinition ListColumnCache();
// The columns of Email that the text index covers.
std::vector<std::string> SearchedColumns();

// Makes the template, the parameter database and a first repository in a folder. Throws Error.
void CreateDatabaseFiles(const std::string& folder);

}  // namespace tarnwick::repository
