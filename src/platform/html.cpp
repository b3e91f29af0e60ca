// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/html.h"

#include <libxml/HTMLparser.h>
#include <libxml/parserInternals.h>
#include <libxml/xmlerror.h>

#include <algorithm>
#include <array>
#include <climits>
#include <memory>
#include <utility>

#include "platform/charset.h"

namespace tarnwick::platform {

namespace {

enum class Layout {
  kInline,
  kBlock,      // begins and ends on a line of its own
  kParagraph,  // with an empty line before and after
  kBreak,
  kCell,
  kPre,
  kHidden,
};

struct ElementLayout {
  std::string_view name;
  Layout layout;
};

// In the order of their names.
constexpr std::array kLayouts = std::to_array<ElementLayout>({
    {"address", Layout::kBlock},   {"applet", Layout::kHidden},    {"article", Layout::kBlock},
    {"aside", Layout::kBlock},     {"blockquote", Layout::kBlock}, {"br", Layout::kBreak},
    {"caption", Layout::kBlock},   {"center", Layout::kBlock},     {"dd", Layout::kBlock},
    {"dir", Layout::kBlock},       {"div", Layout::kBlock},        {"dl", Layout::kBlock},
    {"dt", Layout::kBlock},        {"fieldset", Layout::kBlock},   {"footer", Layout::kBlock},
    {"form", Layout::kBlock},      {"h1", Layout::kParagraph},     {"h2", Layout::kParagraph},
    {"h3", Layout::kParagraph},    {"h4", Layout::kParagraph},     {"h5", Layout::kParagraph},
    {"h6", Layout::kParagraph},    {"head", Layout::kHidden},      {"header", Layout::kBlock},
    {"hr", Layout::kBlock},        {"iframe", Layout::kHidden},    {"li", Layout::kBlock},
    {"listing", Layout::kPre},     {"menu", Layout::kBlock},       {"object", Layout::kHidden},
    {"ol", Layout::kBlock},        {"p", Layout::kParagraph},      {"plaintext", Layout::kPre},
    {"pre", Layout::kPre},         {"script", Layout::kHidden},    {"section", Layout::kBlock},
    {"style", Layout::kHidden},    {"table", Layout::kBlock},      {"td", Layout::kCell},
    {"template", Layout::kHidden}, {"textarea", Layout::kPre},     {"th", Layout::kCell},
    {"title", Layout::kHidden},    {"tr", Layout::kBlock},         {"ul", Layout::kBlock},
    {"xmp", Layout::kPre},
});

Layout LayoutOf(std::string_view name) {
  const auto* found = std::lower_bound(
      kLayouts.begin(), kLayouts.end(), name,
      [](const ElementLayout& element, std::string_view wanted) { return element.name < wanted; });
  return found != kLayouts.end() && found->name == name ? found->layout : Layout::kInline;
}

// Puts text together as a browser lays it out: runs of blanks are one, line breaks that several
// blocks ask for at one place are made once.
class TextLayout {
 public:
  void Blank() { blankPending_ = lineHasText_; }

  void Character(std::string_view utf8) {
    MakeBreaks();
    if (blankPending_) text_ += ' ';
    blankPending_ = false;
    text_ += utf8;
    lineHasText_ = true;
  }

  void LineBreak() {
    MakeBreaks();
    EndLine();
  }

  // At least count line ends before what follows, if anything came before.
  void WantBreaks(int count) {
    blankPending_ = false;
    wantedBreaks_ = std::max(wantedBreaks_, count);
  }

  void Tab() {
    if (!lineHasText_ || wantedBreaks_ > 0) return;
    blankPending_ = false;
    text_ += '\t';
  }

  std::string Take() {
    size_t end = text_.find_last_not_of(" \t\r\n");
    text_.resize(end == std::string::npos ? 0 : end + 1);
    return std::move(text_);
  }

 private:
  void EndLine() {
    text_ += "\r\n";
    blankPending_ = false;
    lineHasText_ = false;
  }

  void MakeBreaks() {
    int wanted = std::exchange(wantedBreaks_, 0);
    if (wanted == 0 || text_.empty()) return;
    if (lineHasText_) {
      EndLine();
    }
    if (wanted > 1 && !text_.ends_with("\r\n\r\n")) EndLine();
  }

  std::string text_;
  int wantedBreaks_ = 0;
  bool blankPending_ = false;
  bool lineHasText_ = false;
};

// Walks the parser's events.
class BodyReader {
 public:
  void Start(std::string_view name, const xmlChar** attributes) {
    if (name == "body") inBody_ = true;
    Layout layout = LayoutOf(name);
    if (hiddenDepth_ > 0 || layout == Layout::kHidden || IsHidden(attributes)) {
      ++hiddenDepth_;
      return;
    }
    switch (layout) {
      case Layout::kBreak:
        if (inBody_) layout_.LineBreak();
        break;
      case Layout::kPre:
        ++preDepth_;
        layout_.WantBreaks(1);
        break;
      case Layout::kCell:
        layout_.Tab();
        break;
      default:
        WantBreaks(layout);
        break;
    }
  }

  void End(std::string_view name) {
    if (hiddenDepth_ > 0) {
      --hiddenDepth_;
      return;
    }
    Layout layout = LayoutOf(name);
    if (layout == Layout::kPre && preDepth_ > 0) {
      --preDepth_;
      layout_.WantBreaks(1);
    }
    WantBreaks(layout);
  }

  void Characters(std::string_view text) {
    if (!inBody_ || hiddenDepth_ > 0) return;
    for (size_t i = 0; i < text.size(); ++i) {
      char c = text[i];
      if (c == '\n' && preDepth_ > 0) {
        layout_.LineBreak();
      } else if (c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f') {
        if (preDepth_ == 0) {
          layout_.Blank();
        } else if (c != '\r') {
          layout_.Character(c == '\t' ? "\t" : " ");
        }
      } else {
        size_t length = SequenceLength(c);
        Character(text.substr(i, length));
        i += length - 1;
      }
    }
  }

  std::string Take() { return layout_.Take(); }

 private:
  static size_t SequenceLength(char lead) {
    auto byte = static_cast<unsigned char>(lead);
    return byte < 0xC0 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
  }

  void Character(std::string_view sequence) {
    if (sequence == "\xC2\xA0") {
      layout_.Character(" ");  // a blank that does not break is a blank
    } else if (sequence.size() == 2 && sequence[0] == '\xC2' &&
               static_cast<unsigned char>(sequence[1]) < 0xA0) {
      // A number between 128 and 159 means the character that Windows has there.
      layout_.Character(BytesToUtf8(sequence.substr(1), "windows-1252"));
    } else if (sequence != "\xC2\xAD" && static_cast<unsigned char>(sequence[0]) >= 0x20) {
      layout_.Character(sequence);
    }
  }

  static bool IsHidden(const xmlChar** attributes) {
    for (; attributes != nullptr && attributes[0] != nullptr; attributes += 2) {
      std::string name = AsciiLower(reinterpret_cast<const char*>(attributes[0]));
      if (name == "hidden") return true;
      if (name != "style" || attributes[1] == nullptr) continue;
      std::string style = AsciiLower(reinterpret_cast<const char*>(attributes[1]));
      std::erase_if(style, [](char c) { return c == ' ' || c == '\t' || c == '\n'; });
      if (style.find("display:none") != std::string::npos) return true;
    }
    return false;
  }

  void WantBreaks(Layout layout) {
    if (!inBody_) return;
    if (layout == Layout::kBlock) layout_.WantBreaks(1);
    if (layout == Layout::kParagraph) layout_.WantBreaks(2);
  }

  TextLayout layout_;
  bool inBody_ = false;
  // Counted for every element below a hidden one, void ones included: the parser ends each.
  int64_t hiddenDepth_ = 0;
  int64_t preDepth_ = 0;
};

void OnStart(void* reader, const xmlChar* name, const xmlChar** attributes) {
  static_cast<BodyReader*>(reader)->Start(reinterpret_cast<const char*>(name), attributes);
}

void OnEnd(void* reader, const xmlChar* name) {
  static_cast<BodyReader*>(reader)->End(reinterpret_cast<const char*>(name));
}

void OnCharacters(void* reader, const xmlChar* text, int length) {
  static_cast<BodyReader*>(reader)->Characters(
      {reinterpret_cast<const char*>(text), static_cast<size_t>(length)});
}

void OnError(void* /*reader*/, const char* /*message*/, ...) {}
void OnStructuredError(void* /*reader*/, xmlErrorPtr /*error*/) {}

// The parser compares every attribute of a tag with every other: of a tag with more than any real
// one has, the rest is dropped. NULs, at which it would stop, become blanks.
std::string Tame(std::string_view html) {
  constexpr int kMostSeparators = 400;
  std::string tame;
  tame.reserve(html.size());
  int separators = -1;  // -1: not in a tag
  for (size_t i = 0; i < html.size(); ++i) {
    char c = html[i] == '\0' ? ' ' : html[i];
    if (separators < 0) {
      bool isTag = c == '<' && i + 1 < html.size() &&
                   ((html[i + 1] >= 'a' && html[i + 1] <= 'z') ||
                    (html[i + 1] >= 'A' && html[i + 1] <= 'Z'));
      if (isTag) separators = 0;
    } else if (c == '>') {
      separators = -1;
    } else if (std::string_view(" \t\r\n/\"'=").find(c) != std::string_view::npos) {
      ++separators;
    }
    if (separators <= kMostSeparators) tame += c;
  }
  return tame;
}

struct FreeContext {
  void operator()(htmlParserCtxt* context) const {
    context->sax = nullptr;  // ours, not the library's
    htmlFreeParserCtxt(context);
  }
};

}  // namespace

std::string HtmlToPlainText(std::string_view html) {
  if (html.find_first_not_of(" \t\r\n") == std::string_view::npos || html.size() > INT_MAX / 2) {
    return {};
  }
  std::string source = Tame(html);
  BodyReader reader;
  htmlSAXHandler handler{};
  handler.startElement = OnStart;
  handler.endElement = OnEnd;
  handler.characters = OnCharacters;
  handler.ignorableWhitespace = OnCharacters;
  handler.error = OnError;
  handler.warning = OnError;
  handler.serror = OnStructuredError;

  htmlParserCtxt* created =
      htmlCreateMemoryParserCtxt(source.data(), static_cast<int>(source.size()));
  if (created == nullptr) return {};
  xmlFree(created->sax);
  created->sax = &handler;
  created->userData = &reader;
  std::unique_ptr<htmlParserCtxt, FreeContext> context(created);
  htmlCtxtUseOptions(context.get(), HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING |
                                        HTML_PARSE_NONET | HTML_PARSE_NOIMPLIED |
                                        HTML_PARSE_IGNORE_ENC | static_cast<int>(XML_PARSE_HUGE));
  xmlSwitchEncoding(context.get(), XML_CHAR_ENCODING_UTF8);
  htmlParseDocument(context.get());
  return reader.Take();
}

}  // namespace tarnwick::platform
