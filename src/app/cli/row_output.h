// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Rows on standard output: lines of columns for people and simple scripts, JSON for the rest.
#pragma once

#include <string>
#include <vector>

#include "platform/jet/recordset.h"

namespace tarnwick::app {

// A row is a line, and a TAB ends a column: what would break either becomes a blank.
std::string OneLine(const std::string& text);

// Prints the current row as one JSON object and a line end: its columns by name, dates as
// "yyyy-mm-dd hh:mm:ss".
void PrintJson(jet::Recordset& rows);
// With one member more, an array of texts.
void PrintJson(jet::Recordset& rows, const std::string& name,
               const std::vector<std::string>& texts);

}  // namespace tarnwick::app
