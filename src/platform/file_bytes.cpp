// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The bytes of open files: reading at places and line by line, writing anew, in place and behind.
#include <algorithm>
#include <cassert>
#include <cerrno>
#include <utility>

#include "platform/error.h"
#include "platform/file_errors.h"
#include "platform/files.h"
#include "platform/system_files.h"

namespace tarnwick::platform {

namespace {

constexpr size_t kBufferSize = size_t{64} * 1024;

int OpenForReading(const std::string& path) {
  PassFileFault(FileOperation::kOpen, path);
  int handle = system::Open(path, system::Use::kRead);
  if (handle < 0) ThrowSystemError(errno, path);
  return handle;
}

}  // namespace

std::string ReadFile(const std::string& path, uint64_t limit) {
  InputFile file(path);
  if (file.Size() > limit) {
    throw Error(ErrorNumber::kPathAccess, "File is too large: " + path);
  }
  std::string bytes(file.Size(), '\0');
  bytes.resize(file.ReadAt(0, bytes.data(), bytes.size()));
  return bytes;
}

void WriteFile(const std::string& path, std::string_view bytes) {
  OutputFile file(path);
  file.Write(bytes);
  file.Close();
}

namespace {

// Asked for once: whoever shuts itself in can't ask for it any more.
struct HandedOver {
  int handle = system::HandedFile();
  int64_t size = system::SizeOf(handle);
};

const HandedOver& TheHanded() {
  static const HandedOver handed;
  return handed;
}

}  // namespace

InputFile::InputFile(const std::string& path)
    : InputFile(path == kHandedName ? TheHanded().handle : OpenForReading(path), path,
                path != kHandedName) {}

InputFile::InputFile(int handle, std::string path, bool isOurs)
    : path_(std::move(path)), handle_(handle), isOurs_(isOurs) {
  int64_t size = isOurs ? system::SizeOf(handle_) : TheHanded().size;
  if (size < 0) {
    if (isOurs) system::Close(handle_);
    throw Error(ErrorNumber::kPathAccess, "Path/File access error: " + path_);
  }
  size_ = static_cast<uint64_t>(size);
}

InputFile InputFile::Handed() {
  return InputFile(kHandedName);
}

InputFile::~InputFile() {
  if (isOurs_) system::Close(handle_);
}

size_t InputFile::ReadAt(uint64_t offset, void* buffer, size_t count) {
  PassFileFault(FileOperation::kRead, path_);
  if (offset > INT64_MAX) return 0;
  size_t total = 0;
  while (total < count) {
    int64_t got =
        system::ReadAt(handle_, offset + total, static_cast<char*>(buffer) + total, count - total);
    if (got < 0) {
      if (errno == EINTR) continue;
      ThrowSystemError(errno, path_);
    }
    if (got == 0) break;
    total += static_cast<size_t>(got);
  }
  return total;
}

OutputFile::OutputFile(const std::string& path, Replace replace)
    : path_(path), inPlace_(replace == Replace::kInPlace) {
  PassFileFault(FileOperation::kOpen, path);
  handle_ = system::Open(path, inPlace_ ? system::Use::kWriteInPlace : system::Use::kWriteAnew);
  if (handle_ < 0) ThrowSystemError(errno, path);
}

OutputFile::~OutputFile() {
  if (handle_ < 0) return;
  try {
    Close();
  } catch (const Error&) {
    // Close was not called, so nobody waits for the news.
  }
}

void OutputFile::Write(std::string_view bytes) {
  if (buffer_.size() + bytes.size() > kBufferSize) Flush();
  if (bytes.size() >= kBufferSize) {
    buffer_.assign(bytes);
    Flush();
  } else {
    buffer_.append(bytes);
  }
}

void OutputFile::Flush() {
  // Also when it fails: bytes of which a part was written must not be written once more.
  std::string pending;
  pending.swap(buffer_);
  std::string_view rest = pending;
  if (rest.empty()) return;
  PassFileFault(FileOperation::kWrite, path_);
  while (!rest.empty()) {
    int64_t done = system::Write(handle_, rest.data(), rest.size());
    if (done < 0) {
      if (errno == EINTR) continue;
      ThrowSystemError(errno, path_);
    }
    rest.remove_prefix(static_cast<size_t>(done));
    written_ += static_cast<uint64_t>(done);
  }
  pending.clear();
  pending.swap(buffer_);  // keeps its room
}

bool OutputFile::CutToWritten() {
  return !inPlace_ || system::Cut(handle_, written_);
}

// Cutting it for each of many texts costs more than writing them.
void OutputFile::Complete() {
  assert(inPlace_);
  Flush();
  if (!system::Rewind(handle_)) ThrowSystemError(errno, path_);
  length_ = std::exchange(written_, 0);
}

void OutputFile::Close() {
  if (handle_ < 0) return;
  try {
    Flush();
  } catch (...) {
    system::Close(handle_);
    handle_ = -1;
    throw;
  }
  if (written_ == 0 && length_) written_ = *length_;
  bool isDone = CutToWritten();
  int code = errno;
  if (system::Close(handle_) != 0 && isDone) {
    isDone = false;
    code = errno;
  }
  handle_ = -1;
  if (!isDone) ThrowSystemError(code, path_);
}

bool AppendToFile(const std::string& path, std::string_view bytes) {
  return AppendedFile(path).Append(bytes);
}

AppendedFile::AppendedFile(const std::string& path)
    : path_(path), handle_(system::Open(path, system::Use::kAppend)) {}

AppendedFile::~AppendedFile() {
  if (handle_ >= 0) system::Close(handle_);
}

bool AppendedFile::Append(std::string_view bytes) {
  return handle_ >= 0 &&
         system::Write(handle_, bytes.data(), bytes.size()) == static_cast<int64_t>(bytes.size());
}

LineReader::LineReader(const std::string& path) : file_(std::make_unique<InputFile>(path)) {}

bool LineReader::Fill() {
  if (!file_) return false;
  // Long lines double the piece, so that a line of any length is read in linear time.
  size_t old = text_.size();
  size_t piece = std::max(kBufferSize, old);
  piece = static_cast<size_t>(
      std::min<uint64_t>(piece, file_->Size() - std::min(offset_, file_->Size())));
  if (piece == 0) return false;
  buffer_.erase(0, buffer_.size() - old);
  buffer_.resize(old + piece);
  text_ = std::string_view(buffer_).substr(0, old);
  size_t got = file_->ReadAt(offset_, buffer_.data() + old, piece);
  buffer_.resize(old + got);
  text_ = buffer_;
  offset_ += got;
  return got > 0;
}

bool LineReader::AtEnd() {
  return text_.empty() && !Fill();
}

bool LineReader::Next(std::string& line) {
  line.clear();
  if (AtEnd()) return false;
  size_t searched = 0;
  size_t end = std::string_view::npos;
  for (;;) {
    end = text_.find('\n', searched);
    if (end != std::string_view::npos) break;
    searched = text_.size();
    if (!Fill()) break;
  }
  line.assign(text_.substr(0, end));
  text_.remove_prefix(end == std::string_view::npos ? text_.size() : end + 1);
  if (!line.empty() && line.back() == '\r') line.pop_back();
  return true;
}

}  // namespace tarnwick::platform
