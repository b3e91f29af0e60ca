// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/mail_encoding.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>

namespace tarnwick::samples {

namespace {

std::u32string Characters(std::string_view utf8) {
  std::u32string characters;
  for (size_t i = 0; i < utf8.size();) {
    auto lead = static_cast<unsigned char>(utf8[i++]);
    int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
    char32_t character = more == 0 ? lead : lead & (0x3F >> more);
    for (; more > 0 && i < utf8.size(); --more) {
      character = character << 6 | (static_cast<unsigned char>(utf8[i++]) & 0x3F);
    }
    characters += character;
  }
  return characters;
}

constexpr char32_t kFirstRussian = 0x410;  // А
constexpr char32_t kLastRussian = 0x44F;   // я

std::string Hex(unsigned char c) {
  char text[3];
  std::snprintf(text, sizeof text, "%02X", c);
  return text;
}

}  // namespace

std::string ToKoi8(std::string_view utf8) {
  // The small letters in the order of KOI8-R from 0xC0 on; the capitals follow at 0xE0.
  const std::u32string order = U"юабцдефгхийклмнопярстужвьызшэщчъ";
  std::string bytes;
  for (char32_t c : Characters(utf8)) {
    bool isCapital = c >= kFirstRussian && c < kFirstRussian + 32;
    size_t place = order.find(isCapital ? c + 32 : c);
    if (c < 0x80) {
      bytes += static_cast<char>(c);
    } else if (place != std::u32string::npos) {
      bytes += static_cast<char>((isCapital ? 0xE0 : 0xC0) + place);
    } else {
      bytes += '?';
    }
  }
  return bytes;
}

std::string ToWindows1251(std::string_view utf8) {
  std::string bytes;
  for (char32_t c : Characters(utf8)) {
    if (c < 0x80) {
      bytes += static_cast<char>(c);
    } else {
      bool isRussian = c >= kFirstRussian && c <= kLastRussian;
      bytes += isRussian ? static_cast<char>(0xC0 + (c - kFirstRussian)) : '?';
    }
  }
  return bytes;
}

std::string ToLatin1(std::string_view utf8) {
  std::string bytes;
  for (char32_t c : Characters(utf8)) bytes += c < 0x100 ? static_cast<char>(c) : '?';
  return bytes;
}

std::string JisToIso2022(std::string_view jis) {
  return "\x1B$B" + std::string(jis) + "\x1B(B";
}

std::string JisToShiftJis(std::string_view jis) {
  std::string bytes;
  for (size_t i = 0; i + 1 < jis.size(); i += 2) {
    int row = static_cast<unsigned char>(jis[i]);
    int cell = static_cast<unsigned char>(jis[i + 1]);
    int lead = (row - 0x21) / 2 + (row < 0x5F ? 0x81 : 0xC1);
    int trail = row % 2 == 0 ? cell + 0x7E : cell + (cell < 0x60 ? 0x1F : 0x20);
    bytes += static_cast<char>(lead);
    bytes += static_cast<char>(trail);
  }
  return bytes;
}

std::string Base64(std::string_view bytes) {
  constexpr std::string_view kAlphabet =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (size_t i = 0; i < bytes.size(); i += 3) {
    uint32_t group = 0;
    for (size_t k = 0; k < 3; ++k) {
      group = group << 8 | (i + k < bytes.size() ? static_cast<unsigned char>(bytes[i + k]) : 0U);
    }
    for (size_t k = 0; k < 4; ++k) {
      text += i + k > bytes.size() ? '=' : kAlphabet[group >> (18 - 6 * k) & 63];
    }
  }
  return text;
}

std::string Base64Lines(std::string_view bytes) {
  std::string lines;
  for (size_t i = 0; i < bytes.size(); i += 57) lines += Base64(bytes.substr(i, 57)) + "\r\n";
  return lines;
}

std::string QuotedPrintable(std::string_view bytes) {
  std::string text;
  size_t column = 0;
  for (size_t i = 0; i < bytes.size(); ++i) {
    auto c = static_cast<unsigned char>(bytes[i]);
    if (bytes.substr(i, 2) == "\r\n") {
      text += "\r\n";
      column = 0;
      ++i;
      continue;
    }
    bool endsLine = i + 1 == bytes.size() || bytes[i + 1] == '\r';
    bool isPlain = c >= 0x21 && c < 0x7F && c != '=';
    if (c == ' ' && !endsLine) isPlain = true;
    std::string piece = isPlain ? std::string(1, static_cast<char>(c)) : "=" + Hex(c);
    if (column + piece.size() > 75) {
      text += "=\r\n";
      column = 0;
    }
    text += piece;
    column += piece.size();
  }
  return text;
}

std::string EncodedWordB(std::string_view charset, std::string_view bytes) {
  return "=?" + std::string(charset) + "?B?" + Base64(bytes) + "?=";
}

std::string EncodedWordQ(std::string_view charset, std::string_view bytes) {
  std::string text = "=?" + std::string(charset) + "?Q?";
  for (char c : bytes) {
    auto u = static_cast<unsigned char>(c);
    bool isPlain = (u >= '0' && u <= '9') || (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z');
    text += u == ' ' ? "_" : isPlain ? std::string(1, c) : "=" + Hex(u);
  }
  return text + "?=";
}

std::string Uuencode(std::string_view name, std::string_view bytes) {
  auto digit = [](uint32_t value) { return value == 0 ? '`' : static_cast<char>(value + 32); };
  std::string text = "begin 644 " + std::string(name) + "\r\n";
  for (size_t start = 0; start < bytes.size(); start += 45) {
    std::string_view line = bytes.substr(start, 45);
    text += digit(static_cast<uint32_t>(line.size()));
    for (size_t i = 0; i < line.size(); i += 3) {
      uint32_t group = 0;
      for (size_t k = 0; k < 3; ++k) {
        group = group << 8 | (i + k < line.size() ? static_cast<unsigned char>(line[i + k]) : 0U);
      }
      for (int shift = 18; shift >= 0; shift -= 6) text += digit(group >> shift & 63);
    }
    text += "\r\n";
  }
  return text + "`\r\nend\r\n";
}

}  // namespace tarnwick::samples
