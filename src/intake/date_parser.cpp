// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/date_parser.h"

#include <array>
#include <cmath>
#include <cstdlib>
#include <string_view>

#include "core/guard.h"
#include "core/run_state.h"
#include "core/text.h"
#include "platform/charset.h"
#include "platform/clock.h"
#include "platform/error.h"

namespace tarnwick::intake {

namespace {

constexpr size_t kMaxTokens = 10;
constexpr std::array<std::string_view, 12> kMonths = {"JAN", "FEB", "MAR", "APR", "MAY", "JUN",
                                                      "JUL", "AUG", "SEP", "OCT", "NOV", "DEC"};

// A sign, digits, and digits behind a point: what counts as a number in a date.
bool IsNumeric(std::string_view token) {
  if (!token.empty() && (token[0] == '+' || token[0] == '-')) token.remove_prefix(1);
  bool digits = false;
  bool point = false;
  for (char c : token) {
    if (c >= '0' && c <= '9') {
      digits = true;
    } else if (c == '.' && !point) {
      point = true;
    } else {
      return false;
    }
  }
  return digits;
}

double NumberOf(const std::string& token) {
  return std::strtod(token.c_str(), nullptr);
}

bool IsUnsignedNumber(const std::string& token) {
  return IsNumeric(token) && token[0] != '+' && token[0] != '-';
}

// To the nearest whole number, halves to even.
int64_t RoundHalfEven(double value) {
  double lower = std::floor(value);
  double rest = value - lower;
  bool up = rest > 0.5 || (rest == 0.5 && std::fmod(lower, 2.0) != 0.0);
  return static_cast<int64_t>(lower) + (up ? 1 : 0);
}

class DateTokens {
 public:
  explicit DateTokens(std::string text) {
    text = core::CleanTrim(text);
    while (!text.empty()) {
      text = core::Trim(text);
      std::string token = core::CleanTrim(core::SplitFirst(text, " ", true));
      if (!token.empty() && token.back() == ',') token.pop_back();
      if (count_ == kMaxTokens) throw Error(ErrorNumber::kSubscript, "Subscript out of range");
      tokens_[++count_] = token;
      if (token.find(':') != std::string::npos) timePosition_ = count_;
    }
    if (timePosition_ == 0) {
      if (count_ == kMaxTokens) throw Error(ErrorNumber::kSubscript, "Subscript out of range");
      tokens_[++count_] = "12:00:00";
      timePosition_ = count_;
      tokens_[count_ + 1] = "0";
    }
  }

  int TakeYear(int today) {
    for (size_t i = 1; i <= count_; ++i) {
      if (IsUnsignedNumber(tokens_[i]) && NumberOf(tokens_[i]) >= 1900) return Take<int>(i);
    }
    std::string& before = tokens_[timePosition_ - 1];
    if (timePosition_ > 1 && IsNumeric(before) && NumberOf(before) <= today) {
      return Take<int>(timePosition_ - 1);
    }
    return today;
  }

  int TakeMonth(int today) {
    for (size_t i = 1; i <= count_; ++i) {
      int month = MonthNumber(tokens_[i]);
      if (month == 0) continue;
      tokens_[i].clear();
      return month;
    }
    return today;
  }

  int TakeDay(int today) {
    for (size_t i = 1; i <= count_; ++i) {
      if (!IsUnsignedNumber(tokens_[i])) continue;
      double value = NumberOf(tokens_[i]);
      if (value >= 1 && value <= 31) return Take<int>(i);
    }
    return today;
  }

  std::string TakeZone() {
    for (size_t i = 1; i <= count_; ++i) {
      const std::string& token = tokens_[i];
      if (token.empty()) continue;
      if ((token[0] == '+' && IsNumeric(token)) || token[0] == '-') {
        return std::exchange(tokens_[i], {});
      }
    }
    return {};
  }

  const std::string& TimeToken() const { return tokens_[timePosition_]; }
  const std::string& TokenAfterTime() const { return tokens_[timePosition_ + 1]; }

 private:
  // The token's whole number; a 16-bit one is all that a year, month or day may be.
  template <typename Number>
  Number Take(size_t position) {
    double value = NumberOf(std::exchange(tokens_[position], {}));
    if (value > INT16_MAX || value < INT16_MIN) throw Error(6, "Overflow");
    return static_cast<Number>(RoundHalfEven(value));
  }

  // Counted from 1; one behind the last for the zone that goes with a missing time.
  std::array<std::string, kMaxTokens + 3> tokens_;
  size_t count_ = 0;
  size_t timePosition_ = 0;
};

DateTime WithTimeText(DateTime date, const std::string& text) {
  auto time = DateTime::FromIso("2000-01-01 " + text);
  // One digit more or less, or a fraction, is no time; a time without seconds is one.
  if (!time) throw Error(ErrorNumber::kTypeMismatch, "Type mismatch");
  CivilTime civil = time->ToCivil();
  return date.WithTime(civil.hour, civil.minute, civil.second);
}

// The zone token without the sign that some programs put before the sign; "0" for a name.
std::string CleanZone(std::string zone) {
  if (IsNumeric(zone)) return zone;
  zone = core::Trim(zone);
  auto hasTwoSigns = [&] { return core::BeginsWith(zone, "+-") || core::BeginsWith(zone, "-+"); };
  if (zone.size() < 3 || !hasTwoSigns()) return "0";
  while (hasTwoSigns()) {
    zone.erase(0, 1);
    if (!IsNumeric(zone)) break;
    if (zone.size() == 2) return "0";
  }
  return zone;
}

void Parse(DateTime& resultDate, std::string& timeText, std::string& zoneText,
           const std::string& dateText, bool applyShift) {
  CivilTime today = platform::Now().ToCivil();
  zoneText.clear();
  DateTokens tokens(dateText);
  int year = tokens.TakeYear(today.year);
  int month = tokens.TakeMonth(today.month);
  int day = tokens.TakeDay(today.day);
  zoneText = tokens.TakeZone();
  resultDate = DateTime::FromDate(year, month, day);
  if (zoneText.empty()) zoneText = tokens.TokenAfterTime();
  timeText = tokens.TimeToken();
  if (!timeText.empty()) resultDate = WithTimeText(resultDate, timeText);
  zoneText = CleanZone(zoneText);
  if (applyShift && IsNumeric(zoneText) && NumberOf(zoneText) > 0) {
    int64_t hours = RoundHalfEven(static_cast<double>(RoundHalfEven(NumberOf(zoneText))) / 100);
    // A zone of many digits is no zone; the calendar ends before it does.
    constexpr int64_t kLongestShift = 1000;
    if (hours > kLongestShift) throw Error(6, "Overflow");
    resultDate = resultDate.AddHours(core::State().LocalZoneHours - hours);
  }
}

}  // namespace

bool NamesDate(const std::string& dateText) {
  return core::Guarded(
      "NamesDate", false,
      [&] {
        DateTokens tokens(dateText);
        constexpr int kNotFound = 0;
        return tokens.TakeYear(kNotFound) != kNotFound ||
               tokens.TakeMonth(kNotFound) != kNotFound || tokens.TakeDay(kNotFound) != kNotFound;
      },
      core::Report::kLog);
}

int MonthNumber(const std::string& token) {
  if (token.empty()) return 0;
  std::string english = platform::AsciiUpper(token.substr(0, 3));
  for (size_t i = 0; i < kMonths.size(); ++i) {
    if (english == kMonths[i]) return static_cast<int>(i) + 1;
  }
  if (!platform::IsValidUtf8(token)) return 0;
  std::string folded = platform::FoldCase(platform::FirstChars(token, 3));
  const auto& names = core::State().LocalMonthNames;
  for (size_t i = 0; i < names.size(); ++i) {
    if (!names[i].empty() && folded == platform::FoldCase(platform::FirstChars(names[i], 3))) {
      return static_cast<int>(i) + 1;
    }
  }
  return 0;
}

void twParseDate(DateTime& resultDate, std::string& timeText, std::string& zoneText,
                 std::string dateText, bool applyShift) {
  core::GuardedRun(
      "twParseDate; ", [&] { Parse(resultDate, timeText, zoneText, dateText, applyShift); },
      core::Report::kLog);
}

}  // namespace tarnwick::intake
