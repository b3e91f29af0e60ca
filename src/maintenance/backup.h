// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A backup: the tables of the open repository, every row and column with its identifiers, in a new
// database file. The engine copies from file to file, column by column by name.
//
// While the engine works, events are let run (UserInterface::YieldEvents) and the stop command is
// obeyed. REQUIRES: nothing that runs then uses the repository; a window takes its list off the
// recordset and greys its commands until the call returns. This holds for the whole room.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "maintenance/result.h"

namespace tarnwick::maintenance {

// For the file dialogs of the commands "&Backup", "&Restore", "&Export" and "&Import".
inline constexpr const char* kFileFilter = "Backup file (*.twb)|*.twb";
inline constexpr const char* kBackupTitle = "Select backup file";
inline constexpr const char* kRestoreTitle = "Select saved backup file";
inline constexpr const char* kExportTitle = "Select export file";
inline constexpr const char* kMergeTitle = "Select backup file";
// "Email_yyyymmdd.twb", of today.
std::string ProposedBackupName();

// What a backup holds, in the order in which it is copied; files of version 1 lack the last one. A
// table's name is read without regard to case.
inline constexpr std::array<std::string_view, 13> kBackupTables = {
    "MeAddress",    "MeContact",    "RejectSender",   "UserList",   "Attachment",
    "ccRecipient",  "Email",        "FileRepository", "tblProject", "toRecipient",
    "IgnoredEmail", "ContactEmail", "Unfinished"};

// Makes a full backup in file, asking before an existing one is replaced. The backup is written
// under a temporary name, its rows are counted and the engine checks it; then it takes its name,
// and only then is the older file gone. kStopped and kFailed leave no new file.
Result MakeBackup(const std::string& file);

// Copies a table of the open repository into the same table of a database file.
Result CopyTableTo(std::string_view table, const std::string& file);

}  // namespace tarnwick::maintenance
