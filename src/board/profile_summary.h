// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a folder holds as a mail owner's profile, for the options window. Nothing is loaded and
// nothing kept.
#pragma once

#include <string>

#include "options/options.h"

namespace tarnwick::board {

// An options::ProfileReader: never throws (a profile that can't be read is logged and holds what
// was found until then) and lets events run between two files.
options::ProfileSummary ReadProfile(const std::string& folder);

}  // namespace tarnwick::board
