// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/date_range.h"

#include <optional>

#include "core/guard.h"
#include "database/recordset.h"
#include "platform/clock.h"
#include "platform/locale.h"
#include "repository/repository.h"

namespace tarnwick::repository {

namespace {

std::optional<DateTime> FirstDate(const std::string& query) {
  jet::Recordset rows;
  rows.Open(query, RepositoryDb());
  return rows.Eof() ? std::nullopt : rows.Field(0).AsDate();
}

}  // namespace

DateRange WholeDateRange() {
  DateRange range{DateTime::FromDate(1980, 1, 1), platform::Now().DatePart()};
  core::GuardedRun("WholeDateRange", [&] {
    // Each is one look at an end of the index.
    const std::string kFirst =
        "SELECT TOP 1 ReceivedTime FROM Email WHERE ReceivedTime Is Not Null ORDER BY ";
    auto oldest = FirstDate(kFirst + "ReceivedTime");
    auto newest = FirstDate(kFirst + "ReceivedTime DESC");
    if (oldest) range.from = oldest->DatePart();
    if (newest && newest->DatePart() > range.to) range.to = newest->DatePart();
  });
  return range;
}

std::string FormatFilterDate(DateTime date, bool startOfDay) {
  return "#" + platform::FormatDate(date, "mm\\/dd\\/yyyy") +
         (startOfDay ? " 00:00:00#" : " 23:59:59#");
}

}  // namespace tarnwick::repository
