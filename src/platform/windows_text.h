// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Where UTF-8 meets the system's UTF-16, on Windows; nothing else of the program knows of it. Names
// there may hold halves of pairs; they become three bytes each, as if they were characters, and are
// the same name again on the way back. Private to the platform room.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::platform {

std::wstring Wide(std::string_view utf8);  // what is no UTF-8 becomes U+FFFD
std::string Utf8(std::wstring_view wide);

// A path as the system takes it whatever its length and its names ("con", "a."): absolute, without
// "." and "..", behind "\\?\". "" stays ""; so does a path of which a name holds a colon, which no
// file has.
std::wstring WidePath(const std::string& path);

// The value of errno for an error code of the system.
int ErrnoOf(unsigned long code);

}  // namespace tarnwick::platform
