// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/clock.h"

#include <chrono>
#include <cstdlib>
#include <ctime>

#ifdef _WIN32
#include <windows.h>
#else
#include <pwd.h>
#include <unistd.h>
#endif

#include <unicode/timezone.h>

#include <memory>

namespace tarnwick::platform {

namespace {

ClockOverride& Override() {
  static ClockOverride values;
  return values;
}

}  // namespace

void SetClockOverride(ClockOverride values) {
  Override() = std::move(values);
}

DateTime LocalFromUnix(int64_t unixSeconds) {
  auto moment = static_cast<std::time_t>(unixSeconds);
  std::tm local{};
#ifdef _WIN32
  if (localtime_s(&local, &moment) != 0) return DateTime::FromSeconds(unixSeconds);
#else
  if (localtime_r(&moment, &local) == nullptr) return DateTime::FromSeconds(unixSeconds);
#endif
  // A leap second (60) is shown as the second before it.
  int second = local.tm_sec > 59 ? 59 : local.tm_sec;
  auto civil = DateTime::FromCivil(
      {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min, second});
  return civil.value_or(DateTime::FromSeconds(unixSeconds));
}

int64_t UnixFromLocal(DateTime local) {
  CivilTime civil = local.ToCivil();
  std::tm parts{};
  parts.tm_year = civil.year - 1900;
  parts.tm_mon = civil.month - 1;
  parts.tm_mday = civil.day;
  parts.tm_hour = civil.hour;
  parts.tm_min = civil.minute;
  parts.tm_sec = civil.second;
  parts.tm_isdst = -1;
  std::time_t moment = std::mktime(&parts);
  // -1 is also the last second of 1969, for which it does no harm.
  return moment == -1 ? local.Seconds() : static_cast<int64_t>(moment);
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

std::string LogonName() {
  if (Override().logonName) return *Override().logonName;
#ifdef _WIN32
  wchar_t name[257];
  DWORD size = 257;
  if (GetUserNameW(name, &size) && size > 1) {
    char utf8[1024];
    int length = WideCharToMultiByte(CP_UTF8, 0, name, static_cast<int>(size) - 1, utf8,
                                     sizeof utf8, nullptr, nullptr);
    if (length > 0) return std::string(utf8, static_cast<size_t>(length));
  }
#else
  if (const passwd* entry = getpwuid(geteuid()); entry != nullptr && entry->pw_name[0] != '\0') {
    return entry->pw_name;
  }
  if (const char* name = std::getenv("USER"); name != nullptr && name[0] != '\0') return name;
#endif
  return "user";
}

std::string HomeFolder() {
#ifdef _WIN32
  const char* home = std::getenv("USERPROFILE");
  return home != nullptr ? home : "";
#else
  if (const char* home = std::getenv("HOME"); home != nullptr && home[0] == '/') return home;
  if (Override().passwordHome) return *Override().passwordHome;
  const passwd* entry = getpwuid(geteuid());
  bool isFolder = entry != nullptr && entry->pw_dir != nullptr && entry->pw_dir[0] == '/';
  return isFolder ? entry->pw_dir : "";
#endif
}

}  // namespace tarnwick::platform
