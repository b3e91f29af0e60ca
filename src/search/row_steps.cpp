// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/row_steps.h"

#include <algorithm>

#include "database/connection.h"
#include "platform/clock.h"
#include "repository/repository.h"

namespace tarnwick::search {

namespace {

using repository::RepositoryDb;

constexpr int64_t kStepMilliseconds = 8;  // aimed at
constexpr int64_t kFewestRows = 100;
constexpr int64_t kMostRows = 100000;

}  // namespace

int64_t LastKey(std::string_view table) {
  int64_t last = 0;
  RepositoryDb().ReadRows("SELECT Max(ID) AS LastKey FROM " + std::string(table),
                          [&](const jet::PassingRow& row) { last = row.Int(0); });
  return last;
}

std::string NextRows(std::string_view columns, std::string_view table, int64_t after,
                     int64_t rows) {
  std::string sql = "SELECT TOP " + std::to_string(rows) + " ID, ";
  return sql.append(columns).append(" FROM ").append(table).append(
      " WHERE ID > " + std::to_string(after) + " ORDER BY ID");
}

bool RowSteps::Run(int64_t milliseconds, const std::function<bool()>& isDone,
                   const std::function<void(int64_t rows)>& read) {
  int64_t end = platform::TickMilliseconds() + milliseconds;
  int64_t now = 0;
  do {
    if (isDone()) return true;
    int64_t began = platform::TickMilliseconds();
    read(rows_);
    now = platform::TickMilliseconds();
    int64_t right = rows_ * kStepMilliseconds / std::max<int64_t>(1, now - began);
    rows_ = std::clamp(std::clamp(right, rows_ / 4, rows_ * 2), kFewestRows, kMostRows);
  } while (now < end);
  return isDone();
}

}  // namespace tarnwick::search
