// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#pragma once

class QApplication;

namespace tarnwick::app {

// What holds for every window: the program's name, version and icon, and that texts are plain.
void SetUpApplication(QApplication& application);

}  // namespace tarnwick::app
