// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A second start asks the program that runs already to come to the front: by a local socket in the
// program's folder, which only its owner can reach, or, on Windows, by an event of the folder's
// number. Nothing is read from it; to be called is all.
#pragma once

#include <cstdint>
#include <string>

namespace tarnwick::platform {

class RaiseSocket {
 public:
  // Listens until it is destroyed; what a killed program left there is replaced. Where that can't
  // be, Handle() is -1. REQUIRES: no other program works on the folder.
  explicit RaiseSocket(const std::string& folder);
  ~RaiseSocket();
  RaiseSocket(const RaiseSocket&) = delete;
  RaiseSocket& operator=(const RaiseSocket&) = delete;

  // The socket, readable when somebody calls, or the event, set then.
  intptr_t Handle() const { return handle_; }
  // Lets the callers go. True when there was one.
  bool TakeCalls() const;

 private:
  std::string path_;
  intptr_t handle_ = -1;
};

// True when a program listens in the folder, which has been called then.
bool AskToRaise(const std::string& folder);

}  // namespace tarnwick::platform
