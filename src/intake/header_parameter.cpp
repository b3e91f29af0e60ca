// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/header_parameter.h"

#include <algorithm>

#include "core/text.h"
#include "intake/encoded_word.h"
#include "platform/charset.h"

namespace tarnwick::intake {

namespace {

// More parameters than any real header has; a hostile one is cut here.
constexpr size_t kMaxParameters = 200;

// The text up to the next ";" outside quotation marks, which is taken off with it.
std::string_view TakePiece(std::string_view& text) {
  bool quoted = false;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && quoted) {
      ++i;
    } else if (text[i] == '"') {
      quoted = !quoted;
    } else if (text[i] == ';' && !quoted) {
      std::string_view piece = text.substr(0, i);
      text.remove_prefix(i + 1);
      return piece;
    }
  }
  std::string_view piece = text;
  text = {};
  return piece;
}

std::string WithoutQuotes(const std::string& value) {
  if (value.empty() || value[0] != '"') return core::Unquote(value);
  std::string result;
  for (size_t i = 1; i < value.size() && value[i] != '"'; ++i) {
    // A backslash quotes a mark; before anything else it is one of a path that somebody sent.
    if (value[i] == '\\' && i + 1 < value.size() && (value[i + 1] == '"' || value[i + 1] == '\\')) {
      ++i;
    }
    result += value[i];
  }
  return result;
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

std::string DecodePercent(std::string_view text) {
  std::string bytes;
  for (size_t i = 0; i < text.size(); ++i) {
    int high = text[i] == '%' && i + 2 < text.size() ? HexValue(text[i + 1]) : -1;
    int low = high >= 0 ? HexValue(text[i + 2]) : -1;
    if (low >= 0) {
      bytes += static_cast<char>(high * 16 + low);
      i += 2;
    } else {
      bytes += text[i];
    }
  }
  return bytes;
}

// Takes "charset'language'" off the front; "" when it is not there.
std::string TakeCharset(std::string_view& value) {
  size_t first = value.find('\'');
  size_t second = first == std::string_view::npos ? first : value.find('\'', first + 1);
  if (second == std::string_view::npos) return {};
  std::string charset(value.substr(0, first));
  value.remove_prefix(second + 1);
  return charset;
}

}  // namespace

HeaderParameters::HeaderParameters(std::string_view text) {
  mainValue_ = platform::AsciiLower(core::CleanTrim(TakePiece(text)));
  while (!text.empty() && parameters_.size() < kMaxParameters) {
    std::string_view piece = TakePiece(text);
    size_t equals = piece.find('=');
    if (equals == std::string_view::npos) continue;
    Parameter parameter;
    parameter.name = platform::AsciiLower(core::CleanTrim(piece.substr(0, equals)));
    parameter.value = WithoutQuotes(core::CleanTrim(piece.substr(equals + 1)));
    parameters_.push_back(std::move(parameter));
  }
}

const HeaderParameters::Parameter* HeaderParameters::Find(const std::string& name) const {
  auto found = std::find_if(parameters_.begin(), parameters_.end(),
                            [&](const Parameter& parameter) { return parameter.name == name; });
  return found == parameters_.end() ? nullptr : &*found;
}

std::string HeaderParameters::Raw(std::string_view name) const {
  const Parameter* parameter = Find(std::string(name));
  return parameter == nullptr ? std::string() : parameter->value;
}

std::string HeaderParameters::Text(std::string_view name, std::string_view charset) const {
  std::string plain(name);
  if (const Parameter* whole = Find(plain + "*")) {
    std::string_view value = whole->value;
    std::string declared = TakeCharset(value);
    return platform::BytesToUtf8(DecodePercent(value), declared);
  }
  std::string bytes;
  std::string declared;
  for (size_t i = 0; i < kMaxParameters; ++i) {
    std::string numbered = plain + "*" + std::to_string(i);
    if (const Parameter* encoded = Find(numbered + "*")) {
      std::string_view value = encoded->value;
      if (i == 0) declared = TakeCharset(value);
      bytes += DecodePercent(value);
    } else if (const Parameter* part = Find(numbered)) {
      bytes += part->value;
    } else {
      break;
    }
  }
  if (!bytes.empty()) return platform::BytesToUtf8(bytes, declared.empty() ? charset : declared);
  const Parameter* parameter = Find(plain);
  return parameter == nullptr ? std::string() : Decode(parameter->value).Finish(charset);
}

}  // namespace tarnwick::intake
