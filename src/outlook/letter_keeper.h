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
    waiting_ += bytes;
    if (waiting_.size() - sent_ >= kPiece) Flush();
  }
  void Flush() {
    sink_(std::string_view(waiting_).substr(sent_));
    if (begin_.empty() && waiting_.size() <= intake::kMostHeld) {
      sent_ = waiting_.size();
      return;
    }
    if (begin_.empty()) begin_.swap(waiting_);
    waiting_.clear();
    sent_ = 0;
  }
  uint64_t Size() const { return size_; }
  // All of a short text, the beginning of another.
  std::string TakeBegin() { return std::move(begin_.empty() ? waiting_ : begin_); }

 private:
  static constexpr size_t kPiece = size_t{64} * 1024;
  const std::function<void(std::string_view)>& sink_;
  std::string begin_;    // of a long one
  std::string waiting_;  // all of a short one, of which so much was handed on,
  size_t sent_ = 0;      // or what was not handed on yet
  uint64_t size_ = 0;
};

}  // namespace tarnwick::outlook
