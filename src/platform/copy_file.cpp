// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/stat.h>
#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif
#ifdef __linux__
#include <linux/fs.h>
#include <sys/ioctl.h>
#endif

#include "platform/error.h"
#include "platform/file_errors.h"
#include "platform/files.h"

namespace tarnwick::platform {

namespace {

#ifdef _WIN32
constexpr int kOpenFlags = _O_BINARY;
#else
constexpr int kOpenFlags = O_CLOEXEC;
#endif

// Large enough for the kernel to copy at full speed, small enough to react between two pieces.
constexpr size_t kPiece = size_t{16} * 1024 * 1024;
constexpr size_t kBuffer = size_t{1024} * 1024;

class Handle {
 public:
  Handle(const std::string& path, int flags) : path_(path) {
    PassFileFault(FileOperation::kOpen, path);
    handle_ = ::open(path.c_str(), flags | kOpenFlags, 0600);
    if (handle_ < 0) ThrowSystemError(errno, path);
  }
  ~Handle() {
    if (handle_ >= 0) ::close(handle_);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  int Get() const { return handle_; }
  void Close() {
    int result = ::close(handle_);
    handle_ = -1;
    if (result != 0) ThrowSystemError(errno, path_);
  }

 private:
  std::string path_;
  int handle_ = -1;
};

struct CopyJob {
  const std::string& fromPath;
  const std::string& toPath;
  int from;
  int to;
  uint64_t size;
  const std::function<bool()>& goOn;
};

#ifdef __linux__

// Both names share the blocks until one is written to. False where the file system has no such way.
bool ShareBlocks(const CopyJob& job) {
  return ::ioctl(job.to, FICLONE, job.from) == 0;
}

// One piece without a way through this program; -1 where that is not possible between these files.
ssize_t CopyPieceInKernel(const CopyJob& job, size_t count) {
  ssize_t done = ::copy_file_range(job.from, nullptr, job.to, nullptr, count, 0);
  if (done >= 0) return done;
  if (errno == EXDEV || errno == ENOSYS || errno == EINVAL || errno == EOPNOTSUPP ||
      errno == EBADF) {
    return -1;
  }
  ThrowSystemError(errno, job.toPath);
}

#else

bool ShareBlocks(const CopyJob&) {
  return false;
}

ssize_t CopyPieceInKernel(const CopyJob&, size_t) {
  return -1;
}

#endif

void WriteWhole(const CopyJob& job, const char* data, size_t count) {
  while (count > 0) {
    ssize_t done = ::write(job.to, data, count);
    if (done < 0) {
      if (errno == EINTR) continue;
      ThrowSystemError(errno, job.toPath);
    }
    data += done;
    count -= static_cast<size_t>(done);
  }
}

// Up to count bytes through a buffer of ours; 0 at the end of the file.
size_t CopyPieceByHand(const CopyJob& job, size_t count, std::string& buffer) {
  buffer.resize(kBuffer);
  ssize_t got = 0;
  do {
    got = ::read(job.from, buffer.data(), std::min(count, buffer.size()));
  } while (got < 0 && errno == EINTR);
  if (got < 0) ThrowSystemError(errno, job.fromPath);
  WriteWhole(job, buffer.data(), static_cast<size_t>(got));
  return static_cast<size_t>(got);
}

// False when goOn ended it.
bool CopyPieces(const CopyJob& job) {
  bool inKernel = true;
  std::string buffer;
  for (uint64_t done = 0; done < job.size;) {
    if (job.goOn && !job.goOn()) return false;
    PassFileFault(FileOperation::kRead, job.fromPath);
    PassFileFault(FileOperation::kWrite, job.toPath);
    auto count = static_cast<size_t>(std::min<uint64_t>(job.size - done, kPiece));
    if (inKernel) {
      // A file system that answers 0 before the end can't do it either.
      ssize_t piece = CopyPieceInKernel(job, count);
      if (piece > 0) {
        done += static_cast<uint64_t>(piece);
        continue;
      }
      inKernel = false;
    }
    size_t piece = CopyPieceByHand(job, count, buffer);
    if (piece == 0) throw Error(ErrorNumber::kPathAccess, "File has shrunk: " + job.fromPath);
    done += piece;
  }
  return true;
}

}  // namespace

bool CopyFile(const std::string& from, const std::string& to, const std::function<bool()>& goOn) {
  PassFileFault(FileOperation::kCopy, to);
  Handle input(from, O_RDONLY);
  struct stat status {};
  if (::fstat(input.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    throw Error(ErrorNumber::kPathAccess, "Path/File access error: " + from);
  }
  if (IsSameFile(from, to)) throw Error(ErrorNumber::kPathAccess, "Same file: " + to);
  Handle output(to, O_WRONLY | O_CREAT | O_TRUNC);
  CopyJob job{from, to, input.Get(), output.Get(), static_cast<uint64_t>(status.st_size), goOn};
  if (!ShareBlocks(job) && !CopyPieces(job)) return false;
  output.Close();
  FlushToDisk(to);
  return true;
}

bool LinkFile(const std::string& from, const std::string& to) {
  try {
    PassFileFault(FileOperation::kLink, to);
  } catch (const Error&) {
    return false;
  }
  std::error_code code;
  std::filesystem::create_hard_link(from, to, code);
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
  constexpr auto kStep = static_cast<off_t>(kPiece);
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
#ifndef _WIN32
  int handle = ::open(path.empty() ? "." : path.c_str(), O_RDONLY | O_CLOEXEC);
  if (handle < 0) ThrowSystemError(errno, path);
  int result = ::fsync(handle);
  int code = errno;
  ::close(handle);
  // A folder on some network file systems can't be flushed; there is no more to be had there.
  if (result != 0 && code != EINVAL) ThrowSystemError(code, path);
#else
  (void)path;
#endif
}

bool IsSameFile(const std::string& a, const std::string& b) {
  std::error_code code;
  return std::filesystem::equivalent(a, b, code) && !code;
}

}  // namespace tarnwick::platform
