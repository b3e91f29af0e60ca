// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// UTF-8 text as characters (code points), and case as the program knows it everywhere: character by
// character, for every script (the simple folding of Unicode's CaseFolding.txt). Any bytes may be
// handed in; what is no UTF-8 among them stays as it is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick::platform {

bool IsAscii(std::string_view text);
bool IsValidUtf8(std::string_view text);
// The end of the ASCII run that begins at position.
size_t SkipAscii(std::string_view text, size_t position);

// Number of characters. REQUIRES: valid UTF-8.
size_t CountChars(std::string_view text);
// At most count characters from the start, cut between characters.
std::string_view FirstChars(std::string_view text, size_t count);

// The character at position, which moves behind it. A byte that begins no valid sequence is a
// character of its own, from kNoChar up. REQUIRES: position < text.size().
inline constexpr int32_t kNoChar = 0x110000;
int32_t NextChar(std::string_view text, size_t& position);
// The same, but -1 for the whole beginning of a sequence that does not go on.
int32_t NextSequence(std::string_view text, size_t& position);
// REQUIRES: a character that there is.
void AppendChar(std::string& text, int32_t character);

int32_t FoldChar(int32_t character);
// Equal folds are what the database calls equal. CountChars is unchanged.
std::string FoldCase(std::string_view text);
bool EqualIgnoringCase(std::string_view a, std::string_view b);

// ASCII only, for protocol words and names; other bytes are untouched.
inline char LowerLetter(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
std::string AsciiLower(std::string_view text);
std::string AsciiUpper(std::string_view text);
bool SameWord(std::string_view a, std::string_view b);

}  // namespace tarnwick::platform
