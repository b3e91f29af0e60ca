// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Finds the objects of a message file by what each begins with, its own offset, whatever became of
// the trees that led to them. One pass over the file; memory stays below a quarter of its size.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::oe {

class ByteReader;

inline constexpr size_t kBlockHead = 16;

struct FoundBlock {
  uint32_t offset = 0;
  uint32_t next = 0;
  uint32_t size = 0;        // room for text
  uint32_t length = 0;      // of its text; the room where that is not known any more
  bool isOverlaid = false;  // another object begins within its text
  bool isFreed = false;     // its length was overwritten when it was freed
  // What InspectText finds.
  bool isText = false;          // what stands there can be mail
  bool lacksFirstWord = false;  // the first four bytes of its text were overwritten
  bool beginsMessage = false;   // headers of a message stand at its beginning
  // For the use of those who follow chains.
  enum class Owner : uint8_t { kNone, kTree, kProven, kTaken };
  Owner owner = Owner::kNone;
  uint8_t comers = 0;  // blocks that it follows, 2 for several

  uint64_t End() const { return uint64_t{offset} + kBlockHead + size; }
};

struct FoundInfo {
  uint32_t offset = 0;
  uint32_t firstBlock = 0;
  // Of an object that was freed, whose own number is overwritten; else 0.
  uint8_t entryCount = 0;
  bool isOverlaid = false;
};

// Both by their offsets.
struct FoundObjects {
  std::vector<FoundBlock> blocks;
  std::vector<FoundInfo> infos;
  int64_t origin = 0;   // offset of the file's first byte (byte_reader.h)
  bool isCut = false;   // there were more objects than a file of this size can hold
  bool isWhole = true;  // the look was not ended by goOn
  bool isMore = false;  // objects of further origins were seen besides
};

// A file none of whose objects stands at its offset is taken for a part of a disk, with pieces of
// one message file or several: each origin that some objects agree on is that of one, the largest
// first. There is at least one element. goOn is asked once for each piece read, with the share done
// in percent; false ends the look. Throws Error for a file that can't be read.
std::vector<FoundObjects> FindObjects(const std::string& path,
                                      const std::function<bool(int)>& goOn);

// Looks at the text of a block.
void InspectText(ByteReader& file, FoundBlock& block);

// Whether a text begins with the headers of a message, as far as it goes.
bool BeginsMessage(std::string_view text);

}  // namespace tarnwick::oe
