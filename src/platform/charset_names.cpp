// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/charset_names.h"

#include <algorithm>
#include <array>

namespace tarnwick::platform {

namespace {

constexpr size_t kLongestName = 60;

// Converters of ICU, by the names that are sure to mean the wide Microsoft variants.
constexpr const char* kWestern = "windows-1252";
constexpr const char* kJapanese = "ibm-943_P15A-2003";  // code page 932
constexpr const char* kKorean = "windows-949-2000";
constexpr const char* kChinese = "gb18030";
constexpr const char* kTaiwanese = "windows-950-2000";
constexpr const char* kThai = "windows-874-2000";

struct Alias {
  std::string_view name;
  const char* converter;
};

// Sorted by name. "" marks a name that says nothing.
constexpr std::array kAliases = {
    Alias{"8859-1", kWestern},
    Alias{"8bit", ""},
    Alias{"ansi", kWestern},
    Alias{"ansi_x3.4-1968", kWestern},
    Alias{"ascii", kWestern},
    Alias{"big5", kTaiwanese},
    Alias{"big5-eten", kTaiwanese},
    Alias{"binary", ""},
    Alias{"chinesebig5", kTaiwanese},
    Alias{"cn-big5", kTaiwanese},
    Alias{"cn-gb", kChinese},
    Alias{"cp-850", "ibm-850"},
    Alias{"cp-866", "ibm-866"},
    Alias{"cp932", kJapanese},
    Alias{"cp936", kChinese},
    Alias{"cp949", kKorean},
    Alias{"cp950", kTaiwanese},
    Alias{"cseuckr", kKorean},
    Alias{"csgb2312", kChinese},
    Alias{"csksc56011987", kKorean},
    Alias{"csshiftjis", kJapanese},
    Alias{"default", ""},
    Alias{"dos-850", "ibm-850"},
    Alias{"dos-866", "ibm-866"},
    Alias{"euc-cn", kChinese},
    Alias{"euc-kr", kKorean},
    Alias{"eucjp", "euc-jp"},
    Alias{"euckr", kKorean},
    Alias{"gb2312", kChinese},
    Alias{"gb2312-80", kChinese},
    Alias{"gb_2312-80", kChinese},
    Alias{"gbk", kChinese},
    Alias{"hz-gb-2312", "hz"},
    Alias{"iso-8859-1", kWestern},
    Alias{"iso-8859-11", kThai},
    Alias{"iso-8859-6-e", "iso-8859-6"},
    Alias{"iso-8859-6-i", "iso-8859-6"},
    Alias{"iso-8859-8-e", "iso-8859-8"},
    Alias{"iso-8859-8-i", "iso-8859-8"},
    Alias{"iso-8859-9", "windows-1254"},
    Alias{"iso-ir-100", kWestern},
    Alias{"iso8859-1", kWestern},
    Alias{"iso8859_1", kWestern},
    Alias{"iso_8859-1", kWestern},
    Alias{"koi8", "koi8-r"},
    Alias{"koi8-ru", "koi8-u"},
    Alias{"koi8_r", "koi8-r"},
    Alias{"koi8r", "koi8-r"},
    Alias{"koi8u", "koi8-u"},
    Alias{"korean", kKorean},
    Alias{"ks_c_5601", kKorean},
    Alias{"ks_c_5601-1987", kKorean},
    Alias{"ks_c_5601-1989", kKorean},
    Alias{"ksc5601", kKorean},
    Alias{"l1", kWestern},
    Alias{"latin-1", kWestern},
    Alias{"latin1", kWestern},
    Alias{"mac", "macintosh"},
    Alias{"ms932", kJapanese},
    Alias{"ms936", kChinese},
    Alias{"ms_kanji", kJapanese},
    Alias{"none", ""},
    Alias{"shift-jis", kJapanese},
    Alias{"shift_jis", kJapanese},
    Alias{"sjis", kJapanese},
    Alias{"tis-620", kThai},
    Alias{"tis620", kThai},
    Alias{"unicode", "utf-16"},
    Alias{"unicode-1-1-utf-7", "utf-7"},
    Alias{"unicode-1-1-utf-8", "utf-8"},
    Alias{"unicode-2-0-utf-7", "utf-7"},
    Alias{"unicode-2-0-utf-8", "utf-8"},
    Alias{"unknown", ""},
    Alias{"unknown-8bit", ""},
    Alias{"us-ascii", kWestern},
    Alias{"usascii", kWestern},
    Alias{"utf8", "utf-8"},
    Alias{"utf_8", "utf-8"},
    Alias{"visual", "iso-8859-8"},
    Alias{"windows-31j", kJapanese},
    Alias{"windows-874", kThai},
    Alias{"windows-932", kJapanese},
    Alias{"windows-936", kChinese},
    Alias{"windows-949", kKorean},
    Alias{"x-ansi", kWestern},
    Alias{"x-big5", kTaiwanese},
    Alias{"x-euc", "euc-jp"},
    Alias{"x-euc-jp", "euc-jp"},
    Alias{"x-euc-kr", kKorean},
    Alias{"x-gbk", kChinese},
    Alias{"x-mac-ce", "x-mac-centraleurroman"},
    Alias{"x-mac-chinesesimp", kChinese},
    Alias{"x-mac-chinesetrad", kTaiwanese},
    Alias{"x-mac-japanese", kJapanese},
    Alias{"x-mac-korean", kKorean},
    Alias{"x-mac-roman", "macintosh"},
    Alias{"x-mac-thai", kThai},
    Alias{"x-mac-ukrainian", "x-mac-cyrillic"},
    Alias{"x-ms-cp932", kJapanese},
    Alias{"x-sjis", kJapanese},
    Alias{"x-unicode-2-0-utf-7", "utf-7"},
    Alias{"x-unicode-2-0-utf-8", "utf-8"},
    Alias{"x-unknown", ""},
    Alias{"x-user-defined", ""},
    Alias{"x-utf-8", "utf-8"},
    Alias{"x-windows-949", kKorean},
    Alias{"x-x-big5", kTaiwanese},
};

constexpr bool LessByName(const Alias& a, const Alias& b) {
  return a.name < b.name;
}
static_assert(std::is_sorted(kAliases.begin(), kAliases.end(), LessByName));

bool IsNameChar(char c) {
  return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.' ||
         c == ':' || c == '+';
}

// "win-1251", "cp1251", "x-cp-1251", "windows1251", "1251": the last four digits name a Windows
// code page and what stands before them only says so.
std::string WindowsPage(std::string_view name) {
  constexpr std::string_view kFamilies[] = {"",     "win",   "cp",   "windows",
                                            "x-cp", "x-win", "ansi", "ms-cp"};
  if (name.size() < 4) return "";
  std::string_view page = name.substr(name.size() - 4);
  if (page < "1250" || page > "1258") return "";
  std::string_view family = name.substr(0, name.size() - 4);
  if (!family.empty() && (family.back() == '-' || family.back() == '_')) family.remove_suffix(1);
  for (std::string_view known : kFamilies) {
    if (family == known) return "windows-" + std::string(page);
  }
  return "";
}

}  // namespace

std::string NormalCharsetName(std::string_view name) {
  std::string normal;
  name = name.substr(0, name.find('*'));
  for (char c : name) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    if (c == ' ' || c == '\t' || c == '"' || c == '\'' || c == ';') continue;
    if (!IsNameChar(c) || normal.size() == kLongestName) return "";
    normal += c;
  }
  return normal;
}

std::string ConverterName(const std::string& normalName) {
  auto alias =
      std::lower_bound(kAliases.begin(), kAliases.end(), Alias{normalName, nullptr}, LessByName);
  if (alias != kAliases.end() && alias->name == normalName) return alias->converter;
  std::string page = WindowsPage(normalName);
  return page.empty() ? normalName : page;
}

}  // namespace tarnwick::platform
