// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/staged_file.h"

#include <utility>

#include "platform/files.h"

namespace tarnwick::platform {

StagedFile::StagedFile(std::string path) : path_(std::move(path)) {
  RemoveFile(path_);
}

StagedFile::~StagedFile() {
  // What went wrong before is the failure to tell of.
  if (!IsInPlace()) TryToRemove(path_);
}

void StagedFile::Replace(const std::string& place) {
  FlushToDisk(path_);
  RenameFile(path_, place);
  path_.clear();
  FlushToDisk(FolderOf(place));
}

bool StagedFile::TakeName(const std::string& place) {
  if (!RenameNew(path_, place)) return false;
  path_.clear();
  return true;
}

}  // namespace tarnwick::platform
