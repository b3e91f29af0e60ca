// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/date_parser.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <optional>
#include <string_view>

#include "core/guard.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/reading_rules.h"
#include "platform/charset.h"
#include "platform/clock.h"
#include "platform/error.h"
#include "platform/locale.h"

namespace tarnwick::intake {

namespace {

constexpr std::string_view kLogName = "twParseDate; ";
constexpr size_t kMaxTokens = 10;
constexpr double kLargestShort = 32767;  // years and zones are 16-bit numbers

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// The value of a number: digits with at most one "." among them, a sign before them allowed.
std::optional<double> NumberOf(std::string_view token) {
  std::string_view digits = token;
  bool isNegative = false;
  if (!digits.empty() && (digits[0] == '+' || digits[0] == '-')) {
    isNegative = digits[0] == '-';
    digits.remove_prefix(1);
  }
  bool hasDigit = false;
  int points = 0;
  double value = 0;
  for (char c : digits) {
    if (IsDigit(c)) {
      hasDigit = true;
      value = value * 10 + (c - '0');
    } else if (c != '.' || ++points > 1) {
      return std::nullopt;
    }
  }
  if (!hasDigit) return std::nullopt;
  constexpr size_t kExactDigits = 15;
  if (points > 0 || digits.size() > kExactDigits) {
    value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value, std::chars_format::fixed);
  }
  return isNegative ? -value : value;
}

std::optional<double> UnsignedNumberOf(std::string_view token) {
  if (!token.empty() && (token[0] == '+' || token[0] == '-')) return std::nullopt;
  return NumberOf(token);
}

// The nearest whole number, halves to even.
int RoundShort(double value) {
  double rounded = std::nearbyint(value);
  if (std::abs(rounded) > kLargestShort) throw Error(ErrorNumber::kTypeMismatch, "Overflow");
  return static_cast<int>(rounded);
}

enum class Half { kMorning, kAfternoon };

struct Clock {
  int hour = 0;
  int minute = 0;
  int second = 0;

  // REQUIRES: hour is one of twelve.
  void SetHalf(Half half) { hour = hour % 12 + (half == Half::kAfternoon ? 12 : 0); }
};

// Which half of the day a word beside a time means, in English or in the user's language. Points
// and hard blanks within it do not count ("p.m.").
std::optional<Half> HalfOf(std::string_view word) {
  // Most often it is a zone or a year.
  if (word.empty() || static_cast<unsigned char>(word[0]) < 'A') return std::nullopt;
  std::string letters = platform::EnsureUtf8(word);
  for (std::string_view mark : {".", "\xC2\xA0", "\xE2\x80\xAF"}) {
    for (size_t at = 0; (at = letters.find(mark, at)) != std::string::npos;) {
      letters.erase(at, mark.size());
    }
  }
  if (letters.empty()) return std::nullopt;
  platform::DayHalves local = platform::LocalDayHalves();
  for (const platform::DayHalves& names : {platform::DayHalves{"am", "pm"}, local}) {
    if (platform::EqualIgnoringCase(letters, names.morning)) return Half::kMorning;
    if (platform::EqualIgnoringCase(letters, names.afternoon)) return Half::kAfternoon;
  }
  return std::nullopt;
}

// One or two digits from position on.
std::optional<int> ReadPart(std::string_view text, size_t& position) {
  int value = 0;
  size_t start = position;
  while (position < text.size() && position - start < 2 && IsDigit(text[position])) {
    value = value * 10 + (text[position++] - '0');
  }
  if (position == start) return std::nullopt;
  return value;
}

// "h:mm", "h:mm:ss", a fraction of the second dropped, "AM" or "PM" behind it.
std::optional<Clock> ReadClock(std::string_view text) {
  Clock clock;
  size_t position = 0;
  auto hour = ReadPart(text, position);
  if (!hour || position >= text.size() || text[position++] != ':') return std::nullopt;
  auto minute = ReadPart(text, position);
  if (!minute) return std::nullopt;
  clock.hour = *hour;
  clock.minute = *minute;
  if (position < text.size() && text[position] == ':') {
    auto second = ReadPart(text, ++position);
    if (!second) return std::nullopt;
    clock.second = *second;
    if (position + 1 < text.size() && text[position] == '.' && IsDigit(text[position + 1])) {
      while (++position < text.size() && IsDigit(text[position])) {
      }
    }
  }
  if (position < text.size()) {
    auto half = HalfOf(text.substr(position));
    if (!half || clock.hour < 1 || clock.hour > 12) return std::nullopt;
    clock.SetHalf(*half);
  }
  if (clock.hour > 23 || clock.minute > 59 || clock.second > 59) return std::nullopt;
  return clock;
}

class DateText {
 public:
  explicit DateText(std::string_view text) {
    SplitTokens(text);
    half_ = FindHalf();
    if (time_ == kNone) {
      // No time: noon, and the place behind it says that there is no zone either.
      Add("12:00:00");
      time_ = count_ - 1;
      zoneBehindTime_ = "0";
    } else if (time_ + 1 < count_) {
      behindTime_ = time_ + 1;
    }
  }

  DateTime TakeDate() {
    CivilTime today = platform::Now().ToCivil();
    int year = TakeYear(ThisYear).value_or(today.year);
    int month = TakeMonth().value_or(today.month);
    int day = TakeDay().value_or(today.day);
    TakeZone();
    return DateTime::FromDate(year, month, day);
  }

  // Takes what it finds.
  bool NamesDate() {
    auto noShortYear = [] { return 0; };
    return TakeYear(noShortYear) || TakeMonth() || TakeDay();
  }

  // TakeDate where all three are named; it need not be a day that there is.
  std::optional<CivilTime> NamedDate() {
    std::optional<int> year = TakeYear(ThisYear);
    std::optional<int> month = TakeMonth();
    std::optional<int> day = TakeDay();
    TakeZone();
    if (!year || !month || !day) return std::nullopt;
    return CivilTime{.year = *year, .month = *month, .day = *day};
  }

  // After TakeDate; not yet cleaned.
  std::string_view Zone() const {
    if (!zone_.empty()) return zone_;
    return behindTime_ == kNone ? zoneBehindTime_ : tokens_[behindTime_];
  }
  std::string_view Time() const { return tokens_[time_]; }
  // What a word behind the time, or before it, says of a time of twelve hours.
  std::optional<Half> DayHalf() const { return half_; }

 private:
  static constexpr size_t kNone = kMaxTokens;

  void Add(std::string_view token) {
    if (count_ == kMaxTokens) throw Error(ErrorNumber::kSubscript, "Subscript out of range");
    tokens_[count_++] = token;
  }

  void SplitTokens(std::string_view text) {
    for (text = core::Trim(text); !text.empty(); text = core::Trim(text)) {
      std::string_view token = text.substr(0, text.find(' '));
      text.remove_prefix(token.size());
      if (token.back() == ',') token.remove_suffix(1);
      Add(token);
      if (token.find(':') != std::string_view::npos) time_ = count_ - 1;
    }
  }

  std::optional<Half> FindHalf() const {
    if (time_ == kNone) return std::nullopt;
    std::optional<Half> half;
    if (time_ + 1 < count_) half = HalfOf(tokens_[time_ + 1]);
    if (!half && time_ + 2 < count_) {
      half = HalfOf(std::string(tokens_[time_ + 1]) + std::string(tokens_[time_ + 2]));
    }
    if (!half && time_ > 0) half = HalfOf(tokens_[time_ - 1]);
    return half;
  }

  static int ThisYear() { return platform::Now().ToCivil().year; }

  // A year of two digits is not later than thisYear, for which few dates have to ask the clock.
  std::optional<int> TakeYear(int (*thisYear)()) {
    constexpr double kFirstYear = 1900;
    for (size_t i = 0; i < count_; ++i) {
      auto value = UnsignedNumberOf(tokens_[i]);
      if (value && *value >= kFirstYear) {
        tokens_[i] = {};
        return RoundShort(*value);
      }
    }
    if (time_ > 0) {
      std::string_view& token = tokens_[time_ - 1];
      auto value = NumberOf(token);
      if (value && *value <= thisYear()) {
        token = {};
        return RoundShort(*value);
      }
    }
    return std::nullopt;
  }

  std::optional<int> TakeMonth() {
    for (size_t i = 0; i < count_; ++i) {
      int month = MonthNumber(tokens_[i]);
      if (month == 0) continue;
      tokens_[i] = {};
      return month;
    }
    return std::nullopt;
  }

  std::optional<int> TakeDay() {
    constexpr double kLastDay = 31;
    for (size_t i = 0; i < count_; ++i) {
      auto value = UnsignedNumberOf(tokens_[i]);
      if (!value || *value < 1 || *value > kLastDay) continue;
      tokens_[i] = {};
      return RoundShort(*value);
    }
    return std::nullopt;
  }

  void TakeZone() {
    for (size_t i = 0; i < count_; ++i) {
      std::string_view token = tokens_[i];
      if (token.empty()) continue;
      if (token[0] != '-' && (token[0] != '+' || !NumberOf(token))) continue;
      zone_ = token;
      tokens_[i] = {};
      return;
    }
  }

  std::array<std::string_view, kMaxTokens> tokens_;
  size_t count_ = 0;
  size_t time_ = kNone;
  size_t behindTime_ = kNone;
  std::optional<Half> half_;
  std::string_view zone_;
  std::string_view zoneBehindTime_;
};

// "+-0300" becomes "-0300"; what is no number and has no such double sign becomes "0".
std::string CleanZone(std::string_view zone) {
  if (NumberOf(zone)) return std::string(zone);
  auto hasDoubleSign = [](std::string_view text) {
    return core::BeginsWith(text, "+-") || core::BeginsWith(text, "-+");
  };
  zone = core::Trim(zone);
  if (zone.size() < 3 || !hasDoubleSign(zone)) return "0";
  while (hasDoubleSign(zone)) {
    zone.remove_prefix(1);
    if (!NumberOf(zone)) break;
    if (zone.size() == 2) return "0";
  }
  return std::string(zone);
}

void Shift(DateTime& date, std::string_view zone) {
  auto value = NumberOf(zone);
  if (!value || *value <= 0) return;
  int hours = RoundShort(RoundShort(*value) / 100.0);
  date = date.AddHours(-hours).AddHours(core::State().LocalZoneHours);
}

bool EqualFirstChars(std::string_view token, std::string_view name) {
  constexpr size_t kChars = 3;
  if (name.empty()) return false;
  // Most tokens differ in their first letter, which is cheap to see where it is ASCII.
  auto a = static_cast<unsigned char>(token[0]);
  auto b = static_cast<unsigned char>(name[0]);
  if (a < 0x80 && b < 0x80 && (a | 0x20) != (b | 0x20)) return false;
  return platform::EqualIgnoringCase(platform::FirstChars(token, kChars),
                                     platform::FirstChars(name, kChars));
}

// Gives a date that was taken its time, and moves it from its zone. Sets what it comes to before an
// Error.
void FinishDate(const DateText& text, bool applyShift, DateTime& resultDate, std::string& timeText,
                std::string& zoneText) {
  zoneText = text.Zone();
  timeText = text.Time();
  if (!timeText.empty()) {
    auto clock = ReadClock(timeText);
    if (!clock) {
      throw Error(ErrorNumber::kTypeMismatch, "Type mismatch: " + platform::EnsureUtf8(timeText));
    }
    auto half = text.DayHalf();
    if (half && clock->hour >= 1 && clock->hour <= 12) clock->SetHalf(*half);
    resultDate = resultDate.WithTime(clock->hour, clock->minute, clock->second);
  }
  zoneText = CleanZone(zoneText);
  if (applyShift) Shift(resultDate, zoneText);
}

// Blanks for what stands between parentheses, one within the other or not, and for TABs.
void DropComments(std::string& text) {
  size_t depth = 0;
  for (char& c : text) {
    if (c == '(') ++depth;
    bool isComment = depth > 0;
    if (c == ')' && depth > 0) --depth;
    if (isComment || c == '\t') c = ' ';
  }
}

}  // namespace

int MonthNumber(std::string_view token) {
  constexpr std::string_view kMonths[] = {"jan", "feb", "mar", "apr", "may", "jun",
                                          "jul", "aug", "sep", "oct", "nov", "dec"};
  if (token.empty()) return 0;
  std::string_view first = token.substr(0, 3);
  for (int month = 0; month < 12; ++month) {
    if ((first[0] | 0x20) != kMonths[month][0]) continue;
    if (platform::AsciiLower(first) == kMonths[month]) return month + 1;
  }
  const auto& localNames = core::State().LocalMonthNames;
  bool isAscii = platform::IsAscii(token);
  std::string mended = isAscii ? std::string() : platform::EnsureUtf8(token);
  for (size_t month = 0; month < localNames.size(); ++month) {
    if (EqualFirstChars(isAscii ? token : mended, localNames[month])) {
      return static_cast<int>(month) + 1;
    }
  }
  return 0;
}

bool NamesDate(const std::string& dateText) {
  // Logged as twParseDate would, which is not called then.
  return core::Guarded(
      kLogName, false, [&] { return DateText(dateText).NamesDate(); }, core::Report::kLog);
}

void twParseDate(DateTime& resultDate, std::string& timeText, std::string& zoneText,
                 std::string dateText, bool applyShift) {
  core::GuardedRun(
      kLogName,
      [&] {
        std::replace(dateText.begin(), dateText.end(), '\t', ' ');
        DateText text(dateText);
        zoneText.clear();
        resultDate = text.TakeDate();
        FinishDate(text, applyShift, resultDate, timeText, zoneText);
      },
      core::Report::kLog);
}

std::optional<DateTime> ReadSoundDate(std::string& timeText, std::string& zoneText,
                                      std::string dateText, bool applyShift, bool* isWhole) {
  if (isWhole != nullptr) *isWhole = false;
  try {
    DropComments(dateText);
    DateText text(dateText);
    std::optional<CivilTime> named = text.NamedDate();
    if (!named) return std::nullopt;
    if (isWhole != nullptr) *isWhole = true;
    DateTime date = DateTime::FromDate(named->year, named->month, named->day);
    if (date.ToCivil().day != named->day) return std::nullopt;
    std::string time;
    std::string zone;
    FinishDate(text, applyShift, date, time, zone);
    if (!IsSoundDate(date)) return std::nullopt;
    timeText = std::move(time);
    zoneText = std::move(zone);
    return date;
  } catch (const Error&) {
    return std::nullopt;
  }
}

}  // namespace tarnwick::intake
