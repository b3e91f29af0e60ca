// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The C library's own rules know neither years before 1970 nor that other years had other rules of
// daylight saving.
#include <memory>

#include <unicode/timezone.h>

#include "platform/clock.h"

namespace tarnwick::platform {

namespace {

constexpr double kMilliseconds = 1000;

const icu::TimeZone& Zone() {
  static const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::detectHostTimeZone());
  return zone ? *zone : *icu::TimeZone::getGMT();
}

// Seconds that local time is ahead at a moment of UTC, or at a local one.
int64_t Ahead(int64_t seconds, bool isLocal) {
  int32_t raw = 0;
  int32_t saving = 0;
  UErrorCode status = U_ZERO_ERROR;
  Zone().getOffset(static_cast<UDate>(seconds) * kMilliseconds, isLocal, raw, saving, status);
  return U_SUCCESS(status) ? (int64_t{raw} + saving) / 1000 : 0;
}

}  // namespace

DateTime LocalFromUnix(int64_t unixSeconds) {
  return DateTime::FromSeconds(unixSeconds + Ahead(unixSeconds, false));
}

int64_t UnixFromLocal(DateTime local) {
  return local.Seconds() - Ahead(local.Seconds(), true);
}

}  // namespace tarnwick::platform
