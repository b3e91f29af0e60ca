// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/value.h"

#include <charconv>
#include <cmath>

#include "platform/locale.h"

namespace tarnwick::jet {

namespace {

// The longest beginning of the text, after blanks, that is a number.
double LeadingNumber(std::string_view text) {
  size_t start = text.find_first_not_of(" \t\r\n");
  if (start == std::string_view::npos) return 0;
  if (text[start] == '+') start++;
  double number = 0;
  std::from_chars(text.data() + start, text.data() + text.size(), number);
  return std::isfinite(number) ? number : 0;
}

int64_t ToWhole(double number) {
  constexpr double kLimit = 9.2e18;
  if (!(number > -kLimit && number < kLimit)) return 0;
  return static_cast<int64_t>(number);
}

std::string Decimal(double number) {
  char buffer[32];
  auto end = std::to_chars(buffer, buffer + sizeof buffer, number).ptr;
  return {buffer, end};
}

}  // namespace

std::string Value::AsText() const {
  if (auto* text = std::get_if<std::string>(&data_)) return *text;
  if (auto* number = std::get_if<int64_t>(&data_)) return std::to_string(*number);
  if (auto* number = std::get_if<double>(&data_)) return Decimal(*number);
  if (auto* date = std::get_if<DateTime>(&data_))
    return platform::FormatDate(*date, "General Date");
  if (auto* bytes = std::get_if<Bytes>(&data_)) return bytes->data;
  return {};
}

int64_t Value::AsInt() const {
  if (auto* number = std::get_if<int64_t>(&data_)) return *number;
  if (auto* text = std::get_if<std::string>(&data_)) {
    // Whole numbers of any size exactly, others through their nearest double.
    size_t start = text->find_first_not_of(" \t\r\n+");
    if (start == std::string::npos) return 0;
    int64_t whole = 0;
    const char* end = text->data() + text->size();
    auto read = std::from_chars(text->data() + start, end, whole);
    bool more = read.ptr != end && (*read.ptr == '.' || *read.ptr == 'e' || *read.ptr == 'E');
    if (read.ec == std::errc() && !more) return whole;
  }
  if (auto* date = std::get_if<DateTime>(&data_)) return date->Seconds();
  return ToWhole(AsDouble());
}

double Value::AsDouble() const {
  if (auto* number = std::get_if<double>(&data_)) return *number;
  if (auto* number = std::get_if<int64_t>(&data_)) return static_cast<double>(*number);
  if (auto* text = std::get_if<std::string>(&data_)) return LeadingNumber(*text);
  if (auto* date = std::get_if<DateTime>(&data_)) return static_cast<double>(date->Seconds());
  return 0;
}

std::optional<DateTime> Value::AsDate() const {
  if (auto* date = std::get_if<DateTime>(&data_)) return *date;
  if (auto* text = std::get_if<std::string>(&data_)) return platform::ParseDate(*text);
  return std::nullopt;
}

}  // namespace tarnwick::jet
