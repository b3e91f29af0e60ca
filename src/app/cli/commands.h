// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The commands of tarnwick-cli, one file each. A command gets the words behind its name, runs on
// the open repository and returns the exit status: 0 done, 1 failed (the reason has been written to
// standard error). Wrong usage throws UsageError.
#pragma once

#include <string>
#include <vector>

#include "board/load_command.h"
#include "cli/command_line.h"

namespace tarnwick::app {

inline constexpr int kDone = 0;
inline constexpr int kFailed = 1;
inline constexpr int kWrongUsage = 2;

// Of the option --accept.
board::SenderPolicy SendersOf(const Arguments& arguments);

int RunLoad(const std::vector<std::string>& words);
int RunFind(const std::vector<std::string>& words);
int RunTake(const std::vector<std::string>& words);
int RunList(const std::vector<std::string>& words);
int RunSave(const std::vector<std::string>& words);
int RunShow(const std::vector<std::string>& words);
int RunDelete(const std::vector<std::string>& words);
int RunMark(const std::vector<std::string>& words);
int RunAttachments(const std::vector<std::string>& words);
int RunContacts(const std::vector<std::string>& words);
int RunBackup(const std::vector<std::string>& words);
int RunRestore(const std::vector<std::string>& words);
int RunExport(const std::vector<std::string>& words);
int RunMerge(const std::vector<std::string>& words);
int RunProtect(const std::vector<std::string>& words);
int RunUnprotect(const std::vector<std::string>& words);
int RunCheck(const std::vector<std::string>& words);

}  // namespace tarnwick::app
