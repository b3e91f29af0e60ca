// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "application_setup.h"

#include <QApplication>
#include <QDir>
#include <QIcon>
#include <string>

#include "core/version.h"
#include "repository/plain_text_view.h"

namespace tarnwick::app {

namespace {

// The desktop knows the program by this name: menu entry, catalogue entry and icons bear it.
constexpr const char* kDesktopName = "org.tarnwick.Tarnwick";

// A theme's drawing goes before our own, which is in the program.
void SetDesktopIdentity() {
  QIcon own;
  const QDir drawings(":/icons");
  for (const QString& file : drawings.entryList()) own.addFile(drawings.filePath(file));
  QApplication::setDesktopFileName(kDesktopName);
  QApplication::setWindowIcon(QIcon::fromTheme(kDesktopName, own));
}

}  // namespace

void SetUpApplication(QApplication& application) {
  // No display name: the toolkit would add it to the caption of every window.
  QApplication::setApplicationName("tarnwick");
  QApplication::setApplicationVersion(QString::fromStdString(std::string(core::Version())));
  SetDesktopIdentity();
  repository::KeepTextsPlain(application);
}

}  // namespace tarnwick::app
