// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Encoded words of header texts: "=?" charset "?" letter "?" text "?=" (RFC 2047). Accepted beyond
// it: words inside other text and inside quotation marks, blanks and question marks in the text,
// any length, an unknown charset (its bytes count as undeclared) and an unknown letter (the text
// stands as it is).
#pragma once

#include <string_view>

#include "intake/mixed_text.h"

namespace tarnwick::intake {

// Appends text to out with each encoded word undone; blanks between two adjacent ones vanish. A
// malformed word is kept as it stands. Of a text with one word the last "?=" ends it. True when
// something was undone.
bool Decode(std::string_view text, MixedText& out);

}  // namespace tarnwick::intake
