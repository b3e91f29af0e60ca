// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/text/fold.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace tarnwick::jet {

namespace {

constexpr int32_t kIllFormed = 0x110000;

// windows-1252 between 0x80 and 0x9F; the five bytes that it leaves undefined are control
// characters.
constexpr std::array<uint16_t, 32> kWindows1252 = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// The end of the ASCII run that begins at position.
size_t SkipAscii(std::string_view text, size_t position) {
  const char* data = text.data();
  size_t size = text.size();
  while (size - position >= 8) {
    uint64_t word;
    std::memcpy(&word, data + position, 8);
    if ((word & 0x8080808080808080u) != 0) break;
    position += 8;
  }
  while (position < size && static_cast<unsigned char>(data[position]) < 0x80) position++;
  return position;
}

void AppendChar(std::string& text, int32_t character) {
  char buffer[U8_MAX_LENGTH];
  int32_t length = 0;
  U8_APPEND_UNSAFE(buffer, length, character);
  text.append(buffer, static_cast<size_t>(length));
}

}  // namespace

bool IsWellFormed(std::string_view text) {
  size_t position = 0;
  while ((position = SkipAscii(text, position)) < text.size()) {
    if (NextChar(text, position) >= kIllFormed) return false;
  }
  return true;
}

std::string MendUtf8(std::string_view text) {
  std::string mended;
  mended.reserve(text.size() + text.size() / 4);
  for (size_t position = 0; position < text.size();) {
    size_t start = position;
    int32_t character = NextChar(text, position);
    if (character < kIllFormed) {
      mended.append(text, start, position - start);
    } else {
      auto byte = static_cast<unsigned char>(text[start]);
      AppendChar(mended, byte < 0xA0 ? kWindows1252[byte - 0x80u] : byte);
    }
  }
  return mended;
}

int32_t NextChar(std::string_view text, size_t& position) {
  auto byte = static_cast<unsigned char>(text[position]);
  if (byte < 0x80) {
    position++;
    return byte;
  }
  // No sequence is longer than four bytes, so the length always fits the macro's 32 bits.
  auto available = static_cast<int32_t>(std::min<size_t>(text.size() - position, 4));
  const char* start = text.data() + position;
  int32_t offset = 0;
  UChar32 character;
  U8_NEXT(start, offset, available, character);
  if (character < 0) {
    position++;
    return kIllFormed + byte;
  }
  position += static_cast<size_t>(offset);
  return character;
}

int32_t FoldChar(int32_t character) {
  if (character < 0x80) {
    return character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character;
  }
  return character < kIllFormed ? u_foldCase(character, U_FOLD_CASE_DEFAULT) : character;
}

std::string FoldText(std::string_view text) {
  std::string folded;
  folded.reserve(text.size() + 8);
  for (size_t position = 0; position < text.size();) {
    size_t start = position;
    int32_t character = NextChar(text, position);
    if (character >= kIllFormed) {
      folded += text[start];
    } else {
      AppendChar(folded, FoldChar(character));
    }
  }
  return folded;
}

size_t CountChars(std::string_view text) {
  size_t count = 0;
  for (char byte : text) count += (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
  return count;
}

bool SameWord(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); i++) {
    char x = a[i] >= 'A' && a[i] <= 'Z' ? static_cast<char>(a[i] + 32) : a[i];
    char y = b[i] >= 'A' && b[i] <= 'Z' ? static_cast<char>(b[i] + 32) : b[i];
    if (x != y) return false;
  }
  return true;
}

std::string LowerWord(std::string_view word) {
  std::string lower(word);
  for (char& c : lower) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + 32);
  }
  return lower;
}

}  // namespace tarnwick::jet
