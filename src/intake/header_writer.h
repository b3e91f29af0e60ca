// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Texts in the forms that the headers of a message carry them in (RFC 2045, 2047, 2231, 5322).
// Whatever a text holds, it stays inside its header: none of these gives a line end but those that
// fold. Nothing here throws.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "platform/date_time.h"

namespace tarnwick::intake {

// What differs between the headers that the program writes. Messages that were stored with a form
// keep it, so that they are the same byte for byte when they are made again.
struct HeaderForm {
  std::string_view charset = "utf-8";  // as encoded words name it
  size_t bytesPerWord = 42;            // at most 45: an encoded word has at most 75 characters
  std::string_view fold = "\r\n ";     // between two encoded words
  size_t longestPlain = 200;           // a longer text is encoded, which folds it
  bool mergesControls = false;         // control characters in a row become one blank
};

// Valid UTF-8 without control characters, which become blanks, and without blanks at its ends.
std::string OneLine(std::string_view text, const HeaderForm& form = {});

// "text", with " and \ escaped. REQUIRES: one line.
std::string QuotedString(std::string_view text);

// REQUIRES: valid UTF-8. No character is divided between two words.
std::string EncodedWords(std::string_view text, const HeaderForm& form = {});

// Whether a line can stand in a header without being encoded, and would not be taken for encoded.
bool IsPlainHeader(std::string_view line, const HeaderForm& form = {});

// Fit to stand in a header behind its name: as it is, or as encoded words.
std::string HeaderText(std::string_view text);

// ; name="value", or its encoded form, on a folded line.
std::string HeaderParameter(std::string_view name, std::string_view value);

// "Mon, 15 Jun 2020 12:00:00 +0300"; the offset in minutes that local time is ahead of UTC.
std::string InternetDate(DateTime local, int utcOffsetMinutes);

// Adds the base64 of the bytes, without line ends.
void AppendBase64(std::string_view bytes, std::string& text);
// Adds mark and the two digits of a byte: "=3D", "%20".
void AppendEscaped(char c, char mark, std::string& text);

}  // namespace tarnwick::intake
