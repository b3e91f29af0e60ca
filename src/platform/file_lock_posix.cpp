// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/file_lock.h"

#include <fcntl.h>
#include <unistd.h>

namespace tarnwick::platform {

namespace {

// Where the engine locks a file of any size.
constexpr long kLockPlace = 0x40000000;
constexpr long kLockLength = 512;

}  // namespace

bool IsOpenElsewhere(const std::string& databaseFile) {
  int handle = ::open(databaseFile.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (handle < 0) return false;
  struct flock lock {};
  lock.l_type = F_WRLCK;
  lock.l_whence = SEEK_SET;
  lock.l_start = kLockPlace;
  lock.l_len = kLockLength;
  bool isLocked = ::fcntl(handle, F_GETLK, &lock) == 0 && lock.l_type != F_UNLCK;
  ::close(handle);
  return isLocked;
}

}  // namespace tarnwick::platform
