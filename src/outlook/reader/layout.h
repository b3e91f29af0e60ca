// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Where things stand in the pages and blocks of a .pst file ([MS-PST] 2.2.2), and what stands at
// the end of each: it is how the reader knows them, by the index or without it.
#pragma once

#include <cstddef>
#include <cstdint>

namespace tarnwick::outlook::reader {

inline constexpr size_t kPageSize = 512;
inline constexpr size_t kBlockSlot = 8192;  // a block with its trailer
inline constexpr size_t kBlockUnit = 64;    // a block begins and ends at multiples of it
inline constexpr uint8_t kBlockPages = 0x80;
inline constexpr uint8_t kNodePages = 0x81;
inline constexpr uint64_t kInternal = 2;  // of a block number: it holds a list, not data

// In the Unicode and in the older, narrower ANSI files.
struct Layout {
  size_t idSize;
  size_t nodeRoot;
  size_t blockRoot;
  size_t cipher;
  size_t pageInfo;
  size_t nodeEntry;
  size_t blockEntry;
  size_t trailer;
  size_t trailerId;
  size_t trailerChecksum;
};
// The roots are given by the number of their page, with its place behind.
inline constexpr Layout kUnicodeLayout = {8, 216, 232, 513, 488, 32, 24, 16, 8, 4};
inline constexpr Layout kAnsiLayout = {4, 184, 192, 461, 496, 16, 12, 12, 4, 8};

inline const Layout& LayoutOf(bool isUnicode) {
  return isUnicode ? kUnicodeLayout : kAnsiLayout;
}

// A block and where it lies; size is that of its bytes alone.
struct BlockPlace {
  uint64_t id = 0;
  uint64_t offset = 0;
  size_t size = 0;
};

// Block numbers bear a mark that is not theirs.
inline uint64_t PlainId(uint64_t id) {
  return id & ~uint64_t{1};
}

// With its trailer, in whole units.
inline size_t WholeSize(size_t size, const Layout& layout) {
  return (size + layout.trailer + kBlockUnit - 1) / kBlockUnit * kBlockUnit;
}

// What a trailer says, made of where its page or block lies and which it is.
inline uint64_t SignatureOf(uint64_t offset, uint64_t id) {
  uint64_t mixed = (offset ^ id) & 0xFFFFFFFF;
  return (mixed >> 16 ^ mixed) & 0xFFFF;
}

}  // namespace tarnwick::outlook::reader
