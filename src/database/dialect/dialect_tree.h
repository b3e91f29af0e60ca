// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A statement of the dialect (dialect.h) as a tree. Internal to the database. Names are kept as
// they were written; literals are places in the list of the lifted statement.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "database/dialect/dialect.h"

namespace tarnwick::jet {

struct Select;

struct Expression {
  enum class Kind {
    kLiteral,  // literal
    kNull,
    kColumn,   // table (may be empty), text
    kStar,     // the * of Count(*)
    kMinus,    // operands[0]
    kNot,      // operands[0]
    kChain,    // operands joined by the operator in text: AND OR & + -
    kCompare,  // operands[0] text operands[1]
    kLike,     // operands[0] LIKE operands[1]
    kBetween,  // operands[0] BETWEEN operands[1] AND operands[2]
    kIn,       // operands[0] IN (the others, or keys, or select)
    kIsNull,   // operands[0]
    kCall,     // text(operands), text in lower case
    kDate,     // Date()
  };
  Kind kind = Kind::kNull;
  std::string text;
  std::string table;
  size_t literal = 0;
  bool negated = false;  // kLike, kBetween, kIn, kIsNull
  std::vector<Expression> operands;
  std::unique_ptr<Select> select;
  std::shared_ptr<const KeyList> keys;
};

struct TableName {
  std::string name;
  std::string alias;  // may be empty
  const std::string& Shown() const { return alias.empty() ? name : alias; }
};

struct Join {
  enum class Kind { kInner, kLeft };
  Kind kind = Kind::kInner;
  TableName table;
  Expression on;
};

struct SelectItem {
  bool star = false;      // * or table.*
  std::string starTable;  // may be empty
  Expression value;
  std::string alias;  // may be empty
};

struct OrderItem {
  Expression value;
  bool descending = false;
};

struct Select {
  bool distinct = false;
  std::optional<size_t> top;  // a literal
  std::vector<SelectItem> items;
  TableName table;
  std::vector<Join> joins;
  std::optional<size_t> file;  // a literal: IN 'file'
  std::optional<Expression> where;
  std::vector<Expression> groupBy;
  std::vector<OrderItem> orderBy;
};

struct Insert {
  std::string table;
  std::optional<size_t> file;
  std::vector<std::string> columns;
  std::vector<Expression> values;  // or
  std::unique_ptr<Select> select;
  // SELECT * FROM one table, all its columns into those of their names.
  bool IsCopyOfRows() const {
    return columns.empty() && select && select->items.size() == 1 && select->items[0].star &&
           select->joins.empty() && !select->distinct && select->groupBy.empty();
  }
};

struct Update {
  std::string table;
  std::vector<std::pair<std::string, Expression>> changes;
  std::optional<Expression> where;
};

struct Delete {
  std::string table;
  std::optional<Expression> where;
};

using ParsedSql = std::variant<Select, Insert, Update, Delete>;

// Throws Error when the statement is not in the grammar.
ParsedSql Parse(const LiftedSql& lifted);

bool IsAggregate(std::string_view function);

}  // namespace tarnwick::jet
