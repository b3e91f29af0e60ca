// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/ahead.h"

namespace tarnwick::platform {

// One, until a second thread can end there: the compiler's library lets the memory of thread-local
// values go before it destroys them.
int ProcessorCount() {
  return 1;
}

}  // namespace tarnwick::platform
