// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The reader's end of the channel: requests in, frames out. Answers to requests that follow each
// other closely leave together. Throws ChannelClosed when the program at the other end is gone.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::outlook::reader {

struct ChannelClosed {};
// The answer to a request grew beyond its limit.
struct TooLong {};

class Answer {
 public:
  using Sink = std::function<void(std::string_view)>;
  explicit Answer(Sink sink) : sink_(std::move(sink)) {}

  // Begins the answer to a request. With a limit all of it is held back until Commit, and a frame
  // beyond it throws TooLong.
  void Begin(size_t limit = 0);
  // Takes back what a limited answer holds so far.
  void Drop();
  void Commit();
  // So many bytes will follow: throws TooLong at once where they find no room.
  void Expect(uint64_t size) const;

  void Property(uint16_t number, uint16_t type, std::string_view bytes);
  // A property whose bytes follow, size of them if all goes well, through Continue.
  void BeginProperty(uint16_t number, uint16_t type, size_t size);
  void Continue(std::string_view bytes);
  void Nodes(char kind, const std::vector<uint32_t>& nodes);
  // Payloads longer than a frame take several.
  void Frame(char kind, std::string_view payload);
  void Flush();

 private:
  Sink sink_;
  std::string buffer_;
  size_t begin_ = 0;  // of the current answer in buffer_
  size_t limit_ = 0;
};

class Channel {
 public:
  // The next request's kind and payload; throws ChannelClosed at the end.
  char ReadRequest(std::string& payload);
  // Whether (a part of) another request has come already.
  bool HasMore() const { return position_ < buffer_.size(); }
  void Write(std::string_view bytes);

 private:
  void Need(size_t count);
  std::string buffer_;
  size_t position_ = 0;
};

}  // namespace tarnwick::outlook::reader
