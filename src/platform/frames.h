// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The frames in which a helper program (child_process.h) and ours speak: one byte kind, the
// payload's length as 32 bits, little-endian, the payload.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick::platform {

inline constexpr size_t kFrameHead = 5;

// Adds the head of a frame.
inline void BeginFrame(std::string& bytes, char kind, size_t length) {
  bytes.push_back(kind);
  for (unsigned shift = 0; shift < 32; shift += 8) {
    bytes.push_back(static_cast<char>(length >> shift & 0xFF));
  }
}

inline std::string FrameOf(char kind, std::string_view payload) {
  std::string frame;
  frame.reserve(kFrameHead + payload.size());
  BeginFrame(frame, kind, payload.size());
  return frame.append(payload);
}

// The payload's length. REQUIRES: head holds a whole head.
inline uint32_t FrameLength(std::string_view head) {
  uint32_t length = 0;
  for (size_t i = kFrameHead; i-- > 1;) length = length << 8 | static_cast<unsigned char>(head[i]);
  return length;
}

}  // namespace tarnwick::platform
