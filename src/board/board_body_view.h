// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the main window shows, from top to bottom: the search box, the filter strip, the timeline,
// lines of notice, the grid with the letter that is read below or beside it, the buttons; the
// status bar at its foot.
#pragma once

#include <QMainWindow>

#include "board/board_actions.h"
#include "board/email_grid_view.h"
#include "board/filter_strip_view.h"
#include "board/other_dates_view.h"
#include "board/status_panels_view.h"
#include "search/folder_panel_view.h"
#include "search/search_box_view.h"
#include "timeline/timeline_view.h"

class QCheckBox;
class QLabel;
class QSplitter;

namespace tarnwick::reading {
class LetterView;
}

namespace tarnwick::board {

// The pieces that the commands work on. They belong to the window.
struct BoardParts {
  QMainWindow* window = nullptr;
  BoardActions* actions = nullptr;
  search::SearchBoxView* search = nullptr;
  FilterStripView* strip = nullptr;
  timeline::TimelineView* timeline = nullptr;
  OtherDatesView* otherDates = nullptr;
  QLabel* notice = nullptr;       // hidden while there is nothing to tell
  QSplitter* splitter = nullptr;  // the grid and the letter
  EmailGridView* grid = nullptr;
  reading::LetterView* letter = nullptr;
  QCheckBox* showEmailText = nullptr;
  StatusPanelsView* status = nullptr;
  search::FolderPanelView* folders = nullptr;  // beside all of these, once it is placed
};

// Makes them all and lays them out in the window, menus included.
BoardParts BuildBoard(QMainWindow* window);

}  // namespace tarnwick::board
