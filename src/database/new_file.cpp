// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/new_file.h"

#include <array>

#include "database/engine/engine.h"
#include "platform/files.h"
#include "platform/staged_file.h"

namespace tarnwick::jet {

namespace {

constexpr std::array<const char*, 3> kLogSuffixes = {"-wal", "-shm", "-journal"};

}  // namespace

void RemoveLogs(const std::string& path) {
  for (const char* suffix : kLogSuffixes) platform::RemoveFile(path + suffix);
}

LogsRemover::~LogsRemover() {
  for (const char* suffix : kLogSuffixes) platform::TryToRemove(path_ + suffix);
}

bool HasLog(const std::string& path) {
  return Database::HasLog(path);
}

void PutInPlace(platform::StagedFile& made, const std::string& path) {
  RemoveLogs(path);
  made.Replace(path);
}

void MoveIntoPlace(const std::string& kept, const std::string& path) {
  RemoveLogs(path);
  platform::RenameFile(kept, path);
  platform::FlushToDisk(platform::FolderOf(path));
}

bool CopyUnderPassword(const std::string& from, std::string_view password, const std::string& to,
                       std::string_view newPassword,
                       const std::function<bool(int64_t, int64_t)>& look) {
  platform::RemoveFile(to);
  Database source(from, password, Database::Mode::kReadOnly);
  Database target(to, newPassword, Database::Mode::kCreate);
  return source.CopyInto(target, look);
}

void CopyIntoPlace(const std::string& from, const std::string& path) {
  platform::StagedFile made(path + std::string(platform::kUnfinished));
  platform::CopyFile(from, made.Path());
  PutInPlace(made, path);
}

}  // namespace tarnwick::jet
