// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One run of an operation: its flags, its progress, and the events that are let run meanwhile.
// Internal to the room.
#pragma once

#include <cstdint>
#include <functional>

#include "database/connection.h"
#include "maintenance/result.h"
#include "platform/error.h"

namespace tarnwick::maintenance {

class Run {
 public:
  explicit Run(int64_t total);  // in whatever is counted; 0 when it is not known yet
  ~Run();
  Run(const Run&) = delete;
  Run& operator=(const Run&) = delete;

  // Counts from 0 towards another total.
  void Begin(int64_t total);
  // What a watched statement has written counts while it runs; once it is done, its whole is given
  // here.
  void Advance(int64_t count);

  // Shows the progress and lets events run, a few dozen times a second at most. False once the stop
  // command was given.
  bool Look();

  // Looks while statements of the connection run; with mayStop the stop command ends them.
  void Watch(jet::Connection& connection, bool mayStop);
  void EndWatch();

 private:
  int64_t RowsOfStatement() const;

  jet::Connection* watched_ = nullptr;
  int64_t rowsBefore_ = 0;
  int64_t done_ = 0;
  int64_t shown_ = 0;  // never goes back
  int64_t total_;
  int64_t lastLook_ = 0;
};

// Takes a connection that ends before the run does out of its sight.
class WatchScope {
 public:
  WatchScope(Run& run, jet::Connection& connection, bool mayStop) : run_(run) {
    run.Watch(connection, mayStop);
  }
  ~WatchScope() { run_.EndWatch(); }
  WatchScope(const WatchScope&) = delete;
  WatchScope& operator=(const WatchScope&) = delete;

 private:
  Run& run_;
};

// Runs body; a statement ended by the stop command becomes kStopped.
Result UntilStopped(const std::function<Result()>& body);

}  // namespace tarnwick::maintenance
