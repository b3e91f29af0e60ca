// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What takes messages and their attachments out of the list: the command that saves messages and
// the menu of attachments, put behind the window's actions.
#pragma once

#include <QObject>
#include <functional>

#include "board/board_actions.h"
#include "board/email_grid_view.h"
#include "takeout/save_messages.h"

namespace tarnwick::board {

class TakeoutActions : public QObject {
  Q_OBJECT

 public:
  // Runs a command during which everything else of the window waits.
  using Runner = std::function<void(const std::function<void()>&)>;

  TakeoutActions(BoardActions& actions, EmailGridView& grid, Runner run, QWidget* window);

  // Saves as the command does once it has been chosen how; order's ids are filled in here.
  void Save(takeout::SaveOrder order, bool onlySelected);

 private:
  void AskAndSave();

  EmailGridView& grid_;
  Runner run_;
  QWidget* window_;
};

}  // namespace tarnwick::board
