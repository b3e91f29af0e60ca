// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// How the blocks of stores with large pages are packed: zlib's format (RFC 1950).
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnwick::outlook::reader {

// The first count bytes of what was packed; fewer where it is shorter, none where it is damaged
// before its end or before that place.
std::string Unpacked(std::string_view packed, size_t count);

}  // namespace tarnwick::outlook::reader
