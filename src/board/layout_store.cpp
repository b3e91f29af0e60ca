// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/layout_store.h"

#include <string>

#include "core/guard.h"
#include "platform/jet/recordset.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::board {

namespace {

constexpr const char* kPlaceGroup = "XYMainBoard";
// 10,000 pixels: nothing wider was ever meant.
constexpr int64_t kWidest = int64_t{10000} * kTwipsPerPixel;

int ReadNumber(const char* key) {
  int64_t stored = repository::GetParameter(kPlaceGroup, key, repository::kAmountColumn).AsInt();
  return stored >= -kWidest && stored <= kWidest ? static_cast<int>(stored) : 0;
}

}  // namespace

std::map<int, int> ReadColumnWidths(int columns) {
  return core::Guarded("Form_Load", std::map<int, int>(), [&] {
    std::map<int, int> widths;
    jet::Recordset rows;
    rows.Open("SELECT * FROM Parameter WHERE ParameterGroup = 'EmailGrid' ORDER BY ParameterID",
              repository::ParameterDb());
    for (; !rows.Eof(); rows.MoveNext()) {
      int64_t column = rows.Field("ParameterID").AsInt();
      jet::Value width = rows.Field(repository::kAmountColumn);
      if (column < 0 || column >= columns || width.IsNull()) continue;
      if (width.AsInt() < 0 || width.AsInt() > kWidest) continue;
      widths[static_cast<int>(column)] = static_cast<int>(width.AsInt());
    }
    return widths;
  });
}

void SaveColumnWidths(const std::vector<int>& widths) {
  core::GuardedRun("Form_Unload", [&] {
    jet::Connection& parameters = repository::ParameterDb();
    jet::CommitGroup group(parameters);
    parameters.Execute("DELETE * FROM Parameter WHERE ParameterGroup = 'EmailGrid'");
    jet::Recordset rows;
    rows.Open("Parameter", parameters, jet::CursorType::kKeyset, jet::LockType::kOptimistic,
              jet::CommandType::kTable);
    for (size_t column = 0; column < widths.size(); ++column) {
      rows.AddNew();
      rows.SetField("ParameterGroup", "EmailGrid");
      rows.SetField("ParameterID", std::to_string(column));
      rows.SetField(repository::kAmountColumn, widths[column]);
      rows.Update();
    }
    parameters.EndUnit();
    group.End();
  });
}

WindowPlace ReadWindowPlace() {
  return {ReadNumber("1"), ReadNumber("2"), ReadNumber("4"), ReadNumber("3")};
}

void SaveWindowPlace(const WindowPlace& place) {
  auto write = [](const char* key, int value) {
    repository::SetParameter(kPlaceGroup, key, repository::kAmountColumn, value);
  };
  write("1", place.left);
  write("2", place.top);
  write("3", place.height);
  write("4", place.width);
}

std::optional<int> FittingEdge(int stored, int extent, int screen) {
  if (stored == 0 || stored + extent >= screen) return std::nullopt;
  // A screen to the left that is no longer there leaves an edge far below 0.
  if (stored <= -extent / 2) return std::nullopt;
  return stored;
}

}  // namespace tarnwick::board
