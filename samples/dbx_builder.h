// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Builds the files of Outlook Express stores byte by byte, sound ones and, by writing over them,
// any kind of damaged one. docs/dbx-format.md describes the format.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "platform/date_time.h"

namespace tarnwick::samples {

// The bytes of a store file with its header; objects are appended, each at its own offset.
class DbxImage {
 public:
  enum class Kind : uint8_t { kMessages = 0xC5, kFolderList = 0xC6 };

  explicit DbxImage(Kind kind);

  uint32_t Size() const { return static_cast<uint32_t>(bytes_.size()); }
  void Put8(uint32_t offset, uint8_t value);
  void Put32(uint32_t offset, uint32_t value);
  uint32_t Get32(uint32_t offset) const;
  // Appends the bytes of an object, filled up to a multiple of four, and sets its first word to its
  // own offset.
  uint32_t AddObject(std::string bytes);
  // Fills the file up to an offset.
  void PadTo(uint32_t offset);
  // Writes over what is there.
  void Replace(uint32_t offset, std::string_view bytes);
  // As the program leaves an object that it no longer needs: with all the bytes that it takes for
  // its third word, and the object freed before it for its fifth.
  void Free(uint32_t offset, uint32_t allBytes, uint32_t freedBefore);
  // A tree node; leftChild 0 and child 0 mean none.
  struct Entry {
    uint32_t value = 0;
    uint32_t child = 0;
  };
  uint32_t AddNode(const std::vector<Entry>& entries, uint32_t leftChild = 0);

  const std::string& Bytes() const { return bytes_; }
  void Cut(uint32_t size) { bytes_.resize(size); }

 private:
  std::string bytes_;
};

// What the store's index says about a message, beside its text. Texts are bytes in the machine's
// code page; an empty one gets no entry.
struct IndexedMessage {
  std::string text;
  DateTime date = DateTime::FromSeconds(1'073'298'030);  // 5 January 2004 10:20:30 UTC
  uint32_t fraction = 0;                                 // of the second, in tenths of microseconds
  std::string subject;
  std::string messageId;
  std::string senderName;
  std::string senderAddress;
  std::string receiverName;
  std::string receiverAddress;
  uint32_t flags = 0x81;
  bool flagsDirect = true;  // else by pointer, as received mail mostly has them
  size_t blockSize = 512;
  // Blocks of deleted messages that it is written over, as far as they go.
  std::vector<uint32_t> reusedBlocks;
};

// Offsets of what AddMessage wrote.
struct MessagePlaces {
  uint32_t info = 0;
  uint32_t date = 0;  // of the timestamp
  std::vector<uint32_t> blocks;
};

class MessageStoreBuilder {
 public:
  MessageStoreBuilder();

  MessagePlaces AddMessage(const IndexedMessage& message);

  DbxImage& Image() { return image_; }
  const std::vector<MessagePlaces>& Messages() const { return messages_; }

  void SetRoot(uint32_t offset);
  void SetItemCount(uint32_t count);
  // Announces all messages and hangs them into a tree of one node or, when there are more than fit
  // or twoLevels asks for it, of two levels. At most 255 + 256 * 255 messages.
  void Finish(size_t entriesInNode = 51, bool twoLevels = false);
  // The same as a tree of so many levels, the messages in its order. REQUIRES: there are as many
  // messages as it has nodes, or more.
  void FinishInLevels(int levels, size_t entriesInNode = 51);

  const std::string& Bytes() const { return image_.Bytes(); }

 private:
  uint32_t AddSubtree(size_t first, size_t end, int levels, size_t entriesInNode);

  DbxImage image_;
  std::vector<MessagePlaces> messages_;
};

struct ListedFolder {
  uint32_t number = 0;
  uint32_t parent = 0;
  std::string name;
  std::string file;
  uint32_t purpose = 1;  // which of the program's own folders
};

// How the index of a folder's object ends, see the format's section "Folder info".
enum class FolderForm {
  kNameIsFifth,  // five entries, the last of them the name
  kNameFollows,  // more entries, the last of them the name
  kNameThenOne,  // one more word behind the name's entry
  kNoFile,       // never opened
  kMark,         // the list's own object, which is no folder
};

class FolderListBuilder {
 public:
  FolderListBuilder();
  void Add(const ListedFolder& folder, FolderForm form = FolderForm::kNameFollows);
  DbxImage& Image() { return image_; }
  // Writes the tree, the root at place 0x30: one node, or two levels with so many entries in a node
  // where there are more.
  void Finish(size_t entriesInNode = 255);
  const std::string& Bytes() const { return image_.Bytes(); }

 private:
  DbxImage image_;
  std::vector<DbxImage::Entry> entries_;
};

// The FILETIME of a civil UTC time.
uint64_t ToFileTime(DateTime date, uint32_t fraction = 0);

}  // namespace tarnwick::samples
