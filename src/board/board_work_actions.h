// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One command of the main window runs at a time, and meanwhile everything else waits: the engine
// must not be asked twice at once. What runs long can be stopped.
#pragma once

#include <QObject>
#include <QPointer>
#include <functional>

#include "board/board_body_view.h"

namespace tarnwick::board {

class BoardWork : public QObject {
  Q_OBJECT

 public:
  BoardWork(const BoardParts& parts, QObject* parent);

  bool IsRunning() const { return running_; }

  // Runs a command, unless another one runs. What can be stopped tests the cancel flag.
  void Run(const std::function<void()>& command);
  // The same with the Stop button at hand.
  void RunStoppable(const std::function<void()>& command);

  // For work whose two ends lie apart.
  void Begin();
  void End();

  // Asks what runs to end soon.
  void Stop();
  // The same, and closes the window when it has ended.
  void StopAndClose();

 signals:
  void Ended();

 private:
  const BoardParts parts_;
  QPointer<QWidget> focusBefore_;
  bool running_ = false;
  bool closeAtEnd_ = false;
};

}  // namespace tarnwick::board
