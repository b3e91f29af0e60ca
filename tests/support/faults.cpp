// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "support/faults.h"

#include <utility>

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

}  // namespace tarnwick::testing
