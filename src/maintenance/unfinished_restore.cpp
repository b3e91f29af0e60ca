// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/unfinished_restore.h"

#include "core/guard.h"
#include "core/messages.h"
#include "database/new_file.h"
#include "maintenance/database_file.h"
#include "maintenance/restore.h"
#include "platform/files.h"
#include "repository/keys.h"
#include "repository/repository.h"
#include "repository/schema.h"

namespace tarnwick::maintenance {

namespace {

using repository::RepositoryDb;

// Names that the restore dialog lists.
constexpr std::string_view kCopyName = "Tarnwick_before_restore";
constexpr std::string_view kCopyExtension = ".twb";

const std::string& Folder() {
  return repository::Repository().RepositoryFolder;
}

std::string WhatIsKept(const std::string& copy) {
  std::string text =
      "The last restore did not come to its end; this repository is not complete. The repository "
      "as it was before ";
  if (platform::FileExists(copy)) return text + "is kept in the file " + copy + ".";
  return text + "was kept in the file " + copy + ", which is not there any more.";
}

std::string WhatToDo(const std::string& copy) {
  std::string former = platform::FileExists(copy) ? "Restore that file to have it back"
                                                  : "Put it there again and restore it";
  return "\r\n" + former +
         ", or restore the backup once more. Until then nothing is loaded into this repository.";
}

// What a restore left that was killed before it changed anything: a second name for the
// repository's own file, and files that were not complete yet.
void ClearAway() {
  std::string file = RepositoryDb().DataSource();
  for (const std::string& copy : FormerCopies()) {
    if (platform::IsSameFile(copy, file)) platform::RemoveFile(copy);
  }
  for (const std::string& name : platform::ListFiles(Folder(), platform::kUnfinished)) {
    if (name.starts_with(kCopyName)) platform::RemoveFile(Folder() + name);
  }
  std::string unfinished = file + std::string(platform::kUnfinished);
  platform::RemoveFile(unfinished);
  jet::RemoveLogs(unfinished);
}

}  // namespace

std::string SafetyCopy(const std::string& folder, int64_t number) {
  std::string name(kCopyName);
  if (number > 1) name += " (" + std::to_string(number) + ")";
  return folder + name.append(kCopyExtension);
}

int64_t FreeCopyNumber(const std::string& folder) {
  int64_t number = 1;
  while (platform::FileExists(SafetyCopy(folder, number))) ++number;
  return number;
}

bool IsSafetyCopy(const std::string& file) {
  std::string name = platform::FileNameOf(file);
  return name.starts_with(kCopyName) && name.ends_with(kCopyExtension);
}

std::vector<std::string> FormerCopies() {
  std::string needed = UnfinishedRestore();
  std::vector<std::string> copies;
  for (const std::string& name : platform::ListFiles(Folder(), kCopyExtension)) {
    if (IsSafetyCopy(name) && Folder() + name != needed) copies.push_back(Folder() + name);
  }
  return copies;
}

std::string UnfinishedRestore() {
  return core::Guarded("UnfinishedRestore", std::string(), [] {
    int64_t number = RepositoryDb().IsOpen() ? RepositoryDb().Mark() : 0;
    return number == 0 ? std::string() : SafetyCopy(Folder(), number);
  });
}

bool RefuseUnfinished() {
  std::string copy = UnfinishedRestore();
  if (copy.empty()) return false;
  core::ShowError(WhatIsKept(copy) + WhatToDo(copy));
  return true;
}

void ReportUnfinishedRestore() {
  core::GuardedRun("ReportUnfinishedRestore", [] {
    ClearAway();
    std::string copy = UnfinishedRestore();
    if (copy.empty()) return;
    core::WriteLog(WhatIsKept(copy));
    core::ShowMessage(WhatIsKept(copy) + WhatToDo(copy));
  });
}

void AskAboutUnfinishedRestore() {
  std::string copy = UnfinishedRestore();
  if (copy.empty() || !platform::FileExists(copy)) return ReportUnfinishedRestore();
  core::GuardedRun("AskAboutUnfinishedRestore", [&] {
    ClearAway();
    core::WriteLog(WhatIsKept(copy));
    bool wantsIt = core::AskYesNo(
        WhatIsKept(copy) +
        "\r\nDo you want to have it back now? If you would rather restore the backup once more, "
        "answer No and choose File, Restore. Until then nothing is loaded into this repository.");
    if (wantsIt) HaveFormerBack(copy, {});
  });
}

Result HaveFormerBack(const std::string& copy, const std::function<void()>& refreshList) {
  if (!repository::Unlock(copy)) return Result::kDeclined;
  jet::Connection former;
  OpenFile(former, copy);  // throws where it can't take its place again
  former.Close();
  std::string file = RepositoryDb().DataSource();
  repository::DisconnectRepository();
  bool isBack = core::GuardedRun("HaveFormerBack", [&] {
    jet::MoveIntoPlace(copy, file);
    core::LogProgress("The former repository is back from " + copy);
  });
  bool isOpen = repository::OpenRepository(false);
  if (isOpen) repository::ReadOptions();
  if (refreshList) refreshList();
  return isBack && isOpen ? Result::kDone : Result::kFailed;
}

}  // namespace tarnwick::maintenance
