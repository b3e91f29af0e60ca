// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One open .pst file. Calls throw ReadError with the name of what could not be read; what was
// answered until then holds.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "outlook/mapi.h"
#include "outlook/reader/answer.h"
#include "platform/files.h"

namespace tarnwick::outlook::reader {

// The file is not damaged, but of a variant that is read in another way or not at all.
struct OtherVariant : ReadError {
  using ReadError::ReadError;
};

// Where an item lies; index: its place among those that its folder lists.
struct ItemPlace {
  uint32_t folder = 0;
  uint32_t index = 0;
  uint32_t node = 0;
};
// Attachment numbers that lead from an item down to a message embedded in it, or to an attachment.
using AttachmentPath = std::vector<uint32_t>;

// Messages embedded in messages; what lies deeper is left out.
inline constexpr size_t kMaxEmbedding = 16;

// How an item was found that a search of the whole file came upon.
enum class LostHow : uint8_t {
  kUnlisted,   // the index has it, whether a folder lists it or not
  kDeleted,    // the index had it once
  kIndexLost,  // the index can't be asked
  kAlone       // no index ever seen has it: its own properties and nothing that belongs to it
};

struct FoundItem {
  uint32_t node = 0;
  uint32_t folder = 0;  // that it lay in
  LostHow how = LostHow::kUnlisted;
  uint64_t data = 0;  // tells this state of it from others
};

class StoreFile {
 public:
  using ByteSink = std::function<void(std::string_view)>;

  virtual ~StoreFile() = default;

  // Its properties, and the folder above all others.
  virtual void DescribeStore(Answer& answer) = 0;
  virtual void DescribeFolder(uint32_t node, Answer& answer) = 0;
  // Its message class; of mail also its other properties, recipients and attachments.
  virtual void DescribeItem(const ItemPlace& place, Answer& answer) = 0;
  // The message that the path leads to, likewise.
  virtual void DescribeEmbedded(const ItemPlace& place, const AttachmentPath& path,
                                Answer& answer) = 0;
  // Hands the bytes of the attachment that the path leads to to sink, piece by piece; answer: what
  // of it is damaged.
  virtual void ReadAttachment(const ItemPlace& place, const AttachmentPath& path,
                              const ByteSink& sink, Answer& answer) = 0;
  // The items that a search without the index has found; none where there was no such search.
  virtual std::vector<FoundItem> FindLost() { return {}; }
};

// The file, by whichever of the two ways can read it: ours (node_store.h), which goes straight to
// what is asked for, and for what that refuses the store library's (library_store.h), which knows
// more variants but takes time and memory in proportion to the whole store before its first answer.
// The file has to outlive the store.
std::unique_ptr<StoreFile> OpenStore(platform::InputFile& file);

// The same file by what is found in it without its index (lost_store.h). tell: how far the search
// has come, in percent.
std::unique_ptr<StoreFile> OpenLostStore(platform::InputFile& file,
                                         const std::function<void(int)>& tell);

// The library's way alone; throws ReadError also where the program was built without it. isDamaged:
// the file is one that should not need the library; what the library makes of it is told as
// damaged.
std::unique_ptr<StoreFile> OpenByLibrary(platform::InputFile& file, bool isDamaged);

// What of each kind of object is told.
extern const std::vector<Prop> kStoreProperties;
extern const std::vector<Prop> kFolderProperties;
extern const std::vector<Prop> kRecipientProperties;
extern const std::vector<Prop> kAttachmentProperties;
extern const std::vector<Prop> kMessageProperties;
bool Contains(const std::vector<Prop>& list, uint32_t number);

// "IPM.Note" or one below it, as bytes of a property of that type.
bool IsMailClass(std::string_view bytes, uint32_t type);

}  // namespace tarnwick::outlook::reader
