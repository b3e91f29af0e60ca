// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The about box: the program's version, where the repository lies, and whose work is used under
// which licence. Version and icon are the application's (QApplication::applicationVersion,
// windowIcon).
#pragma once

#include <QDialog>

class QString;

namespace tarnwick::options {

class AboutDialog : public QDialog {
  Q_OBJECT

 public:
  // REQUIRES: a repository is open.
  explicit AboutDialog(QWidget* parent = nullptr);

 private:
  QWidget* MakeHead();
  QWidget* MakeLicences();
};

}  // namespace tarnwick::options
