// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Keeps the window answering while statements of the list run long, as one does that has to read
// every text, and lets the stop command end them.
#pragma once

#include <cstdint>
#include <functional>

namespace tarnwick::board {

class SearchWatch {
 public:
  // From construction on statements over the repository are watched. begin is called once, when
  // they have taken so long that a person notices; from then on events run while the engine works,
  // and nothing that they do may read from the repository.
  explicit SearchWatch(std::function<void()> begin);
  ~SearchWatch();
  SearchWatch(const SearchWatch&) = delete;
  SearchWatch& operator=(const SearchWatch&) = delete;

  bool HasBegun() const { return begun_; }

 private:
  bool Look();

  std::function<void()> begin_;
  int64_t since_;
  bool begun_ = false;
};

}  // namespace tarnwick::board
