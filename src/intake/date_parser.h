// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Dates of message headers. Follows no one grammar: the text is split into at most ten
// blank-separated tokens, and year, month, day, zone and time are picked out of them by searches in
// a fixed order, so that ill-formed dates still give a usable value.
#pragma once

#include <optional>
#include <string>

#include "platform/date_time.h"

namespace tarnwick::intake {

// resultDate: local civil time. timeText: the time token used. zoneText: the zone token used, "0"
// when none. applyShift: move from the sender's zone to the local one (Date and Sent headers, not
// Received ones). Errors are logged under "twParseDate; " and leave what was set so far.
void twParseDate(DateTime& resultDate, std::string& timeText, std::string& zoneText,
                 std::string dateText, bool applyShift);

// The same of a text that names a whole date that mail can have, without today's parts for what is
// missing; comments in parentheses are passed over. nullopt for any other, and the texts as they
// were. isWhole, where it is given, tells of both whether year, month and day were named.
std::optional<DateTime> ReadSoundDate(std::string& timeText, std::string& zoneText,
                                      std::string dateText, bool applyShift,
                                      bool* isWhole = nullptr);

// True when the text names a year, a month or a day; of one that does not, twParseDate makes today.
bool NamesDate(const std::string& dateText);

// 1..12 for a month's name (English, else the locale's; first three characters), 0 for none.
int MonthNumber(std::string_view token);

}  // namespace tarnwick::intake
