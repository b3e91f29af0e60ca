// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Texts that are mostly lines of base64, attachments: folded, they hold the bytes in the place of
// the characters. That is a quarter less, and what repeats in the bytes shows.
//
// A folded text, its numbers with the lowest byte first:
//   number of parts (32 bits)
//   of each part: length of its plain text (32 bits), number of its lines of base64, which follow
//   that text (32 bits), groups of four characters in each line (8 bits), how each line ends (8
//   bits; 0: CR LF, 1: LF)
//   the plain text of all parts
//   the bytes of all lines, three to a group
// Internal to packing.h; embedded in the files.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnwick::jet {

// Folds text into folded, which it empties first; false where that saves less than an eighth.
bool FoldBase64(std::string_view text, std::string& folded);

// Writes the text that was folded to text, which has room for size bytes; false where it is damaged
// or of another size.
bool UnfoldBase64(std::string_view folded, char* text, size_t size);

}  // namespace tarnwick::jet
