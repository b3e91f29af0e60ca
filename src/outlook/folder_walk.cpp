// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/folder_walk.h"

#include <set>

#include "core/guard.h"
#include "core/messages.h"
#include "core/text.h"
#include "platform/charset.h"
#include "platform/error.h"

namespace tarnwick::outlook {

namespace {

// A path is stored with every message; a tree thousands of folders deep gets the end of its paths.
constexpr size_t kMaxPathChars = 1000;
constexpr std::string_view kSentItems = "Sent Items";
constexpr std::string_view kInbox = "Inbox";

struct Waiting {
  std::unique_ptr<Folder> folder;
  FolderPlace place;
};

std::string Joined(const std::string& path, const std::string& name) {
  std::string joined = path + "\\" + name;
  size_t chars = platform::CountChars(joined);
  if (chars <= kMaxPathChars) return joined;
  std::string_view dropped = platform::FirstChars(joined, chars - kMaxPathChars);
  return joined.substr(dropped.size());
}

FolderPlace PlaceBelow(const FolderPlace& above, Folder& folder) {
  FolderPlace place;
  place.name = folder.Name();
  place.parentPath = above.parentPath;
  FolderRole role = folder.Role();
  bool isSent = role == FolderRole::kSentItems || role == FolderRole::kOutbox;
  place.inSentItems = above.inSentItems || isSent || place.name == kSentItems;
  place.inInbox = above.inInbox || role == FolderRole::kInbox || place.name == kInbox;
  return place;
}

// The folders below one, last first, as a stack wants them.
void PushBelow(Folder& folder, const FolderPlace& place, std::vector<Waiting>& stack) {
  std::vector<std::unique_ptr<Folder>> below = folder.Folders();
  for (auto sub = below.rbegin(); sub != below.rend(); ++sub) {
    stack.push_back({std::move(*sub), place});
  }
}

}  // namespace

std::vector<WalkedFolder> olWalkFolders(Store& store) {
  std::vector<WalkedFolder> walked;
  std::vector<Waiting> stack;
  std::set<std::string> seen;
  FolderPlace top;
  top.parentPath = "\\\\" + store.DisplayName();
  std::unique_ptr<Folder> root = store.RootFolder();
  seen.insert(root->EntryID());
  PushBelow(*root, top, stack);
  // Mail may lie in the top itself, beside the folders.
  if (root->ItemCount() > 0) {
    FolderPlace place = top;
    place.name = root->Name();
    int64_t items = root->ItemCount();
    walked.push_back({std::move(root), place, true, items});
  }
  while (!stack.empty()) {
    Waiting next = std::move(stack.back());
    stack.pop_back();
    if (!seen.insert(next.folder->EntryID()).second) {
      core::WriteLog("Outlook folder met again and not entered twice, below " +
                     core::OneLogLine(next.place.parentPath));
      continue;
    }
    try {
      FolderPlace place = PlaceBelow(next.place, *next.folder);
      WalkedFolder entry{nullptr, place, next.folder->IsMailFolder(), next.folder->ItemCount()};
      FolderPlace below = place;
      below.parentPath = Joined(place.parentPath, place.name);
      PushBelow(*next.folder, below, stack);
      entry.folder = std::move(next.folder);
      walked.push_back(std::move(entry));
    } catch (...) {
      core::WriteLog(
          "Outlook folder skipped, below " +
          core::OneLogLine(next.place.parentPath + ": " + core::CurrentError().Description()));
    }
  }
  return walked;
}

}  // namespace tarnwick::outlook
