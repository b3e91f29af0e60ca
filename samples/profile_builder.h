// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Writes an old Windows profile: an NTUSER.DAT that knows the identities and, for each, a store
// with its folder list and message files.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "samples/dbx_builder.h"
#include "samples/hive_builder.h"

namespace tarnwick::samples {

// A folder of a store; without a file of its own when bytes is empty.
struct StoredFolder {
  ListedFolder listed;
  std::string bytes;
};

class ProfileBuilder {
 public:
  // folder ends with the separator and is made when it is missing.
  explicit ProfileBuilder(std::string folder);

  const std::string& Folder() const { return folder_; }
  HiveBuilder& Hive() { return hive_; }

  // Adds an identity whose "Store Root" is %UserProfile% and so on; gives its store folder.
  std::string AddIdentity(const std::string& userName);
  // Writes folder list and message files; an empty list name leaves the list out.
  static void WriteStore(const std::string& storeFolder, const std::vector<StoredFolder>& folders,
                         const std::string& listName = "Folders.dbx");
  void WriteHive() const;

 private:
  std::string folder_;
  HiveBuilder hive_;
  int identities_ = 0;
};

// The folders that every list begins with: "Local Folders" (1) with "Inbox" (2, Inbox.dbx) and
// "Sent Items" (3, Sent Items.dbx) of these bytes below it.
std::vector<StoredFolder> StandardFolders(const std::string& inbox, const std::string& sentItems);

}  // namespace tarnwick::samples
