// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Base64 (RFC 4648) in whole groups: three bytes, or four characters of its 64.
#pragma once

#include <cstddef>

namespace tarnwick::platform {

// out: has room for 4 * groups characters.
void EncodeBase64Groups(const char* bytes, size_t groups, char* out);

// Whether a character is one of the 64; '=' is not.
bool IsBase64(char c);

// False where a character is none of the 64; such count as zeros. out: has room for 3 * groups
// bytes.
bool DecodeBase64Groups(const char* text, size_t groups, char* out);

}  // namespace tarnwick::platform
