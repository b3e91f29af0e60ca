// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A restore: the data of the open repository is replaced with that of a backup. See backup.h for
// what is required while it runs.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "maintenance/result.h"

namespace tarnwick::maintenance {

// Replaces the open repository's data with the backup's, after two questions. Before that the
// repository's file is set aside (a second name for it; a copy where the file system has none) and
// an empty one takes its place. The repository is closed and opened again for that: recordsets on
// it that others hold are closed. refreshList is called once when that has happened and the
// repository holds its new data, or what a stop or a failure has left; it opens the list anew.
//
// kDone: the copy is gone again. kStopped (possible only while a copy is made): nothing was
// changed. kFailed: either nothing was changed, or a message has named the copy, which is kept
// (unfinished_restore.h). That copy as file takes its place again as it is; another file, the same
// backup perhaps, is restored anew, and the copy is kept until that has succeeded.
Result RestoreBackup(const std::string& file, const std::function<void()>& refreshList = {});

// Copies a table of a database file into the same table of the open repository.
Result CopyTableFrom(std::string_view table, const std::string& file);

// 2: not a repository database (another format or password, or a table or column is missing). 1: an
// export file, with stored files and no contact. 0: a full backup, also an empty one.
int IsItFullBackup(const std::string& file);

}  // namespace tarnwick::maintenance
