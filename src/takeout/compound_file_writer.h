// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Writes a compound file ([MS-CFB], version 3): storages and streams in one file, as a file system
// in small has them.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tarnwick::takeout {

// A stream by its path, "storage/storage/stream", and its bytes. Storages are made as paths need
// them; a path that ends in "/" makes an empty one.
using CompoundStream = std::pair<std::string, std::string>;

// The file's bytes. rootClass: what kind of document it is, as the format has it, or zeros.
// Throws Error 75 for more than a file of this version holds (2 GB).
//
// REQUIRES: names have 1 to 31 characters, ASCII, and no storage has two of one name.
std::string CompoundFileBytes(const std::vector<CompoundStream>& streams,
                              const std::array<uint8_t, 16>& rootClass = {});

}  // namespace tarnwick::takeout
