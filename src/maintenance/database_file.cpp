// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/database_file.h"

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "database/recordset.h"
#include "maintenance/backup.h"
#include "platform/files.h"
#include "repository/keys.h"
#include "repository/repository.h"
#include "repository/schema.h"

namespace tarnwick::maintenance {

namespace {

using core::State;
using repository::RepositoryDb;

// A file that is being made.
void OpenUnfinished(jet::Connection& connection, const std::string& file) {
  connection.SetProperty(jet::kJournalProperty, jet::kJournalMemory);
  OpenFile(connection, file, {});
}

// The template may be of an older version, and would not hold all that is copied.
void BringUpToDate(const std::string& file, std::span<const jet::TableDefinition> tables) {
  jet::Connection connection;
  OpenUnfinished(connection, file);
  jet::UpdateTables(connection, tables, repository::kSchemaVersion);
  connection.Close();
}

std::vector<jet::TableDefinition> TablesWithoutIndexes() {
  std::span<const jet::TableDefinition> tables = repository::RepositoryTables();
  std::vector<jet::TableDefinition> bare(tables.begin(), tables.end());
  for (jet::TableDefinition& table : bare) table.indexes.clear();
  return bare;
}

}  // namespace

void OpenFile(jet::Connection& connection, const std::string& file, std::string_view mode) {
  connection.SetProvider(jet::kProvider);
  connection.SetProperty(jet::kDataSourceProperty, file);
  connection.SetPasswords(repository::PasswordOf);
  connection.SetProperty(jet::kModeProperty, mode);
  connection.Open();
}

void RefuseProgramFile(const std::string& file) {
  for (const std::string& own :
       {repository::Repository().RepositoryFolder + repository::kRepositoryFile,
        State().AppFolder + repository::kParameterFile,
        State().AppFolder + repository::kTemplateFile}) {
    if (platform::IsSameFile(file, own)) {
      throw Error(ErrorNumber::kPermissionDenied, "The program itself uses the file " + file);
    }
  }
}

void RefuseOpenFile(const std::string& file) {
  if (!jet::HasLog(file)) return;
  throw Error(ErrorNumber::kPathAccess,
              "The file " + file +
                  " is in use, or the program that had it open did not close it: its log lies "
                  "beside it. Open it as a repository and close it again first.");
}

void RefuseNewerFile(const std::string& file) {
  jet::Connection connection;
  try {
    OpenFile(connection, file);
  } catch (const Error&) {
    return;  // IsItFullBackup tells what that is
  }
  jet::RequireVersion(connection, repository::kSchemaVersion);
}

void MakeEmptyFile(const std::string& file) {
  std::string emptyRepository = State().AppFolder + repository::kTemplateFile;
  const std::string& mark = repository::Repository().Mark;
  if (mark.empty()) {
    platform::CopyFile(emptyRepository, file);
    return;
  }
  jet::CopyUnderPassword(emptyRepository, repository::PasswordOf(emptyRepository).Bytes(), file,
                         repository::PasswordOfMark(mark).Bytes(),
                         [](int64_t, int64_t) { return true; });
}

bool MayReplace(const std::string& file) {
  if (platform::FolderExists(file)) {
    throw Error(ErrorNumber::kPathAccess, "Path/File access error: " + file);
  }
  if (!platform::FileExists(file)) return true;
  if (!core::AskBeforeLoss("Do you want to delete file " + file + "?",
                           "What it holds now is lost.")) {
    return false;
  }
  std::string path = platform::AbsolutePath(file);
  uint64_t atMost = platform::FileSize(RepositoryDb().DataSource());
  if (platform::FreeSpace(platform::FolderOf(path)) < atMost) platform::RemoveFile(path);
  return true;
}

int64_t CountRows(jet::Connection& connection, std::string_view table) {
  jet::Recordset rows;
  rows.Open("SELECT Count(*) AS RowCount FROM " + std::string(table), connection);
  return rows.Eof() ? 0 : rows.Field("RowCount").AsInt();
}

std::vector<TableCount> CountBackupTables(jet::Connection& connection) {
  std::vector<TableCount> counts;
  for (std::string_view table : kBackupTables) {
    if (connection.HasTable(table)) counts.push_back({table, CountRows(connection, table)});
  }
  return counts;
}

int64_t SumOf(std::span<const TableCount> counts) {
  int64_t sum = 0;
  for (const TableCount& count : counts) sum += count.rows;
  return sum;
}

void RequireCounts(jet::Connection& connection, std::span<const TableCount> counts) {
  for (const TableCount& count : counts) {
    int64_t rows = CountRows(connection, count.table);
    if (rows == count.rows) continue;
    throw Error(ErrorNumber::kPathAccess, "Table " + std::string(count.table) + " has " +
                                              std::to_string(rows) + " rows instead of " +
                                              std::to_string(count.rows));
  }
}

Result RunCopy(std::string_view routine, const std::string& sql, const std::string& written,
               int64_t* rows) {
  try {
    int64_t copied = RepositoryDb().Execute(sql);
    if (rows != nullptr) *rows = copied;
    return Result::kDone;
  } catch (...) {
    Error error = core::CurrentError();
    if (repository::IsStop(error)) return Result::kStopped;
    if (core::IsDiskFull(error)) {
      core::ShowError(std::to_string(ErrorNumber::kDiskFull) +
                      " The disk is full: there is no room left in " +
                      platform::FolderOf(written).append(" ").append(routine));
    } else {
      core::ReportCurrentException(routine, core::Report::kShow);
    }
  }
  return Result::kFailed;
}

NewDatabaseFile::NewDatabaseFile(const std::string& file, Begin begin)
    : file_(file),
      begin_(begin),
      logs_(file + std::string(platform::kUnfinished)),
      made_(file + std::string(platform::kUnfinished)) {
  jet::RemoveLogs(Path());  // of a run that was killed
  if (begin == Begin::kNothing) return;
  MakeEmptyFile(Path());
  if (begin == Begin::kRows || begin == Begin::kRowsAlone) {
    BringUpToDate(Path(), TablesWithoutIndexes());
  } else {
    BringUpToDate(Path(), repository::RepositoryTables());
  }
}

void NewDatabaseFile::MakeIndexes(Run& run) const {
  jet::Connection connection;
  OpenUnfinished(connection, Path());
  {
    WatchScope watch(run, connection, true);
    jet::UpdateTables(connection, repository::RepositoryTables(), repository::kSchemaVersion);
  }
  connection.Close();
}

void NewDatabaseFile::Check(std::span<const TableCount> counts, Run& run) const {
  using Checked = jet::Connection::Checked;
  if (begin_ == Begin::kRows) MakeIndexes(run);
  jet::Connection connection;
  OpenFile(connection, Path());
  WatchScope watch(run, connection, true);
  RequireCounts(connection, counts);
  std::string damage =
      connection.IntegrityCheck(begin_ == Begin::kRows ? Checked::kAllButIndexes : Checked::kAll);
  if (!damage.empty()) {
    throw Error(ErrorNumber::kPathAccess, "The file is damaged: " + damage);
  }
}

void NewDatabaseFile::Finish() {
  jet::PutInPlace(made_, file_);
}

}  // namespace tarnwick::maintenance
