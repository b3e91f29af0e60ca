// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "options/options.h"

#include <algorithm>

#include "core/messages.h"
#include "core/run_state.h"
#include "platform/environment.h"
#include "repository/parameter_store.h"

namespace tarnwick::options {

namespace {

constexpr const char* kLockAfter = "LockAfter";

}  // namespace

bool IsUsed(const std::string& option) {
  return repository::GetOption(option);
}

void SetUsed(const std::string& option, bool on) {
  repository::SetOption(option, on);
}

bool IsReadingComplete() {
  return repository::GetOption(repository::kCompleteReadingOption);
}

void SetCompleteReading(bool on) {
  repository::SetOption(repository::kCompleteReadingOption, on);
}

void SetLogMailTexts(bool on) {
  repository::SetOption("LogMailTexts", on);
}

int64_t LockMinutes() {
  constexpr int64_t kUnlessSet = 15;
  constexpr int64_t kMost = int64_t{24} * 60;
  jet::Value stored = repository::GetParameter(kLockAfter, "1", repository::kAmountColumn);
  return stored.IsNull() ? kUnlessSet : std::clamp<int64_t>(stored.AsInt(), 0, kMost);
}

void SetLockMinutes(int64_t minutes) {
  repository::SetParameter(kLockAfter, "1", repository::kAmountColumn, minutes);
}

void RequestFullLoad() {
  core::State().RepositoryIsEmpty = core::State().FullLoadAsked = true;
}

std::string ProfileFolder() {
  return repository::GetProfileFolder();
}

bool IsProfileFixed() {
  return !platform::EnvironmentText("TARNWICK_PROFILE").value_or("").empty();
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
