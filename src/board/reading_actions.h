// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Reading: the pane that shows the selected letter below or beside the list, and the commands on
// letters that are looked at, printed or handed over.
#pragma once

#include <QTimer>

#include "board/layout_store.h"
#include "board/list_actions.h"

namespace tarnwick::board {

class ReadingActions : public QObject {
  Q_OBJECT

 public:
  ReadingActions(const BoardParts& parts, BoardWork& work, ListActions& list, QObject* parent);

  // The pane as it was left; in a new home it is below the list, where the window has room.
  void RestorePane();
  void SavePane() const;

  // Shows the letter in a window of its own.
  void OpenWindow(int64_t id);

 private:
  void SetPlace(ReadingPlace place);
  void Follow();
  void ShowSource(bool whole);
  void Print();
  void SavePdf();

  const BoardParts parts_;
  BoardWork& work_;
  ReadingPlace place_ = ReadingPlace::kOff;
  QTimer follow_;  // so that many changes of the selection at once are one
};

}  // namespace tarnwick::board
