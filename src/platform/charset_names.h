// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Names of charsets as mail writes them, turned into names that ICU opens. Internal to charset.cpp.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::platform {

// Lower case, without blanks, quotation marks, a language suffix ("utf-8*en") or anything that is
// no part of a name; "" when nothing is left or the name is too long to be one.
std::string NormalCharsetName(std::string_view name);

// ICU's converter for a normal name, which may be an old one that ICU does not know; widened where
// mail means more than it says (iso-8859-1 becomes windows-1252). "" for what is no charset's name.
std::string ConverterName(const std::string& normalName);

}  // namespace tarnwick::platform
