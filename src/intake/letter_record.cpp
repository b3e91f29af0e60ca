// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/letter_record.h"

#include "core/run_state.h"
#include "database/ahead.h"
#include "platform/charset.h"
#include "platform/clock.h"
#include "platform/clock_override.h"
#include "platform/html.h"
#include "platform/locale.h"

namespace tarnwick::intake {

void CheckPrepared(const PreparedMessage& prepared, const std::optional<std::string>& held) {
  if (!prepared.rows && !prepared.fault) RefuseRecord();
  if (prepared.rows && !MayBeRowsOf(prepared, held ? held->size() : 0)) RefuseRecord();
}

ReadingConditions ConditionsOf(const ReadingRules& rules) {
  return {.rules = rules,
          .locale = platform::LocaleOverride(),
          .now = platform::CurrentClockOverride().now,
          .zoneHours = core::State().LocalZoneHours,
          .monthNames = core::State().LocalMonthNames};
}

void ReadUnder(const ReadingConditions& conditions) {
  platform::SetLocaleOverride(conditions.locale);
  platform::ClockOverride clock;
  clock.now = conditions.now;
  platform::SetClockOverride(clock);
  core::State().LocalZoneHours = conditions.zoneHours;
  core::State().LocalMonthNames = conditions.monthNames;
  // The time zone and the locale are read from files, once; the rest has its tables made.
  platform::LocalFromUnix(0);
  platform::LocalDayHalves();
  platform::BytesToUtf8("\xE4", platform::SystemCodePage());
  platform::HtmlToPlainText("<p>&auml;</p>");
  jet::PackAhead(std::string(1000, ' '));
  jet::TrigramsAhead({"text"});
}

}  // namespace tarnwick::intake
