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
  if (!isDark) return;
  application.setStyle("fusion");
  // In Qt's own every other row looks selected, and every box ticked.
  QPalette rows;
  rows.setColor(QPalette::AlternateBase, colours.color(QPalette::Base).lighter(120));
  QApplication::setPalette(rows);
  for (const char* box : {"QCheckBox", "QRadioButton"}) {
    QPalette plain = QApplication::palette(box);
    plain.setColor(QPalette::Base, colours.color(QPalette::Base));
    plain.setColor(QPalette::Button, colours.color(QPalette::Button));
    QApplication::setPalette(plain, box);
  }
}

}  // namespace tarnwick::app
