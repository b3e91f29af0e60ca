// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/protect.h"

#include <utility>
#include <vector>

#include "core/guard.h"
#include "core/messages.h"
#include "database/new_file.h"
#include "maintenance/database_file.h"
#include "maintenance/run.h"
#include "maintenance/unfinished_restore.h"
#include "platform/error.h"
#include "platform/files.h"
#include "repository/keyring.h"
#include "repository/keys.h"
#include "repository/repository.h"

namespace tarnwick::maintenance {

namespace {

using repository::Repository;
using repository::RepositoryDb;

constexpr const char* kRoutine = "ProtectRepository";
// What is left free beside the copy.
constexpr uint64_t kSpareSpace = uint64_t{16} * 1024 * 1024;

// Makes the copy that has this mark and lets it take the file's place. REQUIRES: the file is
// closed.
Result ReplaceWithCopy(const std::string& file, const std::string& mark,
                       const std::vector<TableCount>& counts, Run& run) {
  // What the engine could not write back into the file would be missing from the copy.
  RefuseOpenFile(file);
  return UntilStopped([&] {
    NewDatabaseFile copy(file, NewDatabaseFile::Begin::kNothing);
    int64_t before = 0;
    auto look = [&](int64_t pages, int64_t all) {
      if (before == 0) run.Begin(all);
      run.Advance(pages - std::exchange(before, pages));
      return run.Look();
    };
    if (!jet::CopyUnderPassword(file, repository::PasswordOf(file).Bytes(), copy.Path(),
                                repository::PasswordOfMark(mark).Bytes(), look)) {
      return Result::kStopped;
    }
    platform::BeginFlush(copy.Path(), [&] { run.Look(); });
    copy.Check(counts, run);
    copy.Finish();
    return Result::kDone;
  });
}

// Copies that failed restores left keep what opened them.
std::string OtherFiles() {
  std::string text =
      "\r\nBackups and exports that were made before keep the password they were made with.";
  for (const std::string& copy : FormerCopies()) {
    text += "\r\nSo does " + copy + ", which a restore left here.";
  }
  return text;
}

void Tell(Result result, const std::string& mark) {
  if (result == Result::kStopped) {
    core::ShowMessage("The repository keeps the password it has: the change was stopped.");
  }
  if (result == Result::kFailed && Repository().Mark == mark) {
    core::ShowError(
        "The repository has its new password, but it is not certain that the change "
        "outlasts a power cut.");
  }
  if (result != Result::kDone) return;
  core::ShowMessage((mark.empty() ? "The repository has the program's own password again. Whoever "
                                    "has the file and this program can read it."
                                  : "The repository is protected with your password.") +
                    OtherFiles());
}

// mark: of the key that the repository is to have, which is known; "" for the program's password.
Result GiveKey(const std::string& mark, const std::function<void()>& refreshList) {
  core::LogProgress("Change of the repository's password");
  const std::string file = RepositoryDb().DataSource();
  const std::string former = Repository().Mark;
  RepositoryDb().FlushGroup();
  std::vector<TableCount> counts = CountBackupTables(RepositoryDb());
  platform::RequireSpace(Repository().RepositoryFolder, platform::FileSize(file) + kSpareSpace);
  Result result = Result::kFailed;
  {
    Run run(0);
    repository::DisconnectRepository();
    result = core::Guarded(kRoutine, Result::kFailed,
                           [&] { return ReplaceWithCopy(file, mark, counts, run); });
    if (repository::OpenRepository(false)) {
      repository::ForgetKeys(Repository().Mark);
      if (Repository().Mark != former) repository::ForgetPassword(former);
      repository::ReadOptions();
    } else {
      result = Result::kFailed;
    }
  }
  if (refreshList) refreshList();
  core::LogProgress(result == Result::kDone ? "The repository has its new password"
                                            : "The change of the password did not come to its end");
  Tell(result, mark);
  return result;
}

}  // namespace

bool IsProtected() {
  return RepositoryDb().IsOpen() && !Repository().Mark.empty();
}

bool IsOwnPassword(const platform::Secret& password) {
  return core::Guarded(kRoutine, false, [&] {
    return repository::FileKey::Of(Repository().Mark, password).has_value();
  });
}

Result ProtectRepository(const platform::Secret& password,
                         const std::function<void()>& refreshList) {
  return core::Guarded(kRoutine, Result::kFailed, [&] {
    if (RefuseUnfinished()) return Result::kDeclined;
    if (password.IsEmpty()) {
      core::ShowMessage("An empty password protects nothing.");
      return Result::kDeclined;
    }
    repository::FileKey key(password);
    std::string mark = key.Mark();
    repository::AddKey(std::move(key));
    return GiveKey(mark, refreshList);
  });
}

Result UnprotectRepository(const std::function<void()>& refreshList) {
  return core::Guarded(kRoutine, Result::kFailed, [&] {
    if (RefuseUnfinished()) return Result::kDeclined;
    if (!IsProtected()) {
      core::ShowMessage("The repository has no password of its own.");
      return Result::kDeclined;
    }
    if (!core::AskBeforeLoss("Do you want to take the password off?",
                             "Whoever has the file and this program can read it then.")) {
      return Result::kDeclined;
    }
    return GiveKey({}, refreshList);
  });
}

std::string WhichPassword() {
  return IsProtected() ? "\r\nIts password is the repository's own." : "";
}

}  // namespace tarnwick::maintenance
