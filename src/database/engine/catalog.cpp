// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/engine/catalog.h"

#include "platform/utf8.h"

namespace tarnwick::jet {

std::string QuotedName(std::string_view name) {
  std::string quoted = "\"";
  for (char c : name) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + "\"";
}

bool TableView::Has(std::string_view column) const {
  for (const std::string& name : columns) {
    if (platform::SameWord(name, column)) return true;
  }
  return false;
}

std::string_view TableView::DeclaredType(std::string_view column) const {
  for (size_t i = 0; i < columns.size(); i++) {
    if (platform::SameWord(columns[i], column)) return types[i];
  }
  return {};
}

bool TableView::IsText(std::string_view column) const {
  return DeclaredType(column) == "TEXT";
}

ColumnKind TableView::KindOf(std::string_view column) const {
  return KindOfDeclared(DeclaredType(column));
}

const TableView* Catalog::Find(std::string_view table) {
  std::string name = platform::AsciiLower(table);
  auto found = tables_.find(name);
  if (found == tables_.end()) {
    Statement info(database_, "PRAGMA " + schema_ + ".table_info(" + QuotedName(name) + ")");
    TableView view;
    int keys = 0;
    while (info.Step()) {
      view.columns.emplace_back(info.Text(1));
      view.types.emplace_back(info.Text(2));
      if (info.Int(5) > 0) {
        keys++;
        if (platform::SameWord(info.Text(2), "INTEGER")) view.key = view.columns.back();
      }
    }
    if (keys != 1) view.key.clear();
    found = tables_.emplace(std::move(name), std::move(view)).first;
  }
  return found->second.columns.empty() ? nullptr : &found->second;
}

}  // namespace tarnwick::jet
