// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/html_text.h"

#include <algorithm>
#include <array>

#include "platform/charset.h"

namespace tarnwick::platform {

namespace {

template <size_t Size>
constexpr bool Holds(const std::array<std::string_view, Size>& sorted, std::string_view name) {
  return std::binary_search(sorted.begin(), sorted.end(), name);
}

constexpr std::array<std::string_view, 34> kBlocks = {
    "address", "article", "aside", "blockquote", "body",       "caption", "center", "dd",     "dir",
    "div",     "dl",      "dt",    "fieldset",   "figcaption", "figure",  "footer", "form",   "h1",
    "h2",      "h3",      "h4",    "h5",         "h6",         "header",  "hr",     "legend", "li",
    "main",    "menu",    "nav",   "ol",         "option",     "pre",     "section"};
constexpr std::array<std::string_view, 4> kMoreBlocks = {"summary", "table", "ul", "xmp"};
constexpr std::array<std::string_view, 12> kSkipped = {"applet", "audio",    "canvas", "frameset",
                                                       "head",   "iframe",   "object", "script",
                                                       "style",  "template", "title",  "video"};
constexpr std::array<std::string_view, 13> kOfHead = {
    "base", "basefont", "bgsound",  "head",   "html",  "isindex", "link",
    "meta", "noframes", "noscript", "script", "style", "title"};
static_assert(std::is_sorted(kOfHead.begin(), kOfHead.end()));
static_assert(std::is_sorted(kBlocks.begin(), kBlocks.end()));
static_assert(std::is_sorted(kMoreBlocks.begin(), kMoreBlocks.end()));
static_assert(std::is_sorted(kSkipped.begin(), kSkipped.end()));

constexpr bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

}  // namespace

HtmlText::Shape HtmlText::ShapeOf(std::string_view name) {
  if (name == "p") return Shape::kParagraph;
  if (name == "tr") return Shape::kRow;
  if (name == "td" || name == "th") return Shape::kCell;
  return Holds(kBlocks, name) || Holds(kMoreBlocks, name) ? Shape::kBlock : Shape::kInline;
}

bool HtmlText::IsSkipped(std::string_view name) {
  return Holds(kSkipped, name);
}

void HtmlText::AskForBreak(int lines) {
  breaks_ = std::max(breaks_, lines);
  blank_ = false;
}

void HtmlText::TrimLine() {
  while (text_.size() > lineStart_ && (text_.back() == ' ' || text_.back() == '\t')) {
    text_.pop_back();
  }
}

void HtmlText::BreakLine() {
  TrimLine();
  if (!text_.empty()) text_ += "\r\n";
  lineStart_ = text_.size();
}

// Pays what is owed before text.
void HtmlText::BeginText() {
  if (breaks_ > 0) {
    // A line that has ended already is the first of the line ends asked for.
    int lines = breaks_ - (text_.size() == lineStart_ ? 1 : 0);
    for (int i = 0; i < lines; ++i) BreakLine();
    breaks_ = 0;
    blank_ = false;
  }
  if (cell_) {
    if (text_.size() > lineStart_) text_ += '\t';
    cell_ = false;
    blank_ = false;
  }
  if (blank_) {
    if (text_.size() > lineStart_ && text_.back() != '\t') text_ += ' ';
    blank_ = false;
  }
}

// What does not belong into a head ends it, closed or not; "" stands for text.
void HtmlText::EndHeadBefore(std::string_view name) {
  if (open_.empty() || !open_.back().isHead || Holds(kOfHead, name)) return;
  open_.back().isHead = false;
  if (!open_.back().skips) return;
  open_.back().skips = false;
  --skipping_;
}

void HtmlText::Open(std::string_view name, Look look) {
  EndHeadBefore(name);
  Element element;
  element.shape = ShapeOf(name);
  element.skips = look.hidden || IsSkipped(name);
  element.keepsBlanks = look.keepsBlanks || name == "pre" || name == "textarea" || name == "xmp";
  element.isHead = name == "head";
  if (name == "body") hasBody_ = true;
  if (element.skips) ++skipping_;
  if (element.keepsBlanks) ++keeping_;
  if (skipping_ == 0) {
    if (name == "br") {
      BeginText();
      BreakLine();
    } else if (element.shape == Shape::kCell) {
      bool inRow = !open_.empty() && open_.back().shape == Shape::kRow;
      if (inRow && open_.back().hasCell) {
        cell_ = true;
        breaks_ = 0;
      } else if (!inRow) {
        AskForBreak(1);
      }
      if (inRow) open_.back().hasCell = true;
    } else if (element.shape != Shape::kInline) {
      AskForBreak(element.shape == Shape::kParagraph ? 2 : 1);
      cell_ = false;
    }
  }
  open_.push_back(element);
}

void HtmlText::Close() {
  if (open_.empty()) return;
  Element element = open_.back();
  open_.pop_back();
  if (element.skips) --skipping_;
  if (element.keepsBlanks) --keeping_;
  if (skipping_ > 0 || element.skips) return;
  if (element.shape != Shape::kInline && element.shape != Shape::kCell) {
    AskForBreak(element.shape == Shape::kParagraph ? 2 : 1);
    cell_ = false;
  }
}

void HtmlText::PutPlain(std::string_view text) {
  for (size_t position = 0; position < text.size();) {
    if (IsBlank(text[position])) {
      blank_ = true;
      ++position;
      continue;
    }
    BeginText();
    size_t end = position;
    while (end < text.size() && !IsBlank(text[end])) ++end;
    text_.append(text, position, end - position);
    position = end;
  }
}

void HtmlText::Characters(std::string_view text) {
  if (!std::all_of(text.begin(), text.end(), IsBlank)) EndHeadBefore({});
  if (skipping_ > 0 || text.empty()) return;
  if (keeping_ == 0) {
    PutPlain(text);
    return;
  }
  for (char c : text) {
    if (c == '\r') continue;
    if (c == '\n' && (breaks_ > 0 || text_.empty())) {
      // The line end behind the opening tag belongs to the markup.
      if (breaks_ > 1 || !text_.empty()) BeginText();
      continue;
    }
    BeginText();
    if (c == '\n') {
      text_ += "\r\n";
      lineStart_ = text_.size();
    } else {
      text_ += c;
    }
  }
}

void HtmlText::HardBlank() {
  if (skipping_ > 0) return;
  BeginText();
  text_ += ' ';
}

std::string HtmlText::Take() {
  auto isEnd = [](char c) { return c == '\r' || c == '\n' || c == ' ' || c == '\t'; };
  size_t start = 0;
  for (size_t i = 0; i < text_.size() && isEnd(text_[i]); ++i) {
    if (text_[i] == '\n') start = i + 1;
  }
  text_.erase(0, start);
  while (!text_.empty() && isEnd(text_.back())) text_.pop_back();
  return std::move(text_);
}

}  // namespace tarnwick::platform
