// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/info_index.h"

#include <algorithm>

#include "oe/byte_reader.h"

namespace tarnwick::oe {

namespace {

const std::pair<uint8_t, uint32_t>* Find(const InfoIndex& index, uint8_t number) {
  auto entry = std::find_if(index.entries.begin(), index.entries.end(), [&](const auto& each) {
    return (each.first & ~kDirectFlag) == number;
  });
  return entry == index.entries.end() ? nullptr : &*entry;
}

}  // namespace

InfoIndex ReadIndex(ByteReader& file, uint32_t offset, uint32_t bodyLength, int entryCount) {
  InfoIndex index;
  size_t size = 4 * static_cast<size_t>(entryCount);
  std::string_view bytes = file.Read(uint64_t{offset} + kInfoHead, size);
  index.entries.reserve(static_cast<size_t>(entryCount));
  for (size_t place = 0; place + 4 <= bytes.size(); place += 4) {
    index.entries.emplace_back(Get8(bytes, place), Get24(bytes, place + 1));
  }
  index.dataSize = bodyLength > size ? bodyLength - size : 0;
  return index;
}

std::optional<uint64_t> PlaceOf(const InfoIndex& index, uint8_t number, uint32_t offset,
                                size_t width) {
  const auto* entry = Find(index, number);
  if (entry == nullptr || (entry->first & kDirectFlag) != 0) return std::nullopt;
  if (uint64_t{entry->second} + width > index.dataSize) return std::nullopt;
  return uint64_t{offset} + kInfoHead + 4 * uint64_t{index.entries.size()} + entry->second;
}

std::optional<uint32_t> NumberOf(ByteReader& file, const InfoIndex& index, uint8_t number,
                                 uint32_t offset) {
  const auto* entry = Find(index, number);
  if (entry == nullptr) return std::nullopt;
  if ((entry->first & kDirectFlag) != 0) return entry->second;
  auto place = PlaceOf(index, number, offset, 4);
  if (!place) return std::nullopt;
  std::string_view word = file.Read(*place, 4);
  if (word.size() < 4) return std::nullopt;
  return Get32(word, 0);
}

}  // namespace tarnwick::oe
