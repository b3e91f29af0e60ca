// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/system_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#ifdef __linux__
#include <linux/fs.h>
#include <sys/ioctl.h>
#endif

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "platform/clock.h"
#include "platform/file_errors.h"
#include "platform/files.h"

namespace tarnwick::platform {

const char kSeparator = '/';
const std::string_view kProgramEnding = "";

namespace fs = std::filesystem;

namespace {

void ThrowIf(const std::error_code& code, const std::string& path) {
  if (code) ThrowSystemError(code.default_error_condition().value(), path);
}

system::Kind KindOfType(fs::file_type type) {
  switch (type) {
    case fs::file_type::none:
    case fs::file_type::not_found:
      return system::Kind::kNone;
    case fs::file_type::regular:
      return system::Kind::kFile;
    case fs::file_type::directory:
      return system::Kind::kFolder;
    case fs::file_type::symlink:
      return system::Kind::kLink;
    default:
      return system::Kind::kOther;
  }
}

// Of the kinds that a listing tells at no cost.
system::Kind KindOfEntry(const fs::directory_entry& entry) {
  std::error_code code;
  if (entry.is_symlink(code)) return system::Kind::kLink;
  if (entry.is_directory(code)) return system::Kind::kFolder;
  return entry.is_regular_file(code) ? system::Kind::kFile : system::Kind::kOther;
}

}  // namespace

namespace system {

const std::string_view kSeparators = "/";

bool MeansFull(int code) {
  return code == ENOSPC || code == EDQUOT;
}

int Open(const std::string& path, Use use) {
  constexpr mode_t kOwnerOnly = 0600;
  int flags = O_CLOEXEC;
  switch (use) {
    case Use::kRead:
      flags |= O_RDONLY | O_NONBLOCK;  // a pipe that nobody writes to would be waited for
      break;
    case Use::kWriteInPlace:
      flags |= O_WRONLY | O_CREAT;
      break;
    case Use::kWriteAnew:
      flags |= O_WRONLY | O_CREAT | O_TRUNC;
      break;
    case Use::kAppend:
      flags |= O_WRONLY | O_CREAT | O_APPEND;
      break;
  }
  return ::open(path.c_str(), flags, kOwnerOnly);
}

int Close(int handle) {
  return ::close(handle);
}

std::FILE* OpenStream(const std::string& path) {
  return std::fopen(path.c_str(), "rbe");
}

int HandedFile() {
  return kHandedFile;
}

int64_t SizeOf(int handle) {
  struct stat status {};
  return ::fstat(handle, &status) == 0 && S_ISREG(status.st_mode) ? status.st_size : -1;
}

int64_t ReadAt(int handle, uint64_t offset, void* buffer, size_t count) {
  return ::pread(handle, buffer, count, static_cast<off_t>(offset));
}

int64_t Write(int handle, const void* bytes, size_t count) {
  return ::write(handle, bytes, count);
}

bool Rewind(int handle) {
  return ::lseek(handle, 0, SEEK_SET) == 0;
}

bool Cut(int handle, uint64_t size) {
  return ::ftruncate(handle, static_cast<off_t>(size)) == 0;
}

#ifdef __linux__

bool ShareBlocks(int from, int to) {
  return ::ioctl(to, FICLONE, from) == 0;
}

std::optional<int64_t> CopyPiece(int from, int to, size_t count) {
  ssize_t done = ::copy_file_range(from, nullptr, to, nullptr, count, 0);
  if (done < 0 && (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP ||
                   errno == EBADF)) {
    return std::nullopt;
  }
  return done;
}

#else

bool ShareBlocks(int, int) {
  return false;
}

std::optional<int64_t> CopyPiece(int, int, size_t) {
  return std::nullopt;
}

#endif

Kind KindOf(const std::string& path) {
  std::error_code code;
  return KindOfType(fs::symlink_status(path, code).type());
}

Kind KindOfTarget(const std::string& path) {
  std::error_code code;
  return KindOfType(fs::status(path, code).type());
}

std::optional<std::pair<uint64_t, uint64_t>> IdentityOf(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) return std::nullopt;
  return std::pair<uint64_t, uint64_t>(status.st_dev, status.st_ino);
}

bool ListEntries(const std::string& folder,
                 const std::function<void(const std::string& name, Kind kind)>& take) {
  std::error_code code;
  fs::directory_iterator entries(folder, code);
  for (; !code && entries != fs::directory_iterator(); entries.increment(code)) {
    take(entries->path().filename().string(), KindOfEntry(*entries));
  }
  return !code;
}

std::optional<std::string> ListedName(const std::string& folder, const std::string& name) {
  bool isThere = KindOfTarget(WithSeparator(folder) + name) != Kind::kNone;
  return isThere ? std::optional<std::string>(name) : std::nullopt;
}

bool MakeFolder(const std::string& folder) {
  constexpr mode_t kOwnerOnly = 0700;
  return ::mkdir(folder.c_str(), kOwnerOnly) == 0;
}

bool Remove(const std::string& path) {
  return std::remove(path.c_str()) == 0;
}

bool Rename(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

bool RenameNew(const std::string& from, const std::string& to) {
#ifdef __linux__
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  // Not every file system knows this way of renaming.
  if (errno != EINVAL && errno != ENOSYS) return false;
#endif
  if (KindOf(to) != Kind::kNone) {
    errno = EEXIST;
    return false;
  }
  return Rename(from, to);
}

bool CutFile(const std::string& path, uint64_t size) {
  return ::truncate(path.c_str(), static_cast<off_t>(size)) == 0;
}

bool Link(const std::string& from, const std::string& to) {
  std::error_code code;
  fs::create_hard_link(from, to, code);
  return !code;
}

bool MayRead(const std::string& path) {
  // Without the right to enter a folder its files can be listed, but not read.
  int wanted = FolderExists(path) ? R_OK | X_OK : R_OK;
  return ::access(path.c_str(), wanted) == 0 || (errno != EACCES && errno != EPERM);
}

std::optional<uint64_t> FreeSpaceIn(const std::string& folder) {
  std::error_code code;
  fs::space_info space = fs::space(folder, code);
  if (!code) return space.available;
  errno = code.default_error_condition().value();
  return std::nullopt;
}

}  // namespace system

bool IsOutOfRoom(int systemError) {
  return system::MeansFull(systemError) || systemError == EFBIG;
}

std::string ProgramPath() {
  std::error_code code;
  return fs::read_symlink("/proc/self/exe", code).string();
}

std::string AbsolutePath(const std::string& path) {
  std::error_code code;
  fs::path absolute = fs::absolute(path, code);
  return code ? path : absolute.lexically_normal().string();
}

std::string SystemPath(const std::string& path) {
  return path;
}

uint64_t FileSize(const std::string& path) {
  std::error_code code;
  uint64_t size = fs::file_size(path, code);
  ThrowIf(code, path);
  return size;
}

DateTime FileModified(const std::string& path) {
  struct stat status {};
  if (::stat(path.c_str(), &status) != 0) ThrowSystemError(errno, path);
  return LocalFromUnix(status.st_mtime);
}

bool SetFileModified(const std::string& path, DateTime local) {
  std::error_code code;
  auto since = std::chrono::seconds(UnixFromLocal(local));
  fs::last_write_time(path, std::chrono::file_clock::from_sys(std::chrono::sys_seconds(since)),
                      code);
  return !code;
}

void BeginFlush(const std::string& path, const std::function<void()>& look) {
#ifdef __linux__
  // What goes wrong here is found by the flush.
  struct File {
    int handle;
    ~File() {
      if (handle >= 0) ::close(handle);
    }
  } file{::open(path.c_str(), O_RDONLY | O_CLOEXEC)};
  struct stat status {};
  if (file.handle < 0 || ::fstat(file.handle, &status) != 0) return;
  constexpr off_t kStep = off_t{16} * 1024 * 1024;
  for (off_t from = 0; from < status.st_size; from += kStep) {
    ::sync_file_range(file.handle, from, kStep, SYNC_FILE_RANGE_WRITE);
    if (look) look();
  }
#else
  (void)path;
  (void)look;
#endif
}

void FlushToDisk(const std::string& path) {
  int handle = ::open(path.empty() ? "." : path.c_str(), O_RDONLY | O_CLOEXEC);
  if (handle < 0) ThrowSystemError(errno, path);
  int result = ::fsync(handle);
  int code = errno;
  ::close(handle);
  // A folder on some network file systems can't be flushed; there is no more to be had there.
  if (result != 0 && code != EINVAL) ThrowSystemError(code, path);
}

}  // namespace tarnwick::platform
