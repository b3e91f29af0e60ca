// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A segment of the text index: which of up to kMostDocuments messages hold which trigram. Internal
// to the database. A segment is a head, which tells the messages' keys, and kSegmentParts parts,
// each of which holds the lists of a range of trigrams, so that a search reads few of them.
//
// Embedded in the files:
//   head  varints: documents, then runs of keys: the distance from the key behind the last run
//         (zigzag), the number of keys
//   part  bits, the lowest of a byte first. A table: for each trigram that has a list, in order,
//         gamma(its distance from the last, the first from -1), gamma(1) if its list is left out
//         and it is to be taken for held by all, else gamma(the list's length + 1) and, for lists
//         longer than kFixedList, gamma(the list's size in bits + 1); gamma(distance behind the
//         part's last trigram) ends it. Then the lists: document numbers of kDocumentBits each, or
//         Rice codes of their distances less 1 (the quotient as ones ended by a zero, then the
//         remainder) with the parameter that the list's length and the segment's give.
//   gamma(n): as many zeros as n has bits behind its highest, a one, those bits from the lowest.
//
// All readers throw Error 11 for what is damaged, and read nothing beyond their data.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "database/index/trigrams.h"

namespace tarnwick::jet {

inline constexpr int kDocumentBits = 12;
inline constexpr size_t kMostDocuments = size_t{1} << kDocumentBits;
inline constexpr size_t kSegmentParts = 256;
inline constexpr size_t kPartTrigrams = (size_t{1} << kTrigramBits) / kSegmentParts;

// Document numbers of a list, ascending; isAll: every document counts as holding the trigram.
struct Postings {
  bool isAll = false;
  std::vector<uint16_t> documents;
};

class SegmentWriter {
 public:
  void Add(int64_t key, const std::vector<uint32_t>& trigrams);  // each once, in any order
  // Takes a finished segment's documents over. REQUIRES: nothing was added yet.
  void TakeOver(std::string_view head, const std::function<std::string(size_t)>& part);

  size_t Documents() const { return keys_.size(); }
  bool IsFull() const;

  std::string Head() const;
  // Hands out all parts in order and empties the writer.
  void Finish(const std::function<void(size_t part, std::string_view data)>& take);
  void Clear();

 private:
  class PartWriter;

  std::vector<int64_t> keys_;
  // Trigram, then document in the lowest bits: of each part by itself, so that what is sorted at
  // once stays within the processor's cache.
  std::array<std::vector<uint32_t>, kSegmentParts> postings_;
  size_t count_ = 0;                // of all parts
  std::vector<uint32_t> left_out_;  // trigrams of no list, ascending
};

// The keys of the documents by their numbers.
std::vector<int64_t> ReadSegmentKeys(std::string_view head);
size_t ReadSegmentSize(std::string_view head);

// The list of a trigram in the part that it belongs to (trigram / kPartTrigrams).
Postings ReadPostings(std::string_view part, uint32_t trigram, size_t documents);

}  // namespace tarnwick::jet
