// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Character sets. Text inside the program is UTF-8 in std::string; message bytes become text here,
// exactly once. Charset names are those of mail headers, in any case, with or without quotation
// marks; names that old mail uses and ICU does not know have a small table, and the usual widenings
// apply (iso-8859-1 is read as windows-1252, shift_jis as cp932, gb2312 as gb18030,
// ks_c_5601-1987 as cp949, us-ascii as windows-1252). Nothing here throws: a sequence that a
// charset does not allow becomes U+FFFD, a single byte that it leaves undefined the control
// character of its value.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "platform/utf8.h"

namespace tarnwick::platform {

bool IsKnownCharset(std::string_view name);

// nullopt when the name is empty or unknown.
std::optional<std::string> CharsetToUtf8(std::string_view bytes, std::string_view charset);

// In the charset when it is known, else in the system code page. Pure ASCII is returned as it is.
// (Charsets that are not supersets of ASCII, such as iso-2022-jp or utf-7, are honoured.)
std::string BytesToUtf8(std::string_view bytes, std::string_view charset);

// The text itself when it is valid UTF-8, else its bytes read in the system code page.
std::string EnsureUtf8(std::string_view text);

// Valid UTF-8 made of any bytes: what is none is read as windows-1252, byte by byte. The last
// resort for text that nobody has converted before.
std::string MendUtf8(std::string_view text);

// UTF-16LE bytes, as registries and stores keep texts, up to the first NUL or the end.
std::string Utf16ToUtf8(std::string_view bytes);

}  // namespace tarnwick::platform
