// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/folder_search.h"

#include <deque>
#include <utility>

#include "platform/files.h"

namespace tarnwick::platform {

namespace {

// "Local Settings\Application Data\Identities\{...}\Microsoft\Outlook Express" is six deep.
constexpr int kMaxDepth = 8;
constexpr size_t kMaxFolders = 5000;

}  // namespace

FolderSearch FindFolders(const std::string& folder) {
  FolderSearch search;
  std::deque<std::pair<std::string, int>> pending = {{WithSeparator(folder), 0}};
  while (!pending.empty() && search.folders.size() < kMaxFolders) {
    auto [path, depth] = std::move(pending.front());
    pending.pop_front();
    if (!MayRead(path)) search.forbidden.push_back(path);
    if (depth < kMaxDepth) {
      for (const std::string& name : ListFolders(path)) {
        pending.emplace_back(WithSeparator(path + name), depth + 1);
      }
    }
    search.folders.push_back(std::move(path));
  }
  return search;
}

}  // namespace tarnwick::platform
