// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/dialect/dialect_writer.h"

#include <algorithm>
#include <utility>

#include "database/engine/functions.h"
#include "platform/utf8.h"

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

bool IsLong(ColumnKind kind) {
  return kind == ColumnKind::kLongText || kind == ColumnKind::kBytes;
}

}  // namespace

const TableView* SqlWriter::ViewOf(std::string_view table) const {
  return schema_ != nullptr ? schema_->Find(table) : nullptr;
}

void SqlWriter::Enter(const Select& select) {
  Scope scope{{select.table.Shown(), ViewOf(select.table.name)}};
  for (const Join& join : select.joins) {
    scope.push_back({join.table.Shown(), ViewOf(join.table.name)});
  }
  scopes_.push_back(std::move(scope));
}

void SqlWriter::EnterTable(std::string_view table) {
  scopes_.push_back({{std::string(table), ViewOf(table)}});
}

// What the table of a column has; nullptr: unknown.
const TableView* SqlWriter::ViewWith(const Expression& column) const {
  if (column.kind != Kind::kColumn) return nullptr;
  for (auto scope = scopes_.rbegin(); scope != scopes_.rend(); ++scope) {
    for (const Source& source : *scope) {
      bool here = column.table.empty() ? source.view != nullptr && source.view->Has(column.text)
                                       : platform::SameWord(source.shown, column.table);
      if (here && source.view != nullptr) return source.view;
    }
  }
  return nullptr;
}

ColumnKind SqlWriter::KindOf(const Expression& expression) const {
  const TableView* view = ViewWith(expression);
  return view != nullptr ? view->KindOf(expression.text) : ColumnKind::kAny;
}

void SqlWriter::Column(const Expression& column) {
  if (!column.table.empty()) {
    Name(column.table);
    Text(".");
  }
  Name(column.text);
}

void SqlWriter::PlainColumn(const Expression& column) {
  ColumnKind kind = KindOf(column);
  if (!IsLong(kind)) return Column(column);
  bool isText = kind == ColumnKind::kLongText;
  // A function's value has lost how its column compares.
  Text(isText ? "(CAST(tw_long_text(" : "tw_bytes(");
  Column(column);
  Text(")");
  if (isText) Text(std::string(" AS TEXT) COLLATE ") + kTextCollation + ")");
}

void SqlWriter::Packed(const Expression& value, ColumnKind into) {
  if (!IsLong(into) || value.kind == Kind::kNull) return Value(value);
  Text(into == ColumnKind::kLongText ? "tw_pack_text(" : "tw_pack_bytes(");
  Value(value);
  Text(")");
}

void SqlWriter::Name(std::string_view name) {
  sql_.text += QuotedName(name);
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
  Text(join.kind == Join::Kind::kLeft ? " LEFT JOIN " : " JOIN ");
  Table(join.table, other);
  Text(" ON ");
  Value(join.on);
}

void SqlWriter::Item(const SelectItem& item, ColumnKind into, int& unnamed) {
  if (item.star) {
    if (!item.starTable.empty()) {
      Name(item.starTable);
      Text(".");
    }
    return Text("*");
  }
  bool isColumn = item.value.kind == Kind::kColumn;
  if (isColumn && !plainItems_) {
    Column(item.value);
  } else {
    Packed(item.value, into);
  }
  Text(" AS ");
  if (!item.alias.empty()) {
    Name(item.alias);
  } else if (isColumn) {
    Name(item.value.text);
  } else {
    Name("Expr" + std::to_string(unnamed++));
  }
}

void SqlWriter::Items(const std::vector<SelectItem>& items) {
  int unnamed = 1000;
  for (size_t i = 0; i < items.size(); i++) {
    if (i > 0) Text(", ");
    Item(items[i], ColumnKind::kAny, unnamed);
  }
}

std::vector<SelectItem> SqlWriter::Expanded(const std::vector<SelectItem>& items) const {
  std::vector<SelectItem> expanded;
  for (const SelectItem& item : items) {
    if (!item.star) {
      // Only what an item is taken from matters here.
      SelectItem named;
      named.value.kind = item.value.kind;
      named.value.table = item.value.table;
      named.value.text = item.value.text;
      expanded.push_back(std::move(named));
      continue;
    }
    for (const Source& source : scopes_.back()) {
      bool meant = item.starTable.empty() || platform::SameWord(item.starTable, source.shown);
      if (!meant || source.view == nullptr) continue;
      for (const std::string& column : source.view->columns) {
        SelectItem named;
        named.value.kind = Kind::kColumn;
        named.value.table = source.shown;
        named.value.text = column;
        expanded.push_back(std::move(named));
      }
    }
  }
  return expanded;
}

void SqlWriter::Where(const std::optional<Expression>& where) {
  if (!where) return;
  Text(" WHERE ");
  // Not that of a select inside, which may come first.
  if (!narrowed_.empty() && scopes_.size() == 1) {
    Name(std::exchange(narrowed_, {}));
    Text("._rowid_ IN (SELECT ID FROM temp.tw_search_found) AND ");
  }
  Value(*where);
}

void SqlWriter::Write(const Select& select) {
  Rows(select, {}, false);
}

void SqlWriter::Rows(const Select& select, const std::vector<ColumnKind>& into, bool carriedOver) {
  bool other = select.file.has_value();
  Enter(select);
  // Where rows are compared with one another their plain values are.
  bool compared = select.distinct || !select.groupBy.empty() || !select.orderBy.empty();
  bool outer = plainItems_;
  plainItems_ = carriedOver ? false : compared || !into.empty() || scopes_.size() > 1;
  Text(select.distinct ? "SELECT DISTINCT " : "SELECT ");
  if (into.empty() || carriedOver) {
    Items(select.items);
  } else {
    int unnamed = 1000;
    for (size_t i = 0; i < select.items.size(); i++) {
      if (i > 0) Text(", ");
      Item(select.items[i], i < into.size() ? into[i] : ColumnKind::kAny, unnamed);
    }
  }
  plainItems_ = outer;
  Text(" FROM ");
  Table(select.table, other);
  for (const Join& join : select.joins) JoinClause(join, other);
  Where(select.where);
  if (!select.groupBy.empty()) {
    Text(" GROUP BY ");
    List(select.groupBy, 0, ", ");
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
  scopes_.pop_back();
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
  std::vector<ColumnKind> into;
  if (const TableView* view = ViewOf(insert.table)) {
    for (const std::string& column : columns.empty() ? view->columns : columns) {
      into.push_back(view->KindOf(column));
    }
  }
  if (insert.select) {
    Text(" ");
    return InsertRows(*insert.select, into);
  }
  Text(" VALUES (");
  for (size_t i = 0; i < insert.values.size(); i++) {
    if (i > 0) Text(", ");
    Packed(insert.values[i], i < into.size() ? into[i] : ColumnKind::kAny);
  }
  Text(")");
}

void SqlWriter::InsertRows(const Select& select, const std::vector<ColumnKind>& into) {
  if (std::none_of(into.begin(), into.end(), IsLong)) return Write(select);
  Enter(select);
  std::vector<SelectItem> items = Expanded(select.items);
  bool asStored = !select.distinct && select.groupBy.empty() && items.size() == into.size();
  for (size_t i = 0; asStored && i < items.size(); i++) {
    ColumnKind from = KindOf(items[i].value);
    asStored = from == into[i] || (!IsLong(from) && !IsLong(into[i]));
  }
  scopes_.pop_back();
  bool hasStar = std::any_of(select.items.begin(), select.items.end(),
                             [](const SelectItem& item) { return item.star; });
  if (!asStored && hasStar) {
    // The rows of another kind of table, or each only once: not what a * is copied for.
    RefuseSql("* into columns of other kinds");
  }
  Rows(select, into, asStored);
}

void SqlWriter::Write(const Update& update) {
  Text("UPDATE main.");
  Name(update.table);
  EnterTable(update.table);
  for (size_t i = 0; i < update.changes.size(); i++) {
    Text(i == 0 ? " SET " : ", ");
    const auto& [column, value] = update.changes[i];
    Name(column);
    Text(" = ");
    const TableView* view = scopes_.back().front().view;
    Packed(value, view != nullptr ? view->KindOf(column) : ColumnKind::kAny);
  }
  Where(update.where);
  scopes_.pop_back();
}

void SqlWriter::Write(const Delete& statement) {
  Text("DELETE FROM main.");
  Name(statement.table);
  EnterTable(statement.table);
  Where(statement.where);
  scopes_.pop_back();
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
  } else if (in.keys) {
    // With the sign they compare as numbers written out do: with texts as texts.
    Text("SELECT +value FROM carray(?" + std::to_string(in.keys->literal + kFirstLiteral) + ")");
    sql_.keys.push_back(in.keys);
  } else {
    List(in.operands, 1, ", ");
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
  // How many there are does not depend on what they are.
  if (call.text == "count" && call.operands[0].kind == Kind::kColumn) {
    Text("(");
    Column(call.operands[0]);
    return Text(")");
  }
  if (call.text == "instr") return Search(call);
  Text("(");
  List(call.operands, 0, ", ");
  Text(")");
}

// A long text is searched where it is unpacked, without a copy of it.
void SqlWriter::Search(const Expression& search) {
  const Expression& text = search.operands[0];
  bool isLong = KindOf(text) == ColumnKind::kLongText;
  Text(isLong ? "_long(" : "(");
  if (isLong) {
    Column(text);
  } else {
    Value(text);
  }
  Text(", ");
  List(search.operands, 1, ", ");
  Text(")");
}

void SqlWriter::Value(const Expression& expression) {
  switch (expression.kind) {
    case Kind::kLiteral:
      return Literal(expression.literal);
    case Kind::kNull:
      return Text("NULL");
    case Kind::kStar:
      return Text("*");
    case Kind::kCall:
      return Call(expression);
    case Kind::kDate:
      sql_.usesDate = true;
      return Text("?" + std::to_string(kDateParameter));
    case Kind::kColumn:
      return PlainColumn(expression);
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
        List(operands, 0, " " + expression.text + " ");
      }
      break;
    case Kind::kCompare:
      Value(operands[0]);
      Text(" " + expression.text + " ");
      Value(operands[1]);
      break;
    case Kind::kLike:
      if (expression.negated) Text("NOT ");
      Text("tw_like");
      Search(expression);
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
      if (operands[0].kind == Kind::kColumn) {
        Column(operands[0]);
      } else {
        Value(operands[0]);
      }
      Text(expression.negated ? " IS NOT NULL" : " IS NULL");
      break;
    default:
      break;
  }
}

}  // namespace tarnwick::jet
