// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/backup.h"

#include "core/guard.h"
#include "core/messages.h"
#include "core/text.h"
#include "maintenance/database_file.h"
#include "maintenance/protect.h"
#include "maintenance/run.h"
#include "maintenance/unfinished_restore.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "platform/locale.h"
#include "repository/repository.h"

namespace tarnwick::maintenance {

namespace {

using repository::RepositoryDb;

Result WriteBackup(const std::string& file) {
  core::LogProgress("Backup into " + file);
  RepositoryDb().FlushGroup();
  std::vector<TableCount> counts = CountBackupTables(RepositoryDb());
  Run run(SumOf(counts));
  return UntilStopped([&] {
    // Making the indexes would take the most time; a restore goes over the rows.
    NewDatabaseFile target(file, NewDatabaseFile::Begin::kRowsAlone);
    {
      WatchScope watch(run, RepositoryDb(), true);
      for (const TableCount& count : counts) {
        Result copied = CopyTableTo(count.table, target.Path());
        if (copied != Result::kDone) return copied;
        run.Advance(count.rows);
        platform::BeginFlush(target.Path(), [&] { run.Look(); });
        if (!run.Look()) return Result::kStopped;
      }
    }
    target.Check(counts, run);
    target.Finish();
    core::LogProgress("Backup: " + std::to_string(SumOf(counts)) + " rows");
    return Result::kDone;
  });
}

}  // namespace

std::string ProposedBackupName() {
  return "Email_" + platform::FormatDate(platform::Now(), "yyyymmdd") + ".twb";
}

Result MakeBackup(const std::string& file) {
  return core::Guarded("MakeBackup", Result::kFailed, [&] {
    std::string path = platform::AbsolutePath(file);
    RefuseProgramFile(path);
    if (RefuseUnfinished()) return Result::kDeclined;
    if (!MayReplace(file)) return Result::kDeclined;
    Result result = WriteBackup(path);
    if (result == Result::kDone) core::ShowMessage("Backup is done." + WhichPassword());
    if (result == Result::kStopped) {
      core::LogProgress("Backup stopped");
      core::ShowMessage("Backup is stopped.");
    }
    return result;
  });
}

Result CopyTableTo(std::string_view table, const std::string& file) {
  std::string name(table);
  return RunCopy(
      "CopyTableTo",
      "INSERT INTO " + name + " IN '" + core::QuoteSql(file) + "' " + "SELECT * FROM  " + name,
      file);
}

}  // namespace tarnwick::maintenance
