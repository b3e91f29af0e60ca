// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A helper program started beside ours, with one channel of bytes in both directions on its
// standard input. What it prints goes nowhere, it inherits no open file but the one handed to it,
// and it ends when the channel closes, when it is killed, or with us. For work on untrusted files:
// whatever becomes of the child, the calls here return within their time. The child shuts itself in
// by confinement.h.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

namespace tarnwick::platform {

class InputFile;

class ChildProcess {
 public:
  // Starts program (a path, never searched for); the child has the file as InputFile::Handed(), or
  // none (nullptr).
  // Throws Error 53 when there is no such program, 75 when it can't be started.
  ChildProcess(const std::string& program, const InputFile* file);
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
  struct Machinery;                       // the process and the channel, as the system has them
  std::unique_ptr<Machinery> machinery_;  // nothing once it is gone
  int64_t id_ = 0;
  bool hasEnded_ = false;
};

// The helper program's end of the channel. Reading waits for the first byte; 0, and false, when the
// channel is closed.
size_t ReadFromParent(void* buffer, size_t count);
bool WriteToParent(std::string_view bytes);
// Whether the parent has read nearly all that was written, and will have to wait. False where the
// system does not tell.
bool IsParentFaster();

}  // namespace tarnwick::platform
