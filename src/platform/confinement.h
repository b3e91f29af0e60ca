// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// How a helper program that reads untrusted files shuts itself in before it reads the first byte of
// one: whoever takes it over through a fault in it gets a process that can answer over its channel
// and compute, and nothing else. What is lowered here can't be raised again.
//
// Two walls of the system do it, each enough by itself against most of what could be tried: a
// filter of system calls (seccomp), which lets through reading from and writing to what is open,
// memory that can't be executed, and the clock; and a domain without any file or network address
// (Landlock). Below them the limits of the process (setrlimit) hold on every system.
//
// Windows knows neither. There the process gives up its privileges and sinks to the lowest
// integrity, from which nothing can be written to and no other process be reached, and a job limits
// its memory and time and lets it start nothing; files that everybody may read could still be read.
#pragma once

#include <cstdint>

namespace tarnwick::platform {

// What stands around this process now.
struct Walls {
  bool systemCalls = false;  // only those that reading needs
  bool files = false;        // none can be named
  bool rights = false;       // none can be written to (Windows)

  bool HasAny() const { return systemCalls || files || rights; }
};

// The parent's death ends this process from now on; it can neither write nor open files, start
// processes, map more than maxMemory bytes, nor leave a core file. Descriptors other than 0, 1, 2
// and kHandedFile (files.h) are closed. maxMemory 0: no such limit, no filter of system calls and
// room for a few files, as the sanitizers need it.
Walls ConfineThisProcess(uint64_t maxMemory);

// Ends this process when it uses more than this many seconds of processor time from now on.
void LimitProcessorTime(int64_t seconds);

}  // namespace tarnwick::platform
