// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The checksum that pages and blocks of a .pst file bear ([MS-PST] 5.3): CRC-32 with the reflected
// polynomial 0xEDB88320, begun at 0 and not inverted at the end.
#pragma once

#include <cstdint>
#include <string_view>

namespace tarnwick::outlook::reader {

uint32_t Checksum(std::string_view bytes);

}  // namespace tarnwick::outlook::reader
