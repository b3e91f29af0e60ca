// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A .pst file read by what a scan of all of it finds (store_scan.h): items of which the index knows
// nothing any more, or all of them where it is lost.
//
// No item is made of two: a node's entry, of whatever age, names its blocks by numbers that no
// other block ever bore. Where no entry is left of a message, its properties are still known by
// their form; they are shown without recipients, attachments and long texts, since nothing tells
// which of those lying about are its own.
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "outlook/reader/node_store.h"

namespace tarnwick::outlook::reader {

class LostStore : public NodeStore {
 public:
  // Throws ReadError where nothing of a store is found. tell: as ScanStore has it.
  LostStore(platform::InputFile& file, const std::function<void(int)>& tell);

  std::vector<FoundItem> FindLost() override;

 private:
  std::vector<uint64_t> NamedBlocks();
  bool IsMail(uint64_t data);
  void FindLoneMail();

  platform::InputFile& input_;
};

}  // namespace tarnwick::outlook::reader
