// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the main window shows, from top to bottom: the search box, the filter strip, the timeline, a
// line of notice, the grid, the buttons; the status bar at its foot.
#pragma once

#include <QMainWindow>

#include "board/board_actions.h"
#include "board/email_grid_view.h"
#include "board/filter_strip_view.h"
#include "board/status_panels_view.h"
#include "search/folder_panel_view.h"
#include "search/search_box_view.h"
#include "timeline/timeline_view.h"

class QCheckBox;

namespace tarnwick::board {

// The pieces that the commands work on. They belong to the window.
struct BoardParts {
  QMainWindow* window = nullptr;
  BoardActions* actions = nullptr;
  search::SearchBoxView* search = nullptr;
  FilterStripView* strip = nullptr;
  timeline::TimelineView* timeline = nullptr;
  QLabel* notice = nullptr;  // hidden while there is nothing to tell
  EmailGridView* grid = nullptr;
  QCheckBox* showEmailText = nullptr;
  StatusPanelsView* status = nullptr;
  search::FolderPanelView* folders = nullptr;  // beside all of these, once it is placed
};

// Makes them all and lays them out in the window, menus included.
BoardParts BuildBoard(QMainWindow* window);

}  // namespace tarnwick::board
