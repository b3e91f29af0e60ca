// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/reader_channel.h"

#include <algorithm>

#include "core/messages.h"
#include "core/run_state.h"
#include "platform/clock.h"
#include "platform/frames.h"

namespace tarnwick::intake {

namespace {

constexpr size_t kReadPiece = size_t{128} * 1024;
constexpr size_t kMostKept = size_t{4} << 20;  // of a buffer that is empty

}  // namespace

void ReaderChannel::Send(std::string_view frames, int64_t milliseconds) {
  if (!child_.Write(frames, milliseconds)) throw Lost{"the reader ended"};
}

ReaderChannel::Frame ReaderChannel::Receive(uint64_t most, const Wait& wait) {
  Fill(platform::kFrameHead, wait);
  uint32_t length = platform::FrameLength(std::string_view(buffer_).substr(position_));
  if (length > most) throw Lost{"the answer is too long"};
  Fill(platform::kFrameHead + length, wait);
  std::string_view frame =
      std::string_view(buffer_).substr(position_, platform::kFrameHead + length);
  position_ += frame.size();
  return {frame[0], frame.substr(platform::kFrameHead)};
}

// Has so many bytes from position_ on.
void ReaderChannel::Fill(size_t count, const Wait& wait) {
  if (end_ - position_ >= count) return;
  std::copy(buffer_.begin() + static_cast<std::ptrdiff_t>(position_),
            buffer_.begin() + static_cast<std::ptrdiff_t>(end_), buffer_.begin());
  end_ -= position_;
  position_ = 0;
  if (end_ == 0 && buffer_.size() > kMostKept) std::string().swap(buffer_);
  int64_t silentUntil = platform::TickMilliseconds() + wait.silentMilliseconds;
  while (end_ < count) {
    if (buffer_.size() < end_ + kReadPiece) buffer_.resize(2 * end_ + kReadPiece);
    int64_t now = platform::TickMilliseconds();
    if (now > wait.deadline) throw Lost{"the answer takes too long"};
    int64_t left = silentUntil - now;
    size_t got = child_.Read(buffer_.data() + end_, buffer_.size() - end_,
                             std::min(left, wait.patienceMilliseconds));
    if (got > 0) {
      end_ += got;
      silentUntil = platform::TickMilliseconds() + wait.silentMilliseconds;
    } else if (left <= 0 || child_.HasEnded() || core::IsLoadStopped()) {
      throw Lost{"the reader ended or did not answer"};
    } else {
      core::YieldEvents();
    }
  }
}

}  // namespace tarnwick::intake
