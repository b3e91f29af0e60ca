// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/header_writer.h"

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

#include "core/text.h"
#include "platform/base64.h"
#include "platform/charset.h"

namespace tarnwick::intake {

namespace {

bool IsControl(char c) {
  return static_cast<unsigned char>(c) < ' ' || c == '\x7F';
}

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

std::string OneLine(std::string_view text, const HeaderForm& form) {
  std::string line;
  bool afterControl = false;
  for (char c : platform::EnsureUtf8(text)) {
    bool isControl = IsControl(c);
    if (!(isControl && afterControl && form.mergesControls)) line += isControl ? ' ' : c;
    afterControl = isControl;
  }
  return std::string(core::Trim(line));
}

std::string QuotedString(std::string_view text) {
  assert(text.find_first_of("\r\n") == std::string_view::npos);
  std::string quoted = "\"";
  for (char c : text) {
    if (c == '"' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + '"';
}

std::string EncodedWords(std::string_view text, const HeaderForm& form) {
  assert(platform::IsValidUtf8(text));
  std::string words;
  while (!text.empty()) {
    size_t count = std::min(form.bytesPerWord, text.size());
    while (count < text.size() && count > 1 && IsContinuation(text[count])) --count;
    if (!words.empty()) words += form.fold;
    words.append("=?").append(form.charset).append("?B?");
    AppendBase64(text.substr(0, count), words);
    words += "?=";
    text.remove_prefix(count);
  }
  return words;
}

bool IsPlainHeader(std::string_view line, const HeaderForm& form) {
  return platform::IsAscii(line) && line.find("=?") == std::string_view::npos &&
         line.size() <= form.longestPlain;
}

std::string HeaderText(std::string_view text) {
  std::string line = OneLine(text);
  return IsPlainHeader(line) ? line : EncodedWords(line);
}

std::string HeaderParameter(std::string_view name, std::string_view value) {
  std::string line = OneLine(value);
  std::string parameter = ";\r\n\t" + std::string(name);
  if (IsPlainHeader(line)) return parameter + "=" + QuotedString(line);
  parameter += "*=utf-8''";
  for (char c : line) {
    bool isPlain = (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') ||
                   c == '.' || c == '-' || c == '_';
    if (isPlain) {
      parameter += c;
    } else {
      AppendEscaped(c, '%', parameter);
    }
  }
  return parameter;
}

std::string InternetDate(DateTime local, int utcOffsetMinutes) {
  constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
  constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  CivilTime civil = local.ToCivil();
  int offset = std::abs(utcOffsetMinutes);
  char text[64];
  std::snprintf(text, sizeof text, "%s, %d %s %04d %02d:%02d:%02d %c%02d%02d",
                kDays[local.Weekday()], civil.day, kMonths[civil.month - 1], civil.year, civil.hour,
                civil.minute, civil.second, utcOffsetMinutes < 0 ? '-' : '+', offset / 60 % 100,
                offset % 60);
  return text;
}

void AppendBase64(std::string_view bytes, std::string& text) {
  size_t at = text.size();
  size_t whole = bytes.size() / 3;
  std::string_view rest = bytes.substr(3 * whole);
  text.resize(at + (bytes.size() + 2) / 3 * 4);
  char* out = text.data() + at;
  platform::EncodeBase64Groups(bytes.data(), whole, out);
  if (rest.empty()) return;
  char last[3] = {};
  std::copy(rest.begin(), rest.end(), last);
  platform::EncodeBase64Groups(last, 1, out + 4 * whole);
  std::fill(text.end() - static_cast<std::ptrdiff_t>(3 - rest.size()), text.end(), '=');
}

void AppendEscaped(char c, char mark, std::string& text) {
  constexpr std::string_view kHexDigits = "0123456789ABCDEF";
  text += mark;
  text += kHexDigits[static_cast<unsigned char>(c) >> 4];
  text += kHexDigits[static_cast<unsigned char>(c) & 15];
}

}  // namespace tarnwick::intake
