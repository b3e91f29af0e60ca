// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A running tarnwick-reader and the frames (platform/frames.h) that go to it and come from it. The
// window lives on while they are waited for, and its stop ends the wait. Memory is taken as bytes
// come, not as they are promised.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/child_process.h"

namespace tarnwick::intake {

class ReaderChannel {
 public:
  // Thrown where the reader is gone or no longer to be believed; then the channel is of no use.
  struct Lost {
    const char* why;
  };
  struct Frame {
    char kind;
    std::string_view payload;
  };
  // How long a frame is waited for.
  struct Wait {
    int64_t silentMilliseconds;         // without a byte of it
    int64_t deadline;                   // platform::TickMilliseconds by which it is there
    int64_t patienceMilliseconds = 50;  // without a look at the window
  };

  // As platform::ChildProcess.
  ReaderChannel(const std::string& program, const platform::InputFile* file)
      : child_(program, file) {}

  void Send(std::string_view frames, int64_t milliseconds);
  // The next frame, valid until the next call; most: of its payload.
  Frame Receive(uint64_t most, const Wait& wait);
  int64_t ProcessId() const { return child_.Id(); }

 private:
  void Fill(size_t count, const Wait& wait);

  platform::ChildProcess child_;
  std::string buffer_;  // read and not yet used, from position_ to end_; behind it, room
  size_t position_ = 0;
  size_t end_ = 0;
};

}  // namespace tarnwick::intake
