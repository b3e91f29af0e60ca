// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Where a Windows profile keeps Outlook's stores, and which of them Outlook calls its own.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::outlook {

// The .pst and .ost files of a profile folder, each once: those in the usual places of Outlook 97
// to 2010, then those that the profile's registry names, then whatever else lies in or below the
// folder. Nothing is opened. A profile that can't be read gives what its folders hold; folders that
// may not be read are logged.
std::vector<std::string> FindStores(const std::string& profileFolder);

// "Personal Folders", or what a later or a translated Outlook calls it.
bool IsDefaultStoreName(std::string_view displayName);

}  // namespace tarnwick::outlook
