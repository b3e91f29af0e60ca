// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Where a system's task bar shows how far a program's run is, it shows what the status bar does.
#pragma once

namespace tarnwick::board {
class MainBoard;
}

namespace tarnwick::app {

// As long as the window lives.
void FollowProgress(board::MainBoard& window);

}  // namespace tarnwick::app
