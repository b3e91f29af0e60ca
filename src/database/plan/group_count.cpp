// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/plan/group_count.h"

#include <algorithm>
#include <bit>
#include <cmath>

#include "database/text/order.h"
#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

using Kind = Expression::Kind;
enum : int { kNullPart, kIntPart, kDoublePart, kTextPart, kBytesPart };

bool IsColumnOrDay(const Expression& value) {
  if (value.kind == Kind::kCall && value.text == "datevalue")
    return IsColumnOrDay(value.operands[0]);
  return value.kind == Kind::kColumn;
}

// REQUIRES: both are IsColumnOrDay.
bool IsSame(const Expression& a, const Expression& b) {
  if (a.kind != b.kind) return false;
  if (a.kind == Kind::kCall) return IsSame(a.operands[0], b.operands[0]);
  return platform::SameWord(a.text, b.text) && platform::SameWord(a.table, b.table);
}

bool IsCountOfRows(const Expression& value) {
  return value.kind == Kind::kCall && value.text == "count" &&
         value.operands[0].kind == Kind::kStar;
}

}  // namespace

std::optional<std::vector<size_t>> PlanGroupCount(const Select& select) {
  bool plain = !select.distinct && !select.top && !select.file && select.orderBy.empty() &&
               !select.groupBy.empty() &&
               std::all_of(select.groupBy.begin(), select.groupBy.end(), IsColumnOrDay);
  if (!plain) return std::nullopt;
  std::vector<size_t> items;
  for (const SelectItem& item : select.items) {
    if (item.star) return std::nullopt;
    if (IsCountOfRows(item.value)) {
      items.push_back(kCount);
      continue;
    }
    auto group =
        std::find_if(select.groupBy.begin(), select.groupBy.end(), [&](const Expression& value) {
          return IsColumnOrDay(item.value) && IsSame(value, item.value);
        });
    if (group == select.groupBy.end()) return std::nullopt;
    items.push_back(static_cast<size_t>(group - select.groupBy.begin()));
  }
  return items;
}

size_t GroupCounter::Hash::operator()(const Key& key) const {
  uint64_t hash = 0;
  for (const Part& part : key) {
    hash = (hash ^ static_cast<uint64_t>(part.value) ^ static_cast<uint64_t>(part.kind)) *
           0x9E3779B97F4A7C15ULL;
    hash ^= hash >> 29;
  }
  return hash;
}

bool GroupCounter::InOrder::operator()(const std::string& a, const std::string& b) const {
  return CompareText(a, b) < 0;
}

int64_t GroupCounter::NumberOf(size_t column, std::string_view text) {
  auto& last = lastTexts_[column];
  if (!last || last->first != text) {
    std::string own(text);
    int64_t next = static_cast<int64_t>(texts_.size());
    last.emplace(own, texts_.try_emplace(own, next).first->second);
  }
  return last->second;
}

// A whole number is the same in either of the engine's two kinds.
GroupCounter::Part GroupCounter::PartOf(double number) {
  constexpr double kLimit = 9.2e18;
  bool isWhole = number > -kLimit && number < kLimit && std::trunc(number) == number;
  if (isWhole) return {kIntPart, static_cast<int64_t>(number)};
  return {kDoublePart, std::bit_cast<int64_t>(number)};
}

void GroupCounter::Add(const Statement& row) {
  for (size_t i = 0; i < key_.size(); i++) {
    int column = static_cast<int>(i);
    switch (row.TypeOf(column)) {
      case Statement::Type::kNull:
        key_[i] = {kNullPart, 0};
        break;
      case Statement::Type::kInteger:
        key_[i] = {kIntPart, row.Int(column)};
        break;
      case Statement::Type::kReal:
        key_[i] = PartOf(row.ColumnValue(column).AsDouble());
        break;
      case Statement::Type::kText:
        key_[i] = {kTextPart, NumberOf(i, row.Text(column))};
        break;
      case Statement::Type::kBytes: {
        auto next = static_cast<int64_t>(bytes_.size());
        key_[i] = {kBytesPart,
                   bytes_.try_emplace(row.ColumnValue(column).AsText(), next).first->second};
        break;
      }
    }
  }
  // Rows of a group often come together.
  if (last_ == groups_.size() || groups_[last_].key != key_) {
    auto [place, isNew] = places_.try_emplace(key_, groups_.size());
    last_ = place->second;
    if (isNew) {
      Group& group = groups_.emplace_back();
      group.key = key_;
      for (size_t i = 0; i < key_.size(); i++) {
        group.values.push_back(row.ColumnValue(static_cast<int>(i)));
      }
    }
  }
  groups_[last_].rows++;
}

std::vector<std::vector<Value>> GroupCounter::Rows(const std::vector<size_t>& items) const {
  std::vector<std::vector<Value>> rows;
  rows.reserve(groups_.size());
  for (const Group& group : groups_) {
    std::vector<Value>& row = rows.emplace_back();
    for (size_t item : items)
      row.push_back(item == kCount ? Value(group.rows) : group.values[item]);
  }
  return rows;
}

}  // namespace tarnwick::jet
