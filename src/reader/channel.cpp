// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "channel.h"

#include <algorithm>

#include "platform/child_process.h"
#include "platform/frames.h"

namespace tarnwick {

namespace {

constexpr size_t kReadPiece = size_t{64} * 1024;
// The places of a lost text, each block's, are longer than the other requests together.
constexpr size_t kMostRequest = size_t{256} << 20;

}  // namespace

void Channel::Need(size_t count) {
  if (position_ > 0) buffer_.erase(0, position_);
  position_ = 0;
  while (buffer_.size() < count) {
    char piece[kReadPiece];
    size_t got = platform::ReadFromParent(piece, sizeof piece);
    if (got == 0) throw ChannelClosed();
    buffer_.append(piece, got);
  }
}

char Channel::ReadRequest(std::string& payload) {
  using platform::kFrameHead;
  Need(kFrameHead);
  char kind = buffer_[0];
  size_t length = std::min<size_t>(platform::FrameLength(buffer_), kMostRequest);
  Need(kFrameHead + length);
  payload = buffer_.substr(kFrameHead, length);
  position_ = kFrameHead + length;
  return kind;
}

void Channel::Write(std::string_view bytes) {
  if (!platform::WriteToParent(bytes)) throw ChannelClosed();
}

}  // namespace tarnwick
