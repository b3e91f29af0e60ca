// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The graphical program.
#include <QApplication>
#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QPixmap>
#include <QTimer>

#include "application_setup.h"
#include "board/list_query.h"
#include "call_watch.h"
#include "core/guard.h"
#include "core/run_state.h"
#include "core/startup.h"
#include "desktop_keyring.h"
#include "intake/reader_link.h"
#include "lockable_window.h"
#include "maintenance/unfinished_restore.h"
#include "native_look.h"
#include "platform/environment.h"
#include "platform/files.h"
#include "platform/raise_socket.h"
#include "qt_user_interface.h"
#include "repository/app_folder.h"
#include "repository/keyring.h"
#include "repository/repository.h"

namespace {

constexpr int kFailed = 1;

enum class Start { kOpened, kRunsAlready, kRefused };

// Of a failure the reason has been shown. A program that runs already has come to the front.
Start OpenAtStart() {
  namespace core = tarnwick::core;
  return core::Guarded("Main", Start::kRefused, [] {
    std::string program = tarnwick::platform::FolderOf(tarnwick::platform::ProgramPath());
    std::string appFolder = tarnwick::repository::ChooseAppFolder(program);
    tarnwick::repository::SeedAppFolder(appFolder, program);
    bool isInUse = tarnwick::repository::IsInUse(appFolder);
    if (isInUse && tarnwick::platform::AskToRaise(appFolder)) return Start::kRunsAlready;
    core::PrepareRun(appFolder, isInUse);
    if (!tarnwick::repository::OpenRepository(false)) return Start::kRefused;
    tarnwick::repository::ReadOptions();
    tarnwick::maintenance::AskAboutUnfinishedRestore();
    return Start::kOpened;
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
  tarnwick::app::LockableWindow lockable(ui);
  if (!lockable.Open()) return kFailed;
  tarnwick::platform::RaiseSocket calls(tarnwick::core::State().AppFolder);
  auto watch = tarnwick::app::WatchCalls(calls, [&] {
    QWidget& window = lockable.Window();
    window.setWindowState(window.windowState() & ~Qt::WindowMinimized);
    window.raise();
    window.activateWindow();
  });
  if (!picture.isEmpty()) TakePicture(application, lockable.Window(), picture);
  return application.exec();
}

// Ends the program where it was started with anything else.
void TakeArguments(const QApplication& application) {
  QCommandLineParser parser;
  parser.setApplicationDescription("Keeps the mail of old mail programs, and shows it.");
  parser.addHelpOption();
  parser.addVersionOption();
  const QCommandLineOption home("home", "Keep the repository, the settings and the log in <DIR>.",
                                "DIR");
  parser.addOption(home);
  parser.process(application);
  constexpr int kWrongUsage = 2;
  if (!parser.positionalArguments().isEmpty()) parser.showHelp(kWrongUsage);
  if (parser.isSet(home)) {
    tarnwick::platform::SetEnvironmentText("TARNWICK_HOME", parser.value(home).toStdString());
  }
}

}  // namespace

int main(int argc, char** argv) {
  tarnwick::platform::KeepFreedMemory();
  tarnwick::app::PrepareLook();
  QApplication application(argc, argv);
  tarnwick::app::ApplyLook(application);
  tarnwick::app::SetUpApplication(application);
  TakeArguments(application);

  // A look at the program where there is no display: TARNWICK_PICTURE names the file.
  QString picture = qEnvironmentVariable("TARNWICK_PICTURE");
  tarnwick::app::QtUserInterface ui;
  ui.SetUnattended(!picture.isEmpty());
  tarnwick::core::State().Ui = &ui;
  tarnwick::app::DesktopKeyring keyring;
  tarnwick::repository::SetKeyring(&keyring);
  tarnwick::intake::SetReader(tarnwick::intake::ReaderProgram());
  Start start = OpenAtStart();
  int status = start == Start::kRunsAlready ? 0 : kFailed;
  if (start == Start::kOpened) status = RunWindow(application, ui, picture);
  tarnwick::board::ResetBoard();
  tarnwick::repository::LockRepository();
  tarnwick::repository::SetKeyring(nullptr);
  tarnwick::core::State().Ui = nullptr;
  return status;
}
