// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What tables and columns a database has, read as it is asked for. Internal to the database.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "database/engine/engine.h"

namespace tarnwick::jet {

// The name as engine SQL has it, whatever it holds.
std::string QuotedName(std::string_view name);

struct TableView {
  std::vector<std::string> columns;
  std::vector<std::string> types;  // as declared
  std::string key;                 // the column that is the row's key, "" when none is
  bool Has(std::string_view column) const;
  std::string_view DeclaredType(std::string_view column) const;  // "": there is no such column
  // Declared as a text, not as a long one.
  bool IsText(std::string_view column) const;
  // kAny for a column that there is not.
  ColumnKind KindOf(std::string_view column) const;
};

class Catalog {
 public:
  explicit Catalog(Database& database, std::string_view schema = "main")
      : database_(database), schema_(schema) {}

  // nullptr when there is no such table. Valid as long as the view.
  const TableView* Find(std::string_view table);

 private:
  Database& database_;
  std::string schema_;
  std::map<std::string, TableView> tables_;  // by name in lower case
};

}  // namespace tarnwick::jet
