// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The days over which the open repository's messages spread, and days as statements name them.
#pragma once

#include <string>

#include "platform/date_time.h"

namespace tarnwick::repository {

// A range that leaves no message of the open repository out: from the day of the oldest one to
// today or the day of the newest one. Without messages it begins in 1980.
struct DateRange {
  DateTime from;
  DateTime to;
};
DateRange WholeDateRange();

// #mm/dd/yyyy 00:00:00# or #mm/dd/yyyy 23:59:59#, whatever the locale.
std::string FormatFilterDate(DateTime date, bool startOfDay);

}  // namespace tarnwick::repository
