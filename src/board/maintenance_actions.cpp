// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/maintenance_actions.h"

#include <QDir>
#include <QFileDialog>
#include <QFileInfo>

#include "board/list_query.h"
#include "maintenance/backup.h"
#include "maintenance/check.h"
#include "maintenance/export.h"
#include "maintenance/merge.h"
#include "maintenance/protect.h"
#include "maintenance/restore.h"
#include "options/password_dialog.h"
#include "repository/file_place.h"

namespace tarnwick::board {

MaintenanceActions::MaintenanceActions(BoardActions& actions, Runner run,
                                       std::function<void()> listAnew, QWidget* window)
    : QObject(window), run_(std::move(run)), listAnew_(std::move(listAnew)), window_(window) {
  const struct {
    QAction* action;
    Command command;
  } commands[] = {{actions.backup, Command::kBackup},
                  {actions.restore, Command::kRestore},
                  {actions.exportListed, Command::kExport},
                  {actions.merge, Command::kMerge},
                  {actions.check, Command::kCheck}};
  for (const auto& entry : commands) {
    connect(entry.action, &QAction::triggered, this,
            [this, command = entry.command] { AskAndWork(command); });
  }
  connect(actions.protect, &QAction::triggered, this, &MaintenanceActions::Protect);
}

void MaintenanceActions::AskAndWork(Command command) {
  // The routines ask themselves about a file that exists.
  constexpr auto kOptions = QFileDialog::DontConfirmOverwrite;
  QString filter = QString(maintenance::kFileFilter).section('|', 0, 0);
  const QString last = QString::fromStdString(repository::LastFolder());
  QString file;
  switch (command) {
    case Command::kBackup:
      file = QFileDialog::getSaveFileName(
          window_, tr(maintenance::kBackupTitle),
          last + QString::fromStdString(maintenance::ProposedBackupName()), filter, nullptr,
          kOptions);
      break;
    case Command::kExport:
      file = QFileDialog::getSaveFileName(window_, tr(maintenance::kExportTitle), last, filter,
                                          nullptr, kOptions);
      break;
    case Command::kRestore:
      file = QFileDialog::getOpenFileName(window_, tr(maintenance::kRestoreTitle), last, filter);
      break;
    case Command::kMerge:
      file = QFileDialog::getOpenFileName(window_, tr(maintenance::kMergeTitle), last, filter);
      break;
    case Command::kCheck:
      return Work(command, {});
  }
  if (file.isEmpty()) return;
  repository::RememberFolderOf(file.toStdString());
  bool isWritten = command == Command::kBackup || command == Command::kExport;
  if (isWritten && !QFileInfo(file).fileName().contains('.')) file += ".twb";
  Work(command, file);
}

void MaintenanceActions::Protect() {
  using options::ProtectDialog;
  std::function<bool(const platform::Secret&)> isOwn;
  if (maintenance::IsProtected()) isOwn = maintenance::IsOwnPassword;
  ProtectDialog dialog(std::move(isOwn), window_);
  if (dialog.exec() != QDialog::Accepted) return;
  run_([&] {
    if (dialog.Chosen() == ProtectDialog::Choice::kTakeOff) {
      maintenance::UnprotectRepository(listAnew_);
    } else {
      maintenance::ProtectRepository(dialog.NewPassword(), listAnew_);
    }
  });
}

void MaintenanceActions::Work(Command command, const QString& file) {
  run_([&] {
    std::string path = QDir::toNativeSeparators(file).toStdString();
    switch (command) {
      case Command::kBackup:
        maintenance::MakeBackup(path);
        break;
      case Command::kRestore:
        maintenance::RestoreBackup(path, listAnew_);
        break;
      case Command::kExport:
        if (CompleteList()) maintenance::ExportEmails(path, Board().ListRecordset);
        break;
      case Command::kMerge:
        maintenance::twMakeMarge(path);
        break;
      case Command::kCheck:
        maintenance::CheckAndTell();
        break;
    }
  });
}

}  // namespace tarnwick::board
