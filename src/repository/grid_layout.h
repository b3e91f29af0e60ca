// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Column widths of a list in the parameter store: a group a list, one row a column, ParameterID the
// column's number from 0 and ParameterAmount its width in twips (1/1440 inch; 15 to a pixel at 96
// dpi). Errors are reported.
#pragma once

#include <map>
#include <string_view>
#include <vector>

namespace tarnwick::repository {

inline constexpr int kTwipsPerPixel = 15;

// Widths by column number; a column without a stored row is not among them, nor are numbers out of
// 0..columns-1 and widths that no screen has.
std::map<int, int> ReadGridLayout(std::string_view group, int columns);
// Replaces what the group holds.
void SaveGridLayout(std::string_view group, const std::vector<int>& widths);

}  // namespace tarnwick::repository
