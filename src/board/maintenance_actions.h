// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The commands Backup, Restore, Export, Import, Check and Protect, put behind the window's actions:
// each asks for what it needs, most of them for a file, and works on it.
#pragma once

#include <QObject>
#include <functional>

#include "board/board_actions.h"

namespace tarnwick::board {

class MaintenanceActions : public QObject {
  Q_OBJECT

 public:
  // Runs a command during which nothing else of the window reads the repository, and lists it anew
  // afterwards.
  using Runner = std::function<void(const std::function<void()>&)>;

  // listAnew shows the repository as it is now, for a command that needs it before its end.
  MaintenanceActions(BoardActions& actions, Runner run, std::function<void()> listAnew,
                     QWidget* window);

  enum class Command { kBackup, kRestore, kExport, kMerge, kCheck };
  // Works on the file as the command does once it has been chosen; a check has none.
  void Work(Command command, const QString& file);

 private:
  void Protect();
  void AskAndWork(Command command);

  Runner run_;
  std::function<void()> listAnew_;
  QWidget* window_;
};

}  // namespace tarnwick::board
