// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// How the list comes into a window: the window is seen through ListForm, so that this runs and is
// tested without one. Errors are reported; the window then keeps what it shows.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "board/list_filter.h"
#include "database/recordset.h"

namespace tarnwick::board {

class ListForm {
 public:
  virtual ~ListForm() = default;
  // The grid shows these rows from now on. The recordset stays where it is for good.
  virtual void SetDataSource(jet::Recordset& list, bool placeholder) = 0;
  // Puts a filter into the controls, without running it.
  virtual void ShowFilter(const ListFilter& filter) = 0;
  // What the list holds, each message once; the counts of the status bar may take one for several.
  virtual void DescribeCounts(int64_t received, int64_t sent) = 0;
};

// Shows the list recordset in the form's grid, and the counts in the status bar.
void BindEmailList(ListForm& form);

// The counts alone, of a list that has grown.
void ShowCounts(ListForm& form);

// Builds and runs the query of the current filter and binds it. False when the person stopped it;
// the form shows what it did.
bool ShowRefresh(ListForm& form);

// At a start or after another repository was opened: restores the saved filter, lists and binds,
// and shows when mail was last loaded.
bool RestoreFilterAndLoad(ListForm& form);

// "Last loaded on " and the time, in the status bar.
void ShowLastLoaded();
// "Tarnwick folder " and the repository's, in the status bar.
void ShowRepositoryFolder();

// What the combo boxes offer.
std::vector<std::string> ContactNames();
std::vector<std::string> AttachmentNames();

}  // namespace tarnwick::board
