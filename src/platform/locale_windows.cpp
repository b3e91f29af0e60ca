// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <windows.h>

#include <algorithm>

#include "platform/locale_names.h"
#include "platform/windows_text.h"

namespace tarnwick::platform {

std::string SystemLocaleName() {
  wchar_t name[LOCALE_NAME_MAX_LENGTH] = {};
  if (GetUserDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH) == 0) return "C";
  std::string locale = Utf8(name);
  // "de-DE_phoneb" names an order as well.
  locale.resize(std::min(locale.size(), locale.find('_')));
  std::replace(locale.begin(), locale.end(), '-', '_');
  return locale.empty() ? "C" : locale;
}

}  // namespace tarnwick::platform
