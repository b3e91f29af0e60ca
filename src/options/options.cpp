// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "options/options.h"

#include <cstdlib>

#include "core/messages.h"
#include "core/run_state.h"
#include "repository/parameter_store.h"

namespace tarnwick::options {

void SetUseOutlookExpress(bool on) {
  repository::SetOption("OutlookExpress", on);
  core::State().UseOutlookExpress = on;
}

void SetUseMSOutlook(bool on) {
  repository::SetOption("MSOutlook", on);
  core::State().UseMSOutlook = on;
}

void SetLogMailTexts(bool on) {
  repository::SetOption("LogMailTexts", on);
  core::State().LogMailTexts = on;
}

void RequestFullLoad() {
  core::State().RepositoryIsEmpty = core::State().FullLoadAsked = true;
}

std::string ProfileFolder() {
  return repository::GetProfileFolder();
}

bool IsProfileFixed() {
  const char* folder = std::getenv("TARNWICK_PROFILE");
  return folder != nullptr && *folder != '\0';
}

bool ChooseProfile(const std::string& folder, const ProfileSummary& found) {
  if (found.IsEmpty()) {
    core::ShowMessage("No mail was found in this folder:\r\n" + folder +
                      "\r\n\r\nChoose the folder of a Windows user (it holds the file NTUSER.DAT), "
                      "a Wine prefix, or a folder with *.dbx or *.pst files.");
    return false;
  }
  repository::SetProfileFolder(folder);
  return true;
}

}  // namespace tarnwick::options
