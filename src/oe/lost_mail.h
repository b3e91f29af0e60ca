// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The messages of a file that no tree leads to: deleted ones, those behind a broken node, those of
// a file that lost its head or is a copy left by compacting. docs/dbx-format.md, section "Lost
// messages".
//
// No message is made of two. What belongs to a message that the tree leads to is that one's. A
// chain of blocks is *proven* when an index leads to it, the text begins as the index says, and it
// ends after just the length that the index gives; its blocks are then nobody else's. Of any other
// chain as much is taken as must have been written in one go: block behind block, up to the first
// that leads elsewhere, that two lead to, or that begins with the headers of a message.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "oe/object_scan.h"

namespace tarnwick::oe {

// Stands in a recovered text for four bytes that are lost.
inline constexpr std::string_view kLostWord = "????";

struct TextPiece {
  uint32_t offset = 0;  // of the text, not of its block
  uint32_t length = 0;
  bool lacksFirstWord = false;  // what stands in its first four bytes is not the message's
};

struct LostMessage {
  uint32_t place = 0;  // of its index or, without one, its first block
  int64_t origin = 0;  // of the piece of the file that it lies in (byte_reader.h)
  std::optional<PeekedMessage> index;
  std::string how;  // it was found
  std::vector<TextPiece> text;
  uint64_t length = 0;    // of the text
  uint64_t declared = 0;  // what the index says it was; 0 for not known
  bool isWhole = false;
  std::string why;  // it is not, or there is no text at all
};

class LostMail {
 public:
  // objects: those of a file, or of one of the pieces in it, as FindObjects gives them. isCopy:
  // nothing else reads the file; its tree is taken for none. goOn is asked as FindObjects asks it.
  // Throws Error for a file that can't be read, as the others do.
  LostMail(const std::string& path, FoundObjects objects, bool isCopy,
           const std::function<bool(int)>& goOn);

  std::optional<LostMessage> Next();

  // Blocks of texts whose beginnings are lost, and their bytes. Of an end that Next has come to.
  struct Rest {
    uint64_t blocks = 0;
    uint64_t bytes = 0;
  };
  Rest CountRest() const;

  // What the scan says of the whole file; "" where there is nothing to say.
  std::string Remark() const;
  ByteReader& File() { return file_; }

 private:
  enum class End { kEnd, kMissing, kOverwritten, kForeign, kTwoClaims, kDisagree, kUnsure };
  struct Chain {
    std::vector<size_t> blocks;  // indexes into objects_.blocks
    uint64_t total = 0;
    bool isFreed = false;
    bool lacksWords = false;
    End end = End::kEnd;
  };
  enum class Match { kYes, kNo, kUnknown };
  void MarkTree(const std::string& path);
  uint32_t ReadFirstBlock(uint32_t infoOffset);
  void MarkTreeMessage(uint32_t infoOffset);
  void InspectLost(const std::function<bool(int)>& goOn);
  void SettleClaims();

  FoundBlock* Find(uint32_t offset);
  Chain Follow(uint32_t first, uint64_t declared);
  std::optional<End> WhatForbids(const FoundBlock* block, const Chain& chain, uint64_t declared);
  bool IsPlainLink(const FoundBlock& from, uint32_t to) const;
  void Trim(Chain& chain, uint64_t declared) const;
  std::string TextOf(const Chain& chain, size_t firstBlock, size_t blocks);
  Match MatchOf(const Chain& chain, const MessageInfo& info);
  bool EndsAsItsHeadersSay(const Chain& chain);
  std::optional<PeekedMessage> PeekAt(size_t info);
  bool IsOfTree(const PeekedMessage& message);
  std::optional<Chain> ProvenChain(const PeekedMessage& message);

  std::optional<LostMessage> ProvenOf(size_t info);
  std::optional<LostMessage> PartOf(size_t info);
  std::optional<LostMessage> TextAt(FoundBlock& first);
  void Fill(const Chain& chain, FoundBlock::Owner owner, LostMessage& message);
  const char* HowFound(size_t info) const;
  static const char* WhyOf(End end);

  FoundObjects objects_;
  ByteReader file_;
  bool isCopy_;
  // By the number of the info in objects_.
  std::vector<bool> isDone_;     // nothing is lost there, or it was given
  std::vector<bool> isReached_;  // the tree leads there
  // First blocks of the tree's messages, with their infos.
  std::unordered_map<uint32_t, uint32_t> treeFirsts_;
  std::unordered_set<std::string> given_;  // keys of the messages that Next gave
  uint64_t stepsLeft_;  // blocks that chains may still come to: many may lead the same way
  // The walk of the tree, and then how far Next has come: what is proven, what else an index leads
  // to, texts alone.
  enum class Pass { kTree, kProven, kParts, kTexts, kEnd };
  Pass pass_ = Pass::kTree;
  size_t done_ = 0;
};

}  // namespace tarnwick::oe
