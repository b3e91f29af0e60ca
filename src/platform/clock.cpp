// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/clock.h"

#include <chrono>
#include <ctime>

#include <memory>

#include <unicode/timezone.h>

#include "platform/clock_override.h"

namespace tarnwick::platform {

namespace {

ClockOverride& Override() {
  static ClockOverride values;
  return values;
}

}  // namespace

const ClockOverride& CurrentClockOverride() {
  return Override();
}

void SetClockOverride(ClockOverride values) {
  Override() = std::move(values);
}

DateTime Now() {
  if (Override().now) return *Override().now;
  return LocalFromUnix(std::time(nullptr));
}

int64_t TickMilliseconds() {
  if (std::optional<int64_t> step = Override().tickStep) {
    static int64_t ticks = 0;
    return ticks += *step;
  }
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

std::optional<int> ZoneBiasMinutes() {
  if (Override().zoneBiasMinutes) return *Override().zoneBiasMinutes;
  std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  if (!zone) return std::nullopt;
  return -zone->getRawOffset() / 60000;
}

int UtcOffsetMinutes() {
  if (Override().zoneBiasMinutes) return -*Override().zoneBiasMinutes;
  std::time_t now = std::time(nullptr);
  // Zones lie on whole minutes.
  return static_cast<int>((LocalFromUnix(now).Seconds() - static_cast<int64_t>(now)) / 60);
}

}  // namespace tarnwick::platform
