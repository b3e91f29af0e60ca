// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Hands on the text of a message that is being written, piece by piece, and keeps it as long as it
// is short.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>

#include "intake/raw_message.h"

namespace tarnwick::outlook {

class LetterKeeper {
 public:
  explicit LetterKeeper(const std::function<void(std::string_view)>& sink) : sink_(sink) {}

  void Add(std::string_view bytes) {
    size_ += bytes.size();
    if (begin_.size() <= intake::kMostHeld) begin_ += bytes;
    piece_ += bytes;
    if (piece_.size() >= kPiece) Flush();
  }
  void Flush() {
    sink_(piece_);
    piece_.clear();
  }
  uint64_t Size() const { return size_; }
  // All of a short text, the beginning of another.
  std::string TakeBegin() { return std::move(begin_); }

 private:
  static constexpr size_t kPiece = size_t{64} * 1024;
  const std::function<void(std::string_view)>& sink_;
  std::string begin_;
  std::string piece_;
  uint64_t size_ = 0;
};

}  // namespace tarnwick::outlook
