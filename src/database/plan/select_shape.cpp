// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/plan/select_shape.h"
#include "platform/utf8.h"

#include <algorithm>

namespace tarnwick::jet {

using Kind = Expression::Kind;

SelectShape::SelectShape(Select& select, Catalog& schema) : select_(select), schema_(schema) {
  tables_.push_back({select.table.Shown(), schema.Find(select.table.name)});
  for (const Join& join : select.joins) {
    tables_.push_back({join.table.Shown(), schema.Find(join.table.name)});
  }
  if (!select.where) return;
  for (size_t i = 0; i < select.joins.size(); i++) {
    Join& join = select.joins[i];
    if (join.kind == Join::Kind::kLeft && ThrowsOutNull(*select.where, i + 1)) {
      join.kind = Join::Kind::kInner;
    }
  }
}

size_t SelectShape::PlaceOf(const Expression& column) const {
  size_t found = kUnknown;
  for (size_t i = 0; i < tables_.size(); i++) {
    bool here = column.table.empty()
                    ? tables_[i].view != nullptr && tables_[i].view->Has(column.text)
                    : platform::SameWord(tables_[i].shown, column.table);
    if (!here) continue;
    if (found != kUnknown) return kUnknown;
    found = i;
  }
  return found;
}

void SelectShape::Collect(const Expression& expression, Places& places) const {
  if (expression.kind == Kind::kColumn) places.insert(PlaceOf(expression));
  for (const Expression& operand : expression.operands) Collect(operand, places);
}

bool SelectShape::IsColumn(const Expression& value, size_t place, std::string_view name) const {
  return value.kind == Kind::kColumn && platform::SameWord(value.text, name) &&
         PlaceOf(value) == place;
}

bool SelectShape::IsKeyOf(size_t place, const Expression& column) const {
  return column.kind == Kind::kColumn && PlaceOf(column) == place &&
         !tables_[place].view->key.empty() &&
         platform::SameWord(tables_[place].view->key, column.text);
}

bool SelectShape::ThrowsOutNull(const Expression& condition, size_t place) const {
  switch (condition.kind) {
    case Kind::kChain:
      return condition.text == "AND" &&
             std::any_of(condition.operands.begin(), condition.operands.end(),
                         [&](const Expression& part) { return ThrowsOutNull(part, place); });
    case Kind::kCompare:
      return IsNullWithout(condition.operands[0], place) ||
             IsNullWithout(condition.operands[1], place);
    case Kind::kLike:
    case Kind::kBetween:
      return IsNullWithout(condition.operands[0], place);
    default:
      return false;
  }
}

bool SelectShape::IsNullWithout(const Expression& value, size_t place) const {
  if (value.kind == Kind::kColumn) return PlaceOf(value) == place;
  bool strict = value.kind == Kind::kMinus ||
                (value.kind == Kind::kCall && (value.text == "instr" || value.text == "len")) ||
                (value.kind == Kind::kChain && value.text != "&" && value.text != "AND" &&
                 value.text != "OR");
  return strict && std::any_of(value.operands.begin(), value.operands.end(),
                               [&](const Expression& part) { return IsNullWithout(part, place); });
}

SqlWriter SelectShape::Writer() const {
  SqlWriter writer(schema_);
  writer.Enter(select_);
  return writer;
}

void SelectShape::WriteKey(SqlWriter& writer, size_t place) const {
  writer.Name(tables_[place].shown);
  writer.Text("._rowid_");
}

}  // namespace tarnwick::jet
