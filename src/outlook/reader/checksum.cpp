// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/reader/checksum.h"

#include <zlib.h>

namespace tarnwick::outlook::reader {

// zlib inverts before and after.
uint32_t Checksum(std::string_view bytes) {
  auto inverted = crc32_z(0xFFFFFFFF, reinterpret_cast<const Bytef*>(bytes.data()), bytes.size());
  return ~static_cast<uint32_t>(inverted);
}

}  // namespace tarnwick::outlook::reader
