// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/mime_text.h"

#include <algorithm>
#include <array>

#include "core/text.h"
#include "outlook/address_resolver.h"
#include "platform/charset.h"
#include "platform/date_time.h"

namespace tarnwick::outlook {

namespace {

constexpr size_t kBytesPerLine = 57;     // 76 characters of base64
constexpr size_t kBytesPerWord = 42;     // an encoded word stays under 75 characters
constexpr size_t kMaxPlainHeader = 200;  // a longer text is encoded, which folds it
constexpr size_t kMaxPlainLine = 900;    // RFC 5322 allows 998
constexpr size_t kQuotedLine = 75;
constexpr std::string_view kHexDigits = "0123456789ABCDEF";

void AppendBase64(std::string_view bytes, std::string& text) {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  size_t at = text.size();
  text.resize(at + (bytes.size() + 2) / 3 * 4, '=');
  auto byte = [&](size_t i) { return uint32_t{static_cast<unsigned char>(bytes[i])}; };
  auto put = [&](uint32_t group, int chars) {
    for (int j = 0; j < chars; ++j)
      text[at + static_cast<size_t>(j)] = kAlphabet[group >> (18 - 6 * j) & 63];
    at += 4;
  };
  size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) put(byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2), 4);
  if (bytes.size() - i == 2) put(byte(i) << 16 | byte(i + 1) << 8, 3);
  if (bytes.size() - i == 1) put(byte(i) << 16, 2);
}

std::string OneLine(std::string_view text) {
  std::string line = platform::EnsureUtf8(text);
  std::replace_if(
      line.begin(), line.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == 127; }, ' ');
  return std::string(core::Trim(line));
}

bool IsPlain(const std::string& line) {
  return platform::IsAscii(line) && line.find("=?") == std::string::npos &&
         line.size() <= kMaxPlainHeader;
}

std::string EncodedWords(std::string_view text) {
  std::string words;
  while (!text.empty()) {
    size_t count = std::min(kBytesPerWord, text.size());
    // Cut between characters.
    while (count < text.size() && count > 1 && (text[count] & 0xC0) == 0x80) --count;
    if (!words.empty()) words += "\r\n ";
    words += "=?utf-8?B?";
    AppendBase64(text.substr(0, count), words);
    words += "?=";
    text.remove_prefix(count);
  }
  return words;
}

std::string Quoted(std::string_view text) {
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') quoted.push_back('\\');
    quoted.push_back(c);
  }
  return quoted + "\"";
}

void AppendEscaped(std::string& text, char c, char mark) {
  text.push_back(mark);
  text.push_back(kHexDigits[static_cast<unsigned char>(c) >> 4]);
  text.push_back(kHexDigits[static_cast<unsigned char>(c) & 15]);
}

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
      AppendEscaped(text, c, '=');
    }
    width += needed;
  }
  return text;
}

}  // namespace

std::string HeaderText(std::string_view text) {
  std::string line = OneLine(text);
  return IsPlain(line) ? line : EncodedWords(line);
}

std::string HeaderAddress(const std::string& name, const std::string& address) {
  std::string plainName = OneLine(name);
  if (plainName == address) plainName.clear();
  std::string shown = plainName.empty()    ? ""
                      : IsPlain(plainName) ? Quoted(plainName)
                                           : EncodedWords(plainName);
  if (IsInternetAddress(address) && platform::IsAscii(address)) {
    return shown.empty() ? address : shown + " <" + address + ">";
  }
  if (!shown.empty()) return shown;
  std::string plainAddress = OneLine(address);
  return IsPlain(plainAddress) ? Quoted(plainAddress) : EncodedWords(plainAddress);
}

std::string HeaderParameter(std::string_view name, std::string_view value) {
  std::string line = OneLine(value);
  std::string parameter = ";\r\n\t" + std::string(name);
  if (IsPlain(line)) return parameter + "=" + Quoted(line);
  parameter += "*=utf-8''";
  for (char c : line) {
    bool isPlain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                   c == '.' || c == '-' || c == '_';
    if (isPlain) {
      parameter.push_back(c);
    } else {
      AppendEscaped(parameter, c, '%');
    }
  }
  return parameter;
}

std::string HeaderDate(int64_t unixSeconds) {
  constexpr std::array<const char*, 7> kDays = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                   "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  DateTime time = DateTime::FromSeconds(unixSeconds);
  CivilTime civil = time.ToCivil();
  std::string iso = time.ToIso();
  return std::string(kDays[static_cast<size_t>(time.Weekday())]) + ", " +
         std::to_string(civil.day) + " " + kMonths[static_cast<size_t>(civil.month - 1)] + " " +
         iso.substr(0, 4) + " " + iso.substr(11) + " +0000";
}

void Base64Lines::Encode(std::string_view bytes, std::string& text) {
  AppendBase64(bytes, text);
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
