// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/file_place.h"

#include "platform/environment.h"
#include "platform/files.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::repository {

namespace {

constexpr const char* kGroup = "FileDialog";
constexpr const char* kFolder = "Folder";

}  // namespace

std::string LastFolder() {
  std::string folder;
  if (ParameterDb().IsOpen()) folder = GetParameter(kGroup, kFolder, kTextColumn).AsText();
  if (!folder.empty() && platform::FolderExists(folder)) return folder;
  std::string home = platform::HomeFolder();
  return home.empty() ? home : platform::WithSeparator(home);
}

void RememberFolderOf(const std::string& path) {
  std::string folder = platform::FolderOf(path);
  if (!folder.empty() && ParameterDb().IsOpen()) {
    SetParameter(kGroup, kFolder, kTextColumn, folder);
  }
}

}  // namespace tarnwick::repository
