// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "database/plan/read_plan.h"
#include "database/plan/select_shape.h"
#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

using Kind = Expression::Kind;

// A select inside stands for itself, and its names may be those of the tables out here.
bool HasSelect(const Expression& expression) {
  return expression.select != nullptr || expression.keys != nullptr ||
         std::any_of(expression.operands.begin(), expression.operands.end(), HasSelect);
}

class ColumnCachePlanner {
 public:
  ColumnCachePlanner(const SelectShape& shape, const ColumnCacheDefinition& cache)
      : shape_(shape), select_(shape.Shaped()), tables_(shape.Tables()), cache_(cache) {}

  // nullopt: the column cache is of no use.
  std::optional<ColumnCachePlan> Plan() const {
    if (!platform::SameWord(select_.table.name, cache_.table) || tables_[0].view == nullptr)
      return {};
    if (select_.file || select_.top) return {};
    ColumnCachePlan plan;
    if (!select_.groupBy.empty() && !GroupByColumnCache(plan)) return {};
    ColumnCacheParts parts;
    if (!FindJoins(parts)) return {};
    if (select_.where && !SplitCondition(*select_.where, parts, plan)) return {};
    // Without a stretch of time the query is no list's; one row by its key, say.
    if (plan.spans.empty() && !CountsAll()) return {};
    if (!OrderByColumnCache(parts, plan)) return {};
    WriteParts(parts, plan);
    plan.countsDetails = parts.details.has_value();
    return plan;
  }

 private:
  using Conditions = std::vector<const Expression*>;
  // What a column cache's plan is made of: the joins by their places, the condition by what it
  // asks.
  struct ColumnCacheParts {
    std::optional<size_t> reference;
    std::optional<size_t> details;
    Conditions ofReference;
    Conditions ofDetails;
    Conditions ofRows;
  };

  bool CountsAll() const {
    const Expression& item = select_.items.front().value;
    return select_.joins.empty() && !select_.where && select_.groupBy.empty() &&
           item.kind == Kind::kCall && item.text == "count" && item.operands.size() == 1 &&
           item.operands[0].kind == Kind::kStar;
  }

  // The items are each group's values and how many rows it has.
  bool GroupByColumnCache(ColumnCachePlan& plan) const {
    if (!select_.joins.empty() || select_.distinct || !select_.orderBy.empty()) return false;
    size_t groups = 0;
    for (const SelectItem& item : select_.items) {
      bool counts = !item.star && item.value.kind == Kind::kCall && item.value.text == "count" &&
                    item.value.operands[0].kind == Kind::kStar;
      if (counts) {
        plan.groupItems.emplace_back();
        continue;
      }
      // Each in the order of the groups, so that none is missing.
      if (item.star || groups == select_.groupBy.size()) return false;
      auto of = GroupOf(item.value);
      auto wanted = GroupOf(select_.groupBy[groups++]);
      if (!of || !wanted || of->part != wanted->part || of->kind != wanted->kind) return false;
      plan.groupItems.push_back(*of);
    }
    return groups == select_.groupBy.size();
  }

  std::optional<ColumnCachePlan::GroupItem> GroupOf(const Expression& value) const {
    using Part = ColumnCachePlan::GroupItem::Part;
    bool isDay = value.kind == Kind::kCall && value.text == "datevalue" &&
                 shape_.IsColumn(value.operands[0], 0, cache_.date);
    if (isDay) return {{Part::kDay}};
    if (shape_.IsColumn(value, 0, cache_.reference)) return {{Part::kReference}};
    if (auto kind = KindOf(value)) return {{Part::kKind, *kind}};
    return std::nullopt;
  }

  // Each join is that of the reference or that of the details.
  bool FindJoins(ColumnCacheParts& parts) const {
    for (size_t i = 0; i < select_.joins.size(); i++) {
      const Join& join = select_.joins[i];
      if (join.on.kind != Kind::kCompare || join.on.text != "=") return false;
      if (tables_[i + 1].view == nullptr) return false;
      bool isKnown = false;
      for (size_t side = 0; side < 2; side++) {
        const Expression& own = join.on.operands[side];
        const Expression& other = join.on.operands[1 - side];
        if (!parts.reference && shape_.IsKeyOf(i + 1, own) &&
            shape_.IsColumn(other, 0, cache_.reference)) {
          parts.reference = i + 1;
          isKnown = true;
        } else if (!parts.details && platform::SameWord(join.table.name, cache_.details) &&
                   shape_.IsColumn(own, i + 1, cache_.detailKey) && shape_.IsKeyOf(0, other)) {
          parts.details = i + 1;
          isKnown = true;
        }
      }
      if (!isKnown) return false;
    }
    return true;
  }

  bool SplitCondition(const Expression& condition, ColumnCacheParts& parts,
                      ColumnCachePlan& plan) const {
    if (condition.kind == Kind::kChain && condition.text == "AND") {
      return std::all_of(condition.operands.begin(), condition.operands.end(),
                         [&](const Expression& part) { return SplitCondition(part, parts, plan); });
    }
    SelectShape::Places places;
    shape_.Collect(condition, places);
    if (places.size() != 1 || HasSelect(condition)) return false;
    size_t place = *places.begin();
    if (place == 0) {
      if (!AskColumnCache(condition, plan)) parts.ofRows.push_back(&condition);
      return true;
    }
    // What may hold without a joined row can't be told from the rows that there are.
    if (place == SelectShape::kUnknown || !shape_.ThrowsOutNull(condition, place)) return false;
    (parts.reference == place ? parts.ofReference : parts.ofDetails).push_back(&condition);
    return true;
  }

  // True when the column cache itself knows the answer.
  bool AskColumnCache(const Expression& condition, ColumnCachePlan& plan) const {
    const std::vector<Expression>& operands = condition.operands;
    auto isLiteral = [&](size_t i) { return operands[i].kind == Kind::kLiteral; };
    if (condition.kind == Kind::kBetween && !condition.negated &&
        shape_.IsColumn(operands[0], 0, cache_.date) && isLiteral(1) && isLiteral(2)) {
      plan.spans.push_back({operands[1].literal, operands[2].literal});
      return true;
    }
    if (operands.empty()) return false;
    auto kind = KindOf(operands[0]);
    if (!kind) return false;
    if (condition.kind == Kind::kIsNull) {
      plan.kindTests.push_back({*kind, {}, {}, condition.negated});
      return true;
    }
    if (condition.kind != Kind::kCompare || !isLiteral(1)) return false;
    plan.kindTests.push_back({*kind, condition.text, operands[1].literal});
    return true;
  }

  std::optional<size_t> KindOf(const Expression& value) const {
    for (size_t i = 0; i < cache_.kinds.size(); i++) {
      if (shape_.IsColumn(value, 0, cache_.kinds[i])) return i;
    }
    return std::nullopt;
  }

  bool OrderByColumnCache(const ColumnCacheParts& parts, ColumnCachePlan& plan) const {
    if (select_.orderBy.empty()) return true;
    if (select_.orderBy.size() > 1) return false;
    const Expression& value = select_.orderBy.front().value;
    plan.descending = select_.orderBy.front().descending;
    if (value.kind != Kind::kColumn) return false;
    size_t place = shape_.PlaceOf(value);
    if (shape_.IsKeyOf(0, value)) return true;
    if (shape_.IsColumn(value, 0, cache_.date)) {
      plan.orderBy = ColumnCachePlan::Order::kDate;
    } else if (auto kind = KindOf(value)) {
      plan.orderBy = ColumnCachePlan::Order::kKind;
      plan.orderKind = *kind;
    } else if (place != SelectShape::kUnknown && tables_[place].view->IsText(value.text) &&
               (place == 0 || parts.reference == place)) {
      WriteTextOrder(value, place, plan);
    } else {
      return false;
    }
    return true;
  }

  void WriteTextOrder(const Expression& value, size_t place, ColumnCachePlan& plan) const {
    plan.orderBy = place == 0 ? ColumnCachePlan::Order::kText : ColumnCachePlan::Order::kReference;
    SqlWriter order = shape_.Writer();
    order.Text("SELECT ");
    shape_.WriteKey(order, place);
    order.Text(", ");
    if (place == 0) {
      order.Text("NULL");
    } else {
      order.Value(value);
    }
    FromOne(order, place);
    order.Text(" ORDER BY ");
    order.Value(value);
    order.Text(", ");
    shape_.WriteKey(order, place);
    plan.order = order.Take();
    SqlWriter text = shape_.Writer();
    text.Text("SELECT ");
    text.Value(value);
    FromOne(text, place);
    text.Text(" WHERE ");
    shape_.WriteKey(text, place);
    text.Text(" = ?" + std::to_string(kKeyParameter));
    plan.text = text.Take();
  }

  void WriteParts(const ColumnCacheParts& parts, ColumnCachePlan& plan) const {
    auto isInner = [&](std::optional<size_t> place) {
      return place && select_.joins[*place - 1].kind == Join::Kind::kInner;
    };
    if (isInner(parts.reference)) {
      plan.references = WriteOne(*parts.reference, "_rowid_", parts.ofReference);
    }
    if (isInner(parts.details)) {
      plan.details = WriteOne(*parts.details, cache_.detailKey, parts.ofDetails);
    }
    if (parts.ofRows.empty()) return;
    plan.rows = WriteOne(0, "_rowid_", parts.ofRows);
    SqlWriter row = shape_.Writer();
    row.Text("SELECT 1");
    FromOne(row, 0);
    row.Text(" WHERE ");
    shape_.WriteKey(row, 0);
    row.Text(" = ?" + std::to_string(kKeyParameter));
    for (const Expression* part : parts.ofRows) {
      row.Text(" AND ");
      row.Value(*part);
      plan.rowsAreLong = plan.rowsAreLong || AsksLongText(*part);
    }
    plan.row = row.Take();
  }

  bool AsksLongText(const Expression& value) const {
    if (value.kind == Kind::kColumn)
      return tables_[0].view->KindOf(value.text) == ColumnKind::kLongText;
    return std::any_of(value.operands.begin(), value.operands.end(),
                       [&](const Expression& part) { return AsksLongText(part); });
  }

  EngineSql WriteOne(size_t place, std::string_view column, const Conditions& conditions) const {
    SqlWriter writer = shape_.Writer();
    writer.Text("SELECT ");
    writer.Name(tables_[place].shown);
    writer.Text(".");
    // The engine's own name for the key is no column's.
    column == "_rowid_" ? writer.Text(column) : writer.Name(column);
    FromOne(writer, place);
    for (size_t i = 0; i < conditions.size(); i++) {
      writer.Text(i == 0 ? " WHERE " : " AND ");
      writer.Value(*conditions[i]);
    }
    return writer.Take();
  }

  void FromOne(SqlWriter& writer, size_t place) const {
    writer.Text(" FROM ");
    writer.Table(place == 0 ? select_.table : select_.joins[place - 1].table, false);
  }

  const SelectShape& shape_;
  const Select& select_;
  const std::vector<SelectShape::Source>& tables_;
  const ColumnCacheDefinition& cache_;
};

}  // namespace

std::optional<ColumnCachePlan> PlanFromColumnCache(const SelectShape& shape,
                                                   const ColumnCacheDefinition& cache) {
  return ColumnCachePlanner(shape, cache).Plan();
}

}  // namespace tarnwick::jet
