// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Reading a table's rows by their keys, in steps between which the window answers.
#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::search {

// A file can hold any key: what lies further apart than this on the average, beyond the first
// million, is not worth its memory.
inline constexpr int64_t kSparsest = 8;
inline constexpr int64_t kKeysAtFirst = int64_t{1} << 20;

// The highest key of a table of the open repository, 0 when it is empty. Throws Error.
int64_t LastKey(std::string_view table);

// The statement that gives ID and these columns of the next rows behind a key.
std::string NextRows(std::string_view columns, std::string_view table, int64_t after, int64_t rows);

// Makes room for what is kept of each row by its key: growing step by step would have two copies in
// memory. Takes no more than keys that are not too high can need, and that only when it is filled.
template <typename Value>
void ReserveByKey(std::vector<Value>& values, int64_t lastKey, int64_t highest) {
  auto likely = static_cast<size_t>(std::clamp<int64_t>(lastKey, 0, highest)) + 1;
  if (likely > values.capacity()) values.reserve(likely + likely / 64);
}

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
