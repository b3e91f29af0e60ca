// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/transfer_decoding.h"

#include <algorithm>
#include <array>
#include <cstdint>

#include "core/text.h"
#include "platform/charset.h"

namespace tarnwick::intake {

namespace {

constexpr int8_t kNone = -1;

constexpr std::array<int8_t, 256> MakeBase64Values() {
  std::array<int8_t, 256> values{};
  for (auto& value : values) value = kNone;
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (size_t i = 0; i < kAlphabet.size(); ++i) {
    values[static_cast<unsigned char>(kAlphabet[i])] = static_cast<int8_t>(i);
  }
  return values;
}
constexpr std::array<int8_t, 256> kBase64Values = MakeBase64Values();

int Base64Value(char c) {
  return kBase64Values[static_cast<unsigned char>(c)];
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

// Decodes the groups of four of text and appends their bytes; gives the characters left over.
std::string DecodeGroups(std::string_view text, std::string& bytes) {
  uint32_t group = 0;
  int count = 0;
  std::array<char, 4> pending{};
  for (char c : text) {
    int value = Base64Value(c);
    if (value < 0) continue;
    pending[static_cast<size_t>(count)] = c;
    group = group << 6 | static_cast<uint32_t>(value);
    if (++count < 4) continue;
    bytes += static_cast<char>(group >> 16);
    bytes += static_cast<char>(group >> 8);
    bytes += static_cast<char>(group);
    group = 0;
    count = 0;
  }
  return {pending.data(), static_cast<size_t>(count)};
}

// A group that is cut short: filled up with zeros, of which two characters yield one byte and three
// two. A single one still yields a byte.
void DecodeRest(std::string_view rest, std::string& bytes) {
  if (rest.empty()) return;
  uint32_t group = 0;
  for (size_t i = 0; i < 4; ++i) {
    group = group << 6 | (i < rest.size() ? static_cast<uint32_t>(Base64Value(rest[i])) : 0);
  }
  bytes += static_cast<char>(group >> 16);
  if (rest.size() == 3) bytes += static_cast<char>(group >> 8);
}

}  // namespace

std::string DecodeBase64(std::string_view text) {
  std::string bytes;
  bytes.reserve(text.size() / 4 * 3 + 3);
  DecodeRest(DecodeGroups(text, bytes), bytes);
  return bytes;
}

std::string DecodeQuotedPrintable(std::string_view text, bool isHeader) {
  std::string bytes;
  bytes.reserve(text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '_' && isHeader) {
      bytes += ' ';
      continue;
    }
    if (c != '=') {
      bytes += c;
      continue;
    }
    int high = i + 2 < text.size() ? HexValue(text[i + 1]) : -1;
    int low = i + 2 < text.size() ? HexValue(text[i + 2]) : -1;
    if (high >= 0 && low >= 0) {
      bytes += static_cast<char>(high * 16 + low);
      i += 2;
      continue;
    }
    // A soft line break, which blanks may follow; anything else malformed is kept as it stands.
    size_t end = text.find_first_not_of(" \t", i + 1);
    if (end != std::string_view::npos && text[end] == '\r') ++end;
    if (end < text.size() && text[end] == '\n') {
      i = end;
    } else {
      bytes += c;
    }
  }
  return bytes;
}

std::string DecodeTransfer(std::string_view text, char letter) {
  if (letter == 'B' || letter == 'b') return DecodeBase64(text);
  if (letter == 'Q' || letter == 'q') return DecodeQuotedPrintable(text, true);
  return std::string(text);
}

LineDecoder::LineDecoder(std::string_view encoding) {
  std::string name = platform::AsciiLower(core::Unquote(encoding));
  // "binary" begins like base64 and is none.
  if (core::BeginsWith(name, "base64")) kind_ = Kind::kBase64;
  if (core::BeginsWith(name, "quoted")) kind_ = Kind::kQuotedPrintable;
}

void LineDecoder::Decode(std::string_view line, std::string& bytes) {
  switch (kind_) {
    case Kind::kPlain:
      bytes += line;
      bytes += "\r\n";
      break;
    case Kind::kQuotedPrintable: {
      std::string whole(line);
      whole += "\r\n";
      bytes += DecodeQuotedPrintable(whole, false);
      break;
    }
    case Kind::kBase64:
      rest_ += line;
      rest_ = DecodeGroups(rest_, bytes);
      // Padding ends a group; whatever follows begins a new one.
      if (line.find('=') != std::string_view::npos) Finish(bytes);
      break;
  }
}

void LineDecoder::Finish(std::string& bytes) {
  DecodeRest(rest_, bytes);
  rest_.clear();
}

bool IsUuencodedLine(std::string_view line) {
  if (line.empty()) return false;
  size_t length = (static_cast<unsigned char>(line[0]) - 32U) & 63U;
  size_t wanted = (length + 2) / 3 * 4;
  line.remove_prefix(1);
  // Blanks at the end (zeros) may have been cut off on the way, and a check character added.
  if (line.size() > wanted + 2) return false;
  if (line.size() + 4 < wanted && line.find('`') != std::string_view::npos) return false;
  return std::all_of(line.begin(), line.end(), [](char c) { return c >= 0x20 && c <= 0x60; });
}

void DecodeUuencodedLine(std::string_view line, std::string& bytes) {
  size_t length = (static_cast<unsigned char>(line[0]) - 32U) & 63U;
  auto value = [&](size_t i) -> uint32_t {
    return i < line.size() ? (static_cast<unsigned char>(line[i]) - 32U) & 63U : 0;
  };
  for (size_t i = 1; length > 0; i += 4) {
    uint32_t group = value(i) << 18 | value(i + 1) << 12 | value(i + 2) << 6 | value(i + 3);
    for (int shift = 16; shift >= 0 && length > 0; shift -= 8, --length) {
      bytes += static_cast<char>(group >> shift);
    }
  }
}

}  // namespace tarnwick::intake
