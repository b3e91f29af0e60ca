// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One open .pst file; answers the requests of pst_protocol.h. Calls throw ReadError with the name
// of what could not be read; what was answered until then holds.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "outlook/mapi.h"
#include "outlook/reader/answer.h"
#include "platform/files.h"

namespace tarnwick::outlook::reader {

struct ReadError : std::runtime_error {
  using std::runtime_error::runtime_error;
};
// The file is not damaged, but of a variant that is read in another way or not at all.
struct OtherVariant : ReadError {
  using ReadError::ReadError;
};

// Where an item lies, as a request names it.
struct ItemPlace {
  uint32_t folder = 0;
  uint32_t index = 0;
  uint32_t node = 0;
};
// Attachment numbers that lead from an item down to a message embedded in it, or to an attachment.
using AttachmentPath = std::vector<uint32_t>;

class StoreFile {
 public:
  virtual ~StoreFile() = default;

  virtual void DescribeStore(Answer& answer) = 0;
  virtual void DescribeFolder(uint32_t node, Answer& answer) = 0;
  // withAttachments: their bytes too, behind the row of each.
  virtual void DescribeItem(const ItemPlace& place, bool withAttachments, Answer& answer) = 0;
  virtual void DescribeEmbedded(const ItemPlace& place, const AttachmentPath& path,
                                Answer& answer) = 0;
  virtual void SendAttachment(const ItemPlace& place, const AttachmentPath& path,
                              Answer& answer) = 0;
  // The items that a search without the index finds; none where there was no such search.
  virtual void DescribeLost(Answer& answer) { (void)answer; }
};

// The file, by whichever of the two ways can read it: ours (node_store.h), which goes straight to
// what is asked for, and for what that refuses the store library's (library_store.h), which knows
// more variants but takes time and memory in proportion to the whole store before its first answer.
// The file has to outlive the store.
std::unique_ptr<StoreFile> OpenStore(platform::InputFile& file);

// The same file by what is found in it without its index (lost_store.h). Progress is told in
// answer.
std::unique_ptr<StoreFile> OpenLostStore(platform::InputFile& file, Answer& answer);

// The library's way alone; throws ReadError also where the program was built without it. isDamaged:
// the file is one that should not need the library; what the library makes of it is told as
// damaged.
std::unique_ptr<StoreFile> OpenByLibrary(platform::InputFile& file, bool isDamaged);

// What of each kind of object is sent.
extern const std::vector<Prop> kStoreProperties;
extern const std::vector<Prop> kFolderProperties;
extern const std::vector<Prop> kRecipientProperties;
extern const std::vector<Prop> kAttachmentProperties;
extern const std::vector<Prop> kMessageProperties;
bool Contains(const std::vector<Prop>& list, uint32_t number);

// "IPM.Note" or one below it, as bytes of a property of that type.
bool IsMailClass(std::string_view bytes, uint32_t type);

}  // namespace tarnwick::outlook::reader
