// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The main window. It only puts together: what it shows is made by board_body_view.h, one command
// runs at a time in board_work_actions.h, and the commands are those of the other *_actions.h.
#pragma once

#include <QMainWindow>

#include "board/board_body_view.h"
#include "board/board_work_actions.h"
#include "board/conversation_actions.h"
#include "board/find_actions.h"
#include "board/list_actions.h"
#include "board/load_actions.h"
#include "board/maintenance_actions.h"
#include "board/message_actions.h"
#include "board/reading_actions.h"
#include "board/search_actions.h"
#include "board/takeout_actions.h"

namespace tarnwick::board {

class MainBoard : public QMainWindow {
  Q_OBJECT

 public:
  explicit MainBoard(QWidget* parent = nullptr);

  // Restores layout and filter and lists the open repository. State().Ui must show its status here.
  // False when the list can't be read; the reason has been shown.
  bool Load();

  StatusPanelsView& Status() { return *parts_.status; }
  FilterStripView& Filter() { return *parts_.strip; }
  EmailGridView& Grid() { return *parts_.grid; }
  BoardActions& Actions() { return *parts_.actions; }
  timeline::TimelineView& Timeline() { return *parts_.timeline; }
  ListActions& List() { return *list_; }
  LoadActions& Loading() { return *load_; }
  FindActions& Finding() { return *find_; }
  TakeoutActions& Takeout() { return *takeout_; }
  MaintenanceActions& Maintenance() { return *maintenance_; }

  reading::LetterView& Letter() { return *parts_.letter; }

  // True while a command runs that can be stopped.
  bool IsBusy() const { return work_->IsRunning(); }

 signals:
  // The person wants the repository locked; it is a protected one.
  void LockAskedFor();

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void Connect();
  void OfferCheck();
  void AskForLock();
  void FollowNotice(const QString& link);
  void ChooseRepository(bool create);
  void SwitchRepository(const std::string& folder, bool create);
  void FillRecent();
  void OpenContacts();
  void SetTimelineShown(bool on);
  void SaveLayout();

  const BoardParts parts_;
  BoardWork* work_;
  ListActions* list_;
  SearchActions* search_;
  ConversationActions* conversations_;
  LoadActions* load_;
  FindActions* find_;
  ReadingActions* reading_;
  MessageActions* messages_;
  TakeoutActions* takeout_ = nullptr;
  MaintenanceActions* maintenance_ = nullptr;
};

}  // namespace tarnwick::board
