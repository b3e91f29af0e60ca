// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/app_folder.h"

#include <cstdlib>
#include <string_view>

#include "database/new_file.h"
#include "platform/clock.h"
#include "platform/error.h"
#include "platform/file_lock.h"
#include "platform/files.h"
#include "repository/schema.h"

namespace tarnwick::repository {

namespace {

// Stands in a home that is being made, so that one whose making was interrupted is made further.
constexpr const char* kUnfinishedMark = "unfinished.new";

std::string DataFolder() {
  if (const char* data = std::getenv("XDG_DATA_HOME"); data != nullptr && data[0] == '/') {
    return platform::WithSeparator(data);
  }
#ifdef _WIN32
  if (const char* data = std::getenv("LOCALAPPDATA"); data != nullptr) {
    return platform::WithSeparator(data);
  }
#endif
  std::string home = platform::HomeFolder();
  if (home.empty()) {
    throw Error(
        ErrorNumber::kPathAccess,
        "There is no home folder to keep the mail in: HOME is not set, and the system knows "
        "none for this user. Set HOME, or name a folder in TARNWICK_HOME.");
  }
  return platform::WithSeparator(home) + ".local/share/";
}

std::string InstalledFile(const std::string& programFolder, const std::string& name) {
  for (const std::string& folder : {programFolder, programFolder + "../share/tarnwick/"}) {
    if (platform::FileExists(folder + name)) return folder + name;
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
  if (const char* home = std::getenv("TARNWICK_HOME"); home != nullptr && *home != '\0') {
    return platform::WithSeparator(platform::AbsolutePath(home));
  }
  std::string own = platform::WithSeparator(programFolder);
  bool isHome =
      platform::FileExists(own + kParameterFile) || platform::FileExists(own + kRepositoryFile);
  if (isHome && platform::IsFolderWritable(own)) return own;
  return DataFolder() + "tarnwick" + platform::kSeparator;
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
