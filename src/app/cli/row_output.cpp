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
  std::string result;
  for (char c : text) {
    auto byte = static_cast<unsigned char>(c);
    result += byte < 0x20 || byte == 0x7F ? ' ' : c;
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
