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

// The frames of the answer, all there are until one fails.
template <typename Request>
std::string Ask(size_t limit, Request request) {
  std::string frames;
  outlook::reader::Answer answer([&](std::string_view bytes) {
    frames += bytes;
    if (frames.size() > limit) std::abort();
  });
  try {
    request(answer);
  } catch (const outlook::reader::ReadError&) {
  }
  answer.Flush();
  return frames;
}

}  // namespace tarnwick::fuzz
