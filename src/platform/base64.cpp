// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/base64.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace tarnwick::platform {

namespace {

constexpr std::string_view kAlphabet =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Attachments are written and read through here. Two characters are looked up at a time,
using Pairs = std::array<std::array<char, 2>, 4096>;
constexpr Pairs kPairs = [] {
  Pairs pairs{};
  for (size_t i = 0; i < pairs.size(); ++i) pairs[i] = {kAlphabet[i >> 6], kAlphabet[i & 63]};
  return pairs;
}();

// and what a character adds to the three bytes, the first one lowest, by its place in the four.
constexpr uint32_t kForeign = uint32_t{1} << 24;
using Shares = std::array<std::array<uint32_t, 256>, 4>;
constexpr Shares kShares = [] {
  Shares shares{};
  for (auto& share : shares) share.fill(kForeign);
  for (uint32_t i = 0; i < kAlphabet.size(); ++i) {
    auto c = static_cast<unsigned char>(kAlphabet[i]);
    shares[0][c] = i << 2;
    shares[1][c] = i >> 4 | (i & 15) << 12;
    shares[2][c] = (i >> 2) << 8 | (i & 3) << 22;
    shares[3][c] = i << 16;
  }
  return shares;
}();

uint32_t ByteOf(char c) {
  return static_cast<unsigned char>(c);
}

}  // namespace

void EncodeBase64Groups(const char* bytes, size_t groups, char* out) {
  for (; groups > 0; --groups, bytes += 3, out += 4) {
    uint32_t group = ByteOf(bytes[0]) << 16 | ByteOf(bytes[1]) << 8 | ByteOf(bytes[2]);
    std::memcpy(out, kPairs[group >> 12].data(), 2);
    std::memcpy(out + 2, kPairs[group & 4095].data(), 2);
  }
}

bool IsBase64(char c) {
  return kShares[0][ByteOf(c)] != kForeign;
}

bool DecodeBase64Groups(const char* text, size_t groups, char* out) {
  uint32_t all = 0;
  for (; groups > 0; --groups, text += 4, out += 3) {
    uint32_t group = kShares[0][ByteOf(text[0])] | kShares[1][ByteOf(text[1])] |
                     kShares[2][ByteOf(text[2])] | kShares[3][ByteOf(text[3])];
    all |= group;
    const char three[3] = {static_cast<char>(group), static_cast<char>(group >> 8),
                           static_cast<char>(group >> 16)};
    std::memcpy(out, three, 3);
  }
  return (all & kForeign) == 0;
}

}  // namespace tarnwick::platform
