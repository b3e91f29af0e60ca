// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/plan/read_plan.h"

#include <algorithm>
#include <set>
#include <vector>

#include "database/plan/select_shape.h"
#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

using Kind = Expression::Kind;

bool HasAggregate(const Expression& expression) {
  if (expression.kind == Kind::kCall && IsAggregate(expression.text)) return true;
  return std::any_of(expression.operands.begin(), expression.operands.end(), HasAggregate);
}

class Planner {
 public:
  explicit Planner(const SelectShape& shape)
      : shape_(shape), select_(shape.Shaped()), tables_(shape.Tables()) {}

  bool CanBeKeyed() {
    if (select_.file || !select_.groupBy.empty()) return false;
    if (std::any_of(tables_.begin(), tables_.end(),
                    [](const SelectShape::Source& s) { return !s.view; })) {
      return false;
    }
    for (const SelectItem& item : select_.items) {
      if (!item.star && HasAggregate(item.value)) return false;
      ItemPlaces(item);
    }
    for (size_t i = 0; i < select_.joins.size(); i++) {
      onKey_.push_back(JoinsByKey(i));
    }
    for (const OrderItem& item : select_.orderBy) shape_.Collect(item.value, orderPlaces_);
    if (select_.where) shape_.Collect(*select_.where, wherePlaces_);
    for (const SelectShape::Places* places : {&itemPlaces_, &orderPlaces_, &wherePlaces_}) {
      if (places->contains(SelectShape::kUnknown)) return false;
    }
    return OneRowPerKey();
  }

  // The terms of the condition that are about one table, the first that has any.
  void FindSearches(ReadPlan& plan) const {
    if (select_.file || !select_.where) return;
    std::optional<size_t> place;
    FindTerms(*select_.where, plan, place);
    if (!place) return;
    plan.searched = *place == 0 ? select_.table.name : select_.joins[*place - 1].table.name;
    narrow_ = tables_[*place].shown;
  }

  // What is read, narrowed.
  void WriteNarrowed(ReadPlan& plan, Catalog& schema) const {
    if (plan.searches.empty()) return;
    if (plan.keyed) {
      ReadPlan scratch;
      WriteKeys(scratch, true);
      plan.narrowed = std::move(scratch.keys);
    } else {
      SqlWriter writer(schema);
      writer.Narrow(narrow_);
      writer.Write(select_);
      plan.narrowed = writer.Take();
    }
  }

  // The select does nothing but count the rows of its base table.
  bool CountsRows() const {
    if (select_.items.size() != 1 || select_.items.front().star || select_.distinct ||
        select_.top || !select_.orderBy.empty()) {
      return false;
    }
    const Expression& item = select_.items.front().value;
    return item.kind == Kind::kCall && item.text == "count" && item.operands.size() == 1 &&
           (item.operands[0].kind == Kind::kStar || shape_.IsKeyOf(0, item.operands[0]));
  }

  ReadPlan Keyed() const {
    ReadPlan plan;
    plan.keyed = true;
    plan.top = select_.top;
    plan.base = select_.table.name;
    plan.wholeTable =
        select_.joins.empty() && !select_.where && select_.orderBy.empty() && !select_.top;
    WriteKeys(plan, false);
    WriteRow(plan);
    return plan;
  }

 private:
  void ItemPlaces(const SelectItem& item) {
    if (!item.star) return shape_.Collect(item.value, itemPlaces_);
    for (size_t i = 0; i < tables_.size(); i++) {
      if (item.starTable.empty() || platform::SameWord(tables_[i].shown, item.starTable)) {
        itemPlaces_.insert(i);
      }
    }
  }

  // ON its key = a column of a table further left.
  bool JoinsByKey(size_t join) const {
    const Expression& on = select_.joins[join].on;
    if (on.kind != Kind::kCompare || on.text != "=") return false;
    for (size_t side = 0; side < 2; side++) {
      const Expression& key = on.operands[side];
      const Expression& other = on.operands[1 - side];
      if (shape_.IsKeyOf(join + 1, key) && other.kind == Kind::kColumn &&
          shape_.PlaceOf(other) <= join) {
        return true;
      }
    }
    return false;
  }

  bool ShowsKey() const {
    return std::any_of(select_.items.begin(), select_.items.end(), [&](const SelectItem& item) {
      if (item.star)
        return item.starTable.empty() || platform::SameWord(item.starTable, tables_[0].shown);
      return shape_.IsKeyOf(0, item.value);
    });
  }

  bool OneRowPerKey() const {
    bool repeats = std::find(onKey_.begin(), onKey_.end(), false) != onKey_.end();
    if (repeats && !select_.distinct) return false;
    if (select_.distinct && !ShowsKey()) return false;
    for (size_t i = 0; i < onKey_.size(); i++) {
      if (!onKey_[i] && (itemPlaces_.contains(i + 1) || orderPlaces_.contains(i + 1))) return false;
    }
    return true;
  }

  // The joins that the places need, with those that their conditions need in turn. An inner join
  // is a condition of its own.
  std::set<size_t> NeededJoins(SelectShape::Places needed, bool asCondition) const {
    std::set<size_t> joins;
    for (size_t i = select_.joins.size(); i-- > 0;) {
      bool inner = asCondition && select_.joins[i].kind == Join::Kind::kInner;
      if (!inner && !needed.contains(i + 1)) continue;
      joins.insert(i);
      shape_.Collect(select_.joins[i].on, needed);
    }
    return joins;
  }

  void From(SqlWriter& writer, const std::set<size_t>& joins) const {
    writer.Text(" FROM ");
    writer.Table(select_.table, false);
    for (size_t i : joins) writer.JoinClause(select_.joins[i], false);
  }

  void FindTerms(const Expression& condition, ReadPlan& plan, std::optional<size_t>& place) const {
    if (condition.kind == Kind::kChain && condition.text == "AND") {
      for (const Expression& part : condition.operands) FindTerms(part, plan, place);
      return;
    }
    SearchTerm term;
    const Expression* search = &condition;
    if (condition.kind == Kind::kCompare) {
      // InStr(text, part) <> 0
      bool isFound = (condition.text == "<>" || condition.text == ">") &&
                     condition.operands[1].kind == Kind::kLiteral;
      search = &condition.operands[0];
      if (!isFound || search->kind != Kind::kCall || search->text != "instr") return;
      term.mustBeZero = condition.operands[1].literal;
    } else if (condition.kind != Kind::kLike || condition.negated) {
      return;
    }
    term.isPattern = condition.kind == Kind::kLike;
    const Expression& text = search->operands[0];
    const Expression& wanted = search->operands[1];
    if (text.kind != Kind::kColumn || wanted.kind != Kind::kLiteral) return;
    size_t here = shape_.PlaceOf(text);
    if (here == SelectShape::kUnknown || (place && *place != here)) return;
    place = here;
    term.column = text.text;
    term.literal = wanted.literal;
    plan.searches.push_back(std::move(term));
  }

  void WriteKeys(ReadPlan& plan, bool narrowed) const {
    SelectShape::Places places = wherePlaces_;
    places.insert(orderPlaces_.begin(), orderPlaces_.end());
    std::set<size_t> joins = NeededJoins(std::move(places), true);
    plan.repeatsKeys =
        std::any_of(joins.begin(), joins.end(), [&](size_t i) { return !onKey_[i]; });
    SqlWriter writer = shape_.Writer();
    if (narrowed) writer.Narrow(narrow_);
    writer.Text("SELECT ");
    shape_.WriteKey(writer, 0);
    From(writer, joins);
    writer.Where(select_.where);
    writer.Text(" ORDER BY ");
    for (const OrderItem& item : select_.orderBy) {
      writer.Value(item.value);
      writer.Text(item.descending ? " DESC, " : ", ");
    }
    // Rows that tie keep one order, that of their keys, so that the list never shuffles.
    shape_.WriteKey(writer, 0);
    if (!select_.orderBy.empty() && select_.orderBy.back().descending) writer.Text(" DESC");
    plan.keys = writer.Take();
  }

  void WriteRow(ReadPlan& plan) const {
    SqlWriter writer = shape_.Writer();
    writer.Text("SELECT ");
    writer.Items(select_.items);
    From(writer, NeededJoins(itemPlaces_, false));
    writer.Text(" WHERE ");
    shape_.WriteKey(writer, 0);
    writer.Text(" = ?" + std::to_string(kKeyParameter));
    plan.row = writer.Take();
  }

  const SelectShape& shape_;
  const Select& select_;
  const std::vector<SelectShape::Source>& tables_;
  std::vector<bool> onKey_;  // of each join: whether it adds at most one row
  SelectShape::Places itemPlaces_;
  SelectShape::Places orderPlaces_;
  SelectShape::Places wherePlaces_;
  mutable std::string narrow_;
};

}  // namespace

ReadPlan PlanSelect(Select& select, Catalog& schema, std::string_view otherSchema,
                    const ColumnCacheDefinition* cache) {
  SelectShape shape(select, schema);
  Planner planner(shape);
  ReadPlan plan;
  if (planner.CanBeKeyed()) {
    plan = planner.Keyed();
    if (cache != nullptr && !plan.wholeTable) plan.columnCache = PlanFromColumnCache(shape, *cache);
  } else {
    if (cache != nullptr && (planner.CountsRows() || !select.groupBy.empty())) {
      plan.columnCache = PlanFromColumnCache(shape, *cache);
    }
    SqlWriter writer(schema, otherSchema);
    writer.Write(select);
    plan.all = writer.Take();
  }
  planner.FindSearches(plan);
  planner.WriteNarrowed(plan, schema);
  return plan;
}

Select WholeTable(std::string_view table) {
  Select select;
  select.table.name = table;
  SelectItem all;
  all.star = true;
  select.items.push_back(std::move(all));
  return select;
}

}  // namespace tarnwick::jet
