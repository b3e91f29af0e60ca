// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A .pst file of Outlook 97 to 2010 read by its nodes: an answer costs what it holds, however large
// the store. The last item and embedded message stay open, since requests come in their order.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "outlook/reader/heap.h"
#include "outlook/reader/node_file.h"
#include "outlook/reader/store_file.h"

namespace tarnwick::outlook::reader {

// The kinds of nodes, as the low bits of their numbers tell them.
inline constexpr uint32_t kKindMask = 0x1F;
inline constexpr uint32_t kFolderKind = 0x02;
inline constexpr uint32_t kMessageKind = 0x04;

class NodeStore : public StoreFile {
 public:
  // Throws ReadError for a file whose store or top folder is not found this way.
  explicit NodeStore(platform::InputFile& file);
  // What a scan has found of one; it may lack anything.
  NodeStore(platform::InputFile& file, FoundStore found);

  void DescribeStore(Answer& answer) override;
  void DescribeFolder(uint32_t node, Answer& answer) override;
  void DescribeItem(const ItemPlace& place, Answer& answer) override;
  void DescribeEmbedded(const ItemPlace& place, const AttachmentPath& path,
                        Answer& answer) override;
  void ReadAttachment(const ItemPlace& place, const AttachmentPath& path, const ByteSink& sink,
                      Answer& answer) override;

 protected:
  NodeFile& File() { return file_; }

 private:
  struct Message {
    std::unique_ptr<Heap> properties;
    std::vector<uint32_t> attachments;  // the nodes they are, in their order
    bool isDamaged = false;             // whether there are any can't be told
  };

  Message OpenMessage(uint64_t data, uint64_t sub);
  Message& OpenItem(uint32_t node);
  Message& OpenEmbedded(uint32_t node, const AttachmentPath& path);
  std::unique_ptr<Heap> OpenAttachment(Message& message, uint32_t number);
  void DescribeMessage(Message& message, Answer& answer);
  // What a folder's table lists.
  struct Listing {
    std::vector<uint32_t> rows;
    std::vector<uint32_t> otherItems;  // of the rows, those that are no mail
    bool isWhole = false;              // the table is as it was written
  };

  Listing ReadListing(uint32_t tableNode);
  Listing ListOf(uint32_t folder, uint32_t tableKind, uint32_t kind, std::optional<int64_t> count);
  bool IsBelow(uint32_t node, uint32_t folder, uint32_t kind);
  std::vector<uint32_t> Below(uint32_t folder, uint32_t kind);
  void TellDamage(Answer& answer);

  NodeFile file_;
  Message item_;
  uint32_t itemNode_ = 0;
  Message embedded_;
  AttachmentPath embeddedPath_;
  // Nodes by parent, for folders whose tables are gone; read when one is met.
  std::multimap<uint32_t, uint32_t> children_;
  bool hasChildren_ = false;
};

}  // namespace tarnwick::outlook::reader
