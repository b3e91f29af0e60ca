// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "support/faults.h"

#include <csignal>
#include <stdexcept>
#include <utility>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::testing {

FailingFileStep::FailingFileStep(int step, std::function<void()> before)
    : left_(step), before_(std::move(before)) {
  platform::SetFileFault([this](platform::FileOperation, const std::string& path) {
    if (left_-- != 0) return;
    happened_ = true;
    if (before_) return before_();
    throw Error(ErrorNumber::kDiskFull, "Disk full: " + path);
  });
}

FailingFileStep::~FailingFileStep() {
  platform::SetFileFault(nullptr);
}

FileSizeLimit::FileSizeLimit(uint64_t bytes) {
  std::signal(SIGXFSZ, SIG_IGN);
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  former_ = limit.rlim_cur;
  limit.rlim_cur = bytes;
  if (setrlimit(RLIMIT_FSIZE, &limit) != 0) throw std::runtime_error("no file size limit");
}

FileSizeLimit::~FileSizeLimit() {
  rlimit limit{};
  getrlimit(RLIMIT_FSIZE, &limit);
  limit.rlim_cur = former_;
  setrlimit(RLIMIT_FSIZE, &limit);
}

bool RunInChild(const std::function<void()>& body) {
  pid_t child = fork();
  if (child < 0) throw std::runtime_error("no child process");
  if (child == 0) {
    try {
      body();
    } catch (...) {
      _exit(2);
    }
    _exit(0);
  }
  int status = 0;
  waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace tarnwick::testing
