// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/encoded_word.h"

#include <string>

#include "intake/transfer_decoding.h"

namespace tarnwick::intake {

namespace {

constexpr std::string_view kOpen = "=?";
constexpr std::string_view kClose = "?=";
constexpr size_t kLongestCharset = 80;

struct Word {
  std::string_view charset;
  char letter = 0;
  std::string_view text;
  size_t end = 0;  // behind its "?="
};

class WordFinder {
 public:
  explicit WordFinder(std::string_view text) : text_(text) {}

  // Reads the word whose "=?" stands at start.
  bool Read(size_t start, Word& word) {
    size_t charset = start + kOpen.size();
    size_t mark = text_.substr(charset, kLongestCharset).find('?');
    if (mark == std::string_view::npos) return false;
    word.charset = text_.substr(charset, mark);
    size_t letter = charset + mark + 1;
    if (letter + 1 >= text_.size() || text_[letter] == '?' || text_[letter + 1] != '?') {
      return false;
    }
    word.letter = text_[letter];
    size_t body = letter + 2;
    size_t close = NextClose(body);
    if (close == std::string_view::npos) return false;
    word.text = text_.substr(body, close - body);
    // Another opening inside: this one was never closed.
    if (word.text.find(kOpen) != std::string_view::npos) return false;
    word.end = close + kClose.size();
    return true;
  }

  // The one word of a text reaches to the last "?=".
  void Widen(Word& word) const {
    size_t body = static_cast<size_t>(word.text.data() - text_.data());
    size_t last = text_.rfind(kClose);
    word.text = text_.substr(body, last - body);
    word.end = last + kClose.size();
  }

 private:
  // The next "?=" from position on; remembered, so that a thousand openings before one closing cost
  // one search.
  size_t NextClose(size_t position) {
    if (close_ != std::string_view::npos && close_ < position) searched_ = false;
    if (!searched_) {
      close_ = text_.find(kClose, position);
      searched_ = true;
    }
    return close_;
  }

  std::string_view text_;
  bool searched_ = false;
  size_t close_ = 0;
};

bool IsBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r\n") == std::string_view::npos;
}

}  // namespace

bool Decode(std::string_view text, MixedText& out) {
  WordFinder finder(text);
  size_t done = 0;  // everything before it is in out
  bool changed = false;
  for (size_t start = text.find(kOpen); start != std::string_view::npos;) {
    Word word;
    if (!finder.Read(start, word)) {
      start = text.find(kOpen, start + 1);
      continue;
    }
    size_t next = text.find(kOpen, word.end);
    if (!changed && next == std::string_view::npos) finder.Widen(word);
    std::string_view between = text.substr(done, start - done);
    if (!changed || !IsBlank(between)) out.AppendRaw(between);
    out.AppendIn(DecodeByLetter(word.text, word.letter), word.charset);
    changed = true;
    done = word.end;
    start = next;
  }
  out.AppendRaw(text.substr(done));
  return changed;
}

}  // namespace tarnwick::intake
