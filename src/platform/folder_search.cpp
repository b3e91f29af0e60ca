// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/folder_search.h"

#include <deque>
#include <utility>

#include "platform/charset.h"
#include "platform/files.h"

namespace tarnwick::platform {

namespace {

// "Local Settings\Application Data\Identities\{...}\Microsoft\Outlook Express" is six deep, and
// "copies\2009\C\Documents and Settings\Ann" may stand before it.
constexpr int kMaxDepth = 12;
constexpr size_t kMaxFolders = 20'000;

// Where Windows keeps what is no person's, thousands of folders: searched last.
bool IsOfPrograms(const std::string& name) {
  std::string lower = AsciiLower(name);
  return lower.starts_with("system") || lower.starts_with("program files") || lower == "winsxs" ||
         lower == "inf" || lower == "help" || lower == "assembly" || lower == "installer";
}

}  // namespace

FolderSearch FindFolders(const std::string& folder) {
  FolderSearch search;
  std::deque<std::pair<std::string, int>> pending = {{WithSeparator(folder), 0}};
  std::deque<std::pair<std::string, int>> ofPrograms;
  while (search.folders.size() < kMaxFolders) {
    if (pending.empty()) pending.swap(ofPrograms);
    if (pending.empty()) break;
    auto [path, depth] = std::move(pending.front());
    pending.pop_front();
    if (!MayRead(path)) search.forbidden.push_back(path);
    if (depth < kMaxDepth) {
      for (const std::string& name : ListFolders(path)) {
        auto& queue = IsOfPrograms(name) ? ofPrograms : pending;
        queue.emplace_back(WithSeparator(path + name), depth + 1);
      }
    }
    search.folders.push_back(std::move(path));
  }
  return search;
}

}  // namespace tarnwick::platform
