// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the fuzzers of Outlook stores have in common: a variant of the format, a file, a request.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdlib>
#include <string>
#include <string_view>

#include "outlook/reader/answer.h"
#include "outlook/reader/layout.h"
#include "outlook/reader/store_file.h"

namespace tarnwick::fuzz {

inline outlook::reader::Variant VariantOf(unsigned char kind) {
  using outlook::reader::Variant;
  if ((kind & 0x40) != 0) return Variant::kLargePages;
  return kind % 2 == 0 ? Variant::kUnicode : Variant::kAnsi;
}

// What may be said of a store in one answer. A packed block takes up a 128th of what it holds at
// least.
inline size_t LimitOf(size_t size, outlook::reader::Variant variant) {
  size_t times = variant == outlook::reader::Variant::kLargePages ? 192 : 64;
  return times * size + (1 << 20);
}

// The path of the one file in memory that holds these bytes now.
inline std::string InMemory(const std::string& bytes) {
  static const int kFile = memfd_create("store", MFD_CLOEXEC);
  if (ftruncate(kFile, 0) != 0) std::abort();
  if (pwrite(kFile, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    std::abort();
  }
  return "/proc/self/fd/" + std::to_string(kFile);
}

// Asks for one thing; what it says of itself, and the bytes of an attachment, must stay below the
// limit.
template <typename Request>
void Ask(size_t limit, outlook::reader::Answer& answer, Request request) {
  size_t attached = 0;
  try {
    request(answer, [&](std::string_view bytes) {
      attached += bytes.size();
      if (attached > limit) std::abort();
    });
  } catch (const outlook::reader::ReadError&) {
  }
  size_t said = 0;
  auto add = [&](const outlook::RawRow& row) {
    for (const outlook::RawProperty& property : row) said += 8 + property.bytes.size();
  };
  add(answer.properties);
  for (const outlook::RawRow& row : answer.recipients) add(row);
  for (const outlook::RawRow& row : answer.attachments) add(row);
  if (said + 4 * (answer.folders.size() + answer.items.size()) > limit) std::abort();
}

}  // namespace tarnwick::fuzz
