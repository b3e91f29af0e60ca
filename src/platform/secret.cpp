// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/secret.h"

#include <algorithm>
#include <utility>

#ifdef __linux__
#include <sys/prctl.h>
#endif
#ifndef _WIN32
#include <sys/resource.h>
#endif

namespace tarnwick::platform {

Secret::Secret(std::string_view bytes) : Secret(bytes.size()) {
  std::copy(bytes.begin(), bytes.end(), data_);
}

Secret::Secret(Secret&& other) noexcept
    : data_(std::exchange(other.data_, nullptr)), size_(std::exchange(other.size_, 0)) {}

Secret& Secret::operator=(Secret&& other) noexcept {
  std::swap(data_, other.data_);
  std::swap(size_, other.size_);
  return *this;
}

#ifdef _WIN32

NoMemoryImage::NoMemoryImage() = default;
NoMemoryImage::~NoMemoryImage() = default;

#else

namespace {

struct FormerLimits {
  int count = 0;  // of those that live
  rlimit core = {};
};

FormerLimits& Former() {
  static FormerLimits former;
  return former;
}

// A debugger or a sanitizer that is at work already keeps its sight.
void MayBeLookedInto(bool may) {
#ifdef __linux__
  prctl(PR_SET_DUMPABLE, may ? 1 : 0, 0, 0, 0);
#else
  (void)may;
#endif
}

}  // namespace

NoMemoryImage::NoMemoryImage() {
  FormerLimits& former = Former();
  if (former.count++ > 0) return;
  getrlimit(RLIMIT_CORE, &former.core);
  rlimit none = former.core;
  none.rlim_cur = 0;
  setrlimit(RLIMIT_CORE, &none);
  MayBeLookedInto(false);
}

NoMemoryImage::~NoMemoryImage() {
  FormerLimits& former = Former();
  if (--former.count > 0) return;
  setrlimit(RLIMIT_CORE, &former.core);
  MayBeLookedInto(true);
}

#endif

}  // namespace tarnwick::platform
