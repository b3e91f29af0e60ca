// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <sys/resource.h>
#ifdef __linux__
#include <sys/prctl.h>
#endif

#include "platform/secret.h"

namespace tarnwick::platform {

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

}  // namespace tarnwick::platform
