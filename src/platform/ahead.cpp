// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/ahead.h"

namespace tarnwick::platform {

namespace {

int& Threads() {
  static int threads = 1;
  return threads;
}

}  // namespace

int WorkThreads() {
  return Threads();
}

void SetWorkThreads(int threads) {
  Threads() = threads;
}

}  // namespace tarnwick::platform
