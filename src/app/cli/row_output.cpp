// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "cli/row_output.h"

#include <cstdio>
#include <iostream>

namespace tarnwick::app {

namespace {

std::string JsonText(const std::string& text) {
  std::string result = "\"";
  for (char c : text) {
    auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      result += '\\';
      result += c;
    } else if (byte < 0x20 || byte == 0x7F) {
      char escaped[8];
      std::snprintf(escaped, sizeof escaped, "\\u%04x", byte);
      result += escaped;
    } else {
      result += c;
    }
  }
  return result + '"';
}

// How many bytes the character at the beginning of a text has that a terminal would obey instead of
// showing it: a control character or one that turns the direction of what follows. 0 for any other.
size_t UnshownLength(std::string_view text) {
  auto at = [&](size_t i) { return i < text.size() ? static_cast<unsigned char>(text[i]) : 0U; };
  if (at(0) == '\t' || at(0) == '\r' || at(0) == '\n') return 0;
  if (at(0) < 0x20 || at(0) == 0x7F) return 1;
  if (at(0) == 0xC2 && at(1) >= 0x80 && at(1) < 0xA0) return 2;
  if (at(0) == 0xE2 && at(1) == 0x80 && at(2) >= 0xAA && at(2) <= 0xAE) return 3;
  if (at(0) == 0xE2 && at(1) == 0x81 && at(2) >= 0xA6 && at(2) <= 0xA9) return 3;
  return 0;
}

std::string JsonValue(const jet::Value& value) {
  if (value.IsNull()) return "null";
  if (auto date = value.AsDate(); value.IsDate() && date) return JsonText(date->ToIso());
  return value.IsText() ? JsonText(value.AsText()) : value.AsText();
}

void PrintColumns(jet::Recordset& rows) {
  for (int i = 0; i < rows.FieldCount(); ++i) {
    std::cout << (i == 0 ? "" : ",") << JsonText(rows.FieldName(i)) << ':'
              << JsonValue(rows.Field(i));
  }
}

}  // namespace

std::string OneLine(const std::string& text) {
  std::string line = Harmless(text);
  for (char& c : line) {
    if (c == '\t' || c == '\r' || c == '\n') c = ' ';
  }
  return line;
}

std::string Harmless(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  while (!text.empty()) {
    size_t length = UnshownLength(text);
    if (length > 0) {
      result += ' ';
    } else {
      length = 1;
      result += text[0];
    }
    text.remove_prefix(length);
  }
  return result;
}

void PrintJson(jet::Recordset& rows) {
  std::cout << '{';
  PrintColumns(rows);
  std::cout << "}\n";
}

void PrintJson(jet::Recordset& rows, const std::string& name,
               const std::vector<std::string>& texts) {
  std::cout << '{';
  PrintColumns(rows);
  std::cout << ',' << JsonText(name) << ":[";
  for (size_t i = 0; i < texts.size(); ++i) std::cout << (i == 0 ? "" : ",") << JsonText(texts[i]);
  std::cout << "]}\n";
}

}  // namespace tarnwick::app
