// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/charset_names.h"

#include <unicode/ucnv.h>

namespace tarnwick::platform {

namespace {

constexpr size_t kLongestName = 60;

struct Name {
  std::string_view name;
  const char* meant;
};

// What old mail writes and ICU does not know.
constexpr Name kOldNames[] = {
    {"ansi", "windows-1252"},
    {"big5-eten", "big5"},
    {"chinesebig5", "big5"},
    {"cn-big5", "big5"},
    {"cn-gb", "gb2312"},
    {"dos-850", "ibm-850"},
    {"dos-866", "ibm-866"},
    {"koi8-ru", "koi8-u"},
    {"visual", "iso-8859-8"},
    {"x-ansi", "windows-1252"},
    {"x-euc", "euc-jp"},
    {"x-mac-chinesesimp", "gb2312"},
    {"x-mac-chinesetrad", "big5"},
    {"x-mac-japanese", "shift_jis"},
    {"x-mac-korean", "windows-949"},
    {"x-mac-thai", "tis-620"},
    {"x-mac-ukrainian", "x-mac-cyrillic"},
};

// What mail calls by the one name and means by the other, which holds more.
constexpr Name kWidened[] = {
    {"us-ascii", "windows-1252"},
    {"iso-8859-1", "windows-1252"},
    {"iso-8859-9", "windows-1254"},
    {"iso-8859-11", "windows-874-2000"},
    {"gb2312", "gb18030"},
    {"gb2312-80", "gb18030"},
    {"gbk", "gb18030"},
    {"cp949", "windows-949-2000"},
    {"euc-kr", "windows-949-2000"},
    {"cp950", "windows-950-2000"},
};

// ICU's own name for the converter of any of its aliases, with an "x-" before it or not; "" where
// it knows none.
std::string IcuName(std::string_view name) {
  UErrorCode status = U_ZERO_ERROR;
  const char* found = ucnv_getAlias(std::string(name).c_str(), 0, &status);
  if (U_SUCCESS(status) && found != nullptr) return found;
  return name.substr(0, 2) == "x-" ? IcuName(name.substr(2)) : "";
}

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
  std::string name = normalName;
  for (const Name& old : kOldNames) {
    if (old.name == name) name = old.meant;
  }
  if (std::string page = WindowsPage(name); !page.empty()) name = page;
  name = IcuName(name);
  for (const Name& widened : kWidened) {
    if (!name.empty() && name == IcuName(widened.name)) return widened.meant;
  }
  return name;
}

}  // namespace tarnwick::platform
