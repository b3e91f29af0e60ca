// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Outlook stores as old disks have them: items deleted, the index written over, the end cut off.
// Each message bears its own number in its subject, its text, its recipients and its attachment, so
// that what is recovered of one can be judged.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "samples/pst_builder.h"

namespace tarnwick::samples {

// The message of that number; every third has an attachment, every fourth a long text.
PstMessage WornMail(int number);

class WornOutlook {
 public:
  // So many messages in some folders, the index written anew after every twenty.
  WornOutlook(outlook::reader::Variant variant, int messages);

  // Deletes every n-th message; the index is written anew behind that.
  void DeleteEvery(int n);
  void Finish() { bytes_ = store_.Build(); }

  // Behind Finish. Writes random bytes over this share of the pages of the index, in percent.
  void OverwriteIndex(int percent);
  // Turns bits over anywhere behind the beginning, as many as there are pages, divided by this.
  void TurnBits(size_t pagesApart);
  // Leaves the first so many percent of the file.
  void Cut(int percent) { bytes_.resize(bytes_.size() * static_cast<size_t>(percent) / 100); }
  void ZeroHead() { bytes_.replace(0, 1024, 1024, '\0'); }

  const std::string& Bytes() const { return bytes_; }

 private:
  PstBuilder store_;
  const outlook::reader::Layout& layout_;
  std::vector<uint32_t> nodes_;
  std::string bytes_;
};

// How a recovered letter compares with the messages: mixed bears marks of several.
enum class WornPart { kWhole, kPart, kMixed };
WornPart JudgeWorn(const std::string& mime);

}  // namespace tarnwick::samples
