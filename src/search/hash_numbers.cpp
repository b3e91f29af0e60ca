// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/hash_numbers.h"

#include <random>
#include <utility>

namespace tarnwick::search {

namespace {

// Hashes come out of files, which could choose them so that all want the same place.
uint64_t Mixed(uint64_t hash) {
  static const uint64_t secret = [] {
    std::random_device random;
    return (uint64_t{random()} << 32 | random()) | 1;
  }();
  return hash * secret;
}

size_t PartOf(uint64_t hash) {
  return Mixed(hash) >> 56;
}

}  // namespace

// Where a search for it begins: next to the bits that name the part, those behind them.
size_t HashNumbers::FirstPlace(const Part& part, uint64_t hash) {
  return (Mixed(hash) >> 24 & UINT32_MAX) * part.hashes.size() >> 32;
}

// Where it is, or the free place where it belongs. REQUIRES: one is free.
size_t HashNumbers::PlaceOf(const Part& part, uint64_t hash) {
  size_t place = FirstPlace(part, hash);
  while (part.hashes[place] != 0 && part.hashes[place] != hash) {
    if (++place == part.hashes.size()) place = 0;
  }
  return place;
}

uint32_t& HashNumbers::At(uint64_t hash) {
  const size_t number = PartOf(hash);
  Part& part = parts_[number];
  // Each from another size, so that not all of them grow at the same time.
  if (part.hashes.empty()) Grow(part, 64 + number / 4);
  size_t place = PlaceOf(part, hash);
  if (part.hashes[place] == 0) {
    const size_t places = part.hashes.size();
    if (5 * (part.used + 1) > 4 * places) {
      Grow(part, places + places / 2);
      place = PlaceOf(part, hash);
    }
    part.hashes[place] = hash;
    part.used++;
  }
  return part.numbers[place];
}

void HashNumbers::Grow(Part& part, size_t places) {
  Part former = std::exchange(part, {});
  part.hashes.resize(places);
  part.numbers.resize(places, kNone);
  part.used = former.used;
  for (size_t i = 0; i < former.hashes.size(); i++) {
    if (former.hashes[i] == 0) continue;
    size_t place = PlaceOf(part, former.hashes[i]);
    part.hashes[place] = former.hashes[i];
    part.numbers[place] = former.numbers[i];
  }
}

void HashNumbers::Expect(uint64_t hash) const {
  const Part& part = parts_[PartOf(hash)];
  if (part.hashes.empty()) return;
  size_t place = FirstPlace(part, hash);
  __builtin_prefetch(&part.hashes[place]);
  __builtin_prefetch(&part.numbers[place]);
}

}  // namespace tarnwick::search
