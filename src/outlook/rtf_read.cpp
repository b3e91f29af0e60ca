// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <string>
#include <vector>

#include "outlook/mapi_text.h"
#include "outlook/rtf.h"
#include "platform/charset.h"

namespace tarnwick::outlook {

namespace {

constexpr size_t kMaxWord = 32;  // longer control words are no control words of anybody

struct CharsetPage {
  int charset;
  int64_t codepage;
};
// The code pages of a font's \fcharset; 0 and 1 leave the document's.
constexpr CharsetPage kFontCharsets[] = {{77, 10000}, {128, 932},  {129, 949},  {134, 936},
                                         {136, 950},  {161, 1253}, {162, 1254}, {163, 1258},
                                         {177, 1255}, {178, 1256}, {186, 1257}, {204, 1251},
                                         {222, 874},  {238, 1250}, {254, 437}};

struct Spelled {
  std::string_view word;
  std::string_view html;
  std::string_view text;
};
// Control words that stand for characters.
constexpr Spelled kSpelled[] = {{"par", "\r\n", "\r\n"},
                                {"line", "\r\n", "\r\n"},
                                {"page", "\r\n", "\r\n"},
                                {"sect", "\r\n", "\r\n"},
                                {"row", "\r\n", "\r\n"},
                                {"cell", "\t", "\t"},
                                {"tab", "\t", "\t"},
                                {"lquote", "&lsquo;", "\xE2\x80\x98"},
                                {"rquote", "&rsquo;", "\xE2\x80\x99"},
                                {"ldblquote", "&ldquo;", "\xE2\x80\x9C"},
                                {"rdblquote", "&rdquo;", "\xE2\x80\x9D"},
                                {"bullet", "&bull;", "\xE2\x80\xA2"},
                                {"endash", "&ndash;", "\xE2\x80\x93"},
                                {"emdash", "&mdash;", "\xE2\x80\x94"}};

// Groups whose text is none of the document's.
constexpr std::string_view kSilent[] = {"fonttbl",    "colortbl",     "stylesheet",
                                        "info",       "pict",         "object",
                                        "header",     "footer",       "headerl",
                                        "headerr",    "footerl",      "footerr",
                                        "listtext",   "pntext",       "generator",
                                        "xmlnstbl",   "listtable",    "listoverridetable",
                                        "rsidtbl",    "themedata",    "colorschememapping",
                                        "datastore",  "latentstyles", "fldinst",
                                        "nonshppict", "mhtmltag"};

void AppendUtf8(std::string& text, uint32_t c) {
  if (c < 0x80) {
    text.push_back(static_cast<char>(c));
  } else if (c < 0x800) {
    text.push_back(static_cast<char>(0xC0 | c >> 6));
    text.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else if (c < 0x10000) {
    text.push_back(static_cast<char>(0xE0 | c >> 12));
    text.push_back(static_cast<char>(0x80 | (c >> 6 & 0x3F)));
    text.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  } else {
    text.push_back(static_cast<char>(0xF0 | c >> 18));
    text.push_back(static_cast<char>(0x80 | (c >> 12 & 0x3F)));
    text.push_back(static_cast<char>(0x80 | (c >> 6 & 0x3F)));
    text.push_back(static_cast<char>(0x80 | (c & 0x3F)));
  }
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

class Reader {
 public:
  explicit Reader(std::string_view rtf) : rtf_(rtf) {}

  RtfContent Run() {
    while (position_ < rtf_.size()) Step();
    FlushRun();
    return std::move(content_);
  }

 private:
  // What a group inherits and a closing brace gives back.
  struct State {
    bool silent = false;     // a destination that is not shown
    bool fontTable = false;  // reading \fonttbl
    bool htmlTag = false;    // inside {\*\htmltag ...}
    bool htmlRtf = false;    // between \htmlrtf and \htmlrtf0
    bool optional = false;   // behind \*
    int font = -1;
    int skipAfterUnicode = 1;
  };

  bool IsHtml() const { return content_.kind == RtfContent::Kind::kHtml; }
  bool IsShown() const { return !state_.silent && !(IsHtml() && state_.htmlRtf); }

  void Step() {
    char c = rtf_[position_++];
    if (c == '{') {
      FlushRun();
      groups_.push_back(state_);
      toSkip_ = 0;
    } else if (c == '}') {
      FlushRun();
      if (!groups_.empty()) {
        state_ = groups_.back();
        groups_.pop_back();
      }
      toSkip_ = 0;
    } else if (c == '\\') {
      Control();
    } else if (c != '\r' && c != '\n' && c != '\0') {
      PutByte(c);
    }
  }

  void Control() {
    if (position_ >= rtf_.size()) return;
    char c = rtf_[position_];
    if (IsLetter(c)) return Word();
    ++position_;
    if (c == '\'') return HexByte();
    if (c == '*') {
      state_.optional = true;
    } else if (c == '\\' || c == '{' || c == '}') {
      PutByte(c);
    } else if (c == '~') {
      Put(IsHtml() && !state_.htmlTag ? "&nbsp;" : "\xC2\xA0");
    } else if (c == '_') {
      Put(IsHtml() && !state_.htmlTag ? "&shy;" : "-");
    } else if (c == '\r' || c == '\n') {
      Put("\r\n");
      if (c == '\r' && position_ < rtf_.size() && rtf_[position_] == '\n') ++position_;
    }
  }

  void HexByte() {
    if (position_ + 2 > rtf_.size()) return;
    int high = HexDigit(rtf_[position_]);
    int low = HexDigit(rtf_[position_ + 1]);
    if (high < 0 || low < 0) return;
    position_ += 2;
    PutByte(static_cast<char>(high << 4 | low));
  }

  void Word() {
    size_t start = position_;
    while (position_ < rtf_.size() && IsLetter(rtf_[position_])) ++position_;
    std::string_view word = rtf_.substr(start, position_ - start);
    bool negative = position_ < rtf_.size() && rtf_[position_] == '-';
    size_t digits = position_ + (negative ? 1 : 0);
    bool hasNumber = digits < rtf_.size() && rtf_[digits] >= '0' && rtf_[digits] <= '9';
    int64_t number = 0;
    if (hasNumber) {
      for (position_ = digits;
           position_ < rtf_.size() && rtf_[position_] >= '0' && rtf_[position_] <= '9';
           ++position_) {
        number = std::min<int64_t>(number * 10 + (rtf_[position_] - '0'), INT32_MAX);
      }
      if (negative) number = -number;
    }
    if (position_ < rtf_.size() && rtf_[position_] == ' ') ++position_;
    if (word.size() <= kMaxWord) Obey(word, hasNumber, number);
  }

  void Obey(std::string_view word, bool hasNumber, int64_t number) {
    if (word == "bin") {
      size_t left = rtf_.size() - position_;
      position_ += std::min(left, static_cast<size_t>(std::max<int64_t>(number, 0)));
      return;
    }
    if (Destination(word) || Setting(word, hasNumber, number)) return;
    for (const Spelled& spelled : kSpelled) {
      if (spelled.word == word) {
        return Put(IsHtml() && !state_.htmlTag ? spelled.html : spelled.text);
      }
    }
  }

  // Words that begin a group of their own kind.
  bool Destination(std::string_view word) {
    bool optional = state_.optional;
    state_.optional = false;
    if (word == "htmltag") {
      FlushRun();
      if (IsHtml()) {
        state_.htmlTag = true;
      } else {
        state_.silent = true;
      }
      return true;
    }
    bool isSilent = std::find(std::begin(kSilent), std::end(kSilent), word) != std::end(kSilent);
    if (!isSilent && !optional) return false;
    FlushRun();
    state_.silent = true;
    state_.fontTable = word == "fonttbl";
    return true;
  }

  // Words that change how what follows is read.
  bool Setting(std::string_view word, bool hasNumber, int64_t number) {
    if (word == "htmlrtf") {
      FlushRun();
      state_.htmlRtf = !hasNumber || number != 0;
    } else if (word == "fromhtml") {
      content_.kind = RtfContent::Kind::kHtml;
    } else if (word == "fromtext") {
      if (!IsHtml()) content_.kind = RtfContent::Kind::kText;
    } else if (word == "ansicpg") {
      codepage_ = number;
    } else if (word == "mac") {
      codepage_ = 10000;
    } else if (word == "f") {
      FlushRun();
      state_.font = static_cast<int>(number);
    } else if (word == "deff") {
      defaultFont_ = static_cast<int>(number);
    } else if (word == "fcharset") {
      if (state_.fontTable) SetFontCharset(static_cast<int>(number));
    } else if (word == "plain") {
      FlushRun();
      state_.font = defaultFont_;
    } else if (word == "uc") {
      state_.skipAfterUnicode = static_cast<int>(std::clamp<int64_t>(number, 0, 16));
    } else if (word == "u") {
      PutUnicode(number);
    } else {
      return false;
    }
    return true;
  }

  void SetFontCharset(int charset) {
    for (const CharsetPage& known : kFontCharsets) {
      if (known.charset == charset) fonts_[state_.font] = known.codepage;
    }
  }

  int64_t Codepage() const {
    auto font = fonts_.find(state_.font);
    return font != fonts_.end() ? font->second : codepage_;
  }

  void PutUnicode(int64_t number) {
    FlushRun();
    toSkip_ = state_.skipAfterUnicode;
    if (!IsShown()) return;
    auto unit = static_cast<uint32_t>(number < 0 ? number + 0x10000 : number) & 0xFFFF;
    if (unit >= 0xD800 && unit < 0xDC00) {
      highSurrogate_ = unit;
      return;
    }
    if (unit >= 0xDC00 && unit < 0xE000) {
      if (highSurrogate_ == 0) return;
      unit = 0x10000 + ((highSurrogate_ - 0xD800) << 10) + (unit - 0xDC00);
    }
    highSurrogate_ = 0;
    if (unit != 0) AppendUtf8(content_.text, unit);
  }

  // Bytes are collected, since a character may take several.
  void PutByte(char c) {
    state_.optional = false;
    if (toSkip_ > 0) {
      --toSkip_;
      return;
    }
    if (IsShown()) run_.push_back(c);
  }

  void Put(std::string_view utf8) {
    toSkip_ = 0;
    FlushRun();
    if (IsShown()) content_.text += utf8;
  }

  void FlushRun() {
    if (run_.empty()) return;
    content_.text += platform::BytesToUtf8(run_, CharsetOfCodepage(Codepage()));
    run_.clear();
  }

  std::string_view rtf_;
  size_t position_ = 0;
  RtfContent content_;
  State state_;
  std::vector<State> groups_;
  std::map<int, int64_t> fonts_;  // code pages of those that have their own
  int64_t codepage_ = 1252;
  int defaultFont_ = -1;
  int toSkip_ = 0;  // characters that only repeat a \u for readers that don't know it
  uint32_t highSurrogate_ = 0;
  std::string run_;
};

}  // namespace

RtfContent ReadRtf(std::string_view rtf) {
  return Reader(rtf).Run();
}

}  // namespace tarnwick::outlook
