// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The folders in which a person's mail may lie: the one that was chosen and those below it. Links
// are not followed, and nothing but folders is opened.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick::platform {

struct FolderSearch {
  std::vector<std::string> folders;    // with their separators, the chosen one first, nearest first
  std::vector<std::string> forbidden;  // those of them that may not be read
};

// A few levels of them, and no more folders than a person's profile has.
FolderSearch FindFolders(const std::string& folder);

// What lies in one folder: names, sorted by their bytes. Links, pipes, sockets and devices are left
// out.
struct FolderContent {
  std::vector<std::string> files;
  std::vector<std::string> folders;
};
// nullopt where it can't be listed.
std::optional<FolderContent> ListFolder(const std::string& folder);

// Every folder of a tree, however deep: one before those in it, in the order of their names, each
// once, also where a mount leads back into the tree.
class FolderWalk {
 public:
  explicit FolderWalk(const std::string& root);

  // Goes to the next folder; false behind the last.
  bool Next();
  const std::string& Path() const { return path_; }  // with its separator
  const FolderContent& Content() const { return content_; }
  // Leaves out what lies below the current folder.
  void SkipFolders() { content_.folders.clear(); }
  // Folders come to that could not be listed.
  const std::vector<std::string>& Forbidden() const { return forbidden_; }

 private:
  std::vector<std::string> pending_;  // the next one at the end
  std::set<std::pair<uint64_t, uint64_t>> visited_;
  std::string path_;
  FolderContent content_;
  std::vector<std::string> forbidden_;
};

}  // namespace tarnwick::platform
