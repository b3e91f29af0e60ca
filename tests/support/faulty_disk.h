// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A disk below the engine that fails at a chosen call. It stands between the engine's encryption
// and the system, so that what is torn here is what a torn file would be. One process has one; it
// is there from Install on, and sound while no FaultyDisk lives.
#pragma once

#include <cstdint>

namespace tarnwick::testing {

enum class DiskFault {
  kFull,        // a write that finds no room, even for what is written over
  kNoRoom,      // a write that would make its file longer
  kShortWrite,  // a write of which half arrives
  kRead,
  kSync,
  kKill,  // the process ends in the middle of a write
};

class FaultyDisk {
 public:
  // REQUIRES: no database is open. May be repeated.
  static void Install();

  // Call number at (from 0) of the fault's kind fails; with forever all behind it do as well.
  FaultyDisk(DiskFault fault, int64_t at, bool forever = false);
  ~FaultyDisk();
  FaultyDisk(const FaultyDisk&) = delete;
  FaultyDisk& operator=(const FaultyDisk&) = delete;

  bool Happened() const;
  int64_t Calls() const;  // of the fault's kind so far
};

// Opens the program's repository anew on the faulty disk, with the fixture's clock going on by 40
// ms at each look, so that there is a commit every few messages.
void StartOnFaultyDisk();

}  // namespace tarnwick::testing
