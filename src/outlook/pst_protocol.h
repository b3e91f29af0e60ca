// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the program and tarnwick-reader say to each other. The reader is handed one open .pst
// file and answers requests, one after the other, about what lies in it. It interprets
// nothing: values travel as the bytes of the store, with their MAPI property number and type.
//
// Both directions are frames (platform/frames.h) of at most kMaxFrame bytes. Numbers are
// little-endian.
//
// Requests
//   'G'                               the items that a search of the whole file finds; as the first
//                                     request it has all others answered by what was found, too,
//                                     whether anything leads there or not
//   'S'                               the store: its properties
//   'F' node                          a folder: its properties, folders and items
//   'I' folder index node             an item: its message class; when it is mail also its other
//                                     properties, its recipients and attachments
//   'H' folder index node             the same ahead of its time, complete with the attachments'
//                                     bytes, each behind its row; what is longer than kMaxAhead
//                                     fails, and is for 'I' when its time comes
//   'A' folder index node path...     the bytes of the attachment that the path leads to: the first
//                                     number is an attachment of the item, the next one an
//                                     attachment of the message that is embedded there, and so on
//   'M' folder index node path...     the message embedded there, as 'I' answers
// Every number is 32 bits; index is the item's place in its folder, as 'F' listed it.
//
// Answers are any number of these, then 'Z', or 'E' with a text when the request failed (what came
// before it holds as far as it goes):
//   'P' number(16) type(16) length(32) bytes    a property; bytes beyond the frame follow in
//   'C' bytes                                   frames of this kind
//   'R', 'T'                                    a recipient or an attachment begins; the properties
//                                               behind it are its own
//   'D' node...                                 folders in this folder
//   'L' node...                                 items in this folder
//   'O' node...                                 those of them that the folder says are no mail
//   'V' node parent how(32) data(64)...         items found: their node and folder, how (LostHow),
//                                               and what tells this state of theirs from others
//   'W' percent(32)                             how far the search has come
//   'B' bytes                                   a piece of an attachment
//   'U'                                         the reader is not shut in: the system has no means
//   'X' text                                    what of it is damaged: left out, or not as it was
//                                               written
//
// Requests may be sent before the answers to earlier ones have come; answers keep their order.
#pragma once

#include <cassert>
#include <cstdint>
#include <string>
#include <string_view>

namespace tarnwick::outlook {

namespace frame {
inline constexpr char kStore = 'S';
inline constexpr char kFolder = 'F';
inline constexpr char kLostItems = 'G';
inline constexpr char kItem = 'I';
inline constexpr char kItemAhead = 'H';
inline constexpr char kAttachment = 'A';
inline constexpr char kEmbedded = 'M';

inline constexpr char kProperty = 'P';
inline constexpr char kContinued = 'C';
inline constexpr char kRecipientRow = 'R';
inline constexpr char kAttachmentRow = 'T';
inline constexpr char kFolders = 'D';
inline constexpr char kItems = 'L';
inline constexpr char kOtherItems = 'O';
inline constexpr char kFoundItems = 'V';
inline constexpr char kProgress = 'W';
inline constexpr char kBytes = 'B';
inline constexpr char kNotShutIn = 'U';
inline constexpr char kLost = 'X';
inline constexpr char kDone = 'Z';
inline constexpr char kFailed = 'E';
}  // namespace frame

inline constexpr size_t kPropertyHeader = 8;
inline constexpr size_t kMaxFrame = 64 * 1024;
// The bytes of all frames of an answer that may lie ready before it is wanted.
inline constexpr size_t kMaxAhead = size_t{1} << 20;
// Messages embedded in messages; what lies deeper is left out.
inline constexpr size_t kMaxEmbedding = 16;

// How an item was found.
enum class LostHow : uint32_t {
  kUnlisted,   // the index has it, whether a folder lists it or not
  kDeleted,    // the index had it once
  kIndexLost,  // the index can't be asked
  kAlone       // no index ever seen has it: its own properties and nothing that belongs to it
};
inline constexpr size_t kFoundItem = 20;  // bytes of each in 'V'

inline void PutNumber(std::string& bytes, uint32_t value, int count = 4) {
  for (int i = 0; i < count; ++i) bytes.push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

// REQUIRES: offset + count <= bytes.size().
inline uint32_t TakeNumber(std::string_view bytes, size_t offset, int count = 4) {
  assert(offset + static_cast<size_t>(count) <= bytes.size());
  uint32_t value = 0;
  for (int i = 0; i < count; ++i) {
    auto byte = static_cast<unsigned char>(bytes[offset + static_cast<size_t>(i)]);
    value |= static_cast<uint32_t>(byte) << (8 * i);
  }
  return value;
}

}  // namespace tarnwick::outlook
