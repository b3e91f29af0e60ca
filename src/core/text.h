// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Small text routines. They work on bytes and on UTF-8 alike (ASCII delimiters; ignoring case means
// ASCII letters) and never throw, except that SanitizeFilterText and QuoteSql want UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::core {

// What stands before the first delimiter (found without regard to case); with remove, text becomes
// what stands after it. Without a delimiter the whole text is the head and, with remove, text
// becomes "".
std::string SplitFirst(std::string& text, std::string_view delimiter, bool remove);
std::string_view HeadOf(std::string_view text, std::string_view delimiter);

// What stands after the last delimiter; with remove, text becomes what stands before it. The first
// delimiter is searched without regard to case, those after it exactly. Without one as SplitFirst.
std::string SplitLast(std::string& text, std::string_view delimiter, bool remove);

// The text before the first separator, with cut leaving the text after it in text.
std::string SplitAtSeparator(std::string& text, std::string_view separator, bool cut);

// TABs become blanks, leading and trailing blanks go.
std::string CleanTrim(std::string_view text);
// Leading and trailing blanks go.
std::string_view Trim(std::string_view text);
// CleanTrim, then one character at each end if it is one of ' " > <
std::string Unquote(std::string_view text);

// Fit to stand inside a quoted literal of a filter: ' and " become _, at most 255 characters.
std::string SanitizeFilterText(std::string_view text);
// Fit to stand inside a quoted literal: each ' doubled.
std::string QuoteSql(std::string_view text);

// How many bytes the character at the beginning of a text has if a terminal or an editor would obey
// it instead of showing it: a control character, a mark that turns the direction of what follows, a
// separator of lines or paragraphs. 0 for any other, and for TAB and the line end CR LF or LF.
size_t ObeyedLength(std::string_view text);
// Such a character as "\u202e".
std::string EscapedCharacter(std::string_view character);
// A text from mail, a store or a file name as part of one line of the log: what ObeyedLength finds
// and line ends are written as \n, \r or \u and four digits.
std::string OneLogLine(std::string_view text);

bool BeginsWith(std::string_view text, std::string_view prefix);
bool ContainsIgnoringCase(std::string_view text, std::string_view part);  // ASCII letters

}  // namespace tarnwick::core
