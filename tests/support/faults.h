// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Ways for an operation to fail at every one of its steps.
#pragma once

#include <cstdint>
#include <functional>

namespace tarnwick::testing {

// While it lives, file operation number step (from 0) of the platform fails as a full disk, or,
// with before, comes after that was run.
class FailingFileStep {
 public:
  explicit FailingFileStep(int step, std::function<void()> before = {});
  ~FailingFileStep();
  FailingFileStep(const FailingFileStep&) = delete;
  FailingFileStep& operator=(const FailingFileStep&) = delete;

  bool Happened() const { return happened_; }

 private:
  int left_;
  std::function<void()> before_;
  bool happened_ = false;
};

// While it lives, no file grows beyond this size: writing there fails, for the engine too.
class FileSizeLimit {
 public:
  explicit FileSizeLimit(uint64_t bytes);
  ~FileSizeLimit();
  FileSizeLimit(const FileSizeLimit&) = delete;
  FileSizeLimit& operator=(const FileSizeLimit&) = delete;

 private:
  uint64_t former_;
};

// Runs body in a child process. True when it came to its end. REQUIRES: no repository is open.
bool RunInChild(const std::function<void()>& body);

}  // namespace tarnwick::testing
