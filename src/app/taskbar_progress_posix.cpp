// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "taskbar_progress.h"

namespace tarnwick::app {

// Desktops agree on no such thing.
void FollowProgress(board::MainBoard& /*window*/) {}

}  // namespace tarnwick::app
