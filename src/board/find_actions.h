// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The command that looks for mail, and what is dropped on the window: a folder or a store is looked
// at first, letters and mailboxes are taken in at once.
#pragma once

#include <QStringList>

#include "board/board_work_actions.h"
#include "board/load_actions.h"

namespace tarnwick::board {

class FindActions : public QObject {
  Q_OBJECT

 public:
  FindActions(const BoardParts& parts, BoardWork& work, LoadActions& load, QObject* parent);

  // As if these files and folders had been dropped.
  void Take(const QStringList& paths);

 protected:
  bool eventFilter(QObject* window, QEvent* event) override;

 private:
  void Find(const QStringList& places);

  const BoardParts parts_;
  BoardWork& work_;
  LoadActions& load_;
};

}  // namespace tarnwick::board
