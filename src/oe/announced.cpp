// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/announced.h"

#include <algorithm>

#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "oe/tree_node.h"
#include "platform/error.h"
#include "platform/registry.h"

namespace tarnwick::oe {

int64_t CountInHeader(ByteReader& file) {
  std::string_view header = file.Read(0, kHeaderSize);
  if (header.size() < kHeaderSize) return 0;
  uint64_t most = file.Size() / (kEntrySize + kMinInfoSize);
  return static_cast<int64_t>(std::min<uint64_t>(Get32(header, kItemCountPlace), most));
}

int64_t AnnouncedMessages(const std::string& file) {
  if (platform::ReadDbxContent(file) != platform::DbxContent::kMessages) return 0;
  try {
    ByteReader reader(file);
    return CountInHeader(reader);
  } catch (const Error&) {
    return 0;
  }
}

}  // namespace tarnwick::oe
