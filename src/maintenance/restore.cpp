// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/restore.h"

#include <algorithm>
#include <cstdio>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "database/new_file.h"
#include "maintenance/backup.h"
#include "maintenance/database_file.h"
#include "maintenance/protect.h"
#include "maintenance/run.h"
#include "maintenance/unfinished_restore.h"
#include "platform/files.h"
#include "platform/locale.h"
#include "repository/keys.h"
#include "repository/repository.h"
#include "repository/schema.h"

namespace tarnwick::maintenance {

namespace {

using repository::RepositoryDb;

// What is left free beside the new data, and beside the copy where it has to be one.
constexpr uint64_t kSpareSpace = uint64_t{16} * 1024 * 1024;

bool IsSameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && core::ContainsIgnoringCase(a, b);
}

// Whether the file's table has this one's key and no column that this one has not.
bool IsOfOurKind(jet::Connection& connection, const jet::TableDefinition& table) {
  jet::Recordset rows;
  rows.Open(table.name, connection, jet::CursorType::kForwardOnly, jet::LockType::kReadOnly,
            jet::CommandType::kTable);
  size_t known = 0;
  for (const jet::ColumnDefinition& column : table.columns) {
    bool isThere = rows.HasField(column.name);
    if (!isThere && column.type == jet::ColumnType::kAutoNumber) return false;
    known += isThere ? 1 : 0;
  }
  return known > 0 && rows.FieldCount() == static_cast<int>(known);
}

// True when the file has the tables that a backup holds. Columns that came later than the file may
// be missing: rows are copied by the names of their columns.
bool HasBackupTables(jet::Connection& connection) {
  for (const jet::TableDefinition& table : repository::RepositoryTables()) {
    bool isCopied = std::any_of(kBackupTables.begin(), kBackupTables.end(),
                                [&](auto name) { return IsSameName(name, table.name); });
    bool isNew = table.name == "Unfinished" && !connection.HasTable(table.name);
    if (isCopied && !isNew && !IsOfOurKind(connection, table)) return false;
  }
  return true;
}

bool HasRows(jet::Connection& connection, std::string_view table) {
  jet::Recordset rows;
  rows.Open(table, connection, jet::CursorType::kForwardOnly, jet::LockType::kReadOnly,
            jet::CommandType::kTable);
  return !rows.Eof();
}

// Makes a copy that takes its name only when it is complete.
Result CopyWhole(const std::string& from, const std::string& to, Run& run) {
  platform::RequireSpace(platform::FolderOf(to), platform::FileSize(from) + kSpareSpace);
  platform::StagedFile made(to + std::string(platform::kUnfinished));
  if (!platform::CopyFile(from, made.Path(), [&] { return run.Look(); })) return Result::kStopped;
  made.Replace(to);
  return Result::kDone;
}

// Where the former repository is kept while a restore is under way.
struct Former {
  int64_t number;
  std::string copy;
  bool isKept;  // by an unfinished restore before this one
};

Former FormerIn(const std::string& folder) {
  Former former{RepositoryDb().Mark(), {}, false};
  former.copy = SafetyCopy(folder, former.number);
  former.isKept = former.number != 0 && platform::FileExists(former.copy);
  if (former.isKept) return former;
  former.number = FreeCopyNumber(folder);
  former.copy = SafetyCopy(folder, former.number);
  return former;
}

// An empty repository that knows where the former one is kept.
void MakeEmpty(const std::string& file, int64_t number) {
  jet::RemoveLogs(file);
  MakeEmptyFile(file);
  jet::Connection connection;
  OpenFile(connection, file, {});
  connection.SetMark(number);
  connection.Close();
}

// The repository's file gets a second name, or a copy where the file system has no second names,
// and an empty one takes its place: there is no moment without a repository.
Result SetRepositoryFileAside(const std::string& file, const Former& former, Run& run) {
  // What the engine could not write back into the file would be missing from a copy of it, and be
  // taken for the empty one's.
  if (jet::HasLog(file)) {
    throw Error(ErrorNumber::kPathAccess, "Path/File access error: the log of " + file);
  }
  const std::string unfinished = file + std::string(platform::kUnfinished);
  jet::LogsRemover logs(unfinished);
  platform::StagedFile empty(unfinished);
  const std::string& copy = former.copy;
  Result result = Result::kDone;
  try {
    MakeEmpty(empty.Path(), former.number);
    if (!former.isKept && !platform::LinkFile(file, copy)) result = CopyWhole(file, copy, run);
    if (result == Result::kDone) {
      platform::FlushToDisk(platform::FolderOf(copy));
      empty.Replace(file);
    }
  } catch (...) {
    if (!empty.IsInPlace()) {
      if (!former.isKept) platform::TryToRemove(copy);
      throw;
    }
    // The copy is all that is left of the former repository: there is no way back, only on.
    core::ReportCurrentException("MakeSafetyCopy", core::Report::kLog);
  }
  return result;
}

// Makes the safety copy and leaves an empty repository open. The repository is closed for that: the
// system takes the locks off an open file when this process closes another handle on it.
Result MakeSafetyCopy(const Former& former, Run& run) {
  std::string file = RepositoryDb().DataSource();
  repository::DisconnectRepository();
  Result result = core::Guarded("MakeSafetyCopy", Result::kFailed,
                                [&] { return SetRepositoryFileAside(file, former, run); });
  if (repository::OpenRepository(false)) return result;
  if (result == Result::kDone) {
    core::GuardedRun("MakeSafetyCopy", [&] {
      // The empty file's logs would be played into the former one.
      jet::MoveIntoPlace(former.copy, file);
      repository::OpenRepository(false);
    });
  }
  return Result::kFailed;
}

// Brings the backup's rows into the empty repository, which then is complete.
bool Fill(const std::string& file, const std::vector<TableCount>& counts, Run& run) {
  return core::Guarded("RestoreBackup", false, [&] {
    WatchScope watch(run, RepositoryDb(), false);
    jet::BulkScope bulk(RepositoryDb());
    if (!repository::ClearRepository()) return false;
    run.Advance(0);  // what was emptied is no progress
    core::YieldEvents();
    for (const TableCount& count : counts) {
      if (CopyTableFrom(count.table, file) != Result::kDone) return false;
      run.Advance(count.rows);
    }
    RequireCounts(RepositoryDb(), counts);
    repository::ReserveKeys();
    RepositoryDb().SetMark(0);
    return true;
  });
}

std::vector<TableCount> CountFile(const std::string& file) {
  jet::Connection connection;
  OpenFile(connection, file);
  return CountBackupTables(connection);
}

void ForgetSafetyCopy(const std::string& copy) {
  core::GuardedRun(
      "RestoreBackup",
      [&] {
        platform::RemoveFile(copy);
        core::LogProgress("Safety copy removed: " + copy);
      },
      core::Report::kLog);
}

std::string NotComplete(const std::string& copy) {
  return "\r\nRestore is not complete. The repository as it was before is kept in the file " +
         copy + ".\r\nRestore that file to have it back.";
}

// The questions have been answered and the file is a full backup.
Result ReplaceData(const std::string& file, const std::function<void()>& refreshList) {
  core::LogProgress("Restore from " + file);
  const std::string folder = repository::Repository().RepositoryFolder;
  std::vector<TableCount> counts = CountFile(file);
  RepositoryDb().FlushGroup();
  platform::RequireSpace(folder, platform::FileSize(file) + kSpareSpace);
  const Former former = FormerIn(folder);
  Result result = Result::kFailed;
  std::string failure;
  bool hasBegun = false;
  {
    // What fails for one reason at many steps (a full disk) is told once.
    core::ErrorsHeld errors;
    Run run(SumOf(counts));
    result = MakeSafetyCopy(former, run);
    hasBegun = result == Result::kDone;
    if (hasBegun) {
      core::LogProgress("Safety copy: " + former.copy);
      result = Fill(file, counts, run) ? Result::kDone : Result::kFailed;
      repository::ReadOptions();
    }
    failure = errors.First();
  }
  if (refreshList) refreshList();
  if (result == Result::kDone) {
    ForgetSafetyCopy(former.copy);
    core::LogProgress("Restore: " + std::to_string(SumOf(counts)) + " rows");
  } else if (result == Result::kFailed) {
    if (hasBegun) failure += NotComplete(former.copy);
    core::ShowError(failure);
  }
  return result;
}

// False when the file is no full backup; the person has been told. A copy that a restore made may
// lack contacts like an export, if the repository had none.
bool IsRestorable(const std::string& file) {
  int kind = IsItFullBackup(file);
  if (kind == 0 || (kind == 1 && IsSafetyCopy(file))) return true;
  core::ShowError(kind == 1 ? "You should use full backup file in this function."
                            : "Invalid file format.");
  return false;
}

std::string WhatIsReplaced() {
  int64_t messages = CountRows(RepositoryDb(), "Email");
  int64_t contacts = CountRows(RepositoryDb(), "MeContact");
  return std::to_string(messages) + " message(s) and " + std::to_string(contacts) +
         " contact(s) of the open repository give way to those of the backup.";
}

// Where the restored data and the backup are not protected alike.
std::string PasswordAfter(const std::string& backup) {
  bool wasProtected = !repository::MarkOf(backup).empty();
  if (IsProtected()) {
    return "\r\nThe repository keeps the password it had." +
           std::string(wasProtected ? "" : " The backup has none of your own.");
  }
  if (!wasProtected) return {};
  return "\r\nThe backup is protected with a password of your own, this repository is not: whoever "
         "has its file and this program can read it. File, Protect changes that.";
}

}  // namespace

Result RestoreBackup(const std::string& file, const std::function<void()>& refreshList) {
  return core::Guarded("RestoreBackup", Result::kFailed, [&] {
    std::string path = platform::AbsolutePath(file);
    if (!platform::FileExists(path)) {
      core::ShowMessage("There is not file " + file);
      return Result::kDeclined;
    }
    RefuseProgramFile(path);
    RefuseOpenFile(path);
    if (!repository::Unlock(path)) return Result::kDeclined;
    if (!core::AskBeforeLoss("Current information will be deleted. "
                             "Do you want to continue?",
                             WhatIsReplaced())) {
      return Result::kDeclined;
    }
    std::string created = platform::FormatDate(platform::FileModified(path), "General Date");
    if (!core::AskBeforeLoss("Backup file was created at " + created +
                                 ". "
                                 "Do you want to continue?",
                             {})) {
      return Result::kDeclined;
    }
    RefuseNewerFile(path);
    Result result = Result::kDeclined;
    std::string password;
    std::string former = UnfinishedRestore();
    if (!former.empty() && platform::IsSameFile(path, former)) {
      result = HaveFormerBack(path, refreshList);
    } else if (IsRestorable(path)) {
      result = ReplaceData(path, refreshList);
      password = PasswordAfter(path);
    } else {
      return result;
    }
    if (result == Result::kDone) core::ShowMessage("Restore is done." + password);
    if (result == Result::kStopped) {
      core::LogProgress("Restore stopped before the repository was changed");
      core::ShowMessage("Restore is stopped.");
    }
    return result;
  });
}

Result CopyTableFrom(std::string_view table, const std::string& file) {
  std::string name(table);
  return RunCopy(
      "CopyTableFrom",
      "INSERT INTO " + name + " SELECT * FROM  " + name + " IN '" + core::QuoteSql(file) + "'",
      RepositoryDb().DataSource());
}

int IsItFullBackup(const std::string& file) {
  constexpr int kNoRepository = 2;
  // The reason goes to the log; the caller says what it means to the person.
  return core::Guarded(
      "IsItFullBackup", kNoRepository,
      [&] {
        jet::Connection connection;
        OpenFile(connection, file);
        if (!HasBackupTables(connection)) return kNoRepository;
        bool isExport = HasRows(connection, "FileRepository") && !HasRows(connection, "MeContact");
        return isExport ? 1 : 0;
      },
      core::Report::kLog);
}

}  // namespace tarnwick::maintenance
