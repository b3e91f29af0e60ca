// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The lower half of a .pst file ([MS-PST] 2.2): nodes, found by number in one tree of pages, and
// the blocks of bytes that they are made of, found by number in another. Pages and blocks are read
// when they are asked for; what is kept in memory does not grow with the file.
//
// Nothing in the file is trusted: every place, size and count is checked against the file before it
// is followed, trees must lose a level with each step, and no list is longer than the file has
// bytes for. ReadError is thrown for what can't be read; everything else stays usable.
//
// Pages and blocks bear a checksum. One whose checksum does not match is still read, since most of
// it is what was written, but TakeDamage tells of it.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "outlook/reader/layout.h"
#include "outlook/reader/store_scan.h"
#include "platform/files.h"

namespace tarnwick::outlook::reader {

// count little-endian bytes at offset; throws ReadError when they lie outside.
uint64_t NumberAt(std::string_view bytes, size_t offset, size_t count);

class NodeFile {
 public:
  // A node's blocks: its data, and the nodes that belong to it alone. 0 is none.
  struct Node {
    uint64_t data = 0;
    uint64_t sub = 0;
    uint32_t parent = 0;
    bool isSound = true;  // its entry lies in a page that is as it was written
  };
  struct SubNode {
    uint32_t number = 0;
    uint64_t data = 0;
    uint64_t sub = 0;
  };
  using Block = BlockPlace;

  // Throws ReadError for a file that is no store, OtherVariant for one of a variant not read here.
  explicit NodeFile(platform::InputFile& file);
  // Of what a scan has found, in place of the file's own trees. A number that several pages give to
  // different nodes is that of the newest one that is there.
  NodeFile(platform::InputFile& file, FoundStore found);
  // More nodes. REQUIRES: a file of what was found; their numbers are higher than all others.
  void AddFound(const std::vector<FoundNode>& nodes);
  const FoundStore& Found() const { return *found_; }

  uint64_t Size() const { return file_.Size(); }
  const Layout& Shape() const { return *layout_; }
  // What a block holds at most.
  size_t MaxBlock() const { return layout_->blockSlot - layout_->trailer; }

  std::optional<Node> FindNode(uint32_t number);
  // Every node that can still be reached, in order; the whole tree is read.
  void ForEachNode(const std::function<void(uint32_t number, const Node& node)>& visit);

  // The blocks that a node's data are, in order; none for 0.
  std::vector<Block> BlocksOf(uint64_t data);
  std::string Read(const Block& block);
  // Sorted by number.
  std::vector<SubNode> SubNodesOf(uint64_t sub);

  // Whether anything read since the last call is not as it was written.
  bool TakeDamage();

 private:
  // What leads to a page: its number and its place.
  struct PageRef {
    uint64_t id = 0;
    uint64_t offset = 0;
  };
  struct Page {
    uint64_t offset = UINT64_MAX;
    uint64_t id = 0;
    bool isSound = false;
    uint8_t type = 0;
    int level = 0;
    size_t count = 0;
    size_t entrySize = 0;
    std::string entries;
  };
  struct Piece {
    uint64_t number = UINT64_MAX;
    std::string bytes;
  };

  // An entry of the lowest level of a tree; empty when there is none with the key.
  struct Entry {
    std::string_view bytes;
    bool isSound = true;
  };

  std::string ReadAt(uint64_t offset, size_t count);
  const Page& ReadPage(const PageRef& ref, uint8_t type, int level);
  void TakePage(Page& page, std::string bytes) const;
  Entry FindEntry(const PageRef& root, uint8_t type, uint64_t key);
  void VisitPages(const PageRef& ref, int level, uint64_t& left,
                  const std::function<void(uint32_t, const Node&)>& visit);
  PageRef PageRefIn(std::string_view bytes, size_t offset) const;
  Node NodeOf(std::string_view entry) const;
  std::optional<Node> FindFound(uint32_t number);
  // Whether all blocks of the data are there, and the list of the nodes that belong to it.
  bool HasBlocks(uint64_t data, uint64_t sub);
  Block FindBlock(uint64_t id);
  // As it stands in the file; the same unpacked, which is all that a list needs: only data are
  // enciphered, before they are packed.
  std::string ReadStored(const Block& block);
  std::string ReadPlain(const Block& block);
  void AppendBlocks(const std::string& list, int level, std::vector<Block>& blocks,
                    uint64_t& total);
  void AppendSubNodes(const std::string& list, std::vector<SubNode>& nodes);
  // The head of a list of blocks or nodes: its count of entries. Throws for another kind or level.
  size_t CountOf(const std::string& list, uint64_t type, uint64_t level) const;
  size_t ListHead() const { return idSize_; }

  platform::InputFile& file_;
  std::optional<FoundStore> found_;
  const Layout* layout_;
  size_t idSize_;
  uint8_t cipher_ = 0;
  bool isDamaged_ = false;  // since the last TakeDamage
  PageRef nodeRoot_;
  PageRef blockRoot_;
  std::vector<Page> pages_;
  std::vector<Piece> pieces_;
};

}  // namespace tarnwick::outlook::reader
