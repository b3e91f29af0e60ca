// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/export.h"

#include <algorithm>
#include <array>
#include <vector>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "maintenance/database_file.h"
#include "maintenance/protect.h"
#include "maintenance/run.h"
#include "platform/files.h"
#include "repository/repository.h"

namespace tarnwick::maintenance {

namespace {

using repository::RepositoryDb;

struct ExportedTable {
  std::string_view name;
  std::string_view keyColumn;  // holds Email.ID
};
constexpr std::array<ExportedTable, 6> kExportedTables = {{{"FileRepository", "FileID"},
                                                           {"Email", "ID"},
                                                           {"Attachment", "EmailID"},
                                                           {"toRecipient", "EmailID"},
                                                           {"ccRecipient", "EmailID"},
                                                           {"Unfinished", "EmailID"}}};

// Where nothing matches, the list holds a row that is no message; it alone has no received time.
bool IsPlaceholder(jet::Recordset& list) {
  for (int i = 0; i < list.FieldCount(); ++i) {
    if (list.FieldName(i) == "ReceivedTime") return false;
  }
  return true;
}

// "(1, 2, 3)" of the rows from the first on; "" when the list is empty or the stop command came.
std::string CollectIds(jet::Recordset& list, Run& run) {
  list.Requery();
  if ((list.Eof() && list.Bof()) || IsPlaceholder(list)) return {};
  run.Begin(list.RecordCount());
  std::string ids;
  for (list.MoveFirst(); !list.Eof(); list.MoveNext(), run.Advance(1)) {
    if (!run.Look()) return {};
    jet::Value id = list.Field("ID");
    if (id.IsNull()) continue;  // deleted since the query ran
    ids += (ids.empty() ? "(" : ", ") + std::string(core::Trim(id.AsText()));
  }
  if (!ids.empty()) ids += ")";
  return ids;
}

Result CopyProjects(const std::string& file, const std::string& idList, int64_t& rows) {
  return RunCopy("ExportEmails",
                 "INSERT INTO tblProject IN '" + core::QuoteSql(file) +
                     "'\r\n"
                     "SELECT  DISTINCT tblProject.ProjectName, tblProject.ProjectNote, "
                     "tblProject.ID FROM Email INNER JOIN tblProject ON Email.ProjectID = "
                     "tblProject.ID\r\n"
                     "WHERE Email.ID In " +
                     idList,
                 file, &rows);
}

Result WriteExport(const std::string& file, const std::string& idList, Run& run,
                   int64_t& exported) {
  core::LogProgress("Export into " + file);
  RepositoryDb().FlushGroup();
  return UntilStopped([&] {
    NewDatabaseFile target(file, NewDatabaseFile::Begin::kRows);
    std::vector<TableCount> copied;
    {
      WatchScope watch(run, RepositoryDb(), true);
      // The rest is little beside these two.
      const int64_t files = CountRows(RepositoryDb(), "FileRepository WHERE FileID IN " + idList);
      const int64_t messages = std::count(idList.begin(), idList.end(), ',') + 1;
      run.Begin(files + messages);
      for (const ExportedTable& table : kExportedTables) {
        int64_t rows = 0;
        Result result = CopyRowsTo(table.name, target.Path(), idList, table.keyColumn, &rows);
        if (result != Result::kDone) return result;
        copied.push_back({table.name, rows});
        bool counts = table.name == "FileRepository" || table.name == "Email";
        run.Advance(counts ? rows : 0);
        platform::BeginFlush(target.Path(), [&] { run.Look(); });
        if (!run.Look()) return Result::kStopped;
      }
      int64_t projects = 0;
      Result result = CopyProjects(target.Path(), idList, projects);
      if (result != Result::kDone) return result;
      copied.push_back({"tblProject", projects});
    }
    target.Check(copied, run);
    target.Finish();
    exported = copied[1].rows;
    core::LogProgress("Export: " + std::to_string(SumOf(copied)) + " rows of " +
                      std::to_string(exported) + " messages");
    return Result::kDone;
  });
}

}  // namespace

Result ExportEmails(const std::string& file, jet::Recordset& list, int64_t* exported) {
  return core::Guarded("ExportEmails", Result::kFailed, [&] {
    if (exported != nullptr) *exported = 0;
    std::string path = platform::AbsolutePath(file);
    RefuseProgramFile(path);
    if (!MayReplace(file)) return Result::kDeclined;
    int64_t count = 0;
    Result result = Result::kDeclined;
    {
      Run run(0);
      std::string idList = CollectIds(list, run);
      if (!idList.empty()) {
        result = WriteExport(path, idList, run, count);
      } else if (core::State().ImportCancelFlag) {
        result = Result::kStopped;
      }
    }
    if (result == Result::kDone) {
      if (exported != nullptr) *exported = count;
      core::ShowMessage(std::to_string(count) + " Email(s) is exported.");
      core::ShowMessage("Export is done." + WhichPassword());
    }
    if (result == Result::kStopped) {
      core::LogProgress("Export stopped");
      core::ShowMessage("Export is stopped.");
    }
    return result;
  });
}

Result CopyRowsTo(std::string_view table, const std::string& file, std::string_view idList,
                  std::string_view keyColumn, int64_t* rows) {
  std::string name(table);
  return RunCopy("CopyRowsTo",
                 "INSERT INTO " + name + " IN '" + core::QuoteSql(file) +
                     "' \r\n"
                     "SELECT * FROM " +
                     name + " WHERE " + std::string(keyColumn) + " IN " + std::string(idList),
                 file, rows);
}

}  // namespace tarnwick::maintenance
