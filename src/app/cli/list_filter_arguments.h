// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The options that narrow and order messages, shared by every command that works on a list.
#pragma once

#include <set>
#include <string>

#include "board/list_filter.h"
#include "cli/command_line.h"

namespace tarnwick::app {

// Option names for Arguments; a command adds its own.
std::set<std::string> ListOptionsWithValue();
std::set<std::string> ListFlags();

// Without --from and --to every date is taken. What --search says goes to board::Board() at once.
// Throws UsageError.
board::ListFilter ReadListFilter(const Arguments& arguments);

// Opens the list recordset of board::Board() with the filter; false when it failed, and was
// reported.
bool OpenFilteredList(const board::ListFilter& filter);

}  // namespace tarnwick::app
