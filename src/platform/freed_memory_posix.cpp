// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/freed_memory.h"

#include <malloc.h>

namespace tarnwick::platform {

namespace {

// What lies behind all that is in use is given back where it is more than most; a value of so much
// has memory of its own, which is given back with it.
void GiveBack(int most, int ofItsOwn) {
  mallopt(M_TRIM_THRESHOLD, most);
  mallopt(M_MMAP_THRESHOLD, ofItsOwn);
}

}  // namespace

FreedMemoryKept::FreedMemoryKept() {
  GiveBack(16 << 20, 4 << 20);
}

FreedMemoryKept::~FreedMemoryKept() {
  GiveBack(1 << 20, 512 << 10);
  malloc_trim(0);
}

}  // namespace tarnwick::platform
