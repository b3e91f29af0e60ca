// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Private to the platform room on Windows.
#pragma once

#include <windows.h>

namespace tarnwick::platform {

// With what a file or folder is made that its owner and the system itself alone may open; what is
// made in such a folder is so, too. nullptr, which is the folder's rule, where the user can't be
// told.
SECURITY_ATTRIBUTES* OwnerOnly();

// A rule by which the owner may do this much alone with something, not even change the rule (which
// an owner may do otherwise), and the system all. For LocalFree; nullptr where the user can't be
// told.
PSECURITY_DESCRIPTOR OwnerMayOnly(DWORD rights);

}  // namespace tarnwick::platform
