// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The folders in which a person's mail may lie: the one that was chosen and those below it. The
// search is bounded in depth and in the number of folders; links are not followed.
#pragma once

#include <string>
#include <vector>

namespace tarnwick::platform {

struct FolderSearch {
  std::vector<std::string> folders;    // with their separators, the chosen one first, nearest first
  std::vector<std::string> forbidden;  // those of them that may not be read
};

FolderSearch FindFolders(const std::string& folder);

}  // namespace tarnwick::platform
