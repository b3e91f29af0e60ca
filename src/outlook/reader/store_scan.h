// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The pages and blocks of a .pst file found without its index, in one pass over the file. Each
// bears at its end its number, a checksum and a signature of the place where it lies; only those
// are taken of which all three are right. Numbers of blocks are never given twice in a store, so a
// list that names a block, however old it is, leads to what was meant or to nothing.
//
// Pages of nodes that Outlook has written anew stay in the file until their place is needed, and
// with them the entries of deleted items.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "outlook/reader/layout.h"
#include "platform/files.h"

namespace tarnwick::outlook::reader {

struct FoundNode {
  uint32_t number = 0;
  uint32_t parent = 0;
  uint64_t data = 0;
  uint64_t sub = 0;
  uint64_t page = 0;  // the number of the page that says so; the higher, the newer
};

struct FoundStore {
  Variant variant = Variant::kUnicode;
  uint8_t cipher = 0;
  std::vector<FoundNode> nodes;    // by number, of each number the newest first
  std::vector<BlockPlace> blocks;  // by number, which is each one's alone
  bool isCut = false;              // there is more in the file than is taken
};

// tell: how far it has come, in percent, now and then. Throws ReadError where nothing is found,
// Error for a file that can't be read.
FoundStore ScanStore(platform::InputFile& file, const std::function<void(int)>& tell);

}  // namespace tarnwick::outlook::reader
