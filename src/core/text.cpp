// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/text.h"

#include <algorithm>

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

bool BeginsWith(std::string_view text, std::string_view prefix) {
  return text.substr(0, prefix.size()) == prefix;
}

bool ContainsIgnoringCase(std::string_view text, std::string_view part) {
  return FindIgnoringCase(text, part) != std::string_view::npos;
}

}  // namespace tarnwick::core
