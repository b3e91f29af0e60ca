// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a file's kind says about it. ASCII case makes no difference.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::takeout {

// True for a name that some desktop would run when it is opened: programs, scripts, links to them,
// installers. The last extension decides, as it does there: "photo.jpg.exe" is a program.
bool IsProgramName(std::string_view name);

// What a person is told who has saved such a file.
std::string ProgramWarning(std::string_view name);

// The extension, with its dot, for a media type ("image/jpeg"); ".bin" for one that has none.
std::string_view ExtensionOf(std::string_view mediaType);

}  // namespace tarnwick::takeout
