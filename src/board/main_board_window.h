// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The main window. It puts the filter strip, the grid, the buttons and the status bar together and
// runs the commands; the work itself is done by the plain pieces of this room.
#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QMainWindow>
#include <QPointer>
#include <QTimer>
#include <cstdint>
#include <functional>

#include "board/board_actions.h"
#include "board/email_grid_view.h"
#include "board/email_list.h"
#include "board/email_text_window.h"
#include "board/filter_strip_view.h"
#include "board/load_command.h"
#include "board/maintenance_actions.h"
#include "board/status_panels_view.h"
#include "board/takeout_actions.h"
#include "board/timeline_view.h"

namespace tarnwick::board {

class MainBoard : public QMainWindow, public ListForm {
  Q_OBJECT

 public:
  explicit MainBoard(QWidget* parent = nullptr);

  // Restores layout and filter and lists the open repository. State().Ui must show its status here.
  // False when the list can't be read; the reason has been shown.
  bool Load();

  StatusPanelsView& Status() { return *status_; }
  FilterStripView& Filter() { return *strip_; }
  EmailGridView& Grid() { return *grid_; }
  BoardActions& Actions() { return *actions_; }
  TakeoutActions& Takeout() { return *takeout_; }
  MaintenanceActions& Maintenance() { return *maintenance_; }
  TimelineView& Timeline() { return *timeline_; }

  // True while a command runs that can be stopped.
  bool IsBusy() const { return busy_; }

  void SetDataSource(jet::Recordset& list, bool placeholder) override;
  void ShowFilter(const ListFilter& filter) override;
  void DescribeCounts(int64_t received, int64_t sent) override;

  // Takes one message file in and lists it.
  void LoadTextFile(const QString& path);

 protected:
  void closeEvent(QCloseEvent* event) override;

 private:
  void BuildMenus();
  void BuildBody();
  void Connect();

  void Run(const std::function<void()>& command);
  void BeginWork();
  void EndWork();
  void List();
  void Refresh();
  void RefreshWith(const std::function<void(ListFilter&)>& change);
  void ListEvery(const std::string& subject);
  void ShowEverything();
  void ShowRelated();
  void DeleteSelected();
  void ToggleHot();
  void MarkAllHotOff();
  void LoadFromMailer();
  void ChooseTextFile();
  void SwitchRepository(bool create);
  void ShowEmail();
  void MoveHtml();
  void OpenContacts();
  void OpenOptions();
  void ShowLastLoad();
  void OpenHelp();
  void ShowAbout();
  void Stop();

  void ListAnew(bool changed);
  void ShowNotice();
  void OfferCheck();
  void SetShowEmailText(bool on);
  void FollowSelection();
  void FillChoices();
  void SetTimelineShown(bool on);
  void UpdateHint();
  void PrepareSearch();
  void SaveLayout();

  BoardActions* actions_;
  FilterStripView* strip_ = nullptr;
  TimelineView* timeline_ = nullptr;
  EmailGridView* grid_ = nullptr;
  QLabel* notice_ = nullptr;
  QCheckBox* cbShowEmailText_ = nullptr;
  frmEmailText* text_ = nullptr;  // made when it is first shown
  QTimer follow_;                 // so that many changes of the selection at once are one
  QTimer prepare_;                // while there is nothing else to do
  StatusPanelsView* status_ = nullptr;
  TakeoutActions* takeout_ = nullptr;
  MaintenanceActions* maintenance_ = nullptr;
  QPointer<QWidget> focusBefore_;  // the work that runs
  bool busy_ = false;
  bool closeWhenDone_ = false;
  bool keepPlace_ = false;  // the next binding keeps the current row
};

}  // namespace tarnwick::board
