// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/reader/checksum.h"

#include <array>
#include <cstddef>

namespace tarnwick::outlook::reader {

namespace {

// Every byte of a store passes here, so sixteen bytes are taken at a step: table n tells what a
// byte comes to with n bytes behind it.
constexpr size_t kStep = 16;
using Tables = std::array<std::array<uint32_t, 256>, kStep>;

constexpr Tables MakeTables() {
  Tables tables{};
  for (uint32_t byte = 0; byte < 256; ++byte) {
    uint32_t rest = byte;
    for (int bit = 0; bit < 8; ++bit) rest = (rest & 1) != 0 ? rest >> 1 ^ 0xEDB88320 : rest >> 1;
    tables[0][byte] = rest;
  }
  for (size_t n = 1; n < kStep; ++n) {
    for (size_t byte = 0; byte < 256; ++byte) {
      uint32_t before = tables[n - 1][byte];
      tables[n][byte] = before >> 8 ^ tables[0][before & 0xFF];
    }
  }
  return tables;
}
constexpr Tables kTables = MakeTables();

}  // namespace

uint32_t Checksum(std::string_view bytes) {
  uint32_t sum = 0;
  auto byteAt = [&](size_t i) {
    return static_cast<uint32_t>(static_cast<unsigned char>(bytes[i]));
  };
  auto wordAt = [&](size_t i) {
    return byteAt(i) | byteAt(i + 1) << 8 | byteAt(i + 2) << 16 | byteAt(i + 3) << 24;
  };
  // What a word comes to with so many bytes behind it.
  auto partOf = [](uint32_t word, size_t behind) {
    return kTables[behind + 3][word & 0xFF] ^ kTables[behind + 2][word >> 8 & 0xFF] ^
           kTables[behind + 1][word >> 16 & 0xFF] ^ kTables[behind][word >> 24];
  };
  for (; bytes.size() >= kStep; bytes.remove_prefix(kStep)) {
    sum = partOf(sum ^ wordAt(0), 12) ^ partOf(wordAt(4), 8) ^ partOf(wordAt(8), 4) ^
          partOf(wordAt(12), 0);
  }
  for (size_t i = 0; i < bytes.size(); ++i) sum = sum >> 8 ^ kTables[0][(sum ^ byteAt(i)) & 0xFF];
  return sum;
}

}  // namespace tarnwick::outlook::reader
