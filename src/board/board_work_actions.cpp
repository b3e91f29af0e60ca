// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/board_work_actions.h"

#include <QTimer>

#include "board/load_command.h"

namespace tarnwick::board {

BoardWork::BoardWork(const BoardParts& parts, QObject* parent) : QObject(parent), parts_(parts) {
  connect(parts.actions->stop, &QAction::triggered, this, &BoardWork::Stop);
  connect(parts.status, &StatusPanelsView::StopAskedFor, this, &BoardWork::Stop);
}

void BoardWork::Run(const std::function<void()>& command) {
  if (running_) return;
  Begin();
  command();
  End();
}

void BoardWork::RunStoppable(const std::function<void()>& command) {
  Run([&] {
    parts_.status->SetPanel(core::StatusPanel::kProgress, {});
    parts_.status->SetBusy(true);
    command();
  });
}

void BoardWork::Begin() {
  running_ = true;
  parts_.actions->SetBusy(true);
  focusBefore_ = parts_.window->focusWidget();
  parts_.search->setEnabled(false);
  parts_.folders->setEnabled(false);
  parts_.strip->setEnabled(false);
  parts_.timeline->setEnabled(false);
}

void BoardWork::End() {
  parts_.status->SetBusy(false);
  parts_.search->setEnabled(true);
  parts_.folders->setEnabled(true);
  parts_.strip->setEnabled(true);
  parts_.timeline->setEnabled(true);
  parts_.actions->SetBusy(false);
  running_ = false;
  emit Ended();
  if (focusBefore_ != nullptr && focusBefore_->isEnabled()) focusBefore_->setFocus();
  if (closeAtEnd_) QTimer::singleShot(0, parts_.window, &QWidget::close);
}

void BoardWork::Stop() {
  if (!running_) return;
  StopLoad();
  parts_.status->ShowStopping();
}

void BoardWork::StopAndClose() {
  closeAtEnd_ = true;
  Stop();
}

}  // namespace tarnwick::board
