// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/html.h"

#include <libxml/HTMLparser.h>
#include <libxml/parserInternals.h>

#include <algorithm>
#include <cassert>
#include <memory>

#include "platform/charset.h"
#include "platform/html_events.h"
#include "platform/html_text.h"

namespace tarnwick::platform {

namespace {

// The parser compares an end tag with every open element and an attribute with all that stand
// before it in its tag: both are bounded here, or a hostile message would cost quadratic time. No
// mail that a person wrote comes near.
constexpr int kMostOpen = 500;
constexpr size_t kMostAttributes = 1000;
// The parser counts its input in 32 bits.
constexpr size_t kLongest = size_t{1} << 30;

constexpr const char* kNoBreakSpace = "\xC2\xA0";

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r' || c == '\f';
}

bool IsLetter(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// Copies a tag, from its "<" to before its ">", with at most kMostAttributes attributes. Quotation
// marks count where a value begins, as the parser has it.
size_t CopyTag(std::string_view html, size_t position, std::string& out) {
  size_t count = 0;
  char before = '<';
  size_t start = position;
  size_t cut = std::string_view::npos;
  for (++position; position < html.size() && html[position] != '>'; ++position) {
    char c = html[position];
    if ((c == '"' || c == '\'') && before == '=') {
      size_t end = html.find(c, position + 1);
      if (end == std::string_view::npos) return start;  // no tag: what follows is one long value
      position = end;
      before = c;
      ++count;
    } else if (IsBlank(c) || c == '/') {
      ++count;
    } else {
      before = c;
    }
    if (count > kMostAttributes && cut == std::string_view::npos) cut = position;
  }
  if (cut == std::string_view::npos) {
    out.append(html, start, position - start);
  } else {
    out.append(html, start, cut - start);
    // A tag that is really the inside of a comment keeps the comment's end.
    out += ' ';
    size_t tail = std::max(cut, position - std::min<size_t>(position, 2));
    out.append(html, tail, position - tail);
  }
  return position;
}

// Copies a comment or document type and drops any other "<!": word processors write <![if ...]>,
// which the parser would take for text. lastClose: where the last ">" of the document stands, so
// that many declarations without an end are not each searched for one.
size_t PassDeclaration(std::string_view html, size_t position, size_t lastClose, std::string& out) {
  bool isComment = html.substr(position, 4) == "<!--";
  bool hasEnd = lastClose != std::string_view::npos && lastClose > position;
  size_t end = html.size();
  if (isComment) {
    size_t close = html.find("-->", position + 2);
    if (close != std::string_view::npos) end = close + 3;
  } else if (hasEnd) {
    end = html.find('>', position) + 1;
  }
  constexpr size_t kTypeLength = 9;
  if (isComment || AsciiUpper(html.substr(position, kTypeLength)) == "<!DOCTYPE") {
    out.append(html, position, end - position);
  } else if (!hasEnd) {
    out += "&lt;";
    return position + 1;
  }
  return end;
}

// The document without what the parser can't take in linear time, and without NULs, which would end
// it.
std::string Tame(std::string_view html) {
  std::string out;
  out.reserve(html.size());
  const size_t lastClose = html.rfind('>');
  for (size_t position = 0; position < html.size();) {
    if (html[position] == '<' && position + 1 < html.size() && IsLetter(html[position + 1])) {
      size_t next = CopyTag(html, position, out);
      if (next != position) {
        position = next;
        continue;
      }
      out.append(html, position);
      break;
    }
    if (html.substr(position, 2) == "<!") {
      position = PassDeclaration(html, position, lastClose, out);
      continue;
    }
    size_t end = html.find('<', position + 1);
    if (end == std::string_view::npos) end = html.size();
    out.append(html, position, end - position);
    position = end;
  }
  std::replace(out.begin(), out.end(), '\0', ' ');
  return out;
}

struct Reader {
  HtmlEvents& events;
  htmlParserCtxtPtr parser = nullptr;
  HtmlEvents::Attributes attributes = {};
};

// Lets the outer half of the open elements fall: their end tags will find nothing to close.
void ForgetOuterElements(htmlParserCtxtPtr parser) {
  int fallen = parser->nameNr / 2;
  std::copy(parser->nameTab + fallen, parser->nameTab + parser->nameNr, parser->nameTab);
  parser->nameNr -= fallen;
}

void StartElement(void* user, const xmlChar* name, const xmlChar** attributes) {
  auto& reader = *static_cast<Reader*>(user);
  auto text = [](const xmlChar* value) {
    return value == nullptr ? std::string_view() : reinterpret_cast<const char*>(value);
  };
  reader.attributes.clear();
  for (; attributes != nullptr && attributes[0] != nullptr; attributes += 2) {
    reader.attributes.emplace_back(text(attributes[0]), text(attributes[1]));
  }
  reader.events.Open(text(name), reader.attributes);
  if (reader.events.IsDone()) xmlStopParser(reader.parser);
  if (reader.parser->nameNr > kMostOpen) ForgetOuterElements(reader.parser);
}

void EndElement(void* user, const xmlChar*) {
  static_cast<Reader*>(user)->events.Close();
}

void Characters(void* user, const xmlChar* characters, int length) {
  if (length <= 0) return;
  static_cast<Reader*>(user)->events.Characters(
      {reinterpret_cast<const char*>(characters), static_cast<size_t>(length)});
}

htmlSAXHandler MakeHandler() {
  htmlSAXHandler handler{};
  handler.startElement = StartElement;
  handler.endElement = EndElement;
  handler.characters = Characters;
  handler.ignorableWhitespace = Characters;
  handler.cdataBlock = [](void*, const xmlChar*, int) {};  // scripts and style sheets
  return handler;
}

struct FreeParser {
  void operator()(htmlParserCtxtPtr parser) const { htmlFreeParserCtxt(parser); }
};

HtmlText::Look LookOf(const HtmlEvents::Attributes& attributes) {
  HtmlText::Look look;
  for (const auto& [name, value] : attributes) {
    if (name == "hidden") look.hidden = true;
    if (name != "style") continue;
    std::string style = AsciiLower(value);
    std::erase_if(style, IsBlank);
    if (style.find("display:none") != std::string::npos ||
        style.find("visibility:hidden") != std::string::npos) {
      look.hidden = true;
    }
    if (style.find("white-space:pre") != std::string::npos) look.keepsBlanks = true;
  }
  return look;
}

class TextReader : public HtmlEvents {
 public:
  void Open(std::string_view name, const Attributes& attributes) override {
    text.Open(name, LookOf(attributes));
  }
  void Close() override { text.Close(); }
  // No-break spaces become blanks that stay, and references to the C1 controls (&#150;) mean
  // windows-1252 to everyone who writes them. Both begin with the byte C2.
  void Characters(std::string_view all) override {
    while (!all.empty()) {
      size_t special = all.find('\xC2');
      text.Characters(all.substr(0, special));
      if (special == std::string_view::npos || special + 1 >= all.size()) break;
      std::string_view character = all.substr(special, 2);
      if (character == kNoBreakSpace) {
        text.HardBlank();
      } else if (static_cast<unsigned char>(character[1]) < 0xA0) {
        text.Characters(BytesToUtf8(character.substr(1), "windows-1252"));
      } else {
        text.Characters(character);
      }
      all.remove_prefix(special + 2);
    }
  }

  HtmlText text;
};

HtmlText TextOf(std::string_view html) {
  TextReader reader;
  ReadHtml(html, reader);
  return std::move(reader.text);
}

}  // namespace

void ReadHtml(std::string_view html, HtmlEvents& events) {
  if (std::all_of(html.begin(), html.end(), IsBlank)) return;
  std::string tame = Tame(html.substr(0, kLongest));
  std::unique_ptr<htmlParserCtxt, FreeParser> parser(htmlNewParserCtxt());
  if (!parser) return;
  static htmlSAXHandler handler = MakeHandler();
  *parser->sax = handler;
  Reader reader{events, parser.get()};
  parser->userData = &reader;
  htmlCtxtReadMemory(parser.get(), tame.data(), static_cast<int>(tame.size()), nullptr, "UTF-8",
                     HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING |
                         HTML_PARSE_NONET | HTML_PARSE_NOIMPLIED | HTML_PARSE_IGNORE_ENC |
                         XML_PARSE_HUGE);
}

std::string HtmlToPlainText(std::string_view html) {
  assert(IsValidUtf8(html));
  HtmlText text = TextOf(html);
  return text.HasBody() ? text.Take() : std::string();
}

std::string ShownText(std::string_view html) {
  return TextOf(html).Take();
}

}  // namespace tarnwick::platform
