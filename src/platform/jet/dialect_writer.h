// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Writes a tree of the dialect as SQL of the engine. Internal to the database.
//
// Parameters of what is written: kKeyParameter a row's key, kDateParameter and kNowParameter the
// clock, kFirstLiteral and on the literals of the statement in their order.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "platform/jet/dialect_tree.h"

namespace tarnwick::jet {

inline constexpr int kKeyParameter = 1;
inline constexpr int kDateParameter = 2;
inline constexpr int kNowParameter = 3;
inline constexpr int kFirstLiteral = 4;

// SQL of the engine and which parameters it wants.
struct EngineSql {
  std::string text;
  std::vector<size_t> literals;
  bool usesDate = false;
  bool usesNow = false;
};

class SqlWriter {
 public:
  // otherSchema: the name under which the file of an IN clause is attached.
  explicit SqlWriter(std::string_view otherSchema = {}) : otherSchema_(otherSchema) {}

  void Write(const Select& select);
  void Write(const Insert& insert);
  void Write(const Update& update);
  void Write(const Delete& statement);

  // The parts, for statements that are put together.
  void Items(const std::vector<SelectItem>& items);
  void Table(const TableName& table, bool other);
  void JoinClause(const Join& join, bool other);
  void Where(const std::optional<Expression>& where);
  void Value(const Expression& expression);
  void Name(std::string_view name);
  void Text(std::string_view text) { sql_.text.append(text); }

  EngineSql Take() { return std::move(sql_); }

 private:
  void Compound(const Expression& expression);
  void Literal(size_t literal);
  void List(const std::vector<Expression>& expressions, size_t from, std::string_view separator);
  void In(const Expression& in);
  void Call(const Expression& call);
  void Schema(bool other);

  std::string otherSchema_;
  EngineSql sql_;
};

}  // namespace tarnwick::jet
