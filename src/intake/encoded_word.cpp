// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/encoded_word.h"

#include <optional>
#include <string>

#include "intake/transfer_decoding.h"
#include "platform/charset.h"

namespace tarnwick::intake {

namespace {

struct Word {
  std::string_view charset;
  char letter = 0;
  std::string_view encoded;
  size_t end = 0;  // behind its "?="
};

// The word that begins at "=?" at position. questionMarks: the place of the last "?=" of the text,
// so that a text full of beginnings without an end is not searched again and again.
std::optional<Word> ReadWord(std::string_view text, size_t position, size_t lastEnd) {
  size_t charsetEnd = text.find('?', position + 2);
  if (charsetEnd == std::string_view::npos || charsetEnd + 2 >= text.size()) return std::nullopt;
  if (text[charsetEnd + 2] != '?') return std::nullopt;
  Word word;
  word.charset = text.substr(position + 2, charsetEnd - position - 2);
  word.letter = text[charsetEnd + 1];
  if (std::string_view("BbQq").find(word.letter) == std::string_view::npos) return std::nullopt;
  if (word.charset.empty() || word.charset.find(' ') != std::string_view::npos) return std::nullopt;
  size_t begin = charsetEnd + 3;
  if (lastEnd == std::string_view::npos || begin > lastEnd) return std::nullopt;
  size_t end = text.find("?=", begin);
  if (end == std::string_view::npos) return std::nullopt;
  word.encoded = text.substr(begin, end - begin);
  word.end = end + 2;
  return word;
}

// Decoded bytes of one word or of several adjacent ones of the same charset.
class Run {
 public:
  void Add(const Word& word, MixedText& result) {
    if (!charset_.empty() && charset_ != word.charset) Flush(result);
    charset_ = word.charset;
    bytes_ += DecodeTransfer(word.encoded, word.letter);
  }
  bool IsOpen() const { return !charset_.empty(); }
  void Flush(MixedText& result) {
    if (auto text = platform::CharsetToUtf8(bytes_, charset_)) {
      result.AppendText(*text);
    } else {
      result.AppendBytes(bytes_);
    }
    bytes_.clear();
    charset_ = {};
  }

 private:
  std::string_view charset_;
  std::string bytes_;
};

}  // namespace

MixedText Decode(std::string_view text, bool* changed) {
  if (changed != nullptr) *changed = false;
  MixedText result;
  Run run;
  size_t lastEnd = text.rfind("?=");
  size_t position = 0;
  while (position < text.size()) {
    size_t begin = text.find("=?", position);
    // Of a malformed word only its beginning is passed over: another may begin inside it.
    std::optional<Word> word;
    while (begin != std::string_view::npos && !(word = ReadWord(text, begin, lastEnd))) {
      begin = text.find("=?", begin + 2);
    }
    std::string_view between = text.substr(position, begin - position);
    bool isBlank = between.find_first_not_of(" \t\r\n") == std::string_view::npos;
    if (run.IsOpen() && !(word && isBlank)) run.Flush(result);
    if (!(word && isBlank && position > 0)) result.AppendBytes(between);
    if (!word) break;
    if (changed != nullptr) *changed = true;
    run.Add(*word, result);
    position = word->end;
  }
  if (run.IsOpen()) run.Flush(result);
  return result;
}

}  // namespace tarnwick::intake
