// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A field's value: Null, a whole number, a number, a text (UTF-8), a date-time or bytes.
// Conversions are forgiving, as a field's are: Null reads as "", 0 or nullopt.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

#include "platform/date_time.h"

namespace tarnwick::jet {

struct Bytes {
  std::string data;
  friend bool operator==(const Bytes&, const Bytes&) = default;
};

class Value {
 public:
  Value() = default;  // Null
  Value(int value) : data_(int64_t{value}) {}
  Value(int64_t value) : data_(value) {}
  Value(bool) = delete;
  Value(double value) : data_(value) {}
  Value(const char* text) : data_(std::string(text)) {}
  Value(std::string text) : data_(std::move(text)) {}
  Value(DateTime value) : data_(value) {}
  Value(Bytes value) : data_(std::move(value)) {}

  bool IsNull() const { return std::holds_alternative<std::monostate>(data_); }
  bool IsText() const { return std::holds_alternative<std::string>(data_); }
  bool IsBytes() const { return std::holds_alternative<Bytes>(data_); }
  bool IsDate() const { return std::holds_alternative<DateTime>(data_); }

  // Numbers in decimal, dates in the locale's general form, bytes as they are.
  std::string AsText() const;
  // A text gives its leading number, 0 when it has none.
  int64_t AsInt() const;
  double AsDouble() const;
  // A date, or a text that reads as one.
  std::optional<DateTime> AsDate() const;

  const std::variant<std::monostate, int64_t, double, std::string, DateTime, Bytes>& Data() const {
    return data_;
  }
  friend bool operator==(const Value&, const Value&) = default;

 private:
  std::variant<std::monostate, int64_t, double, std::string, DateTime, Bytes> data_;
};

}  // namespace tarnwick::jet
