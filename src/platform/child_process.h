// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A helper program started beside ours, with one channel of bytes in both directions on its
// standard input. What it prints goes nowhere, it inherits no other open file, and it ends when the
// channel closes or when it is killed. For work on untrusted files: whatever becomes of the child,
// the calls here return within their time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::platform {

class ChildProcess {
 public:
  // Starts program (a path, never searched for) with arguments. Throws Error 53 when there is no
  // such program, 75 when it can't be started.
  ChildProcess(const std::string& program, const std::vector<std::string>& arguments);
  ~ChildProcess();  // kills it
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  // False when the child is gone or did not take the bytes within the time.
  bool Write(std::string_view bytes, int64_t timeoutMilliseconds);
  // Waits until something can be read and reads at most count bytes; 0 when the child is gone or
  // nothing came within the time.
  size_t Read(void* buffer, size_t count, int64_t timeoutMilliseconds);

  // Whether a read found the child gone, as opposed to slow.
  bool HasEnded() const { return hasEnded_; }

  // Ends it at once; later calls find it gone.
  void Kill();
  // For tests and messages; 0 when it is gone.
  int64_t Id() const { return id_; }

 private:
  bool WaitFor(short events, int64_t deadline);
  int64_t id_ = 0;
  int channel_ = -1;
  bool hasEnded_ = false;
};

// The child's side, called first in its main: the parent's death ends it, and it can neither write
// files, nor open more than a few, nor map more than maxMemory bytes (0: no limit), nor leave a
// core file. Descriptors other than 0, 1 and 2 are closed.
void ConfineThisProcess(uint64_t maxMemory);
// Ends this process when it uses more than this many seconds of processor time from now on.
void LimitProcessorTime(int64_t seconds);

}  // namespace tarnwick::platform
