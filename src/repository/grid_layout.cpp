// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/grid_layout.h"

#include <cassert>
#include <string>
#include <utility>

#include "core/guard.h"
#include "core/text.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::repository {

namespace {

// 10,000 pixels: nothing wider was ever meant.
constexpr int64_t kWidest = int64_t{10000} * kTwipsPerPixel;

std::string WhereGroup(std::string_view group) {
  return "FROM Parameter WHERE ParameterGroup = '" + core::QuoteSql(group) + "'";
}

// No list has nearly as many columns.
constexpr int kMostColumns = 1000;

std::string NamesGroup(std::string_view group) {
  return std::string(group) + "Columns";
}

// The amounts of a group by their keys, those in 0..most.
std::map<std::string, int> ReadAmounts(std::string_view group, int64_t most) {
  std::map<std::string, int> amounts;
  jet::Recordset rows;
  rows.Open("SELECT * " + WhereGroup(group) + " ORDER BY ParameterID", ParameterDb());
  for (; !rows.Eof(); rows.MoveNext()) {
    jet::Value amount = rows.Field(kAmountColumn);
    if (amount.IsNull() || amount.AsInt() < 0 || amount.AsInt() > most) continue;
    amounts[rows.Field("ParameterID").AsText()] = static_cast<int>(amount.AsInt());
  }
  return amounts;
}

using Amounts = std::vector<std::pair<std::string, int>>;

// In place of what the group holds.
void WriteAmounts(std::string_view group, const Amounts& amounts) {
  ParameterDb().Execute("DELETE * " + WhereGroup(group));
  jet::Recordset rows;
  rows.Open("Parameter", ParameterDb(), jet::CursorType::kKeyset, jet::LockType::kOptimistic,
            jet::CommandType::kTable);
  for (const auto& [key, amount] : amounts) {
    rows.AddNew();
    rows.SetField("ParameterGroup", std::string(group));
    rows.SetField("ParameterID", key);
    rows.SetField(kAmountColumn, amount);
    rows.Update();
  }
}

void WriteWidths(std::string_view group, const std::vector<int>& widths) {
  Amounts amounts;
  for (size_t i = 0; i < widths.size(); ++i) amounts.emplace_back(std::to_string(i), widths[i]);
  WriteAmounts(group, amounts);
}

}  // namespace

std::map<int, int> ReadGridLayout(std::string_view group, int columns) {
  return core::Guarded("Form_Load", std::map<int, int>(), [&] {
    std::map<int, int> widths;
    for (const auto& [key, width] : ReadAmounts(group, kWidest)) {
      int64_t column = jet::Value(key).AsInt();
      if (column >= 0 && column < columns) widths[static_cast<int>(column)] = width;
    }
    return widths;
  });
}

void SaveGridLayout(std::string_view group, const std::vector<int>& widths) {
  core::GuardedRun("Form_Unload", [&] {
    jet::CommitGroup commit(ParameterDb());
    WriteWidths(group, widths);
    ParameterDb().EndUnit();
    commit.End();
  });
}

std::map<int, int> ReadNamedLayout(std::string_view group,
                                   std::span<const std::string_view> names) {
  return core::Guarded("Form_Load", std::map<int, int>(), [&] {
    std::map<std::string, int> numbers = ReadAmounts(NamesGroup(group), kMostColumns);
    if (numbers.empty()) return ReadGridLayout(group, static_cast<int>(names.size()));
    std::map<int, int> stored = ReadGridLayout(group, kMostColumns + 1);
    std::map<int, int> widths;
    for (size_t i = 0; i < names.size(); ++i) {
      auto number = numbers.find(std::string(names[i]));
      if (number == numbers.end()) continue;
      auto width = stored.find(number->second);
      if (width != stored.end()) widths[static_cast<int>(i)] = width->second;
    }
    return widths;
  });
}

void SaveNamedLayout(std::string_view group, std::span<const std::string_view> names,
                     const std::vector<int>& widths) {
  assert(names.size() == widths.size());
  core::GuardedRun("Form_Unload", [&] {
    jet::CommitGroup commit(ParameterDb());
    WriteWidths(group, widths);
    Amounts numbers;
    for (const std::string_view name : names) {
      numbers.emplace_back(name, static_cast<int>(numbers.size()));
    }
    WriteAmounts(NamesGroup(group), numbers);
    ParameterDb().EndUnit();
    commit.End();
  });
}

}  // namespace tarnwick::repository
