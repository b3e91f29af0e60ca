// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A local civil date and time in whole seconds, without a zone: what a clock on the wall showed.
// Exact, ordered, cheap to compare and copy. The calendar is the proleptic Gregorian one; the years
// 100 to 9999 are representable, as in the database. Databases hold Seconds(): do not change its
// meaning.
#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string>

namespace tarnwick {

// Month 1..12, day 1..31, hour 0..23.
struct CivilTime {
  int year = 1970;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

class DateTime {
 public:
  // 1 January 1970 00:00:00.
  constexpr DateTime() = default;

  static constexpr DateTime FromSeconds(int64_t seconds) {
    DateTime result;
    result.seconds_ = seconds;
    return result;
  }

  // The calendar arithmetic of a date made from parts: a month or day out of range runs on into
  // the neighbouring month or year. Years 0..29 mean 2000..2029, 30..99 mean 1930..1999. Throws
  // Error 13 when the result lies outside the years 100 to 9999.
  static DateTime FromDate(int year, int month, int day);

  // REQUIRES: hour, minute and second in range.
  DateTime WithTime(int hour, int minute, int second) const;

  // FromDate and WithTime for a valid civil time; nullopt when a field is out of its range.
  static std::optional<DateTime> FromCivil(const CivilTime& civil);

  CivilTime ToCivil() const;

  // Midnight of the same day.
  DateTime DatePart() const;

  // 0 Sunday .. 6 Saturday.
  int Weekday() const;

  DateTime AddSeconds(int64_t seconds) const { return FromSeconds(seconds_ + seconds); }
  DateTime AddHours(int64_t hours) const { return AddSeconds(hours * 3600); }
  DateTime AddDays(int64_t days) const { return AddSeconds(days * 86400); }

  // Seconds since 1 January 1970 00:00:00 of the civil calendar; negative before it.
  constexpr int64_t Seconds() const { return seconds_; }

  // "yyyy-mm-dd hh:mm:ss", for scripts and logs; independent of the locale.
  std::string ToIso() const;

  // "yyyymmddhhmmss", the form used in message keys; embedded in stored keys, do not change.
  std::string ToKeyText() const;

  // Reads "yyyy-mm-dd", optionally followed by "T" or a blank and "hh:mm[:ss]".
  static std::optional<DateTime> FromIso(const std::string& text);

  friend constexpr auto operator<=>(const DateTime&, const DateTime&) = default;

 private:
  int64_t seconds_ = 0;
};

}  // namespace tarnwick
