// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/text.h"

#include <algorithm>
#include <cstdio>

#include "platform/charset.h"

namespace tarnwick::core {

namespace {

constexpr size_t kFilterTextLimit = 255;

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

size_t FindIgnoringCase(std::string_view text, std::string_view part) {
  if (part.size() == 1 && Lower(part[0]) == part[0] && (part[0] < 'a' || part[0] > 'z')) {
    return text.find(part[0]);  // the usual case: a delimiter that has no case
  }
  auto at = std::search(text.begin(), text.end(), part.begin(), part.end(),
                        [](char a, char b) { return Lower(a) == Lower(b); });
  return at == text.end() && !part.empty() ? std::string_view::npos
                                           : static_cast<size_t>(at - text.begin());
}

}  // namespace

std::string_view HeadOf(std::string_view text, std::string_view delimiter) {
  return text.substr(0, FindIgnoringCase(text, delimiter));
}

std::string SplitFirst(std::string& text, std::string_view delimiter, bool remove) {
  size_t at = FindIgnoringCase(text, delimiter);
  std::string head = text.substr(0, at);
  if (remove) {
    if (at == std::string::npos) {
      text.clear();
    } else {
      text.erase(0, at + delimiter.size());
    }
  }
  return head;
}

std::string SplitLast(std::string& text, std::string_view delimiter, bool remove) {
  size_t at = FindIgnoringCase(text, delimiter);
  if (at == std::string::npos) {
    std::string whole = text;
    if (remove) text.clear();
    return whole;
  }
  size_t last = text.rfind(delimiter);
  if (last != std::string::npos && last > at) at = last;
  std::string tail = text.substr(std::min(text.size(), at + delimiter.size()));
  if (remove) text.erase(at);
  return tail;
}

std::string SplitAtSeparator(std::string& text, std::string_view separator, bool cut) {
  return SplitFirst(text, separator, cut);
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && text.front() == ' ') text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ') text.remove_suffix(1);
  return text;
}

std::string CleanTrim(std::string_view text) {
  auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  std::string result(text);
  std::replace(result.begin(), result.end(), '\t', ' ');
  return result;
}

std::string Unquote(std::string_view text) {
  constexpr std::string_view kMarks = "'\"><";
  std::string result = CleanTrim(text);
  if (!result.empty() && kMarks.find(result.front()) != std::string_view::npos) result.erase(0, 1);
  if (!result.empty() && kMarks.find(result.back()) != std::string_view::npos) result.pop_back();
  return result;
}

std::string SanitizeFilterText(std::string_view text) {
  std::string result(platform::FirstChars(text, kFilterTextLimit));
  std::replace(result.begin(), result.end(), '\'', '_');
  std::replace(result.begin(), result.end(), '"', '_');
  return result;
}

std::string QuoteSql(std::string_view text) {
  std::string result;
  result.reserve(text.size() + 8);
  for (char c : text) {
    result += c;
    if (c == '\'') result += c;
  }
  return result;
}

size_t ObeyedLength(std::string_view text) {
  auto at = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
  if (at(0) == '\t' || at(0) == '\n') return 0;
  if (at(0) == '\r') return at(1) == '\n' ? 0 : 1;
  if (!text.empty() && (at(0) < 0x20 || at(0) == 0x7F)) return 1;
  if (at(0) == 0xC2 && at(1) >= 0x80 && at(1) < 0xA0) return 2;
  if (at(0) == 0xD8 && at(1) == 0x9C) return 2;
  if (at(0) == 0xE2 && at(1) == 0x80) {
    bool isMark = at(2) == 0x8E || at(2) == 0x8F || (at(2) >= 0xA8 && at(2) <= 0xAE);
    return isMark ? 3 : 0;
  }
  return at(0) == 0xE2 && at(1) == 0x81 && at(2) >= 0xA6 && at(2) <= 0xA9 ? 3 : 0;
}

std::string EscapedCharacter(std::string_view character) {
  auto byte = [&](size_t i) { return static_cast<unsigned>(character[i]) & 0x3F; };
  unsigned code = static_cast<unsigned char>(character[0]);
  if (character.size() == 2) code = (code & 0x1F) << 6 | byte(1);
  if (character.size() == 3) code = (code & 0x0F) << 12 | byte(1) << 6 | byte(2);
  char escaped[16];
  std::snprintf(escaped, sizeof escaped, "\\u%04x", code);
  return escaped;
}

std::string OneLogLine(std::string_view text) {
  std::string line;
  line.reserve(text.size());
  while (!text.empty()) {
    // Nearly every text is plain from its beginning to its end.
    auto isPlain = [](char c) { return c >= ' ' && c < '\x7F'; };
    auto plain = std::find_if_not(text.begin(), text.end(), isPlain);
    line.append(text.begin(), plain);
    text.remove_prefix(static_cast<size_t>(plain - text.begin()));
    if (text.empty()) break;
    size_t length = ObeyedLength(text);
    if (text[0] == '\r' || text[0] == '\n') {
      line += text[0] == '\r' ? "\\r" : "\\n";
      length = 1;
    } else if (length > 0) {
      line += EscapedCharacter(text.substr(0, length));
    } else {
      line += text[0];
      length = 1;
    }
    text.remove_prefix(length);
  }
  return line;
}

bool BeginsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

bool ContainsIgnoringCase(std::string_view text, std::string_view part) {
  return FindIgnoringCase(text, part) != std::string_view::npos;
}

}  // namespace tarnwick::core
