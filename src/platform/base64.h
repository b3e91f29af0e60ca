// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Base64 (RFC 4648) in whole groups: three bytes, or four characters of its 64.
#pragma once

#include <cstddef>

namespace tarnwick::platform {

// out: has room for 4 * groups characters.
void EncodeBase64Groups(const char* bytes, size_t groups, char* out);

// False where a character is none of the 64, '=' included; what out then holds is of no use.
// out: has room for 3 * groups bytes.
bool DecodeBase64Groups(const char* text, size_t groups, char* out);

}  // namespace tarnwick::platform
