// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Case folding as the database knows it: code point by code point, for every script (the simple
// folding of Unicode's CaseFolding.txt). Internal to the database.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick::jet {

// True for valid UTF-8.
bool IsWellFormed(std::string_view text);

// Valid UTF-8 made of any bytes: what is no UTF-8 is read as windows-1252, byte by byte. The last
// resort for text that nobody has converted before.
std::string MendUtf8(std::string_view text);

// The code point at position, which moves behind it. A byte that begins no valid sequence is a code
// point of its own, above all real ones. REQUIRES: position < text.size().
int32_t NextChar(std::string_view text, size_t& position);

int32_t FoldChar(int32_t character);

// The text with each code point folded; bytes that are no UTF-8 stay as they are.
std::string FoldText(std::string_view text);

// Number of code points.
size_t CountChars(std::string_view text);

// Names and words: ASCII letters without regard to case.
bool SameWord(std::string_view a, std::string_view b);
std::string LowerWord(std::string_view word);

}  // namespace tarnwick::jet
