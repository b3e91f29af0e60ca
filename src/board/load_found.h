// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Loading what a look has found (look/look.h), or part of it.
#pragma once

#include <vector>

#include "board/load_command.h"
#include "look/look.h"

namespace tarnwick::board {

// Takes all of this mail in, without the questions that begin a first load. Of Outlook Express a
// profile is read as a whole, by the rules that the options say. lostToo: lost messages are looked
// for as well. The counts are those of all of it.
LoadResult LoadFound(const std::vector<look::FoundMail>& mail, SenderPolicy senders,
                     bool lostToo = false);

}  // namespace tarnwick::board
