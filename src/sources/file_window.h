// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Bytes of a file at places, read through a window: a few system calls for many small looks. What
// is in memory already is looked at where it lies. Numbers are little-endian.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string_view>

#include "intake/raw_message.h"

namespace tarnwick::sources {

class FileWindow {
 public:
  // Bytes in memory outlive it. Throws Error for a file that can't be read.
  explicit FileWindow(const intake::RawMessage& file, size_t windowSize = size_t{256} * 1024)
      : file_(file), windowSize_(windowSize) {}

  uint64_t Size() const { return file_.Size(); }

  // The bytes from offset on, count of them or as many as the file has; valid until the next call.
  // REQUIRES: count <= the window's size.
  std::string_view Read(uint64_t offset, size_t count) {
    if (offset >= file_.Size()) return {};
    uint64_t end = offset + std::min<uint64_t>(count, file_.Size() - offset);
    if (offset < start_ || end > start_ + window_.size()) Fill(offset);
    return window_.substr(static_cast<size_t>(offset - start_), count);
  }
  // All of the window from offset on: at least one byte, unless the file ends there.
  std::string_view ReadSome(uint64_t offset) {
    if (Read(offset, 1).empty()) return {};
    return window_.substr(static_cast<size_t>(offset - start_));
  }
  // Hands a part of the file to sink, piece by piece.
  template <typename Sink>
  void Copy(uint64_t begin, uint64_t end, const Sink& sink) {
    while (begin < end) {
      std::string_view piece = ReadSome(begin);
      if (piece.empty()) return;
      piece = piece.substr(0, static_cast<size_t>(std::min<uint64_t>(piece.size(), end - begin)));
      begin += piece.size();
      sink(piece);
    }
  }

 private:
  void Fill(uint64_t offset) {
    window_ = {};  // which a failure leaves
    uint64_t left = file_.Size() - offset;
    window_ = file_.Read(offset, static_cast<size_t>(std::min<uint64_t>(windowSize_, left)));
    start_ = offset;
  }

  intake::RawReader file_;
  size_t windowSize_;
  std::string_view window_;
  uint64_t start_ = 0;
};

// The number at a place of some bytes; 0 where it does not lie within them.
inline uint32_t Get32(std::string_view bytes, size_t place) {
  if (place > bytes.size() || bytes.size() - place < 4) return 0;
  uint32_t number = 0;
  for (size_t i = 4; i-- > 0;) number = number << 8 | static_cast<unsigned char>(bytes[place + i]);
  return number;
}

}  // namespace tarnwick::sources
