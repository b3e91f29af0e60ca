// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <windows.h>

#include "platform/file_lock.h"
#include "platform/windows_text.h"

namespace tarnwick::platform {

namespace {

// Where the engine locks a file of any size.
constexpr DWORD kLockPlace = 0x40000000;
constexpr DWORD kLockLength = 512;

}  // namespace

bool IsOpenElsewhere(const std::string& databaseFile) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  HANDLE file = CreateFileW(WidePath(databaseFile).c_str(), GENERIC_READ, kShareAll, nullptr,
                            OPEN_EXISTING, 0, nullptr);
  if (file == INVALID_HANDLE_VALUE) return false;
  // There is no way to look without taking; it is given back at once.
  OVERLAPPED place{};
  place.Offset = kLockPlace;
  constexpr DWORD kHow = LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY;
  bool isFree = LockFileEx(file, kHow, 0, kLockLength, 0, &place) != 0;
  if (isFree) UnlockFileEx(file, 0, kLockLength, 0, &place);
  CloseHandle(file);
  return !isFree;
}

}  // namespace tarnwick::platform
