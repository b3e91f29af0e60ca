// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What a store says of a thing in it, as it stands there: nothing is interpreted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "outlook/raw_row.h"

namespace tarnwick::outlook::reader {

struct ReadError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

class Answer {
 public:
  // most: bytes of values; beyond them ReadError is thrown.
  explicit Answer(uint64_t most = UINT64_MAX) : left_(most) {}
  Answer(const Answer&) = delete;
  Answer& operator=(const Answer&) = delete;

  RawRow properties;
  std::vector<RawRow> recipients;
  std::vector<RawRow> attachments;
  std::vector<uint32_t> folders;     // nodes of folders in this folder,
  std::vector<uint32_t> items;       // and of items in it
  std::vector<uint32_t> otherItems;  // those of them that the folder says are no mail
  std::set<std::string> lost;  // what of it is left out, or not as it was written; a few of many

  // The properties that follow are those of a recipient, or of an attachment.
  void BeginRecipient() { row_ = &recipients.emplace_back(); }
  void BeginAttachment() { row_ = &attachments.emplace_back(); }

  void Property(uint16_t number, uint16_t type, std::string_view bytes) {
    BeginProperty(number, type);
    Continue(bytes);
  }
  // A property whose bytes follow.
  void BeginProperty(uint16_t number, uint16_t type) { row_->push_back({number, type, {}}); }
  void Continue(std::string_view bytes) {
    if (bytes.size() > left_) throw ReadError("more than the store can hold");
    left_ -= bytes.size();
    row_->back().bytes += bytes;
  }

  void Lose(std::string what) {
    constexpr size_t kMostLost = 10;
    if (lost.size() < kMostLost) lost.insert(std::move(what));
  }

 private:
  RawRow* row_ = &properties;
  uint64_t left_;
};

}  // namespace tarnwick::outlook::reader
