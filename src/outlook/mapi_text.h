// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Texts of Outlook stores: UTF-16 in the newer (Unicode) files, bytes of a Windows code page in the
// older (ANSI) ones. Nothing here throws.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick::outlook {

// The charset name of a Windows code page number; "" for one that has none, 0 and the UTF-16 ones
// included.
std::string CharsetOfCodepage(int64_t codepage);

// The ANSI code page of a Windows language number (LCID), 0 when it is not known.
int64_t CodepageOfLocale(int64_t locale);

// The Windows code page that a store kept in a computer of the same script would use for its bytes:
// 1251 for KOI8-R, 932 for ISO-2022-JP, ...; 0 when it is not known.
int64_t AnsiCodepageOf(int64_t internetCodepage);

// UTF-16LE with NULs left out.
std::string TextFromUtf16(std::string_view bytes);
// Bytes with NULs left out, in charset when it is known, else in the system code page.
std::string TextFromBytes(std::string_view bytes, const std::string& charset);

}  // namespace tarnwick::outlook
