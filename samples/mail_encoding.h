// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The encodings in which old mail was written, done here by the rules of their standards and not by
// the program's own code, so that tests compare two independent workings.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::samples {

// Russian texts (ASCII, the Russian alphabet) as bytes of the charset. Other characters become "?".
std::string ToKoi8(std::string_view utf8);
std::string ToWindows1251(std::string_view utf8);
// Western texts as ISO 8859-1.
std::string ToLatin1(std::string_view utf8);

// Japanese: jis holds two ASCII characters for each kanji or kana, as JIS X 0208 numbers them.
std::string JisToIso2022(std::string_view jis);
std::string JisToShiftJis(std::string_view jis);

std::string Base64(std::string_view bytes);       // one line
std::string Base64Lines(std::string_view bytes);  // lines of 76, each ended by CR LF
// Lines keep their CR LF; longer ones get soft breaks.
std::string QuotedPrintable(std::string_view bytes);
std::string EncodedWordB(std::string_view charset, std::string_view bytes);
std::string EncodedWordQ(std::string_view charset, std::string_view bytes);
// "begin 644 name" to "end", each line ended by CR LF.
std::string Uuencode(std::string_view name, std::string_view bytes);

}  // namespace tarnwick::samples
