// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Encoded words of headers (RFC 2047):
//
//   word = "=?" charset ["*" language] "?" ("B" | "Q") "?" encoded text "?="
//
// Accepted on purpose beyond the RFC: words inside other text or quotation marks, blanks inside an
// encoded text, a character cut in two by adjacent words of one charset.
#pragma once

#include <string_view>

#include "intake/mixed_text.h"

namespace tarnwick::intake {

// The text with each encoded word undone; blanks between two adjacent ones vanish. A malformed word
// is kept as it stands; one in an unknown charset gives its decoded bytes. changed, when given,
// tells whether there was a word.
MixedText Decode(std::string_view text, bool* changed = nullptr);

}  // namespace tarnwick::intake
