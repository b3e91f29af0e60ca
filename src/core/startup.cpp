// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "core/startup.h"

#include <cstdlib>
#include <string_view>

#include "core/messages.h"
#include "core/run_state.h"
#include "database/new_file.h"
#include "platform/clock.h"
#include "platform/error.h"
#include "platform/file_lock.h"
#include "platform/files.h"
#include "platform/locale.h"

namespace tarnwick::core {

namespace {

// The program's own databases. The repository itself is never copied from the program's folder
// into another: an empty one is made from the template, where the person's is missing.
constexpr const char* kParameterFile = "emlParameter.twr";
constexpr const char* kTemplateFile = "emlTemplate.twr";
constexpr const char* kRepositoryFile = "Tarnwick.twr";
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

int ZoneHours(int biasMinutes) {
  int minutes = biasMinutes < 0 ? -biasMinutes : biasMinutes;
  int hours = minutes / 60;
  int rest = minutes % 60;
  if (rest > 30 || (rest == 30 && hours % 2 == 1)) ++hours;
  return hours;
}

void PrepareRun(const std::string& appFolder) {
  ResetState();
  RunState& state = State();
  state.LogEvents = true;
  state.AppFolder = platform::WithSeparator(appFolder);
  state.EmailFileFolder = state.AppFolder + "EmailFile" + platform::kSeparator;
  state.LogFolder = state.AppFolder + "LogEvent" + platform::kSeparator;
  state.LogFile = state.LogFolder + "Tarnwick.log";
  for (const std::string& folder : {state.LogFolder, state.EmailFileFolder}) {
    try {
      platform::MakeFolder(folder);
    } catch (const Error&) {
      // It shows up later as a file error of whoever writes there.
    }
  }
  state.TempMessageFile = state.EmailFileFolder + "oeTempMessage.msg";
  state.LocalZoneHours = ZoneHours(platform::ZoneBiasMinutes().value_or(0));
  try {
    // A program that runs already goes on writing its own.
    if (!platform::IsOpenElsewhere(state.AppFolder + kParameterFile)) {
      platform::RemoveFile(state.LogFile);
    }
  } catch (const Error&) {
    // The log goes on behind the old one.
  }
  state.LocalMonthNames = platform::LongDateMonthNames();
  LogProgress("************ Startup *************");
  state.UserName = platform::LogonName();
}

}  // namespace tarnwick::core
