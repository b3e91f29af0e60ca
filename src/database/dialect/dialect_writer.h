// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Writes a tree of the dialect as SQL of the engine. Internal to the database.
//
// Parameters of what is written: kKeyParameter a row's key, kDateParameter today,
// kFirstLiteral and on the literals of the statement in their order.
//
// Columns that may be packed (packing.h) are written so that the engine meets their plain values,
// except where a column is itself an item of a plain SELECT: Statement unpacks that when it is
// read. What goes into such a column is packed, or carried over as it is from a column of its kind.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "database/dialect/dialect_tree.h"
#include "database/engine/catalog.h"

namespace tarnwick::jet {

inline constexpr int kKeyParameter = 1;
inline constexpr int kDateParameter = 2;
inline constexpr int kFirstLiteral = 3;

// SQL of the engine and which parameters it wants.
struct EngineSql {
  std::string text;
  std::vector<size_t> literals;
  std::vector<std::shared_ptr<const KeyList>> keys;  // likewise
  bool usesDate = false;
};

class SqlWriter {
 public:
  // schema: what the tables have; the columns that a statement names of a file of an IN clause,
  // attached under the name otherSchema, are of the same kinds.
  SqlWriter() = default;
  explicit SqlWriter(Catalog& schema, std::string_view otherSchema = {})
      : schema_(&schema), otherSchema_(otherSchema) {}

  void Write(const Select& select);
  void Write(const Insert& insert);
  void Write(const Update& update);
  void Write(const Delete& statement);

  // The parts, for statements that are put together.
  // Columns written from here on are those of the select's tables.
  void Enter(const Select& select);
  // The next condition of a SELECT also keeps the rows of this table to those whose keys are in
  // temp.tw_search_found.
  void Narrow(std::string_view shown) { narrowed_ = shown; }
  void Items(const std::vector<SelectItem>& items);
  void Table(const TableName& table, bool other);
  void JoinClause(const Join& join, bool other);
  void Where(const std::optional<Expression>& where);
  void Value(const Expression& expression);
  void Name(std::string_view name);
  void Text(std::string_view text) { sql_.text.append(text); }

  EngineSql Take() { return std::move(sql_); }

 private:
  struct Source {
    std::string shown;
    const TableView* view;  // nullptr: unknown
  };
  // One SELECT within another sees its own tables first.
  using Scope = std::vector<Source>;

  const TableView* ViewOf(std::string_view table) const;
  void EnterTable(std::string_view table);
  const TableView* ViewWith(const Expression& column) const;
  ColumnKind KindOf(const Expression& expression) const;
  void Column(const Expression& column);
  void PlainColumn(const Expression& column);
  // into: the kinds of the columns that the rows are for, empty when they are read; carriedOver: as
  // they are stored.
  void Rows(const Select& select, const std::vector<ColumnKind>& into, bool carriedOver);
  void Item(const SelectItem& item, ColumnKind into, int& unnamed);
  std::vector<SelectItem> Expanded(const std::vector<SelectItem>& items) const;
  void InsertRows(const Select& select, const std::vector<ColumnKind>& into);
  void Packed(const Expression& value, ColumnKind into);
  void Search(const Expression& search);
  void Compound(const Expression& expression);
  void Literal(size_t literal);
  void List(const std::vector<Expression>& expressions, size_t from, std::string_view separator);
  void In(const Expression& in);
  void Call(const Expression& call);
  void Schema(bool other);

  Catalog* schema_ = nullptr;
  std::string otherSchema_;
  std::vector<Scope> scopes_;
  std::string narrowed_;
  bool plainItems_ = false;  // items that are columns are written as their plain values
  EngineSql sql_;
};

}  // namespace tarnwick::jet
