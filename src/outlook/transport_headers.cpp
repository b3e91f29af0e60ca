// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/transport_headers.h"

#include <algorithm>

#include "core/text.h"
#include "platform/charset.h"

namespace tarnwick::outlook {

namespace {

// Cuts the first line off text; without its end.
std::string_view TakeLine(std::string_view& text) {
  size_t end = std::min(text.find_first_of("\r\n"), text.size());
  std::string_view line = text.substr(0, end);
  text.remove_prefix(end);
  if (!text.empty() && text[0] == '\r') text.remove_prefix(1);
  if (!text.empty() && text[0] == '\n') text.remove_prefix(1);
  return line;
}

bool IsFieldName(std::string_view name) {
  return !name.empty() &&
         std::all_of(name.begin(), name.end(), [](char c) { return c > ' ' && c < 127; });
}

}  // namespace

std::string HeaderField::Value() const {
  std::string value = text.substr(lowerName.size() + 1);
  std::replace_if(
      value.begin(), value.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
  return core::CleanTrim(value);
}

std::vector<HeaderField> ReadTransportHeaders(std::string_view headers) {
  std::vector<HeaderField> fields;
  bool inField = false;
  while (!headers.empty()) {
    std::string_view line = TakeLine(headers);
    if (line.empty()) {
      // An empty line before any field is only a beginning.
      if (fields.empty()) continue;
      break;
    }
    if (line[0] == ' ' || line[0] == '\t') {
      if (inField) fields.back().text.append(line).append("\r\n");
      continue;
    }
    size_t colon = line.find(':');
    inField = colon != std::string_view::npos && IsFieldName(line.substr(0, colon));
    if (!inField) continue;
    fields.push_back({platform::AsciiLower(line.substr(0, colon)), std::string(line) + "\r\n"});
  }
  return fields;
}

}  // namespace tarnwick::outlook
