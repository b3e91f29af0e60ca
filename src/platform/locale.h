// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Dates and month names as the user's locale writes them (LC_ALL, LC_TIME or LANG; on Windows
// the settings of the region). Years are
// always written with four digits: an archive spans decades. In the "C" locale dates are
// yyyy-mm-dd.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <string_view>

#include "platform/date_time.h"

namespace tarnwick::platform {

// A date by pattern, as the database's Format function and the program's windows write it:
// "ddddd" or "Short Date" the locale's short date, "Long Date" its long date, "General Date" short
// date and long time, "Short Time" hh:nn, "Long Time" the locale's time with seconds; otherwise
// d dd ddd dddd m mm mmm mmmm yy yyyy h hh n nn s ss, "mm" standing for minutes after hours;
// "\x" is x as it stands, other characters stand for themselves. Letters count in either case.
std::string FormatDate(DateTime value, std::string_view pattern);

// Reads what a person types for a date: the locale's short date (two- or four-digit year, any of
// "." "/" "-" between the parts), yyyy-mm-dd, or a date with its month in words, in English or as
// the locale writes it ("March 7, 2005", "Montag, 7. März 2005", "2005年3月7日"); optionally
// followed by a time of day. nullopt when it is no date.
std::optional<DateTime> ParseDate(std::string_view text);

// The second blank-separated word of the locale's long date of the first day of each month of
// 2004 (January first); where the locale's long date has no such word, the month's stand-alone
// name. No entry is empty.
std::array<std::string, 12> LongDateMonthNames();

// The words that the locale sets beside a time of twelve hours, without points and blanks ("am").
struct DayHalves {
  std::string morning;
  std::string afternoon;
};
DayHalves LocalDayHalves();

// The code page in which a Windows of the user's language keeps its texts, as a charset name:
// "windows-1252" for western languages, "windows-1251" for Cyrillic ones, "shift_jis", ...
std::string SystemCodePage();

// For tests: "de_DE", "en_US", "C"; "" goes back to the environment's.
void SetLocaleOverride(std::string name);
const std::string& LocaleOverride();

}  // namespace tarnwick::platform
