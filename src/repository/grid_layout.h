// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Column widths of a list in the parameter store: a group a list, one row a column, ParameterID the
// column's number from 0 and ParameterAmount its width in twips (1/1440 inch; 15 to a pixel at 96
// dpi). A list whose columns may move keeps its columns' names in a second group, NAME + "Columns":
// ParameterID the column's name and ParameterAmount the number under which its width lies. Errors
// are reported.
#pragma once

#include <map>
#include <span>
#include <string_view>
#include <vector>

namespace tarnwick::repository {

inline constexpr int kTwipsPerPixel = 15;

// Widths by column number; a column without a stored row is not among them, nor are numbers out of
// 0..columns-1 and widths that no screen has.
std::map<int, int> ReadGridLayout(std::string_view group, int columns);
// Replaces what the group holds.
void SaveGridLayout(std::string_view group, const std::vector<int>& widths);

// The same by name: a column takes the width that was stored for one of its name, whatever its
// number was. Widths stored without any names go by the number.
std::map<int, int> ReadNamedLayout(std::string_view group, std::span<const std::string_view> names);
// REQUIRES: a name for each width, each once.
void SaveNamedLayout(std::string_view group, std::span<const std::string_view> names,
                     const std::vector<int>& widths);

}  // namespace tarnwick::repository
