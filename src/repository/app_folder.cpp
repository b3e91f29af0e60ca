// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/app_folder.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "database/new_file.h"
#include "platform/environment.h"
#include "platform/error.h"
#include "platform/file_lock.h"
#include "platform/files.h"
#include "repository/schema.h"

namespace tarnwick::repository {

namespace {

// Beside a program that keeps its things there from the first start on.
constexpr const char* kPortableMark = "portable.txt";
// Stands in a home that is being made, so that one whose making was interrupted is made further.
constexpr const char* kUnfinishedMark = "unfinished.new";

std::string InstalledFile(const std::string& programFolder, const std::string& name) {
  for (const char* place : {"", "share/tarnwick/", "../share/tarnwick/"}) {
    std::string file = programFolder;
    file.append(place).append(name);
    if (platform::FileExists(file)) return file;
  }
  throw Error(ErrorNumber::kFileNotFound, "File not found: " + name);
}

bool HoldsNoDatabase(const std::string& folder) {
  return !platform::FileExists(folder + kTemplateFile) &&
         !platform::FileExists(folder + kParameterFile) &&
         !platform::FileExists(folder + kRepositoryFile);
}

}  // namespace

std::string ChooseAppFolder(const std::string& programFolder) {
  std::string home = platform::EnvironmentText("TARNWICK_HOME").value_or("");
  if (!home.empty()) return platform::WithSeparator(platform::AbsolutePath(home));
  std::string own = platform::WithSeparator(programFolder);
  bool isHome = std::ranges::any_of(
      std::initializer_list<const char*>{kPortableMark, kParameterFile, kRepositoryFile},
      [&](const char* name) { return platform::FileExists(own + name); });
  if (isHome && platform::IsFolderWritable(own)) return own;
  return platform::DataFolder() + "tarnwick" + platform::kSeparator;
}

// The repository itself is never copied from the program's folder into another: an empty one is
// made from the template, where the person's is missing.
void SeedAppFolder(const std::string& appFolder, const std::string& programFolder) {
  platform::MakeFolder(appFolder);
  bool isNew = platform::FileExists(appFolder + kUnfinishedMark);
  if (!isNew && HoldsNoDatabase(appFolder)) {
    platform::WriteFile(appFolder + kUnfinishedMark, "");
    isNew = true;
  }
  auto put = [&](const char* name) {
    if (platform::FileExists(appFolder + name)) return;
    bool isRepository = std::string_view(name) == kRepositoryFile;
    jet::CopyIntoPlace(isRepository ? appFolder + kTemplateFile
                                    : InstalledFile(platform::WithSeparator(programFolder), name),
                       appFolder + name);
  };
  put(kTemplateFile);
  if (!isNew) return;
  put(kParameterFile);
  put(kRepositoryFile);
  platform::RemoveFile(appFolder + kUnfinishedMark);
}

bool IsInUse(const std::string& appFolder) {
  try {
    return platform::IsOpenElsewhere(platform::WithSeparator(appFolder) + kParameterFile);
  } catch (const Error&) {
    return true;
  }
}

}  // namespace tarnwick::repository
