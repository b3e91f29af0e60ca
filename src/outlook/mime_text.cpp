// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/mime_text.h"

#include <algorithm>

#include "intake/header_writer.h"
#include "outlook/address_resolver.h"
#include "platform/charset.h"

namespace tarnwick::outlook {

namespace {

using intake::EncodedWords;
using intake::IsPlainHeader;
using intake::OneLine;
using intake::QuotedString;

constexpr size_t kBytesPerLine = 57;   // 76 characters of base64
constexpr size_t kMaxPlainLine = 900;  // RFC 5322 allows 998
constexpr size_t kQuotedLine = 75;

// Line ends of any kind as CR LF, and one at the end.
std::string WithLineEnds(std::string_view text) {
  std::string lines;
  lines.reserve(text.size() + text.size() / 32 + 2);
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' || text[i] == '\n') {
      lines += "\r\n";
      if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    } else {
      lines.push_back(text[i]);
    }
  }
  if (lines.size() < 2 || lines.compare(lines.size() - 2, 2, "\r\n") != 0) lines += "\r\n";
  return lines;
}

bool HasLongLine(std::string_view lines) {
  size_t start = 0;
  while (start < lines.size()) {
    size_t end = std::min(lines.find('\n', start), lines.size());
    if (end - start > kMaxPlainLine) return true;
    start = end + 1;
  }
  return false;
}

// REQUIRES: lines end with CR LF.
std::string QuotedPrintable(std::string_view lines) {
  std::string text;
  text.reserve(lines.size() + lines.size() / 8);
  size_t width = 0;
  for (size_t i = 0; i < lines.size(); ++i) {
    char c = lines[i];
    if (c == '\r' && i + 1 < lines.size() && lines[i + 1] == '\n') {
      text += "\r\n";
      ++i;
      width = 0;
      continue;
    }
    bool atEnd = i + 1 < lines.size() && lines[i + 1] == '\r';
    bool isBlank = c == ' ' || c == '\t';
    bool isPlain = (c > ' ' && c < 127 && c != '=') || (isBlank && !atEnd);
    size_t needed = isPlain ? 1 : 3;
    if (width + needed > kQuotedLine) {
      text += "=\r\n";
      width = 0;
    }
    if (isPlain) {
      text.push_back(c);
    } else {
      intake::AppendEscaped(c, '=', text);
    }
    width += needed;
  }
  return text;
}

}  // namespace

std::string HeaderAddress(const std::string& name, const std::string& address) {
  std::string plainName = OneLine(name);
  if (plainName == address) plainName.clear();
  std::string shown = plainName.empty()          ? ""
                      : IsPlainHeader(plainName) ? QuotedString(plainName)
                                                 : EncodedWords(plainName);
  if (IsInternetAddress(address) && platform::IsAscii(address)) {
    return shown.empty() ? address : shown + " <" + address + ">";
  }
  if (!shown.empty()) return shown;
  std::string plainAddress = OneLine(address);
  return IsPlainHeader(plainAddress) ? QuotedString(plainAddress) : EncodedWords(plainAddress);
}

void Base64Lines::Encode(std::string_view bytes, std::string& text) {
  intake::AppendBase64(bytes, text);
  text += "\r\n";
}

std::string Base64Lines::Add(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() * 3 / 2);
  if (!rest_.empty()) {
    size_t wanted = std::min(kBytesPerLine - rest_.size(), bytes.size());
    rest_ += bytes.substr(0, wanted);
    bytes.remove_prefix(wanted);
    if (rest_.size() < kBytesPerLine) return text;
    Encode(rest_, text);
    rest_.clear();
  }
  for (; bytes.size() >= kBytesPerLine; bytes.remove_prefix(kBytesPerLine)) {
    Encode(bytes.substr(0, kBytesPerLine), text);
  }
  rest_ = bytes;
  return text;
}

std::string Base64Lines::End() {
  std::string text;
  if (!rest_.empty()) Encode(rest_, text);
  rest_.clear();
  return text;
}

EncodedBody EncodeBody(std::string_view utf8) {
  std::string lines = WithLineEnds(utf8);
  auto foreign = static_cast<size_t>(std::count_if(lines.begin(), lines.end(), [](char c) {
    return static_cast<unsigned char>(c) >= 127 ||
           (static_cast<unsigned char>(c) < ' ' && c != '\r' && c != '\n' && c != '\t');
  }));
  // Boundaries hold "=_", which neither other encoding can bring about.
  bool isPlain = foreign == 0 && !HasLongLine(lines) && lines.find("=_") == std::string::npos;
  if (isPlain) return {"7bit", std::move(lines)};
  if (foreign < lines.size() / 6) return {"quoted-printable", QuotedPrintable(lines)};
  Base64Lines base64;
  std::string text = base64.Add(lines);
  return {"base64", text + base64.End()};
}

}  // namespace tarnwick::outlook
