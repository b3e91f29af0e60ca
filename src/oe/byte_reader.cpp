// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/byte_reader.h"

#include <algorithm>
#include <cassert>

#include "platform/error.h"

namespace tarnwick::oe {

namespace {

// A jump fetches what an info object or a block or two take; reading on fetches more at a time.
constexpr size_t kJumpPiece = 1024;
constexpr size_t kRunPiece = size_t{16} * 1024;

uint64_t GetNumber(std::string_view bytes, size_t place, size_t width) {
  if (place > bytes.size() || bytes.size() - place < width) {
    throw Error(ErrorNumber::kSubscript, "Subscript out of range");
  }
  uint64_t number = 0;
  for (size_t i = width; i-- > 0;) {
    number = number << 8 | static_cast<unsigned char>(bytes[place + i]);
  }
  return number;
}

}  // namespace

uint8_t Get8(std::string_view bytes, size_t place) {
  return static_cast<uint8_t>(GetNumber(bytes, place, 1));
}

uint32_t Get24(std::string_view bytes, size_t place) {
  return static_cast<uint32_t>(GetNumber(bytes, place, 3));
}

uint32_t Get32(std::string_view bytes, size_t place) {
  return static_cast<uint32_t>(GetNumber(bytes, place, 4));
}

uint64_t Get64(std::string_view bytes, size_t place) {
  return GetNumber(bytes, place, 8);
}

std::string_view ZeroTerminated(std::string_view bytes, size_t place) {
  if (place >= bytes.size()) return {};
  bytes.remove_prefix(place);
  return bytes.substr(0, bytes.find('\0'));
}

ByteReader::ByteReader(const intake::RawMessage& file, int64_t origin)
    : file_(file),
      origin_(origin),
      size_(static_cast<uint64_t>(
          std::max<int64_t>(0, static_cast<int64_t>(file_.Size()) + origin))) {}

std::string_view ByteReader::Read(uint64_t offset, size_t count) {
  assert(count <= kMaxPiece);
  if (offset >= Size() || static_cast<int64_t>(offset) < origin_) return {};
  count = static_cast<size_t>(std::min<uint64_t>({count, kMaxPiece, Size() - offset}));
  uint64_t windowEnd = windowStart_ + window_.size();
  if (offset < windowStart_ || offset + count > windowEnd) {
    bool runsOn = !window_.empty() && offset >= windowStart_ && offset <= windowEnd;
    size_t piece = std::max(count, runsOn ? kRunPiece : kJumpPiece);
    piece = static_cast<size_t>(std::min<uint64_t>(piece, Size() - offset));
    window_ = {};  // which a failure leaves
    window_ = file_.Read(offset - static_cast<uint64_t>(origin_), piece);
    windowStart_ = offset;
  }
  return window_.substr(static_cast<size_t>(offset - windowStart_), count);
}

}  // namespace tarnwick::oe
