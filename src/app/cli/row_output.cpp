// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "cli/row_output.h"

#include <iostream>

#include "core/text.h"

namespace tarnwick::app {

namespace {

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

std::string JsonText(std::string_view text) {
  std::string result = "\"";
  while (!text.empty()) {
    bool isLineEnd = text[0] == '\t' || text[0] == '\r' || text[0] == '\n';
    size_t length = isLineEnd ? 1 : core::ObeyedLength(text);
    if (length > 0) {
      result += core::EscapedCharacter(text.substr(0, length));
    } else {
      length = 1;
      if (text[0] == '"' || text[0] == '\\') result += '\\';
      result += text[0];
    }
    text.remove_prefix(length);
  }
  return result + '"';
}

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
    size_t length = core::ObeyedLength(text);
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

std::string JsonArray(const std::optional<std::vector<std::string>>& texts) {
  if (!texts) return "null";
  std::string array = "[";
  for (const std::string& text : *texts) {
    if (array.size() > 1) array += ',';
    array += JsonText(text);
  }
  return array + "]";
}

void PrintJson(jet::Recordset& rows,
               const std::vector<std::pair<std::string, std::string>>& members) {
  std::cout << '{';
  PrintColumns(rows);
  for (const auto& [name, value] : members) std::cout << ',' << JsonText(name) << ':' << value;
  std::cout << "}\n";
}

}  // namespace tarnwick::app
