// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The main window's place in the parameter store, in twips (1/1440 inch; 15 to a pixel at 96 dpi).
// Errors are reported.
#pragma once

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "repository/email_fields.h"
#include "repository/grid_layout.h"

namespace tarnwick::board {

using repository::kTwipsPerPixel;

// The group under which repository/grid_layout.h keeps the column widths.
inline constexpr const char* kGridGroup = "EmailGrid";

// The grid's columns as their widths are stored: the mark of important messages, then the columns
// of the list.
inline constexpr auto kGridNames = [] {
  std::array<std::string_view, 1 + repository::kListColumnCount> names = {"Mark"};
  std::ranges::transform(repository::kListColumns, names.begin() + 1,
                         &repository::ListColumn::name);
  return names;
}();

struct WindowPlace {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
};

// What was stored; 0 stands for what was not.
WindowPlace ReadWindowPlace();
void SaveWindowPlace(const WindowPlace& place);

// Whether the timeline is shown over the list; it is until it was hidden.
bool ReadTimelineShown();
void SaveTimelineShown(bool shown);

bool ReadConversationsShown();
void SaveConversationsShown(bool shown);

// Where the selected letter is read. The numbers are stored: do not reorder.
enum class ReadingPlace { kOff = 0, kBelow = 1, kBeside = 2 };
struct ReadingPane {
  ReadingPlace place = ReadingPlace::kOff;
  int list = 0;  // pixels of the list and of the letter beside one another; 0: not known
  int letter = 0;
};
// usual: where nothing was stored.
ReadingPane ReadReadingPane(ReadingPlace usual);
void SaveReadingPane(const ReadingPane& pane);

// The folders of the repositories that were open, the last one first.
std::vector<std::string> ReadRecentRepositories();
// Puts one before the others; the oldest of very many goes.
void AddRecentRepository(const std::string& folder);

// The edge to apply: a stored one that is not 0 and with which a window of this extent still lies
// within the screen.
std::optional<int> FittingEdge(int stored, int extent, int screen);

}  // namespace tarnwick::board
