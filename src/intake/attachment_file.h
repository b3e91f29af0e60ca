// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Files that a message carries inside its text.
#pragma once

#include <string>
#include <string_view>

namespace tarnwick::intake {

// Writes the bytes to a file of EmailFileFolder, under the name made safe and unique, whatever the
// message calls it; "attachment" where nothing of the name is left. Gives the path. Throws Error.
std::string MakeAttachFile(std::string_view name, std::string_view bytes);

// Removes the files that MakeAttachFile wrote since the last call. The raw message holds their
// bytes; a load of many would fill the disk with copies.
void RemoveAttachFiles();

}  // namespace tarnwick::intake
