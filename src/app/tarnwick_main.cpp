// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The graphical program.
#include <QApplication>
#include <QDir>
#include <QIcon>
#include <QPixmap>
#include <QTimer>

#include "board/list_query.h"
#include "board/main_board_window.h"
#include "core/guard.h"
#include "core/run_state.h"
#include "core/startup.h"
#include "core/version.h"
#include "maintenance/unfinished_restore.h"
#include "platform/files.h"
#include "qt_user_interface.h"
#include "repository/repository.h"

namespace {

constexpr int kFailed = 1;

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

// False when there is nothing to work on; the reason has been shown.
bool OpenAtStart() {
  namespace core = tarnwick::core;
  return core::Guarded("Main", false, [] {
    std::string program = tarnwick::platform::FolderOf(tarnwick::platform::ProgramPath());
    std::string appFolder = core::ChooseAppFolder(program);
    core::SeedAppFolder(appFolder, program);
    core::PrepareRun(appFolder);
    if (!tarnwick::repository::OpenRepository(false)) return false;
    tarnwick::repository::ReadOptions();
    tarnwick::maintenance::AskAboutUnfinishedRestore();
    return true;
  });
}

// Saves a picture of the window once its list is painted, and ends the program.
void TakePicture(QApplication& application, QWidget& window, const QString& file) {
  QTimer::singleShot(200, &window, [&application, &window, file] {
    bool saved = window.grab().save(file);
    window.close();
    application.exit(saved ? 0 : kFailed);
  });
}

int RunWindow(QApplication& application, tarnwick::app::QtUserInterface& ui,
              const QString& picture) {
  tarnwick::board::MainBoard window;
  ui.SetWindow(&window);
  if (!window.Load()) return kFailed;
  window.show();
  if (!picture.isEmpty()) TakePicture(application, window, picture);
  return application.exec();
}

}  // namespace

int main(int argc, char** argv) {
  QApplication application(argc, argv);
  QApplication::setApplicationName("tarnwick");
  QApplication::setApplicationDisplayName("Tarnwick");
  QApplication::setApplicationVersion(
      QString::fromStdString(std::string(tarnwick::core::Version())));
  SetDesktopIdentity();

  // A look at the program where there is no display: TARNWICK_PICTURE names the file.
  QString picture = qEnvironmentVariable("TARNWICK_PICTURE");
  tarnwick::app::QtUserInterface ui;
  ui.SetUnattended(!picture.isEmpty());
  tarnwick::core::State().Ui = &ui;
  int status = OpenAtStart() ? RunWindow(application, ui, picture) : kFailed;
  tarnwick::board::ResetBoard();
  tarnwick::repository::DisconnectRepository();
  tarnwick::core::State().Ui = nullptr;
  return status;
}
