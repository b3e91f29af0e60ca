// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Stores as old disks have them: some of their messages deleted, written over, behind a broken
// tree. What each held is known, so that what is recovered of one can be judged.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "samples/dbx_builder.h"

namespace tarnwick::samples {

class WornStore {
 public:
  // So many messages of a block to a dozen, every third of several parts. The same for one seed.
  WornStore(int messages, uint32_t seed);

  enum class Freeing {
    kUnlisted,  // only the tree forgets it
    kFreed,     // its index is freed
    kBlocksToo  // and so are its blocks
  };
  // Takes every n-th message out of the tree; kept until Finish.
  void DeleteEvery(int n, Freeing freeing);
  // Writes new messages over the blocks of the deleted ones: each over the last blocks of one of
  // them, the last first, or over all blocks from the first on. isListed: the new ones stand in the
  // tree.
  void Reuse(int messages, bool fromTheEnd, bool isListed);
  // The tree of all that is not deleted.
  void Finish();

  // Behind Finish. Writes random bytes over this share of the blocks, in percent, or zeros
  // over their texts alone.
  void Overwrite(int percent, bool leavesHeads = false);
  // Leaves the first so many percent of the file.
  void Cut(int percent);
  void ZeroHead();
  // Only the bytes between, without what tells where they stood; from on a sector's edge.
  void TakePiece(int fromPercent, int toPercent);

  const std::string& Bytes() const { return bytes_; }
  // Every text that was ever in it.
  const std::vector<std::string>& Texts() const { return texts_; }
  // Those all of whose blocks still stand there; REQUIRES: not a piece.
  std::vector<std::string> Intact() const;

 private:
  struct Written {
    std::string text;
    MessagePlaces places;
    bool isDeleted = false;
  };
  IndexedMessage NewMessage();
  bool IsIntact(const Written& message) const;

  MessageStoreBuilder store_;
  std::mt19937 random_;
  std::vector<Written> written_;
  std::vector<std::string> texts_;
  std::vector<std::vector<uint32_t>> freed_;  // by message
  std::string bytes_;
};

// How what was recovered compares with what was there. A text is wrong that is neither one of them
// nor the beginning of one; mark stands for four bytes that are not known.
struct Verdict {
  int whole = 0;
  int parts = 0;
  int wrong = 0;
};
Verdict Judge(const std::vector<std::string>& recovered, const std::vector<std::string>& texts,
              std::string_view mark);

}  // namespace tarnwick::samples
