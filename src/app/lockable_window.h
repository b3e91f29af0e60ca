// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The program's window while a repository is open, and the one that stands in its place while it is
// locked. Locking closes the repository, forgets its key and takes the whole main window down, with
// all that it shows of the mail; unlocking asks for the password and builds it anew.
#pragma once

#include <QObject>
#include <QTimer>
#include <memory>

#include "board/main_board_window.h"
#include "qt_user_interface.h"

namespace tarnwick::app {

class LockableWindow : public QObject {
  Q_OBJECT

 public:
  // ui outlives this and shows its status in the window.
  explicit LockableWindow(QtUserInterface& ui);
  ~LockableWindow() override;

  // Shows the open repository. False when its list can't be read; the reason has been shown.
  bool Open();
  // Does nothing while a command runs. Where a dialog is open it is closed first, and the lock
  // follows as soon as it is gone.
  void Lock();
  // Asks for the password; without the right one all stays as it is.
  void Unlock();
  bool IsLocked() const { return locked_ != nullptr; }
  QWidget& Window();  // the one that is shown

  // Locks a protected repository once nobody has touched mouse or keyboard for as long as the
  // options say. now: milliseconds of the wall clock, which goes on while the machine sleeps.
  void LockIfIdle(qint64 now);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  bool CloseDialogs();
  void ShowLocked();

  QtUserInterface& ui_;
  std::unique_ptr<board::MainBoard> window_;
  std::unique_ptr<QWidget> locked_;
  QTimer look_;
  QTimer again_;  // until the dialog that was closed is gone
  qint64 lastInput_;
};

}  // namespace tarnwick::app
