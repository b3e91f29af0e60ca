// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Rows on standard output: lines of columns for people and simple scripts, JSON for the rest.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "database/recordset.h"

namespace tarnwick::app {

// A text for a terminal: characters that it would obey (control characters but TAB and line ends,
// marks that turn the direction of what follows) become blanks.
std::string Harmless(std::string_view text);
// The same for a column of a row: a row is a line, and a TAB ends a column.
std::string OneLine(const std::string& text);

// A text as JSON writes it, in quotation marks. REQUIRES: valid UTF-8.
std::string JsonText(std::string_view text);

// Prints the current row as one JSON object and a line end: its columns by name, dates as
// "yyyy-mm-dd hh:mm:ss", characters that a terminal would obey as "\u" and four digits.
void PrintJson(jet::Recordset& rows);
// With members more: their names, and their values in JSON.
void PrintJson(jet::Recordset& rows,
               const std::vector<std::pair<std::string, std::string>>& members);
// An array of texts, or null.
std::string JsonArray(const std::optional<std::vector<std::string>>& texts);

}  // namespace tarnwick::app
