// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Database files beside the open repository: opening one, making one, copying rows between it and
// the repository. Internal to the room. Failures throw Error unless said otherwise.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "database/connection.h"
#include "database/new_file.h"
#include "maintenance/result.h"
#include "maintenance/run.h"
#include "platform/staged_file.h"

namespace tarnwick::maintenance {

// Opens a file with the program's password or with the key that is known for it
// (repository/keys.h), for reading unless another mode is given: its date stays that of its making.
void OpenFile(jet::Connection& connection, const std::string& file,
              std::string_view mode = jet::kModeRead);

// Throws when the file is one that the program itself has open or needs.
void RefuseProgramFile(const std::string& file);

// Throws when another program has the database file open, or left it without closing it.
void RefuseOpenFile(const std::string& file);

// Throws when the file is of a later version of the program than this one.
void RefuseNewerFile(const std::string& file);

// Makes an empty repository that has the open one's password, or had while it was open.
void MakeEmptyFile(const std::string& file);

// Whether file may be made: it is not there, or the person lets it be deleted. Deleted it is when
// its successor is complete; at once only where there is not room for both.
bool MayReplace(const std::string& file);

// table may bring a WHERE clause.
int64_t CountRows(jet::Connection& connection, std::string_view table);

struct TableCount {
  std::string_view table;
  int64_t rows = 0;
};
// Those of them that the file has.
std::vector<TableCount> CountBackupTables(jet::Connection& connection);
int64_t SumOf(std::span<const TableCount> counts);
// Throws when the connection's file does not have these numbers of rows.
void RequireCounts(jet::Connection& connection, std::span<const TableCount> counts);

// Runs a statement on the repository that copies rows into written, a file; reports a failure under
// routine's name, one for want of room on the disk in plain words. rows: the number copied.
Result RunCopy(std::string_view routine, const std::string& sql, const std::string& written,
               int64_t* rows = nullptr);

// A database file on its way: made from the template with the open repository's password, under a
// temporary name beside its own. What is not finished is removed, with the logs beside it.
class NewDatabaseFile {
 public:
  // kRows: the indexes are made by Check, of the rows that lie in the file by then.
  // kRowsAlone: they are left to whoever opens the file as a repository.
  // kNothing: the caller makes the file under Path().
  enum class Begin { kEmpty, kRows, kRowsAlone, kNothing };
  explicit NewDatabaseFile(const std::string& file, Begin begin = Begin::kEmpty);
  NewDatabaseFile(const NewDatabaseFile&) = delete;
  NewDatabaseFile& operator=(const NewDatabaseFile&) = delete;

  // The temporary name.
  const std::string& Path() const { return made_.Path(); }

  // Throws unless the file has these rows and the engine finds it sound.
  void Check(std::span<const TableCount> counts, Run& run) const;
  // Gives the file its name, in place of an older one.
  void Finish();

 private:
  void MakeIndexes(Run& run) const;

  std::string file_;
  Begin begin_;
  jet::LogsRemover logs_;
  platform::StagedFile made_;
};

}  // namespace tarnwick::maintenance
