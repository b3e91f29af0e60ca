// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The style of Windows draws light windows alone. Where the system is dark another one draws them,
// in the system's colours.
#include "native_look.h"

#include <QApplication>
#include <QPalette>

namespace tarnwick::app {

void PrepareLook() {
  constexpr const char* kPlatform = "QT_QPA_PLATFORM";
  // Dark frames and dark colours where the system has them.
  if (!qEnvironmentVariableIsSet(kPlatform)) qputenv(kPlatform, "windows:darkmode=2");
}

void ApplyLook(QApplication& application) {
  const QPalette colours = QApplication::palette();
  bool isDark =
      colours.color(QPalette::Window).lightness() < colours.color(QPalette::WindowText).lightness();
  if (isDark) application.setStyle("fusion");
}

}  // namespace tarnwick::app
