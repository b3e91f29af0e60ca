// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Dates as people write them. A text is taken apart into numbers and words; of the words only those
// are understood that name a month or a weekday, or that stand in the locale's own dates ("de" in
// "7 de marzo de 2005"). A text with any other word is no date.
#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <vector>

#include <unicode/datefmt.h>
#include <unicode/dtfmtsym.h>
#include <unicode/smpdtfmt.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include "platform/locale.h"
#include "platform/locale_names.h"

namespace tarnwick::platform {

namespace {

constexpr int32_t kLongestDate = 200;  // characters; no date is longer

struct Part {
  enum class Kind { kNumber, kWord, kMark };
  Kind kind;
  icu::UnicodeString text;  // a word's in lower case; a number's digits are 0 to 9
  bool isAfterNumber = false;
};

Part::Kind KindOf(UChar32 c) {
  if (u_charDigitValue(c) >= 0) return Part::Kind::kNumber;
  bool isLetter = u_isalpha(c) || (U_GET_GC_MASK(c) & U_GC_M_MASK) != 0;
  return isLetter ? Part::Kind::kWord : Part::Kind::kMark;
}

// Numbers and words, and single characters for what stands between them.
std::vector<Part> Split(const icu::UnicodeString& text) {
  std::vector<Part> parts;
  bool goesOn = false;
  for (int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) {
    UChar32 c = text.char32At(i);
    Part::Kind kind = KindOf(c);
    bool isSame = goesOn && kind != Part::Kind::kMark && parts.back().kind == kind;
    if (!isSame) {
      bool isAfterNumber = !parts.empty() && parts.back().kind == Part::Kind::kNumber;
      parts.push_back({kind, {}, isAfterNumber});
    }
    parts.back().text +=
        kind == Part::Kind::kNumber ? static_cast<UChar32>(u'0' + u_charDigitValue(c)) : c;
    goesOn = true;
  }
  for (Part& part : parts) {
    if (part.kind == Part::Kind::kWord) part.text.foldCase();
  }
  return parts;
}

// The words of dates in the user's locale and in English.
struct DateWords {
  std::string locale;
  std::map<icu::UnicodeString, int> months;  // 1 to 12
  std::set<icu::UnicodeString> others;       // weekdays, and what stands between the fields
  bool IsPrefixOfMonth(const icu::UnicodeString& word, int& month) const;
};

// "Sept" for September: three letters or more that begin one month's name only.
bool DateWords::IsPrefixOfMonth(const icu::UnicodeString& word, int& month) const {
  if (word.length() < 3) return false;
  std::set<int> begun;
  for (const auto& [name, number] : months) {
    if (name.startsWith(word)) begun.insert(number);
  }
  if (begun.size() != 1) return false;
  month = *begun.begin();
  return true;
}

void AddWords(const icu::UnicodeString& text, std::set<icu::UnicodeString>& words) {
  for (const Part& part : Split(text)) {
    if (part.kind == Part::Kind::kWord) words.insert(part.text);
  }
}

// Where a month's name has a number in it ("3月"), the number is what tells the month.
void AddMonth(const icu::UnicodeString& name, int month, DateWords& words) {
  std::vector<Part> parts = Split(name);
  bool hasNumber = std::any_of(parts.begin(), parts.end(),
                               [](const Part& part) { return part.kind == Part::Kind::kNumber; });
  if (hasNumber) {
    AddWords(name, words.others);
    return;
  }
  auto longest = std::max_element(parts.begin(), parts.end(), [](const Part& a, const Part& b) {
    return a.text.length() < b.text.length();
  });
  if (longest != parts.end() && longest->kind == Part::Kind::kWord) {
    words.months.emplace(longest->text, month);
  }
}

// What a date pattern writes as it stands.
icu::UnicodeString LiteralsOf(const icu::UnicodeString& pattern) {
  icu::UnicodeString literals;
  bool isQuoted = false;
  for (int32_t i = 0; i < pattern.length(); i = pattern.moveIndex32(i, 1)) {
    UChar32 c = pattern.char32At(i);
    if (c == u'\'') isQuoted = !isQuoted;
    bool isField = !isQuoted && ((c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z'));
    literals += isField || c == u'\'' ? UChar32{u' '} : c;
  }
  return literals;
}

void AddLocale(icu::Locale locale, DateWords& words) {
  using Symbols = icu::DateFormatSymbols;
  UErrorCode status = U_ZERO_ERROR;
  locale.setKeywordValue("calendar", "gregorian", status);
  Symbols symbols(locale, "gregorian", status);
  if (U_FAILURE(status)) return;
  for (auto context : {Symbols::FORMAT, Symbols::STANDALONE}) {
    for (auto width : {Symbols::WIDE, Symbols::ABBREVIATED}) {
      int32_t count = 0;
      const icu::UnicodeString* names = symbols.getMonths(count, context, width);
      for (int32_t i = 0; i < count && i < 12; ++i) AddMonth(names[i], i + 1, words);
      names = symbols.getWeekdays(count, context, width);
      for (int32_t i = 0; i < count; ++i) AddWords(names[i], words.others);
    }
  }
  for (auto style : {icu::DateFormat::kFull, icu::DateFormat::kLong, icu::DateFormat::kMedium,
                     icu::DateFormat::kShort}) {
    std::unique_ptr<icu::DateFormat> format(icu::DateFormat::createDateInstance(style, locale));
    icu::UnicodeString pattern;
    if (const auto* simple = dynamic_cast<const icu::SimpleDateFormat*>(format.get())) {
      AddWords(LiteralsOf(simple->toPattern(pattern)), words.others);
    }
  }
}

const DateWords& Words() {
  static DateWords words;
  const icu::Locale& locale = UserLocale();
  if (words.locale != locale.getName()) {
    words = DateWords();
    words.locale = locale.getName();
    AddLocale(locale, words);
    AddLocale(icu::Locale::getEnglish(), words);
    words.others.insert({u"the", u"of"});
  }
  return words;
}

std::optional<int> ReadNumber(const icu::UnicodeString& digits, int32_t most = 4) {
  if (digits.isEmpty() || digits.length() > most) return std::nullopt;
  int value = 0;
  for (int32_t i = 0; i < digits.length(); ++i) value = value * 10 + (digits[i] - u'0');
  return value;
}

// "14:07" or "14:07:59", with blanks about it.
bool ReadTime(const std::vector<Part>& parts, CivilTime& civil) {
  std::vector<int> numbers;
  bool wantsColon = false;
  for (const Part& part : parts) {
    if (part.kind == Part::Kind::kMark && u_isUWhiteSpace(part.text.char32At(0))) continue;
    if (wantsColon != (part.text == icu::UnicodeString(u':'))) return false;
    wantsColon = !wantsColon;
    if (part.kind == Part::Kind::kMark) continue;
    auto number = ReadNumber(part.text);
    if (part.kind != Part::Kind::kNumber || !number) return false;
    numbers.push_back(*number);
  }
  if (numbers.size() < 2 || numbers.size() > 3) return false;
  civil.hour = numbers[0];
  civil.minute = numbers[1];
  civil.second = numbers.size() > 2 ? numbers[2] : 0;
  return true;
}

bool IsSeparator(UChar32 c) {
  constexpr std::u16string_view kSeparators = u"./-,()\u060C\u3001'\u2019";
  bool isUnseen = u_isUWhiteSpace(c) || (U_GET_GC_MASK(c) & U_GC_CF_MASK) != 0;
  return isUnseen ||
         (c <= 0xFFFF && kSeparators.find(static_cast<char16_t>(c)) != std::u16string_view::npos);
}

// "1st", "2nd", "3rd", "7th", "1er", "2º".
bool IsOrdinalEnd(const Part& part) {
  static const std::set<icu::UnicodeString> ends = {u"st", u"nd",     u"rd",    u"th",
                                                    u"er", u"\u00BA", u"\u00AA"};
  return part.isAfterNumber && ends.count(part.text) != 0;
}

struct DateFields {
  std::vector<icu::UnicodeString> numbers;
  int month = 0;  // when a word names it
};

// A word that may be both ("mar" is March, and Tuesday in Spanish) is the month once.
bool TakeWord(const icu::UnicodeString& word, DateFields& fields) {
  const DateWords& words = Words();
  auto month = words.months.find(word);
  bool isMonth = month != words.months.end() && fields.month == 0;
  if (isMonth) fields.month = month->second;
  return isMonth || words.others.count(word) != 0;
}

// Words of one script may stand together: "7日" with the weekday behind it, a Hebrew "in" before
// the month.
bool TakeWords(icu::UnicodeString word, DateFields& fields) {
  while (!word.isEmpty()) {
    int32_t length = word.length();
    while (length > 0 && !TakeWord(icu::UnicodeString(word, 0, length), fields)) --length;
    if (length == 0) return false;
    word.remove(0, length);
  }
  return true;
}

bool ReadFields(const std::vector<Part>& parts, DateFields& fields) {
  for (const Part& part : parts) {
    if (part.kind == Part::Kind::kNumber) {
      fields.numbers.push_back(part.text);
    } else if (part.kind == Part::Kind::kMark) {
      if (!IsSeparator(part.text.char32At(0))) return false;
    } else if (!TakeWord(part.text, fields) && !IsOrdinalEnd(part)) {
      int month = 0;
      if (fields.month == 0 && Words().IsPrefixOfMonth(part.text, month)) {
        fields.month = month;
      } else if (!TakeWords(part.text, fields)) {
        return false;
      }
    }
  }
  return fields.numbers.size() == (fields.month == 0 ? 3U : 2U);
}

// Where the fields stand, as letters of the numbers alone.
std::string OrderOf(const DateFields& fields) {
  auto isYear = [&](size_t i) {
    auto value = ReadNumber(fields.numbers[i]);
    return fields.numbers[i].length() > 2 || (value && *value > 31);
  };
  if (isYear(0)) return fields.month == 0 ? "ymd" : "yd";
  std::string order = DateOrder();
  if (fields.month == 0) return order;
  if (isYear(1)) return "dy";
  return order.find('y') < order.find('d') ? "yd" : "dy";
}

}  // namespace

std::optional<DateTime> ParseDate(std::string_view text) {
  if (text.size() > size_t{4} * kLongestDate) return std::nullopt;
  icu::UnicodeString typed = icu::UnicodeString::fromUTF8(
      icu::StringPiece(text.data(), static_cast<int32_t>(text.size())));
  if (typed.length() > kLongestDate) return std::nullopt;
  std::vector<Part> parts = Split(typed);
  CivilTime civil;
  // A time of day comes last: the number in front of the first colon begins it.
  auto colon = std::find_if(parts.begin(), parts.end(),
                            [](const Part& part) { return part.text == icu::UnicodeString(u':'); });
  if (colon != parts.end()) {
    if (colon == parts.begin() || !ReadTime({colon - 1, parts.end()}, civil)) return std::nullopt;
    parts.erase(colon - 1, parts.end());
  }
  DateFields fields;
  if (!ReadFields(parts, fields)) return std::nullopt;
  civil.month = fields.month;
  std::string order = OrderOf(fields);
  for (size_t i = 0; i < order.size(); ++i) {
    auto number = ReadNumber(fields.numbers[i]);
    if (!number) return std::nullopt;
    if (order[i] == 'y') {
      bool isShort = fields.numbers[i].length() <= 2;
      civil.year = isShort ? *number + (*number <= 29 ? 2000 : 1900) : *number;
    } else {
      (order[i] == 'm' ? civil.month : civil.day) = *number;
    }
  }
  return DateTime::FromCivil(civil);
}

}  // namespace tarnwick::platform
