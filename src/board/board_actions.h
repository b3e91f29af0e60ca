// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The main window's commands as the person meets them: one action each, shared by menu, button and
// context menu. What an action does is the window's to connect.
#pragma once

#include <QAction>
#include <QPushButton>

namespace tarnwick::board {

class BoardActions : public QObject {
  Q_OBJECT

 public:
  explicit BoardActions(QWidget* parent);

  QAction* openRepository = nullptr;
  QAction* recentRepositories = nullptr;  // a menu
  QAction* createRepository = nullptr;
  QAction* backup = nullptr;
  QAction* restore = nullptr;
  QAction* exportListed = nullptr;
  QAction* merge = nullptr;
  QAction* check = nullptr;
  QAction* protect = nullptr;
  QAction* lock = nullptr;
  QAction* loadTextFile = nullptr;
  QAction* findMail = nullptr;
  QAction* saveMessages = nullptr;
  QAction* exit = nullptr;
  QAction* undo = nullptr;      // enabled while there is something to bring back
  QAction* timeline = nullptr;  // checked: shown
  QAction* contacts = nullptr;
  QAction* options = nullptr;
  QAction* lastLoad = nullptr;
  QAction* findLost = nullptr;
  QAction* markAllNotHot = nullptr;
  QAction* moveHtml = nullptr;
  QAction* helpTopics = nullptr;
  QAction* about = nullptr;

  QAction* showAll = nullptr;
  QAction* showEmail = nullptr;
  QAction* showRelated = nullptr;
  QAction* toggleHot = nullptr;
  QAction* deleteSelected = nullptr;
  QAction* loadFromMailer = nullptr;
  QAction* quit = nullptr;
  QAction* copy = nullptr;
  QAction* attachments = nullptr;  // a menu

  // Where a letter is read; one of them is checked.
  QAction* paneBelow = nullptr;
  QAction* paneBeside = nullptr;
  QAction* paneOff = nullptr;
  QAction* openWindow = nullptr;
  QAction* findInLetter = nullptr;
  QAction* print = nullptr;
  QAction* savePdf = nullptr;
  QAction* headers = nullptr;
  QAction* source = nullptr;

  QAction* stop = nullptr;

  // While something long runs only the stop command can be given.
  void SetBusy(bool busy);

  // Whether there is a deletion to undo.
  void SetCanUndo(bool can);

  // A button with the action's text and state, named objectName.
  static QPushButton* MakeButton(QAction* action, const char* objectName, QWidget* parent);

 private:
  bool canUndo_ = false;
};

}  // namespace tarnwick::board
