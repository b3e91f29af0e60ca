// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Searching: from the search box and the folder panel to a list that grows while the window
// answers.
#pragma once

#include <QElapsedTimer>
#include <QTimer>

#include "board/board_work_actions.h"
#include "board/list_actions.h"

class QDockWidget;

namespace tarnwick::board {

class SearchActions : public QObject {
  Q_OBJECT

 public:
  SearchActions(const BoardParts& parts, BoardWork& work, ListActions& list, QObject* parent);

  // After a repository was opened.
  void Load();

 private:
  void AddActions();
  void Connect();
  void Search(const QString& text);
  void ChooseFolder(const QString& identity, const QString& name);
  void ChooseAll();
  void Narrow();
  void Forget();
  void Follow();
  void Grow();
  void ShowState();
  void TellTimeline();
  void SetFoldersShown(bool on);
  void CountFolders();
  void SaveSearch();
  void RemoveSearch(const QString& name);

  const BoardParts parts_;
  BoardWork& work_;
  ListActions& list_;
  QDockWidget* dock_;
  QAction* find_;
  QAction* showFolders_;
  QTimer grow_;   // while there is more to find
  QTimer count_;  // until the folders are counted
  QTimer tell_;   // while there is more to tell the timeline
  QElapsedTimer sinceShown_;
  bool told_ = false;  // the status bar tells of a search
};

}  // namespace tarnwick::board
