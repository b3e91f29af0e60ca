// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Time as the machine tells it. Tests set it, and who is logged on (environment.h).
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/date_time.h"

namespace tarnwick::platform {

// Local civil time, now; fractions of a second are dropped.
DateTime Now();

// A clock that never goes back, in milliseconds from an arbitrary start.
int64_t TickMilliseconds();

// Minutes between UTC and local standard time (UTC = local + bias), as the zone has it without
// daylight saving: -60 for Berlin, 300 for New York. nullopt when the machine can't tell.
std::optional<int> ZoneBiasMinutes();

// Minutes that local time is ahead of UTC right now, daylight saving included: 120 for Berlin in
// June, -300 for New York in January. 0 when the machine can't tell.
int UtcOffsetMinutes();

// The local civil time of a moment given as seconds since 1970-01-01 UTC.
DateTime LocalFromUnix(int64_t unixSeconds);
// The moment of a local civil time. One that the clocks skipped or showed twice in a change to or
// from daylight saving is taken as the system takes it.
int64_t UnixFromLocal(DateTime local);

// For tests: each value stands in for the machine's until it is reset with {}.
struct ClockOverride {
  std::optional<DateTime> now;
  std::optional<int> zoneBiasMinutes;
  std::optional<std::string> logonName;
  std::optional<std::string> passwordHome = {};  // the password database's word
  std::optional<int64_t> tickStep = {};          // TickMilliseconds goes on by so much at each call
};
void SetClockOverride(ClockOverride values);

}  // namespace tarnwick::platform
