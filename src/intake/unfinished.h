// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Messages of which an error left only a part (table Unfinished). A message is entered before its
// child rows are written and leaves with the last of them, both in one commit of its group: after a
// crash it is there whole or not at all, and what stands in the table is what an error left. It
// counts as not stored; storing it again makes it whole and keeps its number, hot mark and note.
// Failures throw Error.
#pragma once

#include <cstdint>
#include <string>

namespace tarnwick::intake {

// The message with this key that is left by half; 0 when there is none.
int64_t UnfinishedWithKey(const std::string& storedKey);

// REQUIRES: a group is open. Where the message can't be entered, the group is taken back: nothing
// of it stays unmarked.
void EnterUnfinished(int64_t id);
void LeaveUnfinished(int64_t id);

// Removes what belongs to a message, so that it can be stored anew under its number.
void RemoveChildRows(int64_t id);

}  // namespace tarnwick::intake
