// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Where the main window stands on the screen, from one run to the next.
#pragma once

#include <QWidget>

namespace tarnwick::board {

// Gives the window its stored place as far as it fits the screen, else a usual one in the middle.
// True when the window is as wide as it was left.
bool RestorePlace(QWidget& window);

void StorePlace(const QWidget& window);

}  // namespace tarnwick::board
