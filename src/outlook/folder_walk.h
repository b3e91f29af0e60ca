// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The folders of a store, all of them, each with its place.
#pragma once

#include <memory>
#include <vector>

#include "outlook/message_of_letter.h"
#include "outlook/object_model.h"

namespace tarnwick::outlook {

struct WalkedFolder {
  std::unique_ptr<Folder> folder;
  FolderPlace place;
  bool isMailFolder = true;
  int64_t items = 0;
};

// In the order of the tree, a folder before those in it. A folder that can't be read is logged and
// left out with what lies below it; one that is met again (a tree that leads back to itself) is
// entered once.
std::vector<WalkedFolder> olWalkFolders(Store& store);

}  // namespace tarnwick::outlook
