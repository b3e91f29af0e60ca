// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/dialect/dialect.h"

#include <algorithm>
#include <charconv>
#include <optional>

#include "platform/error.h"
#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

// A longer list of whole numbers is one of keys.
constexpr size_t kMostLiftedNumbers = 300;

constexpr int kSyntaxError = 1;  // the engine's number for a statement that it can't read

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\r' || c == '\n';
}
bool IsNameStart(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}
bool IsNamePart(char c) {
  return IsNameStart(c) || IsDigit(c) || c == '$';
}

// Reads the inside of a date literal: a date, a time of day or both.
class DateReader {
 public:
  explicit DateReader(std::string_view text) : text_(text) {}

  std::optional<DateTime> Read() {
    CivilTime civil;
    Blanks();
    if (!Date(civil)) return std::nullopt;
    Blanks();
    if (!text_.empty() && !Time(civil)) return std::nullopt;
    Blanks();
    if (!text_.empty()) return std::nullopt;
    return DateTime::FromCivil(civil);
  }

 private:
  void Blanks() {
    while (!text_.empty() && text_.front() == ' ') text_.remove_prefix(1);
  }

  bool Number(int& value, size_t mostDigits) {
    size_t digits = 0;
    while (digits < text_.size() && digits < mostDigits && IsDigit(text_[digits])) digits++;
    if (digits == 0) return false;
    std::from_chars(text_.data(), text_.data() + digits, value);
    text_.remove_prefix(digits);
    return true;
  }

  bool Sign(char sign) {
    if (text_.empty() || text_.front() != sign) return false;
    text_.remove_prefix(1);
    return true;
  }

  bool Date(CivilTime& civil) {
    return Number(civil.month, 2) && Sign('/') && Number(civil.day, 2) && Sign('/') &&
           Number(civil.year, 4);
  }

  bool Time(CivilTime& civil) {
    if (!Number(civil.hour, 2) || !Sign(':') || !Number(civil.minute, 2)) return false;
    return !Sign(':') || Number(civil.second, 2);
  }

  std::string_view text_;
};

class Lifter {
 public:
  Lifter(std::string_view sql, LiftedSql& lifted) : sql_(sql), lifted_(lifted) {}

  void Run() {
    lifted_.tokens.clear();
    lifted_.literals.clear();
    lifted_.keyLists.clear();
    lifted_.shape.clear();
    while (true) {
      while (position_ < sql_.size() && IsBlank(sql_[position_])) position_++;
      if (position_ == sql_.size()) break;
      Next(sql_[position_]);
    }
    lifted_.tokens.emplace_back();
  }

 private:
  void Next(char c) {
    if (IsNameStart(c)) {
      size_t start = position_;
      while (position_ < sql_.size() && IsNamePart(sql_[position_])) position_++;
      std::string_view name = sql_.substr(start, position_ - start);
      Add(Token::Kind::kName, name);
      if (platform::SameWord(name, "in")) Keys();
    } else if (IsDigit(c) ||
               (c == '.' && position_ + 1 < sql_.size() && IsDigit(sql_[position_ + 1]))) {
      Number();
    } else if (c == '\'' || c == '"') {
      Text(c);
    } else if (c == '#') {
      DateLiteral();
    } else if (c == '[') {
      size_t end = sql_.find(']', position_);
      if (end == std::string_view::npos) RefuseSql("unended [name]");
      std::string_view name = sql_.substr(position_ + 1, end - position_ - 1);
      // The engine would take it for the end of the statement.
      if (name.find('\0') != std::string_view::npos) RefuseSql("a zero byte in a [name]");
      Add(Token::Kind::kBracketed, name);
      position_ = end + 1;
    } else {
      Symbol();
    }
  }

  void Add(Token::Kind kind, std::string_view text) {
    Token token;
    token.kind = kind;
    token.text = text;
    lifted_.tokens.push_back(token);
    if (kind == Token::Kind::kBracketed) {
      lifted_.shape.append("[").append(text).append("] ");
    } else {
      lifted_.shape.append(text).append(" ");
    }
  }

  // Behind IN: the list in parentheses as one token, where it is long and all of whole numbers.
  void Keys() {
    size_t position = position_;
    auto blanks = [&] {
      while (position < sql_.size() && IsBlank(sql_[position])) position++;
    };
    auto symbol = [&](char c) {
      blanks();
      if (position == sql_.size() || sql_[position] != c) return false;
      position++;
      return true;
    };
    if (!symbol('(')) return;
    auto list = std::make_shared<KeyList>();
    std::vector<int64_t>& keys = list->keys;
    do {
      blanks();
      int64_t key = 0;
      const char* begin = sql_.data() + position;
      auto [end, error] = std::from_chars(begin, sql_.data() + sql_.size(), key);
      if (error != std::errc() || !IsDigit(*begin)) return;
      position += static_cast<size_t>(end - begin);
      keys.push_back(key);
    } while (symbol(','));
    // What else stands in the list, a number's point or a sum, is no matter for here.
    if (!symbol(')') || keys.size() <= kMostLiftedNumbers) return;
    // The engine makes an index of them for each statement: in order that takes a fifth of the
    // time.
    std::sort(keys.begin(), keys.end());
    position_ = position;
    Token token;
    token.kind = Token::Kind::kKeys;
    token.literal = list->literal = lifted_.literals.size();
    lifted_.tokens.push_back(token);
    lifted_.literals.emplace_back();
    lifted_.keyLists.push_back(std::move(list));
    lifted_.shape.append("keys ");
  }

  void AddLiteral(Value value, bool isText) {
    Token token;
    token.kind = Token::Kind::kLiteral;
    token.literal = lifted_.literals.size();
    token.isText = isText;
    lifted_.tokens.push_back(token);
    lifted_.literals.push_back(std::move(value));
    lifted_.shape.append(isText ? "'? " : "? ");
  }

  void Number() {
    size_t start = position_;
    auto digits = [&] {
      while (position_ < sql_.size() && IsDigit(sql_[position_])) position_++;
    };
    digits();
    bool whole = true;
    if (position_ < sql_.size() && sql_[position_] == '.') {
      whole = false;
      position_++;
      digits();
    }
    std::string_view text = sql_.substr(start, position_ - start);
    const char* end = text.data() + text.size();
    int64_t integer = 0;
    if (whole && std::from_chars(text.data(), end, integer).ec == std::errc()) {
      AddLiteral(integer, false);
      return;
    }
    double number = 0;
    if (std::from_chars(text.data(), end, number).ec != std::errc()) {
      RefuseSql("number out of range: " + std::string(text));
    }
    AddLiteral(number, false);
  }

  void Text(char quote) {
    std::string text;
    size_t start = ++position_;
    while (true) {
      size_t end = sql_.find(quote, start);
      if (end == std::string_view::npos) RefuseSql("unended text");
      text.append(sql_, start, end - start);
      if (end + 1 < sql_.size() && sql_[end + 1] == quote) {
        text += quote;
        start = end + 2;
      } else {
        position_ = end + 1;
        break;
      }
    }
    AddLiteral(std::move(text), true);
  }

  void DateLiteral() {
    size_t end = sql_.find('#', position_ + 1);
    if (end == std::string_view::npos) RefuseSql("unended date");
    std::string_view inside = sql_.substr(position_ + 1, end - position_ - 1);
    std::optional<DateTime> date = DateReader(inside).Read();
    if (!date) RefuseSql("no date: #" + std::string(inside) + "#");
    AddLiteral(*date, false);
    position_ = end + 1;
  }

  void Symbol() {
    constexpr std::string_view kSymbols[] = {"<>", "<=", ">=", "<", ">", "=", "(", ")",
                                             ",",  ".",  "*",  "+", "-", "&", ";"};
    for (std::string_view symbol : kSymbols) {
      if (sql_.substr(position_, symbol.size()) == symbol) {
        Add(Token::Kind::kSymbol, sql_.substr(position_, symbol.size()));
        position_ += symbol.size();
        return;
      }
    }
    RefuseSql("unexpected character at " + std::to_string(position_ + 1));
  }

  std::string_view sql_;
  LiftedSql& lifted_;
  size_t position_ = 0;
};

}  // namespace

void Lift(std::string_view sql, LiftedSql& lifted) {
  Lifter(sql, lifted).Run();
}

void RefuseSql(const std::string& why) {
  throw Error(kSyntaxError, "SQL: " + why);
}

}  // namespace tarnwick::jet
