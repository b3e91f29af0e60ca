// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/file_place.h"

#include "platform/files.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::repository {

namespace {

constexpr const char* kGroup = "FileDialog";
constexpr const char* kFolder = "Folder";

}  // namespace

std::string LastFolder() {
  if (!ParameterDb().IsOpen()) return {};
  std::string folder = GetParameter(kGroup, kFolder, kTextColumn).AsText();
  return !folder.empty() && platform::FolderExists(folder) ? folder : std::string();
}

void RememberFolderOf(const std::string& path) {
  std::string folder = platform::FolderOf(path);
  if (!folder.empty() && ParameterDb().IsOpen()) {
    SetParameter(kGroup, kFolder, kTextColumn, folder);
  }
}

}  // namespace tarnwick::repository
