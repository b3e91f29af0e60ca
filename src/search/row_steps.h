// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Reading a table's rows by their keys, in steps between which the window answers.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace tarnwick::search {

// A file can hold any key: what lies further apart than this on the average, beyond the first
// million, is not worth its memory.
inline constexpr int64_t kSparsest = 8;
inline constexpr int64_t kKeysAtFirst = int64_t{1} << 20;

// The highest key of a table of the open repository, 0 when it is empty. Throws Error.
int64_t LastKey(std::string_view table);

// The statement that gives ID and these columns of the next rows behind a key.
std::string NextRows(std::string_view columns, std::string_view table, int64_t after, int64_t rows);

// So many rows at a time as take some milliseconds.
class RowSteps {
 public:
  // Calls read with a number of rows until isDone, or the milliseconds are over; true when done.
  bool Run(int64_t milliseconds, const std::function<bool()>& isDone,
           const std::function<void(int64_t rows)>& read);

 private:
  int64_t rows_ = 1000;  // of the next step
};

}  // namespace tarnwick::search
