// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "reading/clean_html.h"

#include <algorithm>
#include <array>
#include <vector>

#include "core/text.h"
#include "platform/html_events.h"
#include "platform/utf8.h"

namespace tarnwick::reading {

namespace {

// What a window lays out without a pause that is noticed. Letters of people stay far below.
constexpr size_t kMostElements = 8000;
constexpr size_t kMostCells = 1500;
constexpr size_t kMostText = 400000;
constexpr size_t kDeepest = 40;      // elements that are written within one another
constexpr size_t kDeepestTable = 4;  // what is deeper is written as plain blocks
constexpr size_t kLongestTarget = 2000;
constexpr size_t kLongestLinkText = 300;
constexpr size_t kLongestWord = 200;  // without a place to break a line at

template <size_t kSize>
bool IsOneOf(std::string_view name, const std::array<std::string_view, kSize>& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

constexpr std::array<std::string_view, 37> kKept = {
    "p",      "div", "b",     "strong", "i",    "em",      "u",          "s",  "strike", "del",
    "ins",    "sub", "sup",   "tt",     "code", "pre",     "blockquote", "h1", "h2",     "h3",
    "h4",     "h5",  "h6",    "ul",     "ol",   "li",      "dl",         "dt", "dd",     "span",
    "center", "big", "small", "kbd",    "samp", "address", "cite"};
constexpr std::array<std::string_view, 8> kTable = {"table", "tr",    "td",    "th",
                                                    "thead", "tbody", "tfoot", "caption"};
// These go with all that they hold.
constexpr std::array<std::string_view, 18> kDropped = {
    "script", "style",  "head",     "title",  "object", "applet", "iframe",   "frame", "frameset",
    "select", "button", "textarea", "canvas", "video",  "audio",  "noscript", "svg",   "template"};

void AppendEscaped(std::string& out, std::string_view text) {
  for (char c : text) {
    switch (c) {
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '&':
        out += "&amp;";
        break;
      case '"':
        out += "&quot;";
        break;
      default:
        out += c;
    }
  }
}

bool HasPrefix(std::string_view text, std::string_view lowerPrefix) {
  return platform::AsciiLower(text.substr(0, lowerPrefix.size())) == lowerPrefix;
}

// The server named by what stands behind "//", lower case, without a user's name and a port.
std::string ServerOf(std::string_view rest) {
  std::string_view place = rest.substr(0, rest.find_first_of("/?#\\"));
  if (size_t at = place.rfind('@'); at != std::string_view::npos) place.remove_prefix(at + 1);
  if (!place.empty() && place[0] != '[') place = place.substr(0, place.find(':'));
  return platform::AsciiLower(place);
}

// The server that a link's words name, when they look like an address; "" for any other words.
std::string ServerNamedBy(std::string_view words) {
  words = core::Trim(words);
  if (words.find_first_of(" \t\r\n") != std::string_view::npos) return {};
  if (size_t scheme = words.find("://"); scheme != std::string_view::npos) {
    return ServerOf(words.substr(scheme + 3));
  }
  std::string server = ServerOf(words);
  if (HasPrefix(server, "www.")) return server;
  // "example.org/page" or "example.org": a dot within, a letter behind the last one.
  size_t dot = server.rfind('.');
  bool isName = dot != std::string::npos && dot > 0 && server.size() - dot > 2 &&
                words.find('@') == std::string_view::npos &&
                std::all_of(server.begin() + static_cast<std::ptrdiff_t>(dot) + 1, server.end(),
                            [](char c) { return c >= 'a' && c <= 'z'; });
  return isName ? server : std::string();
}

std::string WithoutWww(const std::string& server) {
  return HasPrefix(server, "www.") ? server.substr(4) : server;
}

// True unless one is the other or a part of it: "example.org" and "mail.example.org".
bool Differ(const std::string& named, const std::string& reached) {
  std::string a = WithoutWww(named);
  std::string b = WithoutWww(reached);
  auto endsWith = [](const std::string& text, const std::string& tail) {
    return text == tail || (text.size() > tail.size() && text.ends_with("." + tail));
  };
  return !endsWith(a, b) && !endsWith(b, a);
}

std::string_view ValueOf(const platform::HtmlEvents::Attributes& attributes,
                         std::string_view name) {
  for (const auto& [key, value] : attributes) {
    if (key == name) return value;
  }
  return {};
}

// A count of cells or pixels between 1 and most; 0 when it is none.
int NumberOf(std::string_view text, int most) {
  int number = 0;
  for (char c : text.substr(0, 6)) {
    if (c < '0' || c > '9') return c == 'p' ? std::min(number, most) : 0;
    number = number * 10 + (c - '0');
  }
  return std::min(number, most);
}

bool IsHidden(const platform::HtmlEvents::Attributes& attributes) {
  std::string style = platform::AsciiLower(ValueOf(attributes, "style"));
  std::erase_if(style, [](char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; });
  return style.find("display:none") != std::string::npos;
}

class Cleaner : public platform::HtmlEvents {
 public:
  void Open(std::string_view name, const Attributes& attributes) override {
    Element& element = open_.emplace_back();
    if (skipping_ > 0 || IsOneOf(name, kDropped) || IsHidden(attributes)) {
      element.skips = true;
      ++skipping_;
      return;
    }
    if (!Spend()) return;
    if (name == "img") {
      WritePicture(attributes);
    } else if (name == "br" || name == "hr") {
      out_.html += name == "br" ? "<br/>" : "<hr/>";
    } else if (name == "a") {
      OpenLink(ValueOf(attributes, "href"), element);
    } else if (IsOneOf(name, kTable)) {
      OpenTable(name, attributes, element);
    } else if (IsOneOf(name, kKept)) {
      Write(name, "", element);
    }
  }

  void Close() override {
    if (open_.empty()) return;
    Element element = std::move(open_.back());
    open_.pop_back();
    if (element.skips) --skipping_;
    if (element.isFlatTable) --flat_;
    if (element.tag.empty()) return;
    --depth_;
    if (element.tag == "table") --tables_;
    out_.html += "</" + element.tag + ">";
    if (!element.target.empty()) EndLink(element.target);
  }

  void Characters(std::string_view text) override {
    if (skipping_ > 0 || out_.isCut) return;
    if (text_ + text.size() > kMostText) {
      size_t room = kMostText - text_;
      while (room > 0 && (static_cast<unsigned char>(text[room]) & 0xC0) == 0x80) --room;
      text = text.substr(0, room);
      out_.isCut = true;
    }
    text_ += text.size();
    if (inLink_ && linkText_.size() < kLongestLinkText) linkText_ += text;
    AppendBreakable(text);
  }

  bool IsDone() const override { return out_.isCut; }

  CleanedHtml Take() {
    while (!open_.empty()) Close();
    return std::move(out_);
  }

 private:
  struct Element {
    std::string tag;  // that was written for it
    std::string target;
    bool skips = false;
    bool isFlatTable = false;
  };

  bool Spend() {
    if (++elements_ > kMostElements) out_.isCut = true;
    return !out_.isCut;
  }

  void Write(std::string_view tag, const std::string& attributes, Element& element) {
    if (depth_ >= kDeepest) return;
    ++depth_;
    element.tag = tag;
    out_.html += "<" + element.tag + attributes + ">";
  }

  void OpenTable(std::string_view name, const Attributes& attributes, Element& element) {
    bool isCell = name == "td" || name == "th";
    if (isCell) ++cells_;
    bool isPlain = cells_ > kMostCells ||
                   (name == "table" ? tables_ >= kDeepestTable : tables_ == 0 || flat_ > 0);
    if (name == "table" && !isPlain && depth_ < kDeepest) {
      ++tables_;
      return Write(name, " cellpadding=\"2\"", element);
    }
    if (name == "table") {
      element.isFlatTable = true;
      ++flat_;
      return;
    }
    if (isPlain || depth_ >= kDeepest) {
      // Rows and cells of what is no table here stand below one another.
      if (isCell || name == "tr") Write("div", "", element);
      return;
    }
    std::string spans;
    for (std::string_view span : {"colspan", "rowspan"}) {
      int count = isCell ? NumberOf(ValueOf(attributes, span), 50) : 0;
      if (count > 1) spans.append(" ").append(span) += "=\"" + std::to_string(count) + "\"";
    }
    Write(name, spans, element);
  }

  void OpenLink(std::string_view target, Element& element) {
    target = core::Trim(target).substr(0, kLongestTarget);
    if (PlaceOf(target).empty() || inLink_) return;
    std::string href = " href=\"";
    AppendEscaped(href, target);
    Write("a", href + "\"", element);
    if (element.tag.empty()) return;
    element.target = target;
    inLink_ = true;
    linkText_.clear();
  }

  void EndLink(const std::string& target) {
    inLink_ = false;
    std::string named = ServerNamedBy(linkText_);
    std::string reached = PlaceOf(target);
    if (named.empty() || !Differ(named, reached)) return;
    ++out_.misleadingLinks;
    out_.html += " <b>[leads to ";
    AppendEscaped(out_.html, reached);
    out_.html += "]</b> ";
  }

  void WritePicture(const Attributes& attributes) {
    std::string_view source = core::Trim(ValueOf(attributes, "src"));
    if (HasPrefix(source, "cid:")) {
      out_.html += "<img src=\"cid:";
      AppendEscaped(out_.html, source.substr(4, kLongestTarget));
      out_.html += "\"";
      for (std::string_view side : {"width", "height"}) {
        int pixels = NumberOf(ValueOf(attributes, side), 2000);
        if (pixels > 0) {
          out_.html.append(" ").append(side) += "=\"" + std::to_string(pixels) + "\"";
        }
      }
      out_.html += "/>";
      return;
    }
    ++out_.remotePictures;
    std::string_view words = ValueOf(attributes, "alt");
    if (words.empty()) return;
    out_.html += "[";
    AppendBreakable(words.substr(0, words.size() > 200 ? 0 : words.size()));
    out_.html += "]";
  }

  // A line of text without a blank takes time that grows faster than the line.
  void AppendBreakable(std::string_view text) {
    size_t begin = 0;
    for (size_t i = 0; i < text.size(); ++i) {
      auto c = static_cast<unsigned char>(text[i]);
      if (c <= ' ') {
        word_ = 0;
      } else if (++word_ > kLongestWord && (c & 0xC0) != 0x80) {
        AppendEscaped(out_.html, text.substr(begin, i - begin));
        out_.html += "&#8203;";
        begin = i;
        word_ = 0;
      }
    }
    AppendEscaped(out_.html, text.substr(begin));
  }

  CleanedHtml out_;
  std::vector<Element> open_;
  size_t skipping_ = 0;
  size_t elements_ = 0;
  size_t cells_ = 0;
  size_t text_ = 0;
  size_t depth_ = 0;
  size_t tables_ = 0;  // that are open and written as such
  size_t flat_ = 0;    // that are open within these and are not
  size_t word_ = 0;
  bool inLink_ = false;
  std::string linkText_;
};

}  // namespace

CleanedHtml CleanHtml(std::string_view html) {
  Cleaner cleaner;
  platform::ReadHtml(html, cleaner);
  return cleaner.Take();
}

std::string PlaceOf(std::string_view target) {
  // A control character within would be read in one way and followed in another.
  if (std::any_of(target.begin(), target.end(),
                  [](char c) { return static_cast<unsigned char>(c) < ' '; })) {
    return {};
  }
  for (std::string_view scheme : {"http://", "https://", "ftp://"}) {
    if (HasPrefix(target, scheme)) return ServerOf(target.substr(scheme.size()));
  }
  if (HasPrefix(target, "mailto:")) return std::string(target.substr(7, target.find('?') - 7));
  return {};
}

}  // namespace tarnwick::reading
