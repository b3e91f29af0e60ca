// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Whether another process has a database file open: the locks that the database engine holds on it
// are looked at, none is taken.
#pragma once

#include <string>

namespace tarnwick::platform {

// False for a missing file, one that can't be looked at, and one that only this process has open.
// REQUIRES: this process does not have the file open; its own locks would be gone with this look.
bool IsOpenElsewhere(const std::string& databaseFile);

}  // namespace tarnwick::platform
