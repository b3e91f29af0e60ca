// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Where the last dialog for files or folders ended: the next one begins there, also after a
// restart.
#pragma once

#include <string>

namespace tarnwick::repository {

// With its separator; "" before the first one, and when the folder has gone.
std::string LastFolder();
// path: what was chosen there, a file or, ending with its separator, a folder.
void RememberFolderOf(const std::string& path);

}  // namespace tarnwick::repository
