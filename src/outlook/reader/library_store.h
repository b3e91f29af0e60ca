// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A .pst file read through the store library. The last folder, item and embedded message stay
// open, since requests come in their order.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "outlook/reader/answer.h"
#include "outlook/reader/handles.h"
#include "outlook/reader/store_file.h"

namespace tarnwick::outlook::reader {

class LibraryStore : public StoreFile {
 public:
  // Throws ReadError when the file is none that can be read. isDamaged: the file is one that should
  // not need the library; what the library makes of it is told as damaged, since it checks less.
  explicit LibraryStore(platform::InputFile& file, bool isDamaged = false);

  void DescribeStore(Answer& answer) override;
  void DescribeFolder(uint32_t node, Answer& answer) override;
  void DescribeItem(const ItemPlace& place, Answer& answer) override;
  void DescribeEmbedded(const ItemPlace& place, const AttachmentPath& path,
                        Answer& answer) override;
  void ReadAttachment(const ItemPlace& place, const AttachmentPath& path, const ByteSink& sink,
                      Answer& answer) override;

 private:
  struct Embedded {
    AttachmentPath path;
    // The chain from the item's attachment to the innermost message: each handle needs the ones
    // before it to stay open.
    std::vector<ItemHandle> chain;
  };

  libpff_item_t* OpenFolder(uint32_t node);
  libpff_item_t* OpenItem(const ItemPlace& place);
  libpff_item_t* OpenEmbedded(libpff_item_t* item, const AttachmentPath& path);
  void DescribeMessage(libpff_item_t* message, Answer& answer);

  InputHandle input_;
  bool isDamaged_;
  FileHandle file_;
  ItemHandle folder_;
  uint32_t folderNode_ = 0;
  ItemHandle item_;
  uint32_t itemNode_ = 0;
  Embedded embedded_;
};

}  // namespace tarnwick::outlook::reader
