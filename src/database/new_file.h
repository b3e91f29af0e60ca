// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// New database files come to their place whole. Failures throw Error.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

namespace tarnwick::platform {
class StagedFile;
}

namespace tarnwick::jet {

// Removes what the engine may have left beside a database file: a log of an older file of the name
// would be taken for part of the next one.
void RemoveLogs(const std::string& path);

// The same at the end of a scope, whatever the system says, for a file that is being made: stands
// in front of what removes the file itself.
class LogsRemover {
 public:
  explicit LogsRemover(std::string path) : path_(std::move(path)) {}
  ~LogsRemover();
  LogsRemover(const LogsRemover&) = delete;
  LogsRemover& operator=(const LogsRemover&) = delete;

 private:
  std::string path_;
};

// True when such a log lies beside a file: a program has the file open, or ended without closing
// it, and part of what the file holds may be in the log.
bool HasLog(const std::string& path);

// Gives a complete file, made beside it, its name; an older file of the name goes, with its logs.
void PutInPlace(platform::StagedFile& made, const std::string& path);
// The same of a file that is kept where it is if that fails.
void MoveIntoPlace(const std::string& kept, const std::string& path);

// Makes a copy of a closed database file, page by page, that is opened with another password. Not
// flushed to the disk: its maker does that when it is complete. look is called with the pages done
// and all there are; its false ends the copy, and the result is false.
bool CopyUnderPassword(const std::string& from, std::string_view password, const std::string& to,
                       std::string_view newPassword,
                       const std::function<bool(int64_t, int64_t)>& look);

// Copies a closed database file to a place that it is given only when it is complete.
void CopyIntoPlace(const std::string& from, const std::string& path);

}  // namespace tarnwick::jet
