// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <ctime>

#include "platform/clock.h"

namespace tarnwick::platform {

DateTime LocalFromUnix(int64_t unixSeconds) {
  auto moment = static_cast<std::time_t>(unixSeconds);
  std::tm local{};
  if (localtime_r(&moment, &local) == nullptr) return DateTime::FromSeconds(unixSeconds);
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

}  // namespace tarnwick::platform
