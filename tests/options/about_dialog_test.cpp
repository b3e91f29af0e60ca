// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "options/about_dialog.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QTextBrowser>

#include "support/program_fixture.h"
#include "support/window_checks.h"

namespace tarnwick::options {
namespace {

class AboutDialogTest : public testing::ProgramFixture {};

TEST_F(AboutDialogTest, TellsVersionFolderAndLicences) {
  QApplication::setApplicationVersion("9.8.7");
  AboutDialog box;
  EXPECT_EQ(box.findChild<QLabel*>("Version")->text(), "Tarnwick 9.8.7");
  EXPECT_EQ(box.findChild<QLineEdit*>("RepositoryFolder")->text().toStdString(), folder_.Path());
  QString licences = box.findChild<QTextBrowser*>("Licences")->toPlainText();
  for (const char* name :
       {"MIT License", "Qt 6", "SQLite", "ICU", "libxml2", "Zstandard", "libseccomp", "libpff"}) {
    EXPECT_TRUE(licences.contains(name)) << name;
  }
  testing::CheckControls(box);
}

}  // namespace
}  // namespace tarnwick::options
