// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <algorithm>
#include <cerrno>

#include "platform/error.h"
#include "platform/file_errors.h"
#include "platform/files.h"
#include "platform/system_files.h"

namespace tarnwick::platform {

namespace {

// Large enough for the kernel to copy at full speed, small enough to react between two pieces.
constexpr size_t kPiece = size_t{16} * 1024 * 1024;
constexpr size_t kBuffer = size_t{1024} * 1024;

class Handle {
 public:
  Handle(const std::string& path, system::Use use) : path_(path) {
    PassFileFault(FileOperation::kOpen, path);
    handle_ = system::Open(path, use);
    if (handle_ < 0) ThrowSystemError(errno, path);
  }
  ~Handle() {
    if (handle_ >= 0) system::Close(handle_);
  }
  Handle(const Handle&) = delete;
  Handle& operator=(const Handle&) = delete;

  int Get() const { return handle_; }
  void Close() {
    int result = system::Close(handle_);
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

void WriteWhole(const CopyJob& job, const char* data, size_t count) {
  while (count > 0) {
    int64_t done = system::Write(job.to, data, count);
    if (done < 0) {
      if (errno == EINTR) continue;
      ThrowSystemError(errno, job.toPath);
    }
    data += done;
    count -= static_cast<size_t>(done);
  }
}

// Up to count bytes from a place on through a buffer of ours; 0 at the end of the file.
size_t CopyPieceByHand(const CopyJob& job, uint64_t place, size_t count, std::string& buffer) {
  buffer.resize(kBuffer);
  int64_t got = 0;
  do {
    got = system::ReadAt(job.from, place, buffer.data(), std::min(count, buffer.size()));
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
      std::optional<int64_t> piece = system::CopyPiece(job.from, job.to, count);
      if (piece && *piece < 0) ThrowSystemError(errno, job.toPath);
      if (piece && *piece > 0) {
        done += static_cast<uint64_t>(*piece);
        continue;
      }
      inKernel = false;
    }
    size_t piece = CopyPieceByHand(job, done, count, buffer);
    if (piece == 0) throw Error(ErrorNumber::kPathAccess, "File has shrunk: " + job.fromPath);
    done += piece;
  }
  return true;
}

}  // namespace

bool CopyFile(const std::string& from, const std::string& to, const std::function<bool()>& goOn) {
  PassFileFault(FileOperation::kCopy, to);
  Handle input(from, system::Use::kRead);
  int64_t size = system::SizeOf(input.Get());
  if (size < 0) throw Error(ErrorNumber::kPathAccess, "Path/File access error: " + from);
  if (IsSameFile(from, to)) throw Error(ErrorNumber::kPathAccess, "Same file: " + to);
  Handle output(to, system::Use::kWriteAnew);
  CopyJob job{from, to, input.Get(), output.Get(), static_cast<uint64_t>(size), goOn};
  if (!system::ShareBlocks(job.from, job.to) && !CopyPieces(job)) return false;
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
  return system::Link(from, to);
}

bool IsSameFile(const std::string& a, const std::string& b) {
  auto identity = system::IdentityOf(a);
  return identity && identity == system::IdentityOf(b);
}

}  // namespace tarnwick::platform
