// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/mapi_text.h"

#include <algorithm>

#include "platform/charset.h"

namespace tarnwick::outlook {

namespace {

struct NamedCodepage {
  int64_t codepage;
  const char* charset;
  int64_t ansi;
};

// Code pages that are not "windows-" and their number.
constexpr NamedCodepage kCodepages[] = {{932, "shift_jis", 932},      {936, "gb2312", 936},
                                        {949, "ks_c_5601-1987", 949}, {950, "big5", 950},
                                        {10000, "macintosh", 1252},   {20127, "us-ascii", 1252},
                                        {20866, "koi8-r", 1251},      {20932, "euc-jp", 932},
                                        {20936, "gb2312", 936},       {21866, "koi8-u", 1251},
                                        {28591, "iso-8859-1", 1252},  {28592, "iso-8859-2", 1250},
                                        {28593, "iso-8859-3", 1254},  {28594, "iso-8859-4", 1257},
                                        {28595, "iso-8859-5", 1251},  {28596, "iso-8859-6", 1256},
                                        {28597, "iso-8859-7", 1253},  {28598, "iso-8859-8", 1255},
                                        {28599, "iso-8859-9", 1254},  {28603, "iso-8859-13", 1257},
                                        {28605, "iso-8859-15", 1252}, {38598, "iso-8859-8-i", 1255},
                                        {50220, "iso-2022-jp", 932},  {50221, "iso-2022-jp", 932},
                                        {50222, "iso-2022-jp", 932},  {50225, "iso-2022-kr", 949},
                                        {51932, "euc-jp", 932},       {51936, "gb2312", 936},
                                        {51949, "euc-kr", 949},       {52936, "hz-gb-2312", 936},
                                        {54936, "gb18030", 936},      {65000, "utf-7", 0},
                                        {65001, "utf-8", 0}};

struct LanguageCodepage {
  int64_t language;  // the low ten bits of an LCID
  int64_t codepage;
};

constexpr LanguageCodepage kLanguages[] = {
    {0x01, 1256}, {0x02, 1251}, {0x05, 1250}, {0x06, 1252}, {0x07, 1252}, {0x08, 1253},
    {0x09, 1252}, {0x0A, 1252}, {0x0B, 1252}, {0x0C, 1252}, {0x0D, 1255}, {0x0E, 1250},
    {0x0F, 1252}, {0x10, 1252}, {0x11, 932},  {0x12, 949},  {0x13, 1252}, {0x14, 1252},
    {0x15, 1250}, {0x16, 1252}, {0x18, 1250}, {0x19, 1251}, {0x1B, 1250}, {0x1C, 1250},
    {0x1D, 1252}, {0x1E, 874},  {0x1F, 1254}, {0x20, 1256}, {0x21, 1252}, {0x22, 1251},
    {0x23, 1251}, {0x24, 1250}, {0x25, 1257}, {0x26, 1257}, {0x27, 1257}, {0x29, 1256},
    {0x2A, 1258}, {0x2D, 1252}, {0x2F, 1251}, {0x36, 1252}, {0x38, 1252}, {0x3E, 1252},
    {0x3F, 1251}, {0x40, 1251}};

// Languages whose code page depends on the country.
constexpr LanguageCodepage kCountries[] = {{0x0404, 950}, {0x0804, 936}, {0x0C04, 950},
                                           {0x1004, 936}, {0x1404, 950}, {0x0C1A, 1251},
                                           {0x1C1A, 1251}};

}  // namespace

std::string CharsetOfCodepage(int64_t codepage) {
  for (const NamedCodepage& known : kCodepages) {
    if (known.codepage == codepage) return known.charset;
  }
  if (codepage == 874 || (codepage >= 1250 && codepage <= 1258)) {
    return "windows-" + std::to_string(codepage);
  }
  if (codepage == 437 || codepage == 850 || codepage == 852 || codepage == 866) {
    return "cp" + std::to_string(codepage);
  }
  return {};
}

int64_t CodepageOfLocale(int64_t locale) {
  for (const LanguageCodepage& known : kCountries) {
    if (known.language == (locale & 0xFFFF)) return known.codepage;
  }
  for (const LanguageCodepage& known : kLanguages) {
    if (known.language == (locale & 0x3FF)) return known.codepage;
  }
  return 0;
}

int64_t AnsiCodepageOf(int64_t internetCodepage) {
  for (const NamedCodepage& known : kCodepages) {
    if (known.codepage == internetCodepage) return known.ansi;
  }
  return CharsetOfCodepage(internetCodepage).empty() ? 0 : internetCodepage;
}

std::string TextFromUtf16(std::string_view bytes) {
  std::string kept;
  kept.reserve(bytes.size());
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    if (bytes[i] != '\0' || bytes[i + 1] != '\0') kept.append(bytes.substr(i, 2));
  }
  return platform::Utf16ToUtf8(kept);
}

std::string TextFromBytes(std::string_view bytes, const std::string& charset) {
  std::string kept(bytes);
  kept.erase(std::remove(kept.begin(), kept.end(), '\0'), kept.end());
  return platform::BytesToUtf8(kept, charset);
}

}  // namespace tarnwick::outlook
