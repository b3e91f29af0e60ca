// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A number for each of many hashes: twelve bytes each, and half as much again for the room that a
// table of hashes needs. It is made of parts that grow one by one, so that no single addition
// takes long, and memory never holds two copies of it all. Nothing is ever taken out.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarnwick::search {

class HashNumbers {
 public:
  static constexpr uint32_t kNone = UINT32_MAX;

  // The number of a hash; kNone, to be set, for a new one. REQUIRES: hash is not 0. Valid until
  // the next call.
  uint32_t& At(uint64_t hash);
  // Says that At will be asked for it soon: what that looks at is read into the processor's cache
  // meanwhile, which takes longer than all the rest. Any hash.
  void Expect(uint64_t hash) const;

 private:
  static constexpr size_t kParts = 256;
  struct Part {
    std::vector<uint64_t> hashes;  // 0: free
    std::vector<uint32_t> numbers;
    size_t used = 0;
  };
  static size_t FirstPlace(const Part& part, uint64_t hash);
  static size_t PlaceOf(const Part& part, uint64_t hash);
  static void Grow(Part& part, size_t places);

  std::array<Part, kParts> parts_;
};

}  // namespace tarnwick::search
