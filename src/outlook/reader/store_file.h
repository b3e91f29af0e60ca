// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One open .pst file, read through the store library; answers the requests of pst_protocol.h. The
// last folder, item and embedded message stay open, since requests come in their order.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "outlook/reader/answer.h"
#include "outlook/reader/handles.h"

namespace tarnwick::outlook::reader {

class StoreFile {
 public:
  // Throws ReadError when the file is none that can be read.
  explicit StoreFile(const std::string& path);

  void DescribeStore(Answer& answer);
  void DescribeFolder(uint32_t node, Answer& answer);
  void DescribeItem(uint32_t folder, uint32_t index, uint32_t node, Answer& answer);
  void DescribeEmbedded(uint32_t folder, uint32_t index, uint32_t node,
                        const std::vector<uint32_t>& path, Answer& answer);
  void SendAttachment(uint32_t folder, uint32_t index, uint32_t node,
                      const std::vector<uint32_t>& path, Answer& answer);

 private:
  struct Embedded {
    std::vector<uint32_t> path;
    // The chain from the item's attachment to the innermost message: each handle needs the ones
    // before it to stay open.
    std::vector<ItemHandle> chain;
  };

  libpff_item_t* OpenFolder(uint32_t node);
  libpff_item_t* OpenItem(uint32_t folder, uint32_t index, uint32_t node);
  libpff_item_t* OpenEmbedded(libpff_item_t* item, const std::vector<uint32_t>& path);
  void DescribeMessage(libpff_item_t* message, Answer& answer);

  FileHandle file_;
  ItemHandle folder_;
  uint32_t folderNode_ = 0;
  ItemHandle item_;
  uint32_t itemNode_ = 0;
  Embedded embedded_;
};

}  // namespace tarnwick::outlook::reader
