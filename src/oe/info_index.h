// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The index of an info object: docs/dbx-format.md, section "Index numbers".
#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

namespace tarnwick::oe {

class ByteReader;

enum IndexNumber : uint8_t {
  kFlags = 0x01,
  kSentTime = 0x02,
  kFirstBlock = 0x04,
  kPlainSubject = 0x05,
  kArrivedTime = 0x06,
  kMessageId = 0x07,
  kSubject = 0x08,
  kSenderName = 0x0D,
  kSenderAddress = 0x0E,
  kMessageLength = 0x11,
  kReceivedTime = 0x12,
  kReceiverName = 0x13,
  kReceiverAddress = 0x14,
};
// Section "Flags".
enum MessageFlag : uint32_t {
  kDraftFlag = 0x08,
  kFlaggedFlag = 0x20,
  kReadFlag = 0x80,
  kAnsweredFlag = 0x80000,
  kForwardedFlag = 0x100000,
};
// The same numbers mean other things in a folder's object.
enum FolderIndexNumber : uint8_t {
  kFolderNumber = 0x00,
  kFolderParent = 0x01,
  kFolderName = 0x02,
  kFolderFile = 0x03,
  kFolderPurpose = 0x09,
};
inline constexpr uint8_t kDirectFlag = 0x80;
inline constexpr size_t kInfoHead = 12;

// The index entries of the info object being read: what ParseMessageInfo knows beside the bytes.
struct InfoIndex {
  std::vector<std::pair<uint8_t, uint32_t>> entries;  // number with its direct flag, value
  uint64_t fileTime = 0;                              // the timestamp found
  size_t firstByte = 0;  // place in the data area of the first byte given
  size_t dataSize = 0;   // of the data area
};

// The index of the object at offset, whose head names so many bytes and entries; what the file
// lacks of it is left out.
InfoIndex ReadIndex(ByteReader& file, uint32_t offset, uint32_t bodyLength, int entryCount);

// Where in the file the value lies that an entry points to; nullopt without such an entry, and
// where the object has not so many bytes there.
std::optional<uint64_t> PlaceOf(const InfoIndex& index, uint8_t number, uint32_t offset,
                                size_t width);

// The value of an entry, its own or the word that it points to; nullopt without one.
std::optional<uint32_t> NumberOf(ByteReader& file, const InfoIndex& index, uint8_t number,
                                 uint32_t offset);

}  // namespace tarnwick::oe
