// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/reader/answer.h"

#include <algorithm>

#include "outlook/pst_protocol.h"
#include "platform/child_process.h"
#include "platform/frames.h"

namespace tarnwick::outlook::reader {

namespace {

constexpr size_t kReadPiece = size_t{16} * 1024;
// The places of a lost text, each block's, are longer than the other requests together.
constexpr size_t kMostRequest = size_t{256} << 20;

}  // namespace

void Answer::Begin(size_t limit) {
  begin_ = buffer_.size();
  limit_ = limit;
}

void Answer::Drop() {
  buffer_.resize(begin_);
}

void Answer::Commit() {
  limit_ = 0;
  if (buffer_.size() >= kMaxFrame) Flush();
}

void Answer::Expect(uint64_t size) const {
  if (limit_ > 0 && size > limit_ - std::min(limit_, buffer_.size() - begin_)) throw TooLong();
}

void Answer::Property(uint16_t number, uint16_t type, std::string_view bytes) {
  BeginProperty(number, type, bytes.size());
  Continue(bytes);
}

void Answer::BeginProperty(uint16_t number, uint16_t type, size_t size) {
  std::string payload;
  PutNumber(payload, number, 2);
  PutNumber(payload, type, 2);
  PutNumber(payload, static_cast<uint32_t>(size));
  Expect(size);
  Frame(frame::kProperty, payload);
}

void Answer::Continue(std::string_view bytes) {
  if (!bytes.empty()) Frame(frame::kContinued, bytes);
}

void Answer::Nodes(char kind, const std::vector<uint32_t>& nodes) {
  std::string payload;
  for (uint32_t node : nodes) PutNumber(payload, node);
  if (!payload.empty()) Frame(kind, payload);
}

void Answer::Frame(char kind, std::string_view payload) {
  do {
    std::string_view piece = payload.substr(0, kMaxFrame);
    if (limit_ > 0 && buffer_.size() - begin_ + piece.size() > limit_) throw TooLong();
    platform::BeginFrame(buffer_, kind, piece.size());
    buffer_ += piece;
    if (limit_ == 0 && buffer_.size() >= kMaxFrame) Flush();
    payload.remove_prefix(piece.size());
  } while (!payload.empty());
}

void Answer::Flush() {
  sink_(buffer_);
  buffer_.clear();
  begin_ = 0;
}

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

}  // namespace tarnwick::outlook::reader
