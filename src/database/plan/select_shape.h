// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Which table each name of a SELECT belongs to, and what its condition says of them. Internal to
// the database.
#pragma once

#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "database/dialect/dialect_tree.h"
#include "database/dialect/dialect_writer.h"
#include "database/engine/catalog.h"

namespace tarnwick::jet {

class SelectShape {
 public:
  // Places of tables in the FROM clause: 0 the base, i + 1 the i-th join. kUnknown is a column that
  // can't be placed.
  using Places = std::set<size_t>;
  static constexpr size_t kUnknown = static_cast<size_t>(-1);

  struct Source {
    std::string shown;
    const TableView* view;  // nullptr when there is no such table
  };

  // Makes an inner join of each left one whose empty rows the condition throws out, so that the
  // engine may begin with its table. The select must outlive the shape.
  SelectShape(Select& select, Catalog& schema);

  const Select& Shaped() const { return select_; }
  const std::vector<Source>& Tables() const { return tables_; }

  size_t PlaceOf(const Expression& column) const;
  // A select inside stands for itself: its names are not looked for out here.
  void Collect(const Expression& expression, Places& places) const;

  bool IsColumn(const Expression& value, size_t place, std::string_view name) const;
  bool IsKeyOf(size_t place, const Expression& column) const;
  // True when the condition can't hold where every column of the table is Null.
  bool ThrowsOutNull(const Expression& condition, size_t place) const;

  // For statements over tables of the select.
  SqlWriter Writer() const;
  // "table"._rowid_
  void WriteKey(SqlWriter& writer, size_t place) const;

 private:
  bool IsNullWithout(const Expression& value, size_t place) const;

  Select& select_;
  Catalog& schema_;
  std::vector<Source> tables_;
};

}  // namespace tarnwick::jet
