// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The raw bytes of one message. They stand in a file, as a rule the scratch file of a load, or, of
// a short one, in memory: then the file is not read, and need not be there.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/files.h"

namespace tarnwick::intake {

// Longer messages are not held in memory.
inline constexpr size_t kMostHeld = size_t{1} << 20;

class RawMessage {
 public:
  RawMessage(std::string file) : file_(std::move(file)) {}
  // bytes: all that the file holds, or would.
  RawMessage(std::string file, std::string bytes)
      : file_(std::move(file)), bytes_(std::move(bytes)) {}

  const std::string& File() const { return file_; }
  // nullopt where only the file has them.
  const std::optional<std::string>& Held() const { return bytes_; }
  std::string Bytes() && { return std::move(*bytes_); }  // REQUIRES: it has them

 private:
  std::string file_;
  std::optional<std::string> bytes_;
};

// Reads it piece by piece. The message outlives the reader. Throws Error for a file that can't be
// read.
class RawReader {
 public:
  explicit RawReader(const RawMessage& message) {
    if (message.Held()) {
      held_ = *message.Held();
    } else {
      file_.emplace(message.File());
    }
  }

  uint64_t Size() const { return file_ ? file_->Size() : held_.size(); }

  // Up to count bytes from offset on, fewer only at the end; valid until the next Read.
  std::string_view Read(uint64_t offset, size_t count) {
    if (!file_) return offset < held_.size() ? held_.substr(offset, count) : std::string_view();
    piece_.resize(count);
    piece_.resize(file_->ReadAt(offset, piece_.data(), count));
    return piece_;
  }

 private:
  std::string_view held_;
  std::optional<platform::InputFile> file_;
  std::string piece_;
};

// Its lines.
inline platform::LineReader LinesOf(const RawMessage& message) {
  return message.Held() ? platform::LineReader::OfBytes(*message.Held())
                        : platform::LineReader(message.File());
}

}  // namespace tarnwick::intake
