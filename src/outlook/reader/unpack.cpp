// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/reader/unpack.h"

#include <zlib.h>

namespace tarnwick::outlook::reader {

std::string Unpacked(std::string_view packed, size_t count) {
  std::string plain(count, '\0');
  auto length = static_cast<uLongf>(count);
  int result =
      uncompress(reinterpret_cast<Bytef*>(plain.data()), &length,
                 reinterpret_cast<const Bytef*>(packed.data()), static_cast<uLong>(packed.size()));
  // There may be more than is asked for.
  plain.resize(result == Z_OK || result == Z_BUF_ERROR ? static_cast<size_t>(length) : 0);
  return plain;
}

}  // namespace tarnwick::outlook::reader
