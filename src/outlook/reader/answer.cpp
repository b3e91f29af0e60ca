// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/reader/answer.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "outlook/pst_protocol.h"

namespace tarnwick::outlook::reader {

namespace {

constexpr int kChannel = 0;

void ReadFully(char* to, size_t count) {
  while (count > 0) {
    ssize_t got = read(kChannel, to, count);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) throw ChannelClosed();
    to += got;
    count -= static_cast<size_t>(got);
  }
}

}  // namespace

void Answer::Property(uint16_t number, uint16_t type, std::string_view bytes) {
  std::string payload;
  PutNumber(payload, number, 2);
  PutNumber(payload, type, 2);
  PutNumber(payload, static_cast<uint32_t>(bytes.size()));
  std::string_view first = bytes.substr(0, kMaxFrame - kPropertyHeader);
  Frame(frame::kProperty, payload.append(first));
  bytes.remove_prefix(first.size());
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
    buffer_ += MakeFrame(kind, piece);
    if (buffer_.size() >= kMaxFrame) Flush();
    payload.remove_prefix(piece.size());
  } while (!payload.empty());
}

void Answer::Flush() {
  std::string_view left = buffer_;
  while (!left.empty()) {
    ssize_t count = write(kChannel, left.data(), left.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) throw ChannelClosed();
    left.remove_prefix(static_cast<size_t>(count));
  }
  buffer_.clear();
}

char ReadRequest(std::string& payload) {
  char header[kFrameHeader];
  ReadFully(header, sizeof header);
  uint32_t length = TakeNumber({header, sizeof header}, 1);
  payload.resize(std::min<size_t>(length, kMaxFrame));
  ReadFully(payload.data(), payload.size());
  return header[0];
}

}  // namespace tarnwick::outlook::reader
