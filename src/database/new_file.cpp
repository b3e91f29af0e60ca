// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/new_file.h"

#include <cstdio>

#include "database/engine/engine.h"
#include "platform/files.h"

namespace tarnwick::jet {

void RemoveLogs(const std::string& path) {
  for (const char* suffix : {"-wal", "-shm", "-journal"}) platform::RemoveFile(path + suffix);
}

bool HasLog(const std::string& path) {
  return Database::HasLog(path);
}

void PutInPlace(const std::string& made, const std::string& path) {
  RemoveLogs(path);
  platform::RenameFile(made, path);
}

void CopyIntoPlace(const std::string& from, const std::string& path) {
  std::string made = path + ".new";
  try {
    platform::CopyFile(from, made);
    PutInPlace(made, path);
  } catch (...) {
    std::remove(made.c_str());
    throw;
  }
}

}  // namespace tarnwick::jet
