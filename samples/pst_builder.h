// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Builds an Outlook store (.pst) from nothing, in the Unicode or the older ANSI format ([MS-PST]),
// or in the one of large pages and packed blocks (reader/layout.h): a message store, folders,
// messages with recipients and attachments. Texts are given as they are to be stored: UTF-8 for a
// Unicode store, bytes of a code page for an ANSI one. What readers do not need (allocation maps,
// search folders) is left out.
#pragma once

#include <cassert>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "outlook/reader/layout.h"

namespace tarnwick::samples {

// Values by property number: a text, a number, a FILETIME or bytes.
struct PstProperties {
  std::map<uint16_t, std::string> texts;
  std::map<uint16_t, int32_t> numbers;
  std::map<uint16_t, int64_t> times;
  std::map<uint16_t, std::string> bytes;
};

struct PstMessage;

struct PstAttachment {
  PstProperties properties;
  std::string data;
  std::vector<PstMessage> embedded;  // one, in place of data
};

struct PstMessage {
  PstProperties properties;
  std::vector<PstProperties> recipients;
  std::vector<PstAttachment> attachments;
};

// A mail of Ann's with nothing but a subject.
inline PstMessage PstMail(const std::string& subject) {
  PstMessage mail;
  mail.properties.texts = {{0x001A, "IPM.Note"}, {0x0037, subject}, {0x0C1A, "Ann"}};
  return mail;
}

class PstBuilder {
 public:
  // Stores of one name have one key, as copies of a store have.
  explicit PstBuilder(outlook::reader::Variant variant = outlook::reader::Variant::kUnicode,
                      std::string displayName = "Personal Folders");

  // The folder that Outlook shows as the store's top, made by the constructor.
  static constexpr uint32_t kTop = 0x8022;
  uint32_t AddFolder(uint32_t parent, const std::string& name);
  // Gives the message's node.
  uint32_t AddMessage(uint32_t folder, const PstMessage& message);
  // Lists a message in a folder that it does not lie in, or another node where a message should be.
  void ListMessage(uint32_t folder, uint32_t node) { folders_[folder].messages.push_back(node); }
  // Takes it out of its folder and out of the index; its blocks stay.
  void DeleteMessage(uint32_t node);
  // Writes folders and index as they now are, as Outlook does after each step of its work; the
  // pages stay where they are when later ones take their place.
  void Checkpoint();
  void SetStoreNumber(uint16_t property, int32_t number);
  // How blocks are made unreadable to a casual eye: 0 not at all, 1 or 2. REQUIRES: nothing was
  // added yet.
  void SetCipher(uint8_t cipher) {
    assert(blocks_.empty());
    cipher_ = cipher;
  }

  std::string Build();

 private:
  struct Block {
    uint64_t id = 0;
    uint64_t offset = 0;
    uint16_t size = 0;
    uint16_t plainSize = 0;
  };
  struct Node {
    uint64_t data = 0;
    uint64_t sub = 0;
    uint32_t parent = 0;
  };
  struct SubNode {
    uint64_t data = 0;
    uint64_t sub = 0;
  };
  using SubNodes = std::map<uint32_t, SubNode>;
  struct FolderContent {
    uint32_t parent = 0;
    PstProperties properties;
    std::vector<uint32_t> folders;
    std::vector<uint32_t> messages;
  };
  struct Row {
    uint32_t id = 0;
    PstProperties values;
  };

  size_t IdSize() const { return layout_.idSize; }
  size_t MaxBlock() const { return layout_.blockSlot - layout_.trailer; }
  bool IsUnicode() const { return layout_.idSize == 8; }
  bool IsLarge() const { return layout_.trailerPlainSize != 0; }
  void AlignToPage() {
    file_.resize((file_.size() + layout_.pageSize - 1) / layout_.pageSize * layout_.pageSize, '\0');
  }
  uint64_t WriteBlock(const std::string& data, bool isInternal);
  uint64_t WriteData(const std::string& data);
  uint64_t WriteRows(const std::vector<std::string>& rows);
  uint64_t WriteTree(std::vector<uint64_t> blocks, size_t total, bool isPart = false);
  uint64_t WriteHeap(const std::vector<std::string>& heap);
  uint64_t WriteSubNodes(const SubNodes& nodes);
  uint64_t WriteContext(const PstProperties& properties, SubNodes& sub, uint32_t object = 0);
  SubNode WriteMessage(const PstMessage& message);
  uint64_t WriteTable(const std::vector<Row>& rows, SubNodes& sub);
  std::string Stored(const std::string& text) const;
  void WriteFolder(uint32_t node, const FolderContent& folder);
  std::pair<uint64_t, uint64_t> WriteIndexes();
  uint64_t WriteIndex(uint8_t type, const std::vector<std::string>& entries, size_t keySize);
  uint64_t WritePage(uint8_t type, const std::string& entries, size_t entrySize, uint8_t level);
  std::string Header(uint64_t nodePage, uint64_t blockPage);

  const outlook::reader::Layout& layout_;
  uint8_t cipher_ = 0;
  PstProperties store_;
  std::string file_;
  std::map<uint64_t, Block> blocks_;
  std::map<uint32_t, Node> nodes_;
  std::map<uint32_t, FolderContent> folders_;
  std::map<uint32_t, std::string> classes_;  // of the messages
  std::map<uint64_t, uint64_t> pageIds_;     // by offset
  uint64_t nextBlock_ = 4;
  uint64_t nextPage_ = 0x1001;
  uint32_t nextFolder_ = 0x8042;
  uint32_t nextMessage_ = 0x200024;
};

}  // namespace tarnwick::samples
