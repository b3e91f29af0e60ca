// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a system wants besides for the windows to look like its own.
#pragma once

class QApplication;

namespace tarnwick::app {

void PrepareLook();  // before there is an application
void ApplyLook(QApplication& application);

}  // namespace tarnwick::app
