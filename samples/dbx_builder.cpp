// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/dbx_builder.h"

#include <algorithm>
#include <span>
#include <stdexcept>

namespace tarnwick::samples {

namespace {

constexpr uint32_t kFileHead = 0x24BC;
constexpr size_t kInfoHead = 12;

void Append32(std::string& bytes, uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) bytes += static_cast<char>(value >> shift);
}

void Append64(std::string& bytes, uint64_t value) {
  Append32(bytes, static_cast<uint32_t>(value));
  Append32(bytes, static_cast<uint32_t>(value >> 32));
}

// The index entries and the data area of an info object while they are put together.
class InfoIndexBuilder {
 public:
  void Direct(uint8_t number, uint32_t value) { Append32(entries_, value << 8 | 0x80U | number); }
  // The value's place, from the start of the data area.
  uint32_t Pointed(uint8_t number, std::string_view value) {
    auto place = static_cast<uint32_t>(data_.size());
    Append32(entries_, place << 8 | number);
    data_ += value;
    return place;
  }
  void Text(uint8_t number, const std::string& text) {
    if (!text.empty()) Pointed(number, text + '\0');
  }

  size_t Count() const { return entries_.size() / 4; }
  std::string Object() const {
    std::string bytes;
    Append32(bytes, 0);
    Append32(bytes, static_cast<uint32_t>(entries_.size() + data_.size()));
    Append32(bytes, static_cast<uint32_t>(Count()) << 16);
    return bytes + entries_ + data_;
  }

 private:
  std::string entries_;
  std::string data_;
};

}  // namespace

uint64_t ToFileTime(DateTime date, uint32_t fraction) {
  constexpr int64_t kSecondsFrom1601To1970 = 11'644'473'600;
  return static_cast<uint64_t>(date.Seconds() + kSecondsFrom1601To1970) * 10'000'000 + fraction;
}

DbxImage::DbxImage(Kind kind) : bytes_(kFileHead, '\0') {
  constexpr unsigned char kMark[] = {0xCF, 0xAD, 0x12, 0xFE, 0x00, 0xFD, 0x74, 0x6F, 0x66, 0xE3,
                                     0xD1, 0x11, 0x9A, 0x4E, 0x00, 0xC0, 0x4F, 0xA3, 0x09, 0xD4,
                                     0x05, 0x00, 0x00, 0x00, 0x05, 0x00, 0x00, 0x00};
  for (size_t i = 0; i < sizeof kMark; ++i) bytes_[i] = static_cast<char>(kMark[i]);
  Put8(4, static_cast<uint8_t>(kind));
}

void DbxImage::Put8(uint32_t offset, uint8_t value) {
  bytes_.at(offset) = static_cast<char>(value);
}

void DbxImage::Put32(uint32_t offset, uint32_t value) {
  std::string word;
  Append32(word, value);
  bytes_.replace(offset, 4, word);
}

uint32_t DbxImage::Get32(uint32_t offset) const {
  uint32_t value = 0;
  for (uint32_t i = 4; i-- > 0;)
    value = value << 8 | static_cast<unsigned char>(bytes_[offset + i]);
  return value;
}

uint32_t DbxImage::AddObject(std::string bytes) {
  uint32_t offset = Size();
  bytes.resize((bytes.size() + 3) / 4 * 4);
  bytes_ += bytes;
  Put32(offset, offset);
  return offset;
}

void DbxImage::PadTo(uint32_t offset) {
  if (offset > Size()) bytes_.resize(offset);
}

void DbxImage::Replace(uint32_t offset, std::string_view bytes) {
  bytes_.replace(offset, bytes.size(), bytes);
}

void DbxImage::Free(uint32_t offset, uint32_t allBytes, uint32_t freedBefore) {
  Put32(offset + 8, allBytes);
  Put32(offset + 16, freedBefore);
}

uint32_t DbxImage::AddNode(const std::vector<Entry>& entries, uint32_t leftChild) {
  if (entries.size() > 255) throw std::invalid_argument("a node holds at most 255 entries");
  std::string bytes(8, '\0');
  Append32(bytes, leftChild);
  Append32(bytes, 0);
  Append32(bytes, static_cast<uint32_t>(entries.size()) << 8);
  Append32(bytes, 0);
  for (const Entry& entry : entries) {
    Append32(bytes, entry.value);
    Append32(bytes, entry.child);
    Append32(bytes, 0);
  }
  return AddObject(std::move(bytes));
}

MessageStoreBuilder::MessageStoreBuilder() : image_(DbxImage::Kind::kMessages) {
  // Real files have their first blocks behind tables of their own.
  image_.PadTo(0xEAD4);
}

MessagePlaces MessageStoreBuilder::AddMessage(const IndexedMessage& message) {
  MessagePlaces places;
  std::string_view rest = message.text;
  do {
    std::string_view piece = rest.substr(0, message.blockSize);
    rest.remove_prefix(piece.size());
    std::string block;
    Append32(block, 0);
    Append32(block, static_cast<uint32_t>(message.blockSize));
    Append32(block, static_cast<uint32_t>(piece.size()));
    Append32(block, 0);
    block += piece;
    uint32_t offset = 0;
    if (places.blocks.size() < message.reusedBlocks.size()) {
      offset = message.reusedBlocks[places.blocks.size()];
      image_.Replace(offset, block);
      image_.Put32(offset, offset);
    } else {
      block.resize(16 + message.blockSize);
      offset = image_.AddObject(std::move(block));
    }
    if (!places.blocks.empty()) image_.Put32(places.blocks.back() + 12, offset);
    places.blocks.push_back(offset);
  } while (!rest.empty());

  InfoIndexBuilder index;
  index.Direct(0x00, static_cast<uint32_t>(messages_.size() + 1));
  if (message.flagsDirect) {
    index.Direct(0x01, message.flags);
  } else {
    std::string flags;
    Append32(flags, message.flags | 0x01020000U);
    index.Pointed(0x01, flags);
  }
  std::string time;
  Append64(time, ToFileTime(message.date, message.fraction));
  uint32_t datePlace = index.Pointed(0x02, time);
  uint32_t first = places.blocks.front();
  if (first < 1U << 24) {
    index.Direct(0x04, first);
  } else {
    std::string word;
    Append32(word, first);
    index.Pointed(0x04, word);
  }
  index.Text(0x05, message.subject);
  index.Pointed(0x06, time);
  index.Text(0x07, message.messageId);
  index.Text(0x08, message.subject);
  index.Text(0x0D, message.senderName);
  index.Text(0x0E, message.senderAddress);
  index.Direct(0x10, 3);
  index.Direct(0x11, static_cast<uint32_t>(message.text.size()));
  index.Pointed(0x12, time);
  index.Text(0x13, message.receiverName);
  index.Text(0x14, message.receiverAddress);
  places.info = image_.AddObject(index.Object());
  places.date = static_cast<uint32_t>(places.info + kInfoHead + 4 * index.Count() + datePlace);
  messages_.push_back(places);
  return places;
}

void MessageStoreBuilder::SetRoot(uint32_t offset) {
  image_.Put32(0xE4, offset);
}

void MessageStoreBuilder::SetItemCount(uint32_t count) {
  image_.Put32(0xC4, count);
}

void MessageStoreBuilder::Finish(size_t entriesInNode, bool twoLevels) {
  SetItemCount(static_cast<uint32_t>(messages_.size()));
  if (messages_.empty()) return;
  if (messages_.size() <= entriesInNode && !twoLevels) {
    std::vector<DbxImage::Entry> entries;
    for (const MessagePlaces& message : messages_) entries.push_back({message.info, 0});
    SetRoot(image_.AddNode(entries));
    return;
  }
  // A leaf, the root's first entry, a leaf, its second entry, ...
  size_t leafSize = entriesInNode;
  while ((messages_.size() + leafSize) / (leafSize + 1) > 256 && leafSize < 255) ++leafSize;
  std::vector<DbxImage::Entry> rootEntries;
  uint32_t leftChild = 0;
  for (size_t next = 0; next < messages_.size();) {
    std::vector<DbxImage::Entry> leaf;
    for (; next < messages_.size() && leaf.size() < leafSize; ++next) {
      leaf.push_back({messages_[next].info, 0});
    }
    // The last leaf takes no less than one message, so that no entry of the root lacks its child.
    if (messages_.size() - next == 1) {
      leaf.pop_back();
      --next;
    }
    uint32_t node = image_.AddNode(leaf);
    if (leftChild == 0) {
      leftChild = node;
    } else {
      rootEntries.back().child = node;
    }
    if (next < messages_.size()) rootEntries.push_back({messages_[next++].info, 0});
  }
  SetRoot(image_.AddNode(rootEntries, leftChild));
}

void MessageStoreBuilder::FinishInLevels(int levels, size_t entriesInNode) {
  SetItemCount(static_cast<uint32_t>(messages_.size()));
  SetRoot(AddSubtree(0, messages_.size(), levels, entriesInNode));
}

uint32_t MessageStoreBuilder::AddSubtree(size_t first, size_t end, int levels,
                                         size_t entriesInNode) {
  std::vector<DbxImage::Entry> entries;
  if (levels == 1) {
    for (size_t i = first; i < end; ++i) entries.push_back({messages_[i].info, 0});
    return image_.AddNode(entries);
  }
  size_t below = 1;  // what one child has room for, and the entry behind it
  for (int level = 1; level < levels; ++level) below *= entriesInNode + 1;
  size_t children = std::max<size_t>(2, (end - first + below) / below);
  uint32_t left = 0;
  for (size_t child = 0; child < children; ++child) {
    size_t childEnd = first + (end - first) / (children - child);
    if (child + 1 < children) childEnd = std::max(childEnd, first + 2) - 1;
    uint32_t node = AddSubtree(first, childEnd, levels - 1, entriesInNode);
    (child == 0 ? left : entries.back().child) = node;
    if (child + 1 < children) entries.push_back({messages_[childEnd].info, 0});
    first = childEnd + 1;
  }
  return image_.AddNode(entries, left);
}

FolderListBuilder::FolderListBuilder() : image_(DbxImage::Kind::kFolderList) {}

void FolderListBuilder::Add(const ListedFolder& folder, FolderForm form) {
  InfoIndexBuilder index;
  if (form == FolderForm::kMark) {
    index.Pointed(0x01, "\xFF\xFF\xFF\xFF");
    index.Text(0x02, folder.name);
    index.Direct(0x06, 1);
    index.Direct(0x0A, 4);
    entries_.push_back({image_.AddObject(index.Object()), 0});
    return;
  }
  index.Direct(0x00, folder.number);
  index.Direct(0x01, folder.parent);
  index.Pointed(0x02, folder.name + '\0');
  if (form != FolderForm::kNoFile) index.Pointed(0x03, folder.file + '\0');
  if (form != FolderForm::kNameIsFifth) index.Direct(0x06, 1);
  if (form == FolderForm::kNameFollows || form == FolderForm::kNoFile) {
    index.Direct(0x09, folder.purpose);
  }
  index.Direct(0x0A, form == FolderForm::kNameThenOne ? 2 : 3);
  if (form == FolderForm::kNameThenOne) index.Direct(0x0C, 0);
  entries_.push_back({image_.AddObject(index.Object()), 0});
}

void FolderListBuilder::Finish(size_t entriesInNode) {
  image_.Put32(0xC4, static_cast<uint32_t>(entries_.size()));
  std::vector<DbxImage::Entry> root;
  uint32_t left = 0;
  std::span<const DbxImage::Entry> rest = entries_;
  while (rest.size() > entriesInNode) {
    std::span<const DbxImage::Entry> own = rest.first(entriesInNode);
    uint32_t leaf = image_.AddNode({own.begin(), own.end()});
    (root.empty() ? left : root.back().child) = leaf;
    root.push_back(rest[entriesInNode]);
    rest = rest.subspan(entriesInNode + 1);
  }
  if (root.empty()) {
    root.assign(rest.begin(), rest.end());
  } else if (!rest.empty()) {
    root.back().child = image_.AddNode({rest.begin(), rest.end()});
  }
  uint32_t node = image_.AddNode(root, left);
  image_.Put32(0x30, node);
  image_.Put32(0xE4, node);
}

}  // namespace tarnwick::samples
