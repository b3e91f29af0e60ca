// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/date_time.h"

#include <cassert>
#include <chrono>
#include <cstdio>

#include "platform/error.h"

namespace tarnwick {

namespace {

constexpr int64_t kDaySeconds = 86400;
constexpr int kFirstYear = 100;
constexpr int kLastYear = 9999;

int64_t FloorDivide(int64_t value, int64_t divisor) {
  int64_t quotient = value / divisor;
  return value % divisor < 0 ? quotient - 1 : quotient;
}

std::optional<int> ReadDigits(const std::string& text, size_t& position, size_t most) {
  size_t start = position;
  int value = 0;
  while (position < text.size() && position - start < most && text[position] >= '0' &&
         text[position] <= '9') {
    value = value * 10 + (text[position++] - '0');
  }
  if (position == start) return std::nullopt;
  return value;
}

bool Skip(const std::string& text, size_t& position, char wanted) {
  if (position >= text.size() || text[position] != wanted) return false;
  ++position;
  return true;
}

}  // namespace

DateTime DateTime::FromDate(int year, int month, int day) {
  if (year >= 0 && year <= 29) {
    year += 2000;
  } else if (year >= 30 && year <= 99) {
    year += 1900;
  }
  int64_t months = int64_t{year} * 12 + month - 1;
  int64_t wholeYear = FloorDivide(months, 12);
  if (wholeYear < kFirstYear || wholeYear > kLastYear) {
    throw Error(ErrorNumber::kTypeMismatch, "Date out of range");
  }
  auto first = std::chrono::sys_days(
      std::chrono::year(static_cast<int>(wholeYear)) /
      std::chrono::month(static_cast<unsigned>(months - wholeYear * 12 + 1)) / 1);
  DateTime result =
      FromSeconds((int64_t{first.time_since_epoch().count()} + day - 1) * kDaySeconds);
  int resultYear = result.ToCivil().year;
  if (resultYear < kFirstYear || resultYear > kLastYear) {
    throw Error(ErrorNumber::kTypeMismatch, "Date out of range");
  }
  return result;
}

DateTime DateTime::WithTime(int hour, int minute, int second) const {
  assert(hour >= 0 && hour < 24 && minute >= 0 && minute < 60 && second >= 0 && second < 60);
  return DatePart().AddSeconds(int64_t{hour} * 3600 + int64_t{minute} * 60 + second);
}

std::optional<DateTime> DateTime::FromCivil(const CivilTime& civil) {
  auto date = std::chrono::year(civil.year) /
              std::chrono::month(static_cast<unsigned>(civil.month)) /
              std::chrono::day(static_cast<unsigned>(civil.day));
  if (civil.year < kFirstYear || civil.year > kLastYear || civil.month < 1 || civil.day < 1 ||
      !date.ok() || civil.hour < 0 || civil.hour > 23 || civil.minute < 0 || civil.minute > 59 ||
      civil.second < 0 || civil.second > 59) {
    return std::nullopt;
  }
  int64_t days = std::chrono::sys_days(date).time_since_epoch().count();
  return FromSeconds(days * kDaySeconds).WithTime(civil.hour, civil.minute, civil.second);
}

CivilTime DateTime::ToCivil() const {
  int64_t days = FloorDivide(seconds_, kDaySeconds);
  auto rest = static_cast<int>(seconds_ - days * kDaySeconds);
  std::chrono::year_month_day date{
      std::chrono::sys_days(std::chrono::days(static_cast<int>(days)))};
  CivilTime civil;
  civil.year = static_cast<int>(date.year());
  civil.month = static_cast<int>(static_cast<unsigned>(date.month()));
  civil.day = static_cast<int>(static_cast<unsigned>(date.day()));
  civil.hour = rest / 3600;
  civil.minute = rest / 60 % 60;
  civil.second = rest % 60;
  return civil;
}

DateTime DateTime::DatePart() const {
  return FromSeconds(FloorDivide(seconds_, kDaySeconds) * kDaySeconds);
}

int DateTime::Weekday() const {
  int64_t days = FloorDivide(seconds_, kDaySeconds) + 4;  // 1 January 1970 was a Thursday
  return static_cast<int>(days - FloorDivide(days, 7) * 7);
}

std::string DateTime::ToIso() const {
  CivilTime c = ToCivil();
  char text[40];
  std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", c.year, c.month, c.day, c.hour,
                c.minute, c.second);
  return text;
}

std::string DateTime::ToKeyText() const {
  CivilTime c = ToCivil();
  char text[40];
  std::snprintf(text, sizeof text, "%04d%02d%02d%02d%02d%02d", c.year, c.month, c.day, c.hour,
                c.minute, c.second);
  return text;
}

std::optional<DateTime> DateTime::FromIso(const std::string& text) {
  size_t position = 0;
  CivilTime civil;
  auto year = ReadDigits(text, position, 4);
  if (!year || !Skip(text, position, '-')) return std::nullopt;
  auto month = ReadDigits(text, position, 2);
  if (!month || !Skip(text, position, '-')) return std::nullopt;
  auto day = ReadDigits(text, position, 2);
  if (!day) return std::nullopt;
  civil.year = *year;
  civil.month = *month;
  civil.day = *day;
  if (position < text.size()) {
    if (!Skip(text, position, ' ') && !Skip(text, position, 'T')) return std::nullopt;
    auto hour = ReadDigits(text, position, 2);
    if (!hour || !Skip(text, position, ':')) return std::nullopt;
    auto minute = ReadDigits(text, position, 2);
    if (!minute) return std::nullopt;
    civil.hour = *hour;
    civil.minute = *minute;
    if (Skip(text, position, ':')) {
      auto second = ReadDigits(text, position, 2);
      if (!second) return std::nullopt;
      civil.second = *second;
    }
    if (position != text.size()) return std::nullopt;
  }
  return FromCivil(civil);
}

}  // namespace tarnwick
