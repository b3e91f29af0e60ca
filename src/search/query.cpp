// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/query.h"

#include <algorithm>
#include <charconv>
#include <utility>

#include "core/text.h"
#include "intake/message_state.h"
#include "platform/charset.h"
#include "platform/locale.h"
#include "platform/utf8.h"

namespace tarnwick::search {

namespace {

// What is typed can be pasted: texts beyond this are cut, as those of the filter are.
constexpr size_t kMostCharacters = 255;

struct FieldName {
  std::string_view name;
  Field field;
};
constexpr FieldName kFields[] = {{"from", Field::kFrom},
                                 {"to", Field::kTo},
                                 {"subject", Field::kSubject},
                                 {"file", Field::kFile},
                                 {"in", Field::kFolder}};

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}

// A term as it was typed.
struct Piece {
  bool excluded = false;
  std::string field;  // in small letters; "" for none
  std::string text;
};

bool IsField(std::string_view name) {
  bool isText = std::any_of(std::begin(kFields), std::end(kFields),
                            [&](const FieldName& field) { return field.name == name; });
  return isText || name == "before" || name == "after" || name == "has" || name == "is";
}

class Reader {
 public:
  explicit Reader(std::string_view typed) : rest_(typed) {}

  // False at the end.
  bool Next(Piece& piece) {
    while (!rest_.empty() && IsBlank(rest_.front())) rest_.remove_prefix(1);
    if (rest_.empty()) return false;
    piece = {};
    piece.excluded = rest_.size() > 1 && rest_.front() == '-' && !IsBlank(rest_[1]);
    if (piece.excluded) rest_.remove_prefix(1);
    size_t colon = rest_.find_first_of(": \t\r\n\"");
    if (colon != std::string_view::npos && rest_[colon] == ':') {
      std::string name = platform::AsciiLower(rest_.substr(0, colon));
      if (IsField(name)) {
        piece.field = std::move(name);
        rest_.remove_prefix(colon + 1);
      }
    }
    piece.text = Text();
    return true;
  }

 private:
  std::string Text() {
    bool quoted = !rest_.empty() && rest_.front() == '"';
    if (quoted) rest_.remove_prefix(1);
    auto end = quoted ? std::find(rest_.begin(), rest_.end(), '"')
                      : std::find_if(rest_.begin(), rest_.end(), IsBlank);
    std::string text(rest_.begin(), end);
    rest_.remove_prefix(text.size());
    if (quoted && !rest_.empty()) rest_.remove_prefix(1);
    return text;
  }

  std::string_view rest_;
};

// The first and the last day of a date, a month ("2004-03") or a year; nullopt for what is none.
std::optional<std::pair<DateTime, DateTime>> ReadDays(const std::string& text) {
  int year = 0;
  const char* end = text.data() + text.size();
  auto afterYear = std::from_chars(text.data(), end, year);
  if (text.size() >= 4 && afterYear.ptr == text.data() + 4 && year >= 100 && year < 9999) {
    if (text.size() == 4) {
      return std::pair(DateTime::FromDate(year, 1, 1), DateTime::FromDate(year, 12, 31));
    }
    int month = 0;
    auto afterMonth = std::from_chars(text.data() + 5, end, month);
    if (text[4] == '-' && text.size() > 5 && afterMonth.ptr == end && month >= 1 && month <= 12) {
      DateTime first = DateTime::FromDate(year, month, 1);
      CivilTime next = first.AddDays(31).ToCivil();
      return std::pair(first, DateTime::FromDate(next.year, next.month, 1).AddDays(-1));
    }
  }
  auto day = platform::ParseDate(text);
  if (!day) return std::nullopt;
  return std::pair(day->DatePart(), day->DatePart());
}

void AddDates(const Piece& piece, Query& query) {
  auto days = ReadDays(piece.text);
  if (!days) return;
  // What is not before a date is of it or after it.
  bool isBefore = (piece.field == "before") != piece.excluded;
  if (isBefore) {
    DateTime last = piece.excluded ? days->second : days->first.AddDays(-1);
    last = std::max(last, DateTime::FromDate(100, 1, 1));
    query.to = query.to ? std::min(*query.to, last) : last;
  } else {
    DateTime first = piece.excluded ? days->first : days->second.AddDays(1);
    first = std::min(first, DateTime::FromDate(9999, 12, 31));
    query.from = query.from ? std::max(*query.from, first) : first;
  }
}

void AddTerm(Term term, Query& query) {
  if (core::Trim(term.text).empty() || query.terms.size() == kMostTerms) return;
  if (std::find(query.terms.begin(), query.terms.end(), term) == query.terms.end()) {
    query.terms.push_back(std::move(term));
  }
}

void AddState(const Piece& piece, Query& query) {
  std::string word = platform::AsciiLower(piece.text);
  if (word == "answered") word = "replied";
  bool isOne = std::any_of(std::begin(intake::kStateMarks), std::end(intake::kStateMarks),
                           [&](const intake::StateMark& mark) { return mark.word == word; });
  if (isOne) AddTerm({Field::kState, std::move(word), piece.excluded}, query);
}

void AddText(Piece piece, Query& query) {
  Term term{Field::kAny, std::move(piece.text), piece.excluded};
  for (const FieldName& field : kFields) {
    if (field.name == piece.field) term.field = field.field;
  }
  AddTerm(std::move(term), query);
}

}  // namespace

Query ParseQuery(std::string_view typed) {
  Query query;
  std::string text = platform::EnsureUtf8(typed);
  Reader reader(text);
  for (Piece piece; reader.Next(piece);) {
    piece.text = platform::FirstChars(piece.text, kMostCharacters);
    if (piece.field == "before" || piece.field == "after") {
      AddDates(piece, query);
    } else if (piece.field == "has") {
      std::string what = platform::AsciiLower(piece.text);
      if (what == "file" || what == "files") query.hasFile = !piece.excluded;
    } else if (piece.field == "is") {
      AddState(piece, query);
    } else {
      AddText(std::move(piece), query);
    }
  }
  return query;
}

std::string TermText(std::string_view field, std::string_view text) {
  std::string shown(field);
  if (!shown.empty()) shown += ':';
  bool isWord = !text.empty() && text.front() != '-' && text.find(':') == std::string_view::npos &&
                std::none_of(text.begin(), text.end(), IsBlank);
  if (isWord) return shown.append(text);
  shown += '"';
  std::copy_if(text.begin(), text.end(), std::back_inserter(shown),
               [](char c) { return c != '"'; });
  return shown + '"';
}

}  // namespace tarnwick::search
