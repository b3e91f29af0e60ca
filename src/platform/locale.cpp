// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/locale.h"

#include <algorithm>
#include <memory>
#include <vector>

#include <unicode/datefmt.h>
#include <unicode/dtfmtsym.h>
#include <unicode/gregocal.h>
#include <unicode/locid.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>

#include "platform/locale_names.h"
#include "platform/utf8.h"

namespace tarnwick::platform {

namespace {

// What is needed of a locale again and again; made anew when the locale changes.
struct LocaleFacts {
  std::string name;      // "de_DE", "C"
  bool isPlain = false;  // the "C" locale
  icu::Locale locale;
  std::string shortDate;  // in FormatDate's letters, year as yyyy
  std::string longDate;   // ICU pattern
  std::string longTime;   // in FormatDate's letters, or "" where the locale wants more
  std::vector<std::string> months, shortMonths, days, shortDays;
  DayHalves dayHalves;
};

std::string& OverrideName() {
  static std::string name;
  return name;
}

std::string ToUtf8(const icu::UnicodeString& text) {
  std::string result;
  text.toUTF8String(result);
  return result;
}

std::vector<std::string> Names(const icu::UnicodeString* texts, int32_t count, int32_t from) {
  std::vector<std::string> names;
  for (int32_t i = from; i < count; ++i) names.push_back(ToUtf8(texts[i]));
  return names;
}

icu::UnicodeString PatternOf(const icu::DateFormat* format) {
  icu::UnicodeString pattern;
  if (const auto* simple = dynamic_cast<const icu::SimpleDateFormat*>(format)) {
    simple->toPattern(pattern);
  }
  return pattern;
}

// "dd.MM.yy" becomes "dd.mm.yyyy"; quoted texts of the pattern are kept as \x.
std::string ToFormatLetters(const icu::UnicodeString& icuPattern) {
  std::string source = ToUtf8(icuPattern);
  std::string pattern;
  bool quoted = false;
  for (size_t i = 0; i < source.size(); ++i) {
    char c = source[i];
    if (c == '\'') {
      quoted = !quoted;
    } else if (quoted) {
      pattern += '\\';
      pattern += c;
    } else if (c == 'y' || c == 'u') {
      while (i + 1 < source.size() && source[i + 1] == c) ++i;
      pattern += "yyyy";
    } else if (c == 'M' || c == 'L') {
      pattern += 'm';
    } else if (c == 'H' || c == 'k') {
      pattern += 'h';
    } else if (c == 'm') {
      pattern += 'n';
    } else if (c == 'G') {
      while (i + 1 < source.size() && source[i + 1] == c) ++i;
    } else {
      pattern += c;
    }
  }
  return pattern;
}

// A text without points and blanks.
std::string LettersOf(icu::UnicodeString text) {
  for (char16_t mark : {u'.', u' ', u'\u00A0', u'\u202F'}) {
    text.findAndReplace(icu::UnicodeString(mark), icu::UnicodeString());
  }
  return ToUtf8(text);
}

LocaleFacts MakeFacts(const std::string& name) {
  LocaleFacts facts;
  facts.name = name;
  facts.isPlain = name == "C" || name == "POSIX";
  facts.locale = icu::Locale::createCanonical(facts.isPlain ? "en_US" : name.c_str());
  std::unique_ptr<icu::DateFormat> shortDate(
      icu::DateFormat::createDateInstance(icu::DateFormat::kShort, facts.locale));
  std::unique_ptr<icu::DateFormat> longDate(
      icu::DateFormat::createDateInstance(icu::DateFormat::kFull, facts.locale));
  std::unique_ptr<icu::DateFormat> longTime(
      icu::DateFormat::createTimeInstance(icu::DateFormat::kMedium, facts.locale));
  facts.shortDate = facts.isPlain ? "yyyy-mm-dd" : ToFormatLetters(PatternOf(shortDate.get()));
  if (facts.shortDate.empty()) facts.shortDate = "yyyy-mm-dd";
  facts.longDate = ToUtf8(PatternOf(longDate.get()));
  std::string time = ToFormatLetters(PatternOf(longTime.get()));
  bool hasHalves = time.find_first_of("abB") != std::string::npos;
  facts.longTime = facts.isPlain || hasHalves ? "" : time;

  UErrorCode status = U_ZERO_ERROR;
  icu::DateFormatSymbols symbols(facts.locale, status);
  int32_t count = 0;
  const icu::UnicodeString* texts =
      symbols.getMonths(count, icu::DateFormatSymbols::STANDALONE, icu::DateFormatSymbols::WIDE);
  facts.months = Names(texts, count, 0);
  texts = symbols.getShortMonths(count);
  facts.shortMonths = Names(texts, count, 0);
  texts = symbols.getWeekdays(count);
  facts.days = Names(texts, count, 1);
  texts = symbols.getShortWeekdays(count);
  facts.shortDays = Names(texts, count, 1);
  texts = symbols.getAmPmStrings(count);
  if (count >= 2) facts.dayHalves = {LettersOf(texts[0]), LettersOf(texts[1])};
  facts.months.resize(12);
  facts.shortMonths.resize(12);
  facts.days.resize(7);
  facts.shortDays.resize(7);
  return facts;
}

const LocaleFacts& Facts() {
  static const std::string system = SystemLocaleName();  // asked once: every date comes by here
  static std::unique_ptr<LocaleFacts> facts;
  const std::string& name = OverrideName().empty() ? system : OverrideName();
  if (!facts || facts->name != name) facts = std::make_unique<LocaleFacts>(MakeFacts(name));
  return *facts;
}

std::string WriteByIcuPattern(DateTime value, const std::string& pattern,
                              const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  icu::SimpleDateFormat format(icu::UnicodeString::fromUTF8(pattern), locale, status);
  if (U_FAILURE(status)) return value.ToIso();
  // A civil time has no zone: it is shown as UTC, in which it was counted.
  format.adoptTimeZone(icu::TimeZone::getGMT()->clone());
  icu::UnicodeString text;
  format.format(static_cast<UDate>(value.Seconds()) * 1000.0, text);
  return ToUtf8(text);
}

std::string Padded(int value, size_t width) {
  std::string digits = std::to_string(value);
  return digits.size() < width ? std::string(width - digits.size(), '0') + digits : digits;
}

// One run of the same letter in a pattern.
std::string WriteField(char letter, size_t count, const CivilTime& c, DateTime value,
                       bool minutes) {
  const LocaleFacts& facts = Facts();
  size_t width = std::min<size_t>(count, 2);
  switch (letter) {
    case 'd':
      if (count >= 5) return FormatDate(value, facts.shortDate);
      if (count == 4) return facts.days[static_cast<size_t>(value.Weekday())];
      if (count == 3) return facts.shortDays[static_cast<size_t>(value.Weekday())];
      return Padded(c.day, width);
    case 'm':
      if (minutes) return Padded(c.minute, width);
      if (count >= 4) return facts.months[static_cast<size_t>(c.month - 1)];
      if (count == 3) return facts.shortMonths[static_cast<size_t>(c.month - 1)];
      return Padded(c.month, width);
    case 'y':
      return count >= 3 ? Padded(c.year, 4) : Padded(c.year % 100, 2);
    case 'h':
      return Padded(c.hour, width);
    case 'n':
      return Padded(c.minute, width);
    default:
      return Padded(c.second, width);
  }
}

std::vector<std::string_view> SplitAny(std::string_view text, std::string_view separators) {
  std::vector<std::string_view> parts;
  while (!text.empty()) {
    size_t end = text.find_first_of(separators);
    if (end != 0) parts.push_back(text.substr(0, end));
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
  }
  return parts;
}

}  // namespace

std::string DateOrder() {
  std::string order;
  for (char c : Facts().shortDate) {
    if ((c == 'd' || c == 'm' || c == 'y') && order.find(c) == std::string::npos) order += c;
  }
  return order.size() == 3 ? order : "ymd";
}

const icu::Locale& UserLocale() {
  return Facts().locale;
}

void SetLocaleOverride(std::string name) {
  OverrideName() = std::move(name);
}

const std::string& LocaleOverride() {
  return OverrideName();
}

std::string FormatDate(DateTime value, std::string_view pattern) {
  const LocaleFacts& facts = Facts();
  if (SameWord(pattern, "Short Date")) return FormatDate(value, facts.shortDate);
  if (SameWord(pattern, "Long Date")) return WriteByIcuPattern(value, facts.longDate, facts.locale);
  if (SameWord(pattern, "Short Time")) return FormatDate(value, "hh:nn");
  if (SameWord(pattern, "Long Time")) {
    return FormatDate(value, facts.longTime.empty() ? "hh:nn:ss" : facts.longTime);
  }
  if (SameWord(pattern, "General Date")) {
    return FormatDate(value, facts.shortDate) + " " + FormatDate(value, "Long Time");
  }
  CivilTime civil = value.ToCivil();
  std::string result;
  bool afterHours = false;
  for (size_t i = 0; i < pattern.size();) {
    char letter = LowerLetter(pattern[i]);
    if (letter == '\\' && i + 1 < pattern.size()) {
      result += pattern[i + 1];
      i += 2;
      continue;
    }
    if (letter == '\0' || std::string_view("dmyhns").find(letter) == std::string_view::npos) {
      result += pattern[i++];
      continue;
    }
    size_t end = i;
    while (end < pattern.size() && LowerLetter(pattern[end]) == letter) ++end;
    result += WriteField(letter, end - i, civil, value, afterHours);
    afterHours = letter == 'h';
    i = end;
  }
  return result;
}

std::array<std::string, 12> LongDateMonthNames() {
  std::array<std::string, 12> names;
  for (int month = 1; month <= 12; ++month) {
    std::string text = FormatDate(DateTime::FromDate(2004, month, 1), "Long Date");
    std::vector<std::string_view> words = SplitAny(text, " ");
    std::string& name = names[static_cast<size_t>(month - 1)];
    if (words.size() > 1) name = words[1];
    // Where the day comes second ("Donnerstag, 1. Januar 2004") the word is no name.
    bool isName = !name.empty() && name.find_first_of("0123456789") == std::string::npos;
    if (!isName) name = Facts().months[static_cast<size_t>(month - 1)];
    if (name.empty()) name = "month" + std::to_string(month);
  }
  return names;
}

DayHalves LocalDayHalves() {
  return Facts().dayHalves;
}

std::string SystemCodePage() {
  static const struct {
    std::string_view language;
    const char* codePage;
  } kPages[] = {
      {"ru", "windows-1251"}, {"uk", "windows-1251"},   {"be", "windows-1251"},
      {"bg", "windows-1251"}, {"mk", "windows-1251"},   {"sr", "windows-1251"},
      {"pl", "windows-1250"}, {"cs", "windows-1250"},   {"sk", "windows-1250"},
      {"hu", "windows-1250"}, {"ro", "windows-1250"},   {"hr", "windows-1250"},
      {"sl", "windows-1250"}, {"sq", "windows-1250"},   {"el", "windows-1253"},
      {"tr", "windows-1254"}, {"az", "windows-1254"},   {"he", "windows-1255"},
      {"iw", "windows-1255"}, {"ar", "windows-1256"},   {"fa", "windows-1256"},
      {"ur", "windows-1256"}, {"et", "windows-1257"},   {"lv", "windows-1257"},
      {"lt", "windows-1257"}, {"vi", "windows-1258"},   {"th", "windows-874"},
      {"ja", "shift_jis"},    {"ko", "ks_c_5601-1987"},
  };
  std::string language = Facts().locale.getLanguage();
  if (language == "zh") {
    std::string country = Facts().locale.getCountry();
    return country == "TW" || country == "HK" || country == "MO" ? "big5" : "gb2312";
  }
  for (const auto& page : kPages) {
    if (page.language == language) return page.codePage;
  }
  return "windows-1252";
}

}  // namespace tarnwick::platform
