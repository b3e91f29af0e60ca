// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/grid_layout.h"

#include <string>

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

}  // namespace

std::map<int, int> ReadGridLayout(std::string_view group, int columns) {
  return core::Guarded("Form_Load", std::map<int, int>(), [&] {
    std::map<int, int> widths;
    jet::Recordset rows;
    rows.Open("SELECT * " + WhereGroup(group) + " ORDER BY ParameterID", ParameterDb());
    for (; !rows.Eof(); rows.MoveNext()) {
      int64_t column = rows.Field("ParameterID").AsInt();
      jet::Value width = rows.Field(kAmountColumn);
      if (column < 0 || column >= columns || width.IsNull()) continue;
      if (width.AsInt() < 0 || width.AsInt() > kWidest) continue;
      widths[static_cast<int>(column)] = static_cast<int>(width.AsInt());
    }
    return widths;
  });
}

void SaveGridLayout(std::string_view group, const std::vector<int>& widths) {
  core::GuardedRun("Form_Unload", [&] {
    jet::CommitGroup commit(ParameterDb());
    ParameterDb().Execute("DELETE * " + WhereGroup(group));
    jet::Recordset rows;
    rows.Open("Parameter", ParameterDb(), jet::CursorType::kKeyset, jet::LockType::kOptimistic,
              jet::CommandType::kTable);
    for (size_t column = 0; column < widths.size(); ++column) {
      rows.AddNew();
      rows.SetField("ParameterGroup", std::string(group));
      rows.SetField("ParameterID", std::to_string(column));
      rows.SetField(kAmountColumn, widths[column]);
      rows.Update();
    }
    ParameterDb().EndUnit();
    commit.End();
  });
}

}  // namespace tarnwick::repository
