// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Files that stand inside a message's text, written out.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::intake {

// Writes the bytes to a new file in EmailFileFolder, named as the message calls it as far as that
// is safe, numbered where the name is taken. Gives the path; "" when there is no such folder or the
// file can't be written, which is logged.
std::string MakeAttachFile(const std::string& declaredName, std::string_view bytes);

}  // namespace tarnwick::intake
