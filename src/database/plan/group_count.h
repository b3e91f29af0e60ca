// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Counting rows by groups in one pass. Internal to the database.
//
// The engine sorts all rows to group them. Where a query asks for nothing but the values of its
// groups and how many rows each has, they are counted as they come instead, which costs a third and
// needs memory for the groups alone. Groups come in the order of their first rows.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "database/dialect/dialect_tree.h"
#include "database/engine/engine.h"

namespace tarnwick::jet {

// Of each item of the select the place of its value among the groups, or kCount for Count(*).
// nullopt when the select asks for more than that, or in an order.
inline constexpr size_t kCount = static_cast<size_t>(-1);
std::optional<std::vector<size_t>> PlanGroupCount(const Select& select);

class GroupCounter {
 public:
  // values: how many columns of a row make its group.
  explicit GroupCounter(size_t values) : key_(values), lastTexts_(values) {}

  void Add(const Statement& row);
  // Rows of the items that PlanGroupCount gave.
  std::vector<std::vector<Value>> Rows(const std::vector<size_t>& items) const;

 private:
  // Texts are numbered as they come; those that differ in case alone have one number.
  struct Part {
    int kind = 0;
    int64_t value = 0;
    friend bool operator==(const Part&, const Part&) = default;
  };
  using Key = std::vector<Part>;
  struct Hash {
    size_t operator()(const Key& key) const;
  };
  struct InOrder {
    bool operator()(const std::string& a, const std::string& b) const;
  };
  struct Group {
    Key key;
    std::vector<Value> values;
    int64_t rows = 0;
  };
  int64_t NumberOf(size_t column, std::string_view text);
  static Part PartOf(double number);

  Key key_;
  std::unordered_map<Key, size_t, Hash> places_;
  std::vector<Group> groups_;
  size_t last_ = 0;  // the group of the row before
  std::map<std::string, int64_t, InOrder> texts_;
  std::map<std::string, int64_t> bytes_;
  // Of each column the last text and its number: most rows have the one of the row before.
  std::vector<std::optional<std::pair<std::string, int64_t>>> lastTexts_;
};

}  // namespace tarnwick::jet
