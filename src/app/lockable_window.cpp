// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "lockable_window.h"

#include <QApplication>
#include <QDateTime>
#include <QDialog>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QThread>
#include <QVBoxLayout>
#include <cstdlib>

#include "board/list_query.h"
#include "maintenance/protect.h"
#include "maintenance/unfinished_restore.h"
#include "options/options.h"
#include "repository/keyring.h"
#include "repository/repository.h"
#include "taskbar_progress.h"

namespace tarnwick::app {

namespace {

constexpr int kLookMilliseconds = 5000;
constexpr int kAgainMilliseconds = 50;

}  // namespace

LockableWindow::LockableWindow(QtUserInterface& ui)
    : ui_(ui), lastInput_(QDateTime::currentMSecsSinceEpoch()) {
  qApp->installEventFilter(this);
  look_.setInterval(kLookMilliseconds);
  connect(&look_, &QTimer::timeout, this,
          [this] { LockIfIdle(QDateTime::currentMSecsSinceEpoch()); });
  again_.setSingleShot(true);
  again_.setInterval(kAgainMilliseconds);
  connect(&again_, &QTimer::timeout, this, &LockableWindow::Lock);
}

LockableWindow::~LockableWindow() = default;

QWidget& LockableWindow::Window() {
  if (locked_ != nullptr) return *locked_;
  return *window_;
}

bool LockableWindow::Open() {
  window_ = std::make_unique<board::MainBoard>();
  FollowProgress(*window_);
  ui_.SetWindow(window_.get());
  // Queued: the window does not outlive the lock.
  connect(window_.get(), &board::MainBoard::LockAskedFor, this, &LockableWindow::Lock,
          Qt::QueuedConnection);
  if (!window_->Load()) return false;
  window_->show();
  look_.start();
  return true;
}

// False while one is there: whoever runs it still needs the window and the repository.
bool LockableWindow::CloseDialogs() {
  if (QWidget* popup = QApplication::activePopupWidget()) popup->close();
  if (QWidget* modal = QApplication::activeModalWidget()) {
    if (auto* dialog = qobject_cast<QDialog*>(modal)) {
      dialog->reject();
    } else {
      modal->close();
    }
    return false;
  }
  return QThread::currentThread()->loopLevel() <= 1;
}

void LockableWindow::Lock() {
  if (window_ == nullptr || window_->IsBusy() || !maintenance::IsProtected()) return;
  if (!CloseDialogs()) return again_.start();
  look_.stop();
  ShowLocked();
  window_->close();  // keeps its layout
  window_.reset();
  board::ResetBoard();
  repository::LockRepository();
  repository::AskInSpiteOfKeyring();
}

void LockableWindow::ShowLocked() {
  locked_ = std::make_unique<QWidget>();
  locked_->setObjectName("Locked");
  locked_->setWindowTitle(window_->windowTitle());
  locked_->setGeometry(window_->geometry());
  auto* text = new QLabel(tr("The repository is locked."), locked_.get());
  auto* unlock = new QPushButton(tr("&Unlock"), locked_.get());
  unlock->setObjectName("Unlock");
  unlock->setDefault(true);
  auto* quit = new QPushButton(tr("&Quit"), locked_.get());
  quit->setObjectName("QuitLocked");
  connect(unlock, &QPushButton::clicked, this, &LockableWindow::Unlock, Qt::QueuedConnection);
  connect(quit, &QPushButton::clicked, locked_.get(), &QWidget::close);
  auto* column = new QVBoxLayout(locked_.get());
  auto* buttons = new QHBoxLayout;
  buttons->addStretch(1);
  buttons->addWidget(unlock);
  buttons->addWidget(quit);
  buttons->addStretch(1);
  column->addStretch(1);
  column->addWidget(text, 0, Qt::AlignCenter);
  column->addLayout(buttons);
  column->addStretch(1);
  locked_->show();
  unlock->setFocus();
}

void LockableWindow::Unlock() {
  if (!IsLocked() || !repository::OpenRepository(false)) return;
  lastInput_ = QDateTime::currentMSecsSinceEpoch();
  repository::ReadOptions();
  maintenance::AskAboutUnfinishedRestore();
  bool isOpen = Open();
  locked_.reset();
  if (!isOpen) QApplication::exit(EXIT_FAILURE);
}

void LockableWindow::LockIfIdle(qint64 now) {
  if (window_ == nullptr || window_->IsBusy() || !maintenance::IsProtected()) return;
  constexpr qint64 kMinute = qint64{60} * 1000;
  qint64 minutes = options::LockMinutes();
  // A clock that was set back counts as long as one that was set on.
  if (minutes > 0 && std::abs(now - lastInput_) >= minutes * kMinute) Lock();
}

bool LockableWindow::eventFilter(QObject* watched, QEvent* event) {
  switch (event->type()) {
    case QEvent::KeyPress:
    case QEvent::MouseButtonPress:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::TouchBegin:
      lastInput_ = QDateTime::currentMSecsSinceEpoch();
      break;
    default:
      break;
  }
  return QObject::eventFilter(watched, event);
}

}  // namespace tarnwick::app
