// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/folder_search.h"

#include <algorithm>
#include <deque>
#include <utility>

#include "platform/charset.h"
#include "platform/files.h"
#include "platform/system_files.h"

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

std::optional<FolderContent> ListFolder(const std::string& folder) {
  FolderContent content;
  auto take = [&](const std::string& name, system::Kind kind) {
    if (kind == system::Kind::kFile) content.files.push_back(name);
    if (kind == system::Kind::kFolder) content.folders.push_back(name);
  };
  if (!system::ListEntries(folder, take)) return std::nullopt;
  std::sort(content.files.begin(), content.files.end());
  std::sort(content.folders.begin(), content.folders.end());
  return content;
}

FolderWalk::FolderWalk(const std::string& root) {
  pending_.push_back(WithSeparator(root));
}

bool FolderWalk::Next() {
  for (auto name = content_.folders.rbegin(); name != content_.folders.rend(); ++name) {
    pending_.push_back(path_ + WithSeparator(*name));
  }
  content_ = {};
  while (!pending_.empty()) {
    path_ = std::move(pending_.back());
    pending_.pop_back();
    auto identity = system::IdentityOf(path_);
    if (identity && !visited_.insert(*identity).second) continue;
    std::optional<FolderContent> content = ListFolder(path_);
    if (content) {
      content_ = std::move(*content);
      return true;
    }
    forbidden_.push_back(path_);
  }
  return false;
}

}  // namespace tarnwick::platform
