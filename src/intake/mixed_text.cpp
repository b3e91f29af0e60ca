// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/mixed_text.h"

#include <algorithm>
#include <cstdint>

#include "core/text.h"
#include "platform/charset.h"

namespace tarnwick::intake {

namespace {

bool SameName(std::string_view a, std::string_view b) {
  return platform::AsciiLower(a) == platform::AsciiLower(b);
}

bool IsUtf8Name(std::string_view charset) {
  return SameName(charset, "utf-8") || SameName(charset, "utf8");
}

// True when bytes beyond ASCII occur and some of them form a UTF-8 character.
bool HoldsUtf8Character(std::string_view bytes) {
  for (size_t i = 0; i + 1 < bytes.size(); ++i) {
    auto lead = static_cast<unsigned char>(bytes[i]);
    size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC2 ? 2 : 0;
    if (length != 0 && platform::IsValidUtf8(bytes.substr(i, length))) return true;
  }
  return false;
}

// A text that calls itself UTF-8 and is not: a list's server has added a footer in another charset,
// or the mailer only says so. Line by line, the lines without a single UTF-8 character are read as
// undeclared.
std::string MendUtf8Lines(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + bytes.size() / 8);
  while (!bytes.empty()) {
    size_t end = bytes.find('\n');
    std::string_view line = bytes.substr(0, end == std::string_view::npos ? end : end + 1);
    bytes.remove_prefix(line.size());
    text += HoldsUtf8Character(line) ? *platform::CharsetToUtf8(line, "utf-8")
                                     : platform::EnsureUtf8(line);
  }
  return text;
}

std::string Convert(std::string_view bytes, std::string_view charset) {
  if (!ClaimsBytes(charset)) return platform::EnsureUtf8(bytes);
  if (IsUtf8Name(charset) && !platform::IsValidUtf8(bytes)) return MendUtf8Lines(bytes);
  auto text = platform::CharsetToUtf8(bytes, charset);
  return text ? *std::move(text) : platform::EnsureUtf8(bytes);
}

// How many characters beyond ASCII a valid UTF-8 text must hold to be none in a charset: in western
// ones it never makes sense, in other alphabets one pair may be a word of two letters ("Ні"). In
// Thai, and where characters have several bytes, it proves nothing.
size_t ProofOfUtf8(std::string_view charset) {
  std::string name = platform::AsciiLower(charset);
  for (std::string_view western : {"iso-8859-1", "iso-8859-15", "windows-1252"}) {
    if (name == western) return 1;
  }
  for (std::string_view family : {"iso-8859-", "windows-125", "cp125", "koi8-", "ibm866"}) {
    if (core::BeginsWith(name, family) && name != "iso-8859-11") return 2;
  }
  return SIZE_MAX;
}

// Mailers that write headers in UTF-8 without saying so declare the body's charset.
std::string ConvertUnclaimed(std::string_view bytes, std::string_view charset) {
  size_t proof = ProofOfUtf8(charset);
  if (proof != SIZE_MAX && platform::IsValidUtf8(bytes)) {
    auto leads = std::count_if(bytes.begin(), bytes.end(),
                               [](char c) { return static_cast<unsigned char>(c) >= 0xC0; });
    if (static_cast<size_t>(leads) >= proof) return std::string(bytes);
  }
  return Convert(bytes, charset);
}

}  // namespace

bool ClaimsBytes(std::string_view charset) {
  if (charset.empty() || !platform::IsKnownCharset(charset)) return false;
  for (std::string_view ascii : {"us-ascii", "ascii", "ansi_x3.4-1968"}) {
    if (SameName(charset, ascii)) return false;
  }
  return true;
}

void MixedText::Extend(std::string_view bytes, std::string_view charset) {
  if (bytes.empty()) return;
  bytes_ += bytes;
  if (spans_.empty() || !SameName(spans_.back().charset, charset)) {
    spans_.push_back({bytes_.size(), std::string(charset)});
  } else {
    spans_.back().end = bytes_.size();
  }
}

void MixedText::AppendRaw(std::string_view bytes) {
  Extend(bytes, {});
}

void MixedText::AppendIn(std::string_view bytes, std::string_view charset) {
  Extend(bytes, ClaimsBytes(charset) ? charset : std::string_view());
}

void MixedText::Append(const MixedText& other) {
  size_t start = 0;
  for (const Span& span : other.spans_) {
    Extend(std::string_view(other.bytes_).substr(start, span.end - start), span.charset);
    start = span.end;
  }
}

std::string MixedText::Finish(std::string_view charset) const {
  std::string text;
  size_t start = 0;
  for (const Span& span : spans_) {
    std::string_view bytes = std::string_view(bytes_).substr(start, span.end - start);
    std::string piece =
        span.charset.empty() ? ConvertUnclaimed(bytes, charset) : Convert(bytes, span.charset);
    if (spans_.size() == 1) return piece;
    text += piece;
    start = span.end;
  }
  return text;
}

}  // namespace tarnwick::intake
