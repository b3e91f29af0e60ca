// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The steps of a command over many messages: shows how far it is, keeps the window answering and
// hears the stop command.
#pragma once

#include <cstdint>

namespace tarnwick::core {

class Steps {
 public:
  explicit Steps(int64_t total);
  ~Steps();  // ends the display
  Steps(const Steps&) = delete;
  Steps& operator=(const Steps&) = delete;

  // After each step; false when the person wants no more.
  bool Next();
  int64_t Done() const { return done_; }

 private:
  int64_t total_;
  int64_t done_ = 0;
  int64_t turnedAt_;
  bool shown_ = false;
};

}  // namespace tarnwick::core
