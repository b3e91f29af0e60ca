// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/jet/read_plan.h"

#include <algorithm>
#include <set>
#include <vector>

namespace tarnwick::jet {

namespace {

using Kind = Expression::Kind;

// Places of tables in the FROM clause: 0 the base, i + 1 the i-th join. kUnknown is a column that
// can't be placed.
using Places = std::set<size_t>;
constexpr size_t kUnknown = static_cast<size_t>(-1);

bool HasAggregate(const Expression& expression) {
  if (expression.kind == Kind::kCall && IsAggregate(expression.text)) return true;
  return std::any_of(expression.operands.begin(), expression.operands.end(), HasAggregate);
}

class Planner {
 public:
  Planner(Select& select, Catalog& schema) : select_(select), schema_(schema) {
    Add(select.table, schema);
    for (const Join& join : select.joins) Add(join.table, schema);
    NarrowJoins();
  }

  bool CanBeKeyed() {
    if (select_.file || !select_.groupBy.empty() || select_.having) return false;
    if (std::any_of(tables_.begin(), tables_.end(), [](const Source& s) { return !s.view; })) {
      return false;
    }
    for (const SelectItem& item : select_.items) {
      if (!item.star && HasAggregate(item.value)) return false;
      ItemPlaces(item);
    }
    for (size_t i = 0; i < select_.joins.size(); i++) {
      if (select_.joins[i].kind == Join::Kind::kCross) return false;
      onKey_.push_back(JoinsByKey(i));
    }
    for (const OrderItem& item : select_.orderBy) Collect(item.value, orderPlaces_);
    if (select_.where) Collect(*select_.where, wherePlaces_);
    for (const Places* places : {&itemPlaces_, &orderPlaces_, &wherePlaces_}) {
      if (places->contains(kUnknown)) return false;
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

  // The whole statement, narrowed.
  void WriteNarrowed(ReadPlan& plan) const {
    if (plan.searches.empty()) return;
    if (plan.keyed) {
      ReadPlan scratch;
      WriteKeys(scratch, true);
      plan.narrowed = std::move(scratch.keys);
    } else {
      SqlWriter writer(schema_);
      writer.Narrow(narrow_);
      writer.Write(select_);
      plan.narrowed = writer.Take();
    }
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
  struct Source {
    std::string shown;
    const TableView* view;
  };

  void Add(const TableName& table, Catalog& schema) {
    tables_.push_back({table.Shown(), schema.Find(table.name)});
  }

  size_t PlaceOf(const Expression& column) const {
    size_t found = kUnknown;
    for (size_t i = 0; i < tables_.size(); i++) {
      bool here = column.table.empty()
                      ? tables_[i].view != nullptr && tables_[i].view->Has(column.text)
                      : SameWord(tables_[i].shown, column.table);
      if (!here) continue;
      if (found != kUnknown) return kUnknown;
      found = i;
    }
    return found;
  }

  // A select inside stands for itself: its names are not looked for out here.
  void Collect(const Expression& expression, Places& places) const {
    if (expression.kind == Kind::kColumn) places.insert(PlaceOf(expression));
    for (const Expression& operand : expression.operands) Collect(operand, places);
  }

  void ItemPlaces(const SelectItem& item) {
    if (!item.star) return Collect(item.value, itemPlaces_);
    for (size_t i = 0; i < tables_.size(); i++) {
      if (item.starTable.empty() || SameWord(tables_[i].shown, item.starTable)) {
        itemPlaces_.insert(i);
      }
    }
  }

  // A left join whose empty rows the condition throws out is an inner one, and the engine may begin
  // with its table.
  void NarrowJoins() {
    if (!select_.where) return;
    for (size_t i = 0; i < select_.joins.size(); i++) {
      Join& join = select_.joins[i];
      if (join.kind == Join::Kind::kLeft && ThrowsOutNull(*select_.where, i + 1)) {
        join.kind = Join::Kind::kInner;
      }
    }
  }

  // True when the condition can't hold where every column of the table is Null.
  bool ThrowsOutNull(const Expression& condition, size_t place) const {
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

  // True when the value is Null where every column of the table is.
  bool IsNullWithout(const Expression& value, size_t place) const {
    if (value.kind == Kind::kColumn) return PlaceOf(value) == place;
    bool strict = value.kind == Kind::kMinus ||
                  (value.kind == Kind::kCall && (value.text == "instr" || value.text == "len")) ||
                  (value.kind == Kind::kChain && value.text != "&" && value.text != "AND" &&
                   value.text != "OR");
    return strict &&
           std::any_of(value.operands.begin(), value.operands.end(),
                       [&](const Expression& part) { return IsNullWithout(part, place); });
  }

  bool IsKeyOf(size_t place, const Expression& column) const {
    return column.kind == Kind::kColumn && PlaceOf(column) == place &&
           !tables_[place].view->key.empty() && SameWord(tables_[place].view->key, column.text);
  }

  // ON its key = a column of a table further left.
  bool JoinsByKey(size_t join) const {
    const Expression& on = *select_.joins[join].on;
    if (on.kind != Kind::kCompare || on.text != "=") return false;
    for (size_t side = 0; side < 2; side++) {
      const Expression& key = on.operands[side];
      const Expression& other = on.operands[1 - side];
      if (IsKeyOf(join + 1, key) && other.kind == Kind::kColumn && PlaceOf(other) <= join) {
        return true;
      }
    }
    return false;
  }

  bool ShowsKey() const {
    return std::any_of(select_.items.begin(), select_.items.end(), [&](const SelectItem& item) {
      if (item.star) return item.starTable.empty() || SameWord(item.starTable, tables_[0].shown);
      return IsKeyOf(0, item.value);
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
  std::set<size_t> NeededJoins(Places needed, bool asCondition) const {
    std::set<size_t> joins;
    for (size_t i = select_.joins.size(); i-- > 0;) {
      bool inner = asCondition && select_.joins[i].kind == Join::Kind::kInner;
      if (!inner && !needed.contains(i + 1)) continue;
      joins.insert(i);
      Collect(*select_.joins[i].on, needed);
    }
    return joins;
  }

  void KeyColumn(SqlWriter& writer) const {
    writer.Name(tables_[0].shown);
    writer.Text("._rowid_");
  }

  void From(SqlWriter& writer, const std::set<size_t>& joins) const {
    writer.Text(" FROM ");
    writer.Table(select_.table, false);
    for (size_t i : joins) writer.JoinClause(select_.joins[i], false);
  }

  // The order is that of one text column, which TextSorter sorts faster than the engine.
  bool SortsByText() const {
    if (select_.orderBy.size() != 1) return false;
    const Expression& value = select_.orderBy.front().value;
    return value.kind == Kind::kColumn && tables_[PlaceOf(value)].view->IsText(value.text);
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
      term.nought = condition.operands[1].literal;
    } else if (condition.kind != Kind::kLike || condition.negated) {
      return;
    }
    term.isPattern = condition.kind == Kind::kLike;
    const Expression& text = search->operands[0];
    const Expression& wanted = search->operands[1];
    if (text.kind != Kind::kColumn || wanted.kind != Kind::kLiteral) return;
    size_t here = PlaceOf(text);
    if (here == kUnknown || (place && *place != here)) return;
    place = here;
    term.column = text.text;
    term.literal = wanted.literal;
    plan.searches.push_back(std::move(term));
  }

  void WriteKeys(ReadPlan& plan, bool narrowed) const {
    Places places = wherePlaces_;
    places.insert(orderPlaces_.begin(), orderPlaces_.end());
    std::set<size_t> joins = NeededJoins(std::move(places), true);
    plan.repeatsKeys =
        std::any_of(joins.begin(), joins.end(), [&](size_t i) { return !onKey_[i]; });
    SqlWriter writer(schema_);
    writer.Enter(select_);
    if (narrowed) writer.Narrow(narrow_);
    writer.Text("SELECT ");
    KeyColumn(writer);
    if (SortsByText()) {
      const OrderItem& item = select_.orderBy.front();
      plan.sortText =
          item.descending ? ReadPlan::SortText::kDescending : ReadPlan::SortText::kAscending;
      writer.Text(", ");
      writer.Value(item.value);
      From(writer, joins);
      writer.Where(select_.where);
      plan.keys = writer.Take();
      return;
    }
    From(writer, joins);
    writer.Where(select_.where);
    writer.Text(" ORDER BY ");
    for (const OrderItem& item : select_.orderBy) {
      writer.Value(item.value);
      writer.Text(item.descending ? " DESC, " : ", ");
    }
    // Rows that tie keep one order, that of their keys, so that the list never shuffles.
    KeyColumn(writer);
    if (!select_.orderBy.empty() && select_.orderBy.back().descending) writer.Text(" DESC");
    plan.keys = writer.Take();
  }

  void WriteRow(ReadPlan& plan) const {
    SqlWriter writer(schema_);
    writer.Enter(select_);
    writer.Text("SELECT ");
    writer.Items(select_.items);
    From(writer, NeededJoins(itemPlaces_, false));
    writer.Text(" WHERE ");
    KeyColumn(writer);
    writer.Text(" = ?" + std::to_string(kKeyParameter));
    plan.row = writer.Take();
  }

  Select& select_;
  Catalog& schema_;
  std::vector<Source> tables_;
  std::vector<bool> onKey_;  // of each join: whether it adds at most one row
  Places itemPlaces_;
  Places orderPlaces_;
  Places wherePlaces_;
  mutable std::string narrow_;
};

}  // namespace

ReadPlan PlanSelect(Select& select, Catalog& schema, std::string_view otherSchema) {
  Planner planner(select, schema);
  ReadPlan plan;
  if (planner.CanBeKeyed()) {
    plan = planner.Keyed();
  } else {
    SqlWriter writer(schema, otherSchema);
    writer.Write(select);
    plan.all = writer.Take();
  }
  planner.FindSearches(plan);
  planner.WriteNarrowed(plan);
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
