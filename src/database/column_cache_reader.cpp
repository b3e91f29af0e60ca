// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/column_cache_reader.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <numeric>
#include <tuple>

#include "database/recordset_impl.h"
#include "database/text/order.h"

namespace tarnwick::jet {

namespace {

using GroupPart = ColumnCachePlan::GroupItem::Part;

// A row looked up by its key costs what so many cost in a pass over an index.
constexpr size_t kLookupCost = 40;
// And so many in a pass over memory.
constexpr size_t kLookupCostInMemory = 2000;
// Lookups between two questions whether to go on: a millisecond or so with long texts.
constexpr size_t kLookupsToAsk = 32;

// The condition with its literals, whatever their numbers in the statement are.
std::string NameOf(const EngineSql& sql, const std::vector<Value>& literals) {
  std::string name;
  for (size_t i = 0; i < sql.text.size(); i++) {
    name += sql.text[i];
    if (sql.text[i] != '?') continue;
    while (i + 1 < sql.text.size() && sql.text[i + 1] >= '0' && sql.text[i + 1] <= '9') i++;
  }
  for (size_t literal : sql.literals) {
    std::string text = literals[literal].AsText();
    name += '\n' + std::to_string(literals[literal].Data().index()) + ' ' +
            std::to_string(text.size()) + ' ' + text;
  }
  return name;
}

// The order of the engine: Null, numbers, texts.
int CompareValues(const Value& a, const Value& b) {
  auto group = [](const Value& value) { return value.IsNull() ? 0 : value.IsText() ? 2 : 1; };
  if (group(a) != group(b)) return group(a) - group(b);
  if (a.IsText()) return CompareText(a.AsText(), b.AsText());
  if (a.IsNull()) return 0;
  int64_t numberA = a.AsInt();
  int64_t numberB = b.AsInt();
  return (numberA > numberB) - (numberA < numberB);
}

}  // namespace

ColumnCacheReader::ColumnCacheReader(Connection::Impl& connection, Program& program,
                                     const std::vector<Value>& literals)
    : connection_(connection),
      program_(program),
      plan_(*program.plan.columnCache),
      literals_(literals),
      cache_(*connection.GetColumnCache()) {}

std::optional<std::vector<uint32_t>> ColumnCacheReader::Keys() {
  if (!Begin()) return std::nullopt;
  RowPlaces places = Matching();
  std::optional<std::vector<uint32_t>> keys;
  switch (plan_.orderBy) {
    case ColumnCachePlan::Order::kKey:
      keys = ByRank(places, 1, [](const ColumnCache::Row&) { return 0U; });
      break;
    case ColumnCachePlan::Order::kDate:
      keys = KeysOf(places);
      break;
    case ColumnCachePlan::Order::kKind:
      keys = ByKind(places);
      break;
    case ColumnCachePlan::Order::kReference:
      keys = ByReference(places);
      break;
    case ColumnCachePlan::Order::kText:
      keys = ByText(places);
      break;
  }
  if (keys && plan_.descending) std::reverse(keys->begin(), keys->end());
  return keys;
}

std::optional<std::vector<std::vector<Value>>> ColumnCacheReader::Counts() {
  if (!Begin()) return std::nullopt;
  RowPlaces places = Matching();
  if (!plan_.groupItems.empty()) return Groups(places);
  return {{{Count(places)}}};
}

int64_t ColumnCacheReader::Count(const RowPlaces& places) {
  auto count = static_cast<int64_t>(places.Size());
  if (!plan_.countsDetails) return count;
  Marks matching = MatchingKeys(places);
  if (plan_.details) {
    return std::count_if(owners_.begin(), owners_.end(),
                         [&](uint32_t key) { return matching[key]; });
  }
  for (const ColumnCache::Repeat& repeat : cache_.Repeats()) {
    if (repeat.key < matching.size() && matching[repeat.key]) count += int64_t{repeat.count} - 1;
  }
  return count;
}

std::vector<uint32_t> ColumnCacheReader::GroupKinds() const {
  const auto& kinds = cache_.Kinds();
  auto isSame = [&](uint32_t a, uint32_t b) {
    return std::all_of(plan_.groupItems.begin(), plan_.groupItems.end(), [&](const auto& item) {
      return item.part != GroupPart::kKind ||
             CompareValues(kinds[a][item.kind], kinds[b][item.kind]) == 0;
    });
  };
  std::vector<uint32_t> firsts;
  for (uint32_t kind = 0; kind < kinds.size(); kind++) {
    uint32_t first = 0;
    while (!isSame(first, kind)) first++;
    firsts.push_back(first);
  }
  return firsts;
}

std::vector<std::vector<Value>> ColumnCacheReader::Groups(const RowPlaces& places) const {
  bool hasDay = false;
  bool hasReference = false;
  for (const ColumnCachePlan::GroupItem& item : plan_.groupItems) {
    hasDay = hasDay || item.part == GroupPart::kDay;
    hasReference = hasReference || item.part == GroupPart::kReference;
  }
  std::vector<uint32_t> kinds = GroupKinds();
  using Group = std::tuple<int64_t, uint32_t, uint32_t>;  // day, kind, reference
  std::map<Group, int64_t> groups;
  auto last = groups.end();  // most rows are of the group of the row before
  places.ForEach([&](size_t place) {
    const ColumnCache::Row& row = cache_.Rows()[place];
    int64_t day = hasDay ? DateTime::FromSeconds(cache_.SecondsOf(row)).DatePart().Seconds() : 0;
    Group group(day, kinds[row.kind], hasReference ? row.reference : 0);
    if (last == groups.end() || last->first != group) last = groups.try_emplace(group, 0).first;
    last->second++;
  });
  std::vector<std::vector<Value>> rows;
  for (const auto& [group, count] : groups) {
    const auto& [day, kind, reference] = group;
    std::vector<Value>& row = rows.emplace_back();
    for (const ColumnCachePlan::GroupItem& item : plan_.groupItems) {
      switch (item.part) {
        case GroupPart::kCount:
          row.emplace_back(count);
          break;
        case GroupPart::kDay:
          row.emplace_back(day);
          break;
        case GroupPart::kKind:
          row.push_back(cache_.Kinds()[kind][item.kind]);
          break;
        case GroupPart::kReference:
          row.emplace_back();
          if (reference != ColumnCache::kNoReference) row.back() = int64_t{reference};
          break;
      }
    }
  }
  return rows;
}

bool ColumnCacheReader::Begin() {
  // To count all rows, the engine needs less than to read them.
  if (plan_.spans.empty() && !cache_.IsRead()) return false;
  if (!cache_.Refresh() || !TestKinds(kinds_)) return false;
  from_ = 0;
  to_ = cache_.Rows().size();
  for (const ColumnCachePlan::Span& span : plan_.spans) {
    const auto* from = std::get_if<DateTime>(&literals_[span.from].Data());
    const auto* to = std::get_if<DateTime>(&literals_[span.to].Data());
    if (from == nullptr || to == nullptr) return false;
    from_ = std::max(from_, cache_.From(from->Seconds()));
    to_ = std::min(to_, cache_.From(to->Seconds() + 1));
  }
  to_ = std::max(from_, to_);
  return true;
}

bool ColumnCacheReader::TestKinds(Marks& holds) const {
  holds.assign(cache_.Kinds().size(), true);
  for (const ColumnCachePlan::KindTest& test : plan_.kindTests) {
    if (test.op.empty()) {
      for (size_t i = 0; i < holds.size(); i++) {
        holds[i] = holds[i] && cache_.Kinds()[i][test.kind].IsNull() != test.negated;
      }
      continue;
    }
    FindCriteria criteria{{}, test.op, literals_[test.literal]};
    if (criteria.value.IsDate() || criteria.value.IsBytes()) return false;
    for (size_t i = 0; i < holds.size(); i++) {
      const Value& value = cache_.Kinds()[i][test.kind];
      // The engine would convert one to the other, as the column's type has it.
      if (!value.IsNull() && value.IsText() != criteria.value.IsText()) return false;
      holds[i] = holds[i] && !criteria.value.IsNull() && Holds(value, criteria);
    }
  }
  return true;
}

ColumnCacheReader::Marks ColumnCacheReader::Marked(PreparedSql& sql, size_t size,
                                                   std::vector<uint32_t>* given) {
  Marks marks(size);
  Statement& statement = connection_.Ready(sql, literals_);
  StatementUse use(statement);
  while (connection_.session.StepRead(statement)) {
    int64_t key = statement.Int(0);
    if (statement.IsNull(0) || key < 0 || static_cast<size_t>(key) >= size) continue;
    marks[static_cast<size_t>(key)] = true;
    if (given != nullptr) given->push_back(static_cast<uint32_t>(key));
  }
  return marks;
}

RowPlaces ColumnCacheReader::Matching() {
  const std::vector<ColumnCache::Row>& rows = cache_.Rows();
  Marks references;
  // One more than there are, for the rows without one.
  size_t highest = size_t{cache_.HighestReference()} + 1;
  if (plan_.references) references = Marked(program_.cacheReferences, highest + 1);
  if (plan_.references) references[highest] = false;
  Marks owners;
  if (plan_.details) {
    owners = Marked(program_.cacheDetails, size_t{cache_.HighestKey()} + 1, &owners_);
  }
  RowPlaces places(from_, to_);
  bool isWhole = kinds_ == Marks(kinds_.size(), true) && references.empty() && owners.empty();
  if (isWhole) places.AddAll();
  for (size_t i = from_; i < to_ && !isWhole; i++) {
    const ColumnCache::Row& row = rows[i];
    if (kinds_[row.kind] &&
        (references.empty() || references[std::min<size_t>(row.reference, highest)]) &&
        (owners.empty() || owners[row.key])) {
      places.Add(i);
    }
  }
  if (plan_.rows) KeepHolding(places);
  return places;
}

bool ColumnCacheReader::IsCheapOneByOne(size_t rows) const {
  return plan_.rowsAreLong ? rows < cache_.Rows().size()
                           : rows < cache_.Rows().size() / kLookupCost;
}

// The rest of the condition: over all rows at once, or where few are left on each of them.
void ColumnCacheReader::KeepHolding(RowPlaces& places) {
  const std::vector<ColumnCache::Row>& rows = cache_.Rows();
  TestedRows& last = connection_.LastTested();
  std::string condition = NameOf(*plan_.rows, literals_);
  size_t size = size_t{cache_.HighestKey()} + 1;
  if (last.condition != condition || last.version != connection_.session.Version() ||
      plan_.rows->usesDate) {
    last = {std::move(condition), connection_.session.Version(), false, Marks(size), Marks(size)};
    // What a text index does not propose does not hold.
    if (auto proposed = connection_.Proposed(program_.plan, literals_)) {
      last.tested.assign(size, true);
      for (int64_t key : *proposed) {
        if (key >= 0 && static_cast<size_t>(key) < size)
          last.tested[static_cast<size_t>(key)] = false;
      }
    }
  }
  if (!last.all) {
    // A pass over all rows costs most of what a rare text does: only those are left that may hold.
    size_t unknown = 0;
    places.Keep([&](size_t place) {
      uint32_t key = rows[place].key;
      if (last.tested[key]) return bool{last.hold[key]};
      unknown++;
      return true;
    });
    if (unknown > 0 && !IsCheapOneByOne(unknown)) {
      last.hold = Marked(program_.cacheRows, size);
      last.all = true;
    } else {
      LookUp(places, last);
    }
  }
  places.Keep([&](size_t place) { return last.hold[rows[place].key]; });
}

void ColumnCacheReader::LookUp(const RowPlaces& places, TestedRows& last) {
  Statement& statement = connection_.Ready(program_.cacheRow, literals_);
  size_t looked = 0;
  places.ForEach([&](size_t place) {
    uint32_t key = cache_.Rows()[place].key;
    if (last.tested[key]) return;
    // Each of the lookups is too short for the engine to ask.
    if (++looked % kLookupsToAsk == 0 && connection_.session.Engine().AsksToStop()) {
      throw Error(kStopped, "interrupted");
    }
    StatementUse use(statement);
    statement.Bind(kKeyParameter, int64_t{key});
    last.hold[key] = connection_.session.StepRead(statement);
    last.tested[key] = true;
  });
}

ColumnCacheReader::Marks ColumnCacheReader::MatchingKeys(const RowPlaces& places) const {
  Marks marks(size_t{cache_.HighestKey()} + 1);
  places.ForEach([&](size_t place) { marks[cache_.Rows()[place].key] = true; });
  return marks;
}

std::vector<uint32_t> ColumnCacheReader::KeysOf(const RowPlaces& places) const {
  std::vector<uint32_t> keys;
  keys.reserve(places.Size());
  places.ForEach([&](size_t place) { keys.push_back(cache_.Rows()[place].key); });
  return keys;
}

template <typename RankOf>
std::vector<uint32_t> ColumnCacheReader::ByRank(const RowPlaces& places, uint32_t ranks,
                                                const RankOf& rankOf) const {
  // How many rows have a lower rank; then, the keys from below, where each has its place.
  std::vector<uint32_t> next(size_t{ranks} + 1);
  constexpr uint32_t kNone = UINT32_MAX;
  std::vector<uint32_t> rankByKey(size_t{cache_.HighestKey()} + 1, kNone);
  places.ForEach([&](size_t place) {
    const ColumnCache::Row& row = cache_.Rows()[place];
    uint32_t rank = rankOf(row);
    rankByKey[row.key] = rank;
    next[size_t{rank} + 1]++;
  });
  std::partial_sum(next.begin(), next.end(), next.begin());
  std::vector<uint32_t> keys(places.Size());
  for (uint32_t key = 0; key < rankByKey.size(); key++) {
    if (rankByKey[key] != kNone) keys[next[rankByKey[key]]++] = key;
  }
  return keys;
}

std::vector<uint32_t> ColumnCacheReader::ByKind(const RowPlaces& places) const {
  const auto& kinds = cache_.Kinds();
  auto compare = [&](uint32_t a, uint32_t b) {
    return CompareValues(kinds[a][plan_.orderKind], kinds[b][plan_.orderKind]);
  };
  std::vector<uint32_t> order(kinds.size());
  std::iota(order.begin(), order.end(), 0U);
  std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) { return compare(a, b) < 0; });
  std::vector<uint32_t> ranks(kinds.size());
  uint32_t rank = 0;
  for (size_t i = 1; i < order.size(); i++) {
    if (compare(order[i - 1], order[i]) != 0) rank++;
    ranks[order[i]] = rank;
  }
  return ByRank(places, rank + 1, [&](const ColumnCache::Row& row) { return ranks[row.kind]; });
}

std::optional<std::vector<uint32_t>> ColumnCacheReader::ByReference(const RowPlaces& places) {
  // 0: no text, or no row that is referenced.
  size_t highest = size_t{cache_.HighestReference()} + 1;
  std::vector<uint32_t> ranks(highest + 1);
  uint32_t rank = 0;
  std::string former;
  Statement& statement = connection_.Ready(program_.cacheOrder, literals_);
  StatementUse use(statement);
  while (connection_.session.StepRead(statement)) {
    Statement::Type type = statement.TypeOf(1);
    if (type == Statement::Type::kNull) continue;
    if (type != Statement::Type::kText) return std::nullopt;
    std::string_view text = statement.Text(1);
    if (rank == 0 || CompareText(former, text) != 0) {
      rank++;
      former = text;
    }
    int64_t key = statement.Int(0);
    if (key >= 0 && static_cast<size_t>(key) < highest) ranks[static_cast<size_t>(key)] = rank;
  }
  return ByRank(places, rank + 1, [&](const ColumnCache::Row& row) {
    return ranks[std::min<size_t>(row.reference, highest)];
  });
}

std::vector<uint32_t> ColumnCacheReader::ByText(const RowPlaces& places) {
  const size_t all = cache_.Rows().size();
  const std::vector<uint32_t>* order = cache_.TextOrder(plan_.order.text);
  if (places.Size() < all / (order != nullptr ? kLookupCostInMemory : kLookupCost)) {
    return ByLookedUpText(places);
  }
  if (order == nullptr) order = &cache_.KeepTextOrder(plan_.order.text, ReadTextOrder());
  if (places.Size() == all) return *order;
  Marks matching = MatchingKeys(places);
  std::vector<uint32_t> keys;
  keys.reserve(places.Size());
  std::copy_if(order->begin(), order->end(), std::back_inserter(keys),
               [&](uint32_t key) { return matching[key]; });
  return keys;
}

std::vector<uint32_t> ColumnCacheReader::ByLookedUpText(const RowPlaces& places) {
  // Null stands before every text.
  std::vector<std::pair<std::optional<std::string>, uint32_t>> texts;
  Statement& statement = connection_.Ready(program_.cacheText, literals_);
  for (uint32_t key : KeysOf(places)) {
    StatementUse use(statement);
    statement.Bind(kKeyParameter, int64_t{key});
    if (!connection_.session.StepRead(statement)) continue;
    texts.emplace_back(std::nullopt, key);
    if (!statement.IsNull(0)) texts.back().first = statement.Text(0);
  }
  std::sort(texts.begin(), texts.end(), [](const auto& a, const auto& b) {
    int order = a.first && b.first ? CompareText(*a.first, *b.first)
                                   : a.first.has_value() - b.first.has_value();
    return order != 0 ? order < 0 : a.second < b.second;
  });
  std::vector<uint32_t> keys;
  keys.reserve(texts.size());
  for (const auto& [text, key] : texts) keys.push_back(key);
  return keys;
}

std::vector<uint32_t> ColumnCacheReader::ReadTextOrder() {
  std::vector<uint32_t> keys;
  keys.reserve(cache_.Rows().size());
  Statement& statement = connection_.Ready(program_.cacheOrder, literals_);
  StatementUse use(statement);
  while (connection_.session.StepRead(statement)) {
    keys.push_back(static_cast<uint32_t>(statement.Int(0)));
  }
  return keys;
}

}  // namespace tarnwick::jet
