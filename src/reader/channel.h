// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The reader's end of the channel to the program: requests in, answers out, both of them frames
// (platform/frames.h). Throws ChannelClosed when the program at the other end is gone.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarnwick {

struct ChannelClosed {};

class Channel {
 public:
  // The next request's kind and payload.
  char ReadRequest(std::string& payload);
  // Whether (a part of) another request has come already.
  bool HasMore() const { return position_ < buffer_.size(); }
  void Write(std::string_view bytes);

 private:
  void Need(size_t count);
  std::string buffer_;
  size_t position_ = 0;
};

}  // namespace tarnwick
