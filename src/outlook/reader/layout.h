// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Where things stand in the pages and blocks of a .pst file ([MS-PST] 2.2.2), and what stands at
// the end of each: it is how the reader knows them, by the index or without it.
//
// Outlook 2013 and later keep offline stores (.ost) in pages eight times as large, which the maker
// has not described; what is known of them is in the format description of the libpff project.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

namespace tarnwick::outlook::reader {

enum class Variant : uint8_t { kAnsi, kUnicode, kLargePages };
// By the number that a file's header bears.
inline std::optional<Variant> VariantOf(uint64_t version) {
  switch (version) {
    case 14:
    case 15:
      return Variant::kAnsi;
    case 21:
    case 23:
      return Variant::kUnicode;
    case 36:
      return Variant::kLargePages;
    default:
      return std::nullopt;
  }
}

inline constexpr uint8_t kBlockPages = 0x80;
inline constexpr uint8_t kNodePages = 0x81;
inline constexpr uint64_t kInternal = 2;  // of a block number: it holds a list, not data

struct Layout {
  size_t pageSize;
  size_t blockSlot;  // the longest block with its trailer
  size_t blockUnit;  // a block begins and ends at multiples of it
  size_t idSize;
  size_t nodeRoot;  // the number of the top page, and its place behind it
  size_t blockRoot;
  size_t cipher;
  size_t pageInfo;   // how many entries, how many there is room for,
  size_t countSize;  // both of so many bytes; the size of one, the page's level
  size_t nodeEntry;
  size_t blockEntry;
  size_t trailer;
  size_t trailerId;
  size_t trailerChecksum;
  // How long a block is when it is unpacked, in its trailer and in its entry; 0: none is packed.
  size_t trailerPlainSize;
  size_t entryPlainSize;
  // Of the identifier of a value in a heap, above its lowest five: which value of its block.
  int valueBits;
};
inline const Layout& LayoutOf(Variant variant) {
  static constexpr Layout kAnsi = {.pageSize = 512,
                                   .blockSlot = 8192,
                                   .blockUnit = 64,
                                   .idSize = 4,
                                   .nodeRoot = 184,
                                   .blockRoot = 192,
                                   .cipher = 461,
                                   .pageInfo = 496,
                                   .countSize = 1,
                                   .nodeEntry = 16,
                                   .blockEntry = 12,
                                   .trailer = 12,
                                   .trailerId = 4,
                                   .trailerChecksum = 8,
                                   .trailerPlainSize = 0,
                                   .entryPlainSize = 0,
                                   .valueBits = 11};
  static constexpr Layout kUnicode = {.pageSize = 512,
                                      .blockSlot = 8192,
                                      .blockUnit = 64,
                                      .idSize = 8,
                                      .nodeRoot = 216,
                                      .blockRoot = 232,
                                      .cipher = 513,
                                      .pageInfo = 488,
                                      .countSize = 1,
                                      .nodeEntry = 32,
                                      .blockEntry = 24,
                                      .trailer = 16,
                                      .trailerId = 8,
                                      .trailerChecksum = 4,
                                      .trailerPlainSize = 0,
                                      .entryPlainSize = 0,
                                      .valueBits = 11};
  static constexpr Layout kLargePages = [] {
    Layout large = kUnicode;
    large.pageSize = 4096;
    large.blockSlot = 65536;
    large.blockUnit = 512;
    large.pageInfo = 4056;
    large.countSize = 2;
    large.trailer = 24;
    large.trailerPlainSize = 18;
    large.entryPlainSize = 18;
    large.valueBits = 14;
    return large;
  }();
  switch (variant) {
    case Variant::kAnsi:
      return kAnsi;
    case Variant::kUnicode:
      return kUnicode;
    default:
      return kLargePages;
  }
}

// A block and where it lies; its bytes as they stand there, without the trailer, and unpacked.
struct BlockPlace {
  uint64_t id = 0;
  uint64_t offset = 0;
  size_t size = 0;
  size_t plainSize = 0;

  bool IsPacked() const { return plainSize != size; }
};

// plainSize: 0 where nothing tells it.
inline BlockPlace PlaceOfBlock(uint64_t id, uint64_t offset, size_t size, size_t plainSize) {
  return {id, offset, size, plainSize != 0 ? plainSize : size};
}

// Block numbers bear a mark that is not theirs.
inline uint64_t PlainId(uint64_t id) {
  return id & ~uint64_t{1};
}

// With its trailer, in whole units.
inline size_t WholeSize(size_t size, const Layout& layout) {
  size_t unit = layout.blockUnit;
  return (size + layout.trailer + unit - 1) / unit * unit;
}

// What a trailer says, made of where its page or block lies and which it is.
inline uint64_t SignatureOf(uint64_t offset, uint64_t id) {
  uint64_t mixed = (offset ^ id) & 0xFFFFFFFF;
  return (mixed >> 16 ^ mixed) & 0xFFFF;
}

}  // namespace tarnwick::outlook::reader
