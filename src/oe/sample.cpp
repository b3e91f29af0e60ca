// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/sample.h"

#include <algorithm>

#include "oe/announced.h"
#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "oe/tree_node.h"
#include "platform/error.h"

namespace tarnwick::oe {

namespace {

constexpr size_t kMessageRootPlace = 0xE4;

void Add(ByteReader& file, uint32_t infoOffset, StoreSample& sample) {
  std::optional<PeekedMessage> message = PeekMessage(file, infoOffset);
  if (!message) return;
  const MessageInfo& info = message->info;
  int year = info.date.ToCivil().year;
  sample.firstYear = sample.firstYear == 0 ? year : std::min(sample.firstYear, year);
  sample.lastYear = std::max(sample.lastYear, year);
  sample.keys.push_back(MakeEntryKey(info.keyText, info.date));
}

}  // namespace

StoreSample SampleStore(const std::string& path) {
  StoreSample sample;
  try {
    sample.messages = AnnouncedMessages(path);
    ByteReader file(path);
    std::string_view header = file.Read(0, kHeaderSize);
    sample.isDamaged = header.size() < kHeaderSize;
    if (sample.isDamaged || sample.messages == 0) return sample;
    std::optional<TreeNode> root = ReadNode(file, Get32(header, kMessageRootPlace));
    sample.isDamaged = !root || root->isCut || root->entries.empty();
    if (sample.isDamaged) return sample;
    uint32_t first = root->entries.front().value;
    uint32_t last = root->entries.back().value;
    Add(file, first, sample);
    if (last != first) Add(file, last, sample);
  } catch (const Error&) {
    sample.isDamaged = true;
  }
  return sample;
}

}  // namespace tarnwick::oe
