// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/jet/dialect_writer.h"

namespace tarnwick::jet {

namespace {

using Kind = Expression::Kind;

// What a function of the dialect is called in the engine, where it isn't the same.
std::string_view EngineFunction(std::string_view name) {
  if (name == "format" || name == "format$") return "tw_format";
  if (name == "instr") return "tw_instr";
  if (name == "len") return "length";
  return name;
}

// What the items are called; nothing when one of them has no name or stands for a whole table.
std::vector<std::string> NamesOf(const std::vector<SelectItem>& items) {
  std::vector<std::string> names;
  for (const SelectItem& item : items) {
    bool isColumn = !item.star && item.value.kind == Kind::kColumn;
    if (!item.alias.empty()) {
      names.push_back(item.alias);
    } else if (isColumn) {
      names.push_back(item.value.text);
    } else {
      return {};
    }
  }
  return names;
}

}  // namespace

void SqlWriter::Name(std::string_view name) {
  sql_.text += '"';
  for (char c : name) {
    if (c == '"') sql_.text += '"';
    sql_.text += c;
  }
  sql_.text += '"';
}

void SqlWriter::Schema(bool other) {
  if (other) {
    Name(otherSchema_);
    Text(".");
  } else {
    Text("main.");
  }
}

void SqlWriter::Table(const TableName& table, bool other) {
  Schema(other);
  Name(table.name);
  if (!table.alias.empty()) {
    Text(" AS ");
    Name(table.alias);
  }
}

void SqlWriter::JoinClause(const Join& join, bool other) {
  switch (join.kind) {
    case Join::Kind::kCross:
      Text(", ");
      break;
    case Join::Kind::kInner:
      Text(" JOIN ");
      break;
    case Join::Kind::kLeft:
      Text(" LEFT JOIN ");
      break;
  }
  Table(join.table, other);
  if (join.on) {
    Text(" ON ");
    Value(*join.on);
  }
}

void SqlWriter::Items(const std::vector<SelectItem>& items) {
  int unnamed = 1000;
  bool first = true;
  for (const SelectItem& item : items) {
    if (!first) Text(", ");
    first = false;
    if (item.star) {
      if (!item.starTable.empty()) {
        Name(item.starTable);
        Text(".");
      }
      Text("*");
      continue;
    }
    Value(item.value);
    Text(" AS ");
    if (!item.alias.empty()) {
      Name(item.alias);
    } else if (item.value.kind == Kind::kColumn) {
      Name(item.value.text);
    } else {
      Name("Expr" + std::to_string(unnamed++));
    }
  }
}

void SqlWriter::Where(const std::optional<Expression>& where) {
  if (!where) return;
  Text(" WHERE ");
  Value(*where);
}

void SqlWriter::Write(const Select& select) {
  bool other = select.file.has_value();
  Text(select.distinct ? "SELECT DISTINCT " : "SELECT ");
  Items(select.items);
  Text(" FROM ");
  Table(select.table, other);
  for (const Join& join : select.joins) JoinClause(join, other);
  Where(select.where);
  if (!select.groupBy.empty()) {
    Text(" GROUP BY ");
    List(select.groupBy, 0, ", ");
  }
  if (select.having) {
    Text(" HAVING ");
    Value(*select.having);
  }
  for (size_t i = 0; i < select.orderBy.size(); i++) {
    Text(i == 0 ? " ORDER BY " : ", ");
    Value(select.orderBy[i].value);
    if (select.orderBy[i].descending) Text(" DESC");
  }
  if (select.top) {
    Text(" LIMIT ");
    Literal(*select.top);
  }
}

void SqlWriter::Write(const Insert& insert) {
  Text("INSERT INTO ");
  Schema(insert.file.has_value());
  Name(insert.table);
  std::vector<std::string> columns = insert.columns;
  if (columns.empty() && insert.select) columns = NamesOf(insert.select->items);
  for (size_t i = 0; i < columns.size(); i++) {
    Text(i == 0 ? " (" : ", ");
    Name(columns[i]);
  }
  if (!columns.empty()) Text(")");
  if (insert.select) {
    Text(" ");
    Write(*insert.select);
    return;
  }
  Text(" VALUES (");
  List(insert.values, 0, ", ");
  Text(")");
}

void SqlWriter::Write(const Update& update) {
  Text("UPDATE main.");
  Name(update.table);
  for (size_t i = 0; i < update.changes.size(); i++) {
    Text(i == 0 ? " SET " : ", ");
    Name(update.changes[i].first);
    Text(" = ");
    Value(update.changes[i].second);
  }
  Where(update.where);
}

void SqlWriter::Write(const Delete& statement) {
  Text("DELETE FROM main.");
  Name(statement.table);
  Where(statement.where);
}

void SqlWriter::Literal(size_t literal) {
  Text("?" + std::to_string(literal + kFirstLiteral));
  sql_.literals.push_back(literal);
}

void SqlWriter::List(const std::vector<Expression>& expressions, size_t from,
                     std::string_view separator) {
  for (size_t i = from; i < expressions.size(); i++) {
    if (i > from) Text(separator);
    Value(expressions[i]);
  }
}

void SqlWriter::In(const Expression& in) {
  Value(in.operands[0]);
  Text(in.negated ? " NOT IN (" : " IN (");
  if (in.select) {
    Write(*in.select);
  } else {
    List(in.operands, 1, ", ");
    if (!in.text.empty() && in.operands.size() > 1) Text(", ");
    Text(in.text);
  }
  Text(")");
}

void SqlWriter::Call(const Expression& call) {
  if (call.text == "datevalue") {
    // Seconds, down to midnight; the engine's remainder is negative for dates before 1970.
    const Expression& date = call.operands[0];
    Text("(");
    Value(date);
    Text(" - (");
    Value(date);
    Text(" % 86400 + 86400) % 86400)");
    return;
  }
  Text(EngineFunction(call.text));
  Text("(");
  List(call.operands, 0, ", ");
  Text(")");
}

void SqlWriter::Value(const Expression& expression) {
  switch (expression.kind) {
    case Kind::kLiteral:
      return Literal(expression.literal);
    case Kind::kNumber:
      return Text(expression.text);
    case Kind::kNull:
      return Text("NULL");
    case Kind::kStar:
      return Text("*");
    case Kind::kCall:
      return Call(expression);
    case Kind::kDate:
      sql_.usesDate = true;
      return Text("?" + std::to_string(kDateParameter));
    case Kind::kNow:
      sql_.usesNow = true;
      return Text("?" + std::to_string(kNowParameter));
    case Kind::kColumn:
      if (!expression.table.empty()) {
        Name(expression.table);
        Text(".");
      }
      return Name(expression.text);
    default:
      Text("(");
      Compound(expression);
      Text(")");
  }
}

void SqlWriter::Compound(const Expression& expression) {
  const std::vector<Expression>& operands = expression.operands;
  switch (expression.kind) {
    case Kind::kMinus:
      Text("- ");
      Value(operands[0]);
      break;
    case Kind::kNot:
      Text("NOT ");
      Value(operands[0]);
      break;
    case Kind::kChain:
      if (expression.text == "&") {
        for (size_t i = 0; i < operands.size(); i++) {
          Text(i == 0 ? "coalesce(" : " || coalesce(");
          Value(operands[i]);
          Text(", '')");
        }
      } else {
        // Division is never that of whole numbers.
        List(operands, 0, expression.text == "/" ? " * 1.0 / " : " " + expression.text + " ");
      }
      break;
    case Kind::kCompare:
      Value(operands[0]);
      Text(" " + expression.text + " ");
      Value(operands[1]);
      break;
    case Kind::kLike:
      if (expression.negated) Text("NOT ");
      Text("tw_like(");
      List(operands, 0, ", ");
      Text(")");
      break;
    case Kind::kBetween:
      Value(operands[0]);
      Text(expression.negated ? " NOT BETWEEN " : " BETWEEN ");
      List(operands, 1, " AND ");
      break;
    case Kind::kIn:
      In(expression);
      break;
    case Kind::kIsNull:
      Value(operands[0]);
      Text(expression.negated ? " IS NOT NULL" : " IS NULL");
      break;
    default:
      break;
  }
}

}  // namespace tarnwick::jet
