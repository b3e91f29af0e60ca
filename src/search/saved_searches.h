// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Searches that the person keeps under names, in the parameter store; and whether the panel that
// shows them was left open. Errors are reported.
#pragma once

#include <string>
#include <vector>

namespace tarnwick::search {

struct SavedSearch {
  std::string name;
  std::string text;  // as it was typed
  friend bool operator==(const SavedSearch&, const SavedSearch&) = default;
};

// By their names.
std::vector<SavedSearch> SavedSearches();
// One of the same name is replaced.
void SaveSearch(const SavedSearch& search);
void RemoveSearch(const std::string& name);

bool ReadFoldersShown();
void SaveFoldersShown(bool shown);

}  // namespace tarnwick::search
