// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The main window's layout in the parameter store: column widths and the window's place, both in
// twips (1/1440 inch; 15 to a pixel at 96 dpi). Errors are reported.
#pragma once

#include <map>
#include <optional>
#include <vector>

namespace tarnwick::board {

inline constexpr int kTwipsPerPixel = 15;

// Widths of the grid's columns by number; a column without a stored row is not among them. Numbers
// out of 0..columns-1 and widths that no screen has are left out.
std::map<int, int> ReadColumnWidths(int columns);
// Replaces the stored widths, one row a column from 0.
void SaveColumnWidths(const std::vector<int>& widths);

struct WindowPlace {
  int left = 0;
  int top = 0;
  int width = 0;
  int height = 0;
};

// What was stored; 0 stands for what was not.
WindowPlace ReadWindowPlace();
void SaveWindowPlace(const WindowPlace& place);

// The edge to apply: a stored one that is not 0 and with which a window of this extent still lies
// within the screen.
std::optional<int> FittingEdge(int stored, int extent, int screen);

}  // namespace tarnwick::board
