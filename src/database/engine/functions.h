// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The functions and the text order that the program adds to the engine. Internal to the database.
//
//   tw_format(date, pattern)  a date as platform::FormatDate writes it; "" for Null
//   tw_instr(text, part)      1-based place of part in text in characters, 0 when it is not there
//   tw_like(text, pattern)    1 or 0
//   tw_instr_long, tw_like_long  the same for a column of long texts as it is stored
//   tw_long_text(stored), tw_bytes(stored)        the plain value of a column (packing.h)
//   tw_pack_text(value), tw_pack_bytes(value)     what to store in one
//   tw_pass(taker, value, ...) hands the values to the program, see Statement::BindTaker
//
// Case is ignored. Null in gives Null out, but for tw_format. A damaged packed value is Error 11.
#pragma once

struct sqlite3;

namespace tarnwick::jet {

// The collation's name in the schema of every file: do not change.
inline constexpr char kTextCollation[] = "TARNWICK";

// What says of a bound pointer that it is a RowTaker.
inline constexpr char kTakerType[] = "tarnwick taker";

void RegisterFunctions(sqlite3* handle);

}  // namespace tarnwick::jet
