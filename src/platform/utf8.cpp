// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/utf8.h"

#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <cassert>
#include <cstring>

namespace tarnwick::platform {

namespace {

bool BeginsChar(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) != 0x80;
}

}  // namespace

bool IsAscii(std::string_view text) {
  return SkipAscii(text, 0) == text.size();
}

bool IsValidUtf8(std::string_view text) {
  for (size_t position = 0; (position = SkipAscii(text, position)) < text.size();) {
    if (NextSequence(text, position) < 0) return false;
  }
  return true;
}

size_t SkipAscii(std::string_view text, size_t position) {
  while (text.size() - position >= 8) {
    uint64_t word;
    std::memcpy(&word, text.data() + position, 8);
    if ((word & 0x8080808080808080u) != 0) break;
    position += 8;
  }
  while (position < text.size() && static_cast<unsigned char>(text[position]) < 0x80) ++position;
  return position;
}

size_t CountChars(std::string_view text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), BeginsChar));
}

std::string_view FirstChars(std::string_view text, size_t count) {
  if (text.size() <= count) return text;
  if (SkipAscii(text.substr(0, count + 1), 0) > count) return text.substr(0, count);
  size_t position = 0;
  for (; position < text.size(); ++position) {
    if (!BeginsChar(text[position])) continue;
    if (count-- == 0) break;
  }
  return text.substr(0, position);
}

int32_t NextSequence(std::string_view text, size_t& position) {
  // The macro counts in 32 bits: show it no more than one character.
  const char* at = text.data() + position;
  auto length = static_cast<int32_t>(std::min<size_t>(text.size() - position, U8_MAX_LENGTH));
  int32_t used = 0;
  UChar32 character;
  U8_NEXT(at, used, length, character);
  position += static_cast<size_t>(used);
  return character;
}

int32_t NextChar(std::string_view text, size_t& position) {
  assert(position < text.size());
  size_t start = position;
  auto byte = static_cast<unsigned char>(text[start]);
  if (byte < 0x80) {
    position++;
    return byte;
  }
  int32_t character = NextSequence(text, position);
  if (character >= 0) return character;
  position = start + 1;
  return kNoChar + byte;
}

void AppendChar(std::string& text, int32_t character) {
  assert(U_IS_UNICODE_CHAR(character) || U_IS_UNICODE_NONCHAR(character));
  char buffer[U8_MAX_LENGTH];
  int32_t length = 0;
  U8_APPEND_UNSAFE(buffer, length, character);
  text.append(buffer, static_cast<size_t>(length));
}

int32_t FoldChar(int32_t character) {
  if (character < 0x80) return LowerLetter(static_cast<char>(character));
  return character < kNoChar ? u_foldCase(character, U_FOLD_CASE_DEFAULT) : character;
}

std::string FoldCase(std::string_view text) {
  std::string folded;
  folded.reserve(text.size() + 8);
  for (size_t position = 0; position < text.size();) {
    size_t start = position;
    int32_t character = NextChar(text, position);
    if (character < 0x80) {
      folded += LowerLetter(static_cast<char>(character));
    } else if (character < kNoChar) {
      AppendChar(folded, FoldChar(character));
    } else {
      folded += text[start];
    }
  }
  return folded;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  if (a == b) return true;
  // Folding may change a character's length in bytes, but never the number of characters.
  if (CountChars(a) != CountChars(b)) return false;
  return FoldCase(a) == FoldCase(b);
}

std::string AsciiLower(std::string_view text) {
  std::string lower(text);
  for (char& c : lower) c = LowerLetter(c);
  return lower;
}

std::string AsciiUpper(std::string_view text) {
  std::string upper(text);
  for (char& c : upper) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return upper;
}

bool SameWord(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return LowerLetter(x) == LowerLetter(y);
         });
}

}  // namespace tarnwick::platform
