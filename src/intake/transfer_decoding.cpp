// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/transfer_decoding.h"

#include <algorithm>
#include <cstddef>

#include "platform/base64.h"
#include "platform/charset.h"

namespace tarnwick::intake {

namespace {

// Decodes the whole fours of text and gives what is left over. Foreign characters count as zeros.
std::string_view DecodeFours(std::string_view text, std::string& out) {
  size_t groups = text.size() / 4;
  size_t at = out.size();
  out.resize(at + 3 * groups);
  platform::DecodeBase64Groups(text.data(), groups, out.data() + at);
  return text.substr(4 * groups);
}

void DecodeRest(std::string_view rest, std::string& out) {
  if (rest.empty()) return;
  char four[4] = {};
  char three[3];
  std::copy(rest.begin(), rest.end(), four);
  platform::DecodeBase64Groups(four, 1, three);
  out.append(three, rest.size() == 3 ? 2 : 1);
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

void DecodeEscapes(std::string_view text, bool underscoreIsBlank, std::string& out) {
  out.reserve(out.size() + text.size());
  for (size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (c == '_' && underscoreIsBlank) {
      out += ' ';
    } else if (c == '=' && i + 2 < text.size() && HexValue(text[i + 1]) >= 0 &&
               HexValue(text[i + 2]) >= 0) {
      out += static_cast<char>(HexValue(text[i + 1]) * 16 + HexValue(text[i + 2]));
      i += 2;
    } else {
      out += c;
    }
  }
}

std::string_view TrimEnd(std::string_view line) {
  while (!line.empty() && (line.back() == ' ' || line.back() == '\t' || line.back() == '\r')) {
    line.remove_suffix(1);
  }
  return line;
}

void DecodeQuotedLine(std::string_view line, std::string_view end, std::string& bytes) {
  line = TrimEnd(line);
  bool isSoft = !line.empty() && line.back() == '=';
  if (isSoft) line.remove_suffix(1);
  DecodeEscapes(line, false, bytes);
  if (!isSoft) bytes += end;
}

// A line of plain words has blanks between them; a damaged line of base64 has few strange
// characters.
bool LooksLikeBase64(std::string_view line) {
  size_t strange = 0;
  for (char c : line) {
    if (c == ' ') return false;
    if (c != '=' && !platform::IsBase64(c)) ++strange;
  }
  return strange * 4 <= line.size();
}

}  // namespace

std::string DecodeBase64(std::string_view text) {
  std::string clean(text);
  std::erase(clean, '=');
  if (clean.size() >= 2 && clean.compare(clean.size() - 2, 2, "\r\n") == 0) {
    clean.resize(clean.size() - 2);
  }
  std::string out;
  out.reserve(clean.size() / 4 * 3 + 2);
  DecodeRest(DecodeFours(clean, out), out);
  return out;
}

std::string DecodeQ(std::string_view text) {
  std::string out;
  DecodeEscapes(text, true, out);
  return out;
}

std::string DecodeByLetter(std::string_view text, char letter) {
  if (letter == 'B' || letter == 'b') return DecodeBase64(text);
  if (letter == 'Q' || letter == 'q') return DecodeQ(text);
  return std::string(text);
}

TransferKind TransferKindOf(std::string_view encoding) {
  if (encoding.empty()) return TransferKind::kPlain;
  char letter = encoding.front();
  // "binary" shares its letter with base64 and means that nothing is encoded.
  bool isBinary = platform::AsciiLower(encoding.substr(0, 3)) == "bin";
  if ((letter == 'b' || letter == 'B') && !isBinary) return TransferKind::kBase64;
  return letter == 'q' || letter == 'Q' ? TransferKind::kQuotedPrintable : TransferKind::kPlain;
}

bool IsBase64(std::string_view line) {
  line = TrimEnd(line);
  return std::all_of(line.begin(), line.end(),
                     [](char c) { return c == '=' || platform::IsBase64(c); });
}

BodyDecoder::BodyDecoder(std::string_view encoding) : kind_(TransferKindOf(encoding)) {}

void BodyDecoder::Line(std::string_view line) {
  switch (kind_) {
    case TransferKind::kPlain:
      bytes_ += line;
      bytes_ += "\r\n";
      break;
    case TransferKind::kBase64:
      Base64Line(line);
      break;
    case TransferKind::kQuotedPrintable:
      QuotedLine(line);
      break;
  }
}

void BodyDecoder::FlushBase64() {
  DecodeRest(carry_, bytes_);
  carry_.clear();
}

void BodyDecoder::Base64Line(std::string_view line) {
  line = TrimEnd(line);
  while (!line.empty() && line.front() == ' ') line.remove_prefix(1);
  if (!LooksLikeBase64(line)) {
    FlushBase64();
    if (!bytes_.empty() && bytes_.back() != '\n') bytes_ += "\r\n";
    bytes_ += line;
    bytes_ += "\r\n";
    return;
  }
  bool isPadded = line.find('=') != std::string_view::npos;
  if (!isPadded && carry_.empty()) {
    carry_ = DecodeFours(line, bytes_);
    return;
  }
  std::string clean = carry_ + std::string(line);
  std::erase(clean, '=');
  carry_ = DecodeFours(clean, bytes_);
  if (isPadded) FlushBase64();
}

void BodyDecoder::QuotedLine(std::string_view line) {
  DecodeQuotedLine(line, "\r\n", bytes_);
}

std::string BodyDecoder::Take() {
  FlushBase64();
  return std::move(bytes_);
}

namespace {

// A file in base64, line by line.
class Base64File {
 public:
  void Line(std::string_view line) {
    line = TrimEnd(line);
    while (!line.empty() && (line.front() == ' ' || line.front() == '\t')) line.remove_prefix(1);
    digits_.clear();
    size_t padding = 0;
    size_t blanks = 0;
    size_t strange = 0;
    for (char c : line) {
      if (c == ' ' || c == '\t') {
        ++blanks;
      } else if (c == '=') {
        ++padding;
      } else if (!platform::IsBase64(c)) {
        ++strange;
      } else {
        // What stands behind the padding of a line is not looked at.
        if (padding == 0) digits_ += c;
      }
    }
    bool isWhole = strange == 0 && (digits_.size() + padding) % 4 == 0;
    // Words have blanks between them.
    if ((blanks > 0 || ended_) && !isWhole) return;
    if (blanks > 0 && ended_) return;
    if (strange * 4 > line.size()) return;
    ended_ = false;
    if (carry_.empty()) {
      carry_ = DecodeFours(digits_, bytes_);
    } else {
      carry_ += digits_;
      std::string rest(DecodeFours(carry_, bytes_));
      carry_ = std::move(rest);
    }
    if (padding > 0) End();
  }

  std::string Take() {
    End();
    return std::move(bytes_);
  }

 private:
  void End() {
    // A single character holds no whole byte.
    if (carry_.size() > 1) DecodeRest(carry_, bytes_);
    carry_.clear();
    ended_ = true;
  }

  std::string bytes_;
  std::string digits_;
  std::string carry_;
  bool ended_ = false;
};

}  // namespace

std::string DecodeFile(std::string_view encoded, std::string_view encoding) {
  TransferKind kind = TransferKindOf(encoding);
  if (kind == TransferKind::kPlain) return std::string(encoded);
  Base64File file;
  std::string bytes;
  bytes.reserve(kind == TransferKind::kQuotedPrintable ? encoded.size() : 0);
  while (!encoded.empty()) {
    size_t end = std::min(encoded.find('\n'), encoded.size());
    size_t next = std::min(end + 1, encoded.size());
    bool hasReturn = end > 0 && end < encoded.size() && encoded[end - 1] == '\r';
    if (hasReturn) --end;
    if (kind == TransferKind::kBase64) {
      file.Line(encoded.substr(0, end));
    } else {
      DecodeQuotedLine(encoded.substr(0, end), encoded.substr(end, next - end), bytes);
    }
    encoded.remove_prefix(next);
  }
  return kind == TransferKind::kBase64 ? file.Take() : bytes;
}

}  // namespace tarnwick::intake
