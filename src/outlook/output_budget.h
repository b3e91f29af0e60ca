// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#pragma once

#include <cstdint>

namespace tarnwick::outlook {

// How much may be written for the messages of a store, or of a file, of so many bytes: the raw text
// in base64, and both bodies again.
inline uint64_t OutputBudgetOf(uint64_t size) {
  constexpr uint64_t kFactor = 8;
  constexpr uint64_t kFloor = uint64_t{64} << 20;
  return kFactor * size + kFloor;
}

}  // namespace tarnwick::outlook
