// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::outlook {

// The type name that Outlook's objects bear for a message class such as "IPM.Note.SMIME".
std::string TypeNameOf(std::string_view messageClass);
// Whether it is one of these.
bool IsTypeName(std::string_view name);
inline constexpr const char* kMailType = "MailItem";
// Of a class that is not known.
inline constexpr const char* kUnknownType = "Object";

}  // namespace tarnwick::outlook
