// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Numbers as Outlook's files hold them: the lowest byte first.
#pragma once

#include <cassert>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick::outlook {

inline void PutNumber(std::string& bytes, uint32_t value, int count = 4) {
  for (int i = 0; i < count; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

// REQUIRES: offset + count <= bytes.size().
inline uint32_t TakeNumber(std::string_view bytes, size_t offset, int count = 4) {
  assert(offset + static_cast<size_t>(count) <= bytes.size());
  uint32_t value = 0;
  for (int i = 0; i < count; ++i) {
    auto byte = static_cast<unsigned char>(bytes[offset + static_cast<size_t>(i)]);
    value |= static_cast<uint32_t>(byte) << (8 * i);
  }
  return value;
}

}  // namespace tarnwick::outlook
