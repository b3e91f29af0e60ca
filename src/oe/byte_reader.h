// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Bytes of a store file at places, read in small pieces. All byte work of the room is here: numbers
// are little-endian and every place is checked. Offsets are those of the file, from 0.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "intake/raw_message.h"

namespace tarnwick::oe {

// The number at a place of some bytes. Throws Error 9 when it does not lie within them.
uint8_t Get8(std::string_view bytes, size_t place);
uint32_t Get24(std::string_view bytes, size_t place);
uint32_t Get32(std::string_view bytes, size_t place);
uint64_t Get64(std::string_view bytes, size_t place);

// The text at a place up to its zero or the end of the bytes; "" beyond them.
std::string_view ZeroTerminated(std::string_view bytes, size_t place);

class ByteReader {
 public:
  // The most that one Read gives.
  static constexpr size_t kMaxPiece = size_t{32} * 1024;

  // origin: the offset of the file's first byte, for a piece of a store that is a file of its own;
  // it is below 0 for one with something else before it. Bytes in memory outlive the reader.
  explicit ByteReader(const intake::RawMessage& file, int64_t origin = 0);

  // The offset behind the last byte.
  uint64_t Size() const { return size_; }

  // The bytes from offset on, count of them or as many as the file has; valid until the next Read.
  // REQUIRES: count <= kMaxPiece.
  std::string_view Read(uint64_t offset, size_t count);

 private:
  intake::RawReader file_;
  int64_t origin_;
  uint64_t size_;
  std::string_view window_;
  uint64_t windowStart_ = 0;
};

}  // namespace tarnwick::oe
