// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What this room's own files need of the user's locale; nobody else includes it.
#pragma once

#include <string>

#include <unicode/locid.h>

namespace tarnwick::platform {

// The user's, as the system has it: "de_DE", "C". From LC_ALL, LC_TIME or LANG; on Windows from the
// settings of the region.
std::string SystemLocaleName();

// Valid until the locale changes.
const icu::Locale& UserLocale();

// Day, month and year ("dmy", ...) in the order of the locale's short date.
std::string DateOrder();

}  // namespace tarnwick::platform
