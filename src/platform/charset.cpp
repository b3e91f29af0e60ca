// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/charset.h"

#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/ucnv_cb.h>
#include <unicode/utf8.h>

#include <algorithm>
#include <map>
#include <memory>

#include "platform/locale.h"

namespace tarnwick::platform {

namespace {

struct CloseConverter {
  void operator()(UConverter* converter) const { ucnv_close(converter); }
};
using Converter = std::unique_ptr<UConverter, CloseConverter>;

// Names of old mail programs that ICU does not know, and the widenings: what is declared as the
// narrow set is in practice written by a Windows with the wide one.
struct Alias {
  std::string_view name;
  const char* icuName;
};
constexpr Alias kAliases[] = {
    {"us-ascii", "windows-1252"},
    {"ascii", "windows-1252"},
    {"ansi_x3.4-1968", "windows-1252"},
    {"iso-8859-1", "windows-1252"},
    {"iso8859-1", "windows-1252"},
    {"iso_8859-1", "windows-1252"},
    {"iso88591", "windows-1252"},
    {"8859-1", "windows-1252"},
    {"latin1", "windows-1252"},
    {"latin-1", "windows-1252"},
    {"l1", "windows-1252"},
    {"x-ansi", "windows-1252"},
    {"ansi", "windows-1252"},
    {"win-1252", "windows-1252"},
    {"iso-8859-9", "windows-1254"},
    {"latin5", "windows-1254"},
    {"iso-8859-11", "windows-874"},
    {"tis-620", "windows-874"},
    {"tis620", "windows-874"},
    {"iso-8859-8-i", "windows-1255"},
    {"iso-8859-8-e", "windows-1255"},
    {"iso-8859-8", "windows-1255"},
    {"visual", "windows-1255"},
    {"logical", "windows-1255"},
    {"win-1250", "windows-1250"},
    {"win-1251", "windows-1251"},
    {"win1251", "windows-1251"},
    {"win", "windows-1251"},
    {"cp-1251", "windows-1251"},
    {"x-cp1250", "windows-1250"},
    {"x-cp1251", "windows-1251"},
    {"koi8r", "koi8-r"},
    {"koi-8-r", "koi8-r"},
    {"koi8", "koi8-r"},
    {"koi8-ru", "koi8-u"},
    {"cp-866", "ibm-866"},
    {"cp-850", "ibm-850"},
    {"cp-437", "ibm-437"},
    {"x-mac-cyrillic", "x-mac-cyrillic"},
    {"x-mac-ce", "x-mac-centraleurroman"},
    {"mac", "macintosh"},
    {"x-mac-roman", "macintosh"},
    {"shift_jis", "cp932"},
    {"shift-jis", "cp932"},
    {"sjis", "cp932"},
    {"x-sjis", "cp932"},
    {"ms_kanji", "cp932"},
    {"windows-31j", "cp932"},
    {"x-euc-jp", "euc-jp"},
    {"x-jis", "iso-2022-jp"},
    {"jis", "iso-2022-jp"},
    {"gb2312", "gb18030"},
    {"gb_2312-80", "gb18030"},
    {"x-gb2312", "gb18030"},
    {"chinesesimplified", "gb18030"},
    {"gbk", "gb18030"},
    {"x-gbk", "gb18030"},
    {"cp936", "gb18030"},
    {"euc-cn", "gb18030"},
    {"x-euc-tw", "euc-tw"},
    {"x-big5", "big5"},
    {"chinesebig5", "big5"},
    {"ks_c_5601-1987", "cp949"},
    {"ks_c_5601", "cp949"},
    {"ksc5601", "cp949"},
    {"ksc_5601", "cp949"},
    {"korean", "cp949"},
    {"euc-kr", "cp949"},
    {"x-windows-949", "cp949"},
    {"unicode-1-1-utf-7", "utf-7"},
    {"unicode-1-1-utf-8", "utf-8"},
    {"unicode-2-0-utf-8", "utf-8"},
    {"utf8", "utf-8"},
    {"x-unicode-2-0-utf-7", "utf-7"},
    {"utf7", "utf-7"},
};

// Lower case, without blanks and quotation marks around it, without a RFC 2231 language behind it.
std::string CleanName(std::string_view name) {
  constexpr std::string_view kAround = " \t\r\n\"';";
  size_t begin = name.find_first_not_of(kAround);
  if (begin == std::string_view::npos) return {};
  size_t end = name.find_last_not_of(kAround);
  name = name.substr(begin, end - begin + 1);
  return AsciiLower(name.substr(0, name.find('*')));
}

// A byte that a one-byte charset leaves undefined is the control character of its value; anything
// else that can't be read is U+FFFD.
void U_CALLCONV KeepUndefinedByte(const void* /*context*/, UConverterToUnicodeArgs* arguments,
                                  const char* units, int32_t length,
                                  UConverterCallbackReason reason, UErrorCode* status) {
  if (reason > UCNV_IRREGULAR) return;
  *status = U_ZERO_ERROR;
  auto byte = static_cast<unsigned char>(units[0]);
  UChar character = length == 1 && ucnv_getMaxCharSize(arguments->converter) == 1 ? byte : 0xFFFD;
  ucnv_cbToUWriteUChars(arguments, &character, 1, 0, status);
}

Converter OpenConverter(const std::string& cleanName) {
  const auto* alias =
      std::find_if(std::begin(kAliases), std::end(kAliases),
                   [&](const Alias& candidate) { return candidate.name == cleanName; });
  UErrorCode status = U_ZERO_ERROR;
  const char* icuName = alias == std::end(kAliases) ? cleanName.c_str() : alias->icuName;
  Converter converter(ucnv_open(icuName, &status));
  if (U_FAILURE(status)) return nullptr;
  ucnv_setToUCallBack(converter.get(), KeepUndefinedByte, nullptr, nullptr, nullptr, &status);
  return converter;
}

// nullptr for a name that is none. Kept open: opening one costs more than a message's conversion.
UConverter* FindConverter(std::string_view name) {
  // Names come from messages: a hostile run of new ones must not fill the memory.
  constexpr size_t kMostKept = 64;
  constexpr size_t kLongestName = 60;
  thread_local std::map<std::string, Converter, std::less<>> kept;
  auto known = kept.find(name);
  if (known != kept.end()) return known->second.get();
  std::string clean = CleanName(name);
  if (clean.empty() || clean.size() > kLongestName) return nullptr;
  if (kept.size() >= kMostKept) kept.clear();
  return kept.emplace(std::string(name), OpenConverter(clean)).first->second.get();
}

std::string Convert(UConverter* converter, std::string_view bytes) {
  ucnv_resetToUnicode(converter);
  std::string result;
  result.reserve(bytes.size() + bytes.size() / 4);
  UChar units[2048];
  const char* source = bytes.data();
  const char* end = source + bytes.size();
  UErrorCode status = U_ZERO_ERROR;
  do {
    status = U_ZERO_ERROR;
    UChar* target = units;
    ucnv_toUnicode(converter, &target, units + std::size(units), &source, end, nullptr, 1, &status);
    for (const UChar* unit = units; unit < target;) {
      // A surrogate pair may be cut by the buffer's end; ICU writes pairs whole or not at all.
      UChar32 character = *unit++;
      if (U16_IS_LEAD(character) && unit < target && U16_IS_TRAIL(*unit)) {
        character = U16_GET_SUPPLEMENTARY(character, *unit);
        ++unit;
      } else if (U16_IS_SURROGATE(character)) {
        character = 0xFFFD;
      }
      char encoded[4];
      int32_t length = 0;
      U8_APPEND_UNSAFE(encoded, length, character);
      result.append(encoded, static_cast<size_t>(length));
    }
  } while (status == U_BUFFER_OVERFLOW_ERROR);
  return result;
}

// Charsets in which bytes below 0x80 may mean other characters than ASCII.
bool MayHideInAscii(UConverter* converter) {
  switch (ucnv_getType(converter)) {
    case UCNV_SBCS:
    case UCNV_DBCS:
    case UCNV_MBCS:
    case UCNV_LATIN_1:
    case UCNV_US_ASCII:
    case UCNV_UTF8:
      return false;
    default:
      return true;
  }
}

UChar32 FoldPoint(UChar32 character) {
  if (character < 0x80) {
    return character >= 'A' && character <= 'Z' ? character + ('a' - 'A') : character;
  }
  return u_foldCase(character, U_FOLD_CASE_DEFAULT);
}

// The code point at position, which moves behind it.
UChar32 NextPoint(std::string_view text, size_t& position) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  auto length = text.size();
  UChar32 character = 0;
  U8_NEXT_OR_FFFD(bytes, position, length, character);
  return character;
}

}  // namespace

bool IsKnownCharset(std::string_view name) {
  return FindConverter(name) != nullptr;
}

std::optional<std::string> CharsetToUtf8(std::string_view bytes, std::string_view charset) {
  UConverter* converter = FindConverter(charset);
  if (converter == nullptr) return std::nullopt;
  if (IsAscii(bytes) && !MayHideInAscii(converter)) return std::string(bytes);
  return Convert(converter, bytes);
}

std::string BytesToUtf8(std::string_view bytes, std::string_view charset) {
  if (auto text = CharsetToUtf8(bytes, charset)) return *text;
  if (IsAscii(bytes)) return std::string(bytes);
  return CharsetToUtf8(bytes, SystemCodePage()).value_or(std::string(bytes));
}

bool IsAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool IsValidUtf8(std::string_view text) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(text.data());
  for (size_t position = 0; position < text.size();) {
    if (bytes[position] < 0x80) {
      ++position;
      continue;
    }
    UChar32 character = 0;
    U8_NEXT(bytes, position, text.size(), character);
    if (character < 0) return false;
  }
  return true;
}

std::string EnsureUtf8(std::string_view text) {
  return IsValidUtf8(text) ? std::string(text) : BytesToUtf8(text, {});
}

size_t CountChars(std::string_view text) {
  return static_cast<size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

std::string_view FirstChars(std::string_view text, size_t count) {
  if (text.size() <= count) return text;
  size_t position = 0;
  for (; position < text.size(); ++position) {
    bool begins = (static_cast<unsigned char>(text[position]) & 0xC0) != 0x80;
    if (begins && count-- == 0) break;
  }
  return text.substr(0, position);
}

std::string FoldCase(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (size_t position = 0; position < text.size();) {
    UChar32 character = FoldPoint(NextPoint(text, position));
    char encoded[4];
    int32_t length = 0;
    U8_APPEND_UNSAFE(encoded, length, character);
    result.append(encoded, static_cast<size_t>(length));
  }
  return result;
}

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  size_t i = 0;
  size_t j = 0;
  while (i < a.size() && j < b.size()) {
    if (FoldPoint(NextPoint(a, i)) != FoldPoint(NextPoint(b, j))) return false;
  }
  return i == a.size() && j == b.size();
}

std::string AsciiLower(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  }
  return result;
}

std::string AsciiUpper(std::string_view text) {
  std::string result(text);
  for (char& c : result) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  return result;
}

std::string Utf16ToUtf8(std::string_view bytes) {
  size_t end = 0;
  while (end + 1 < bytes.size() && (bytes[end] != '\0' || bytes[end + 1] != '\0')) end += 2;
  return CharsetToUtf8(bytes.substr(0, end), "utf-16le").value_or(std::string());
}

}  // namespace tarnwick::platform
