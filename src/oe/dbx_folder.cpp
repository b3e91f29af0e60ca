// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The folder list of a store. Section "Folder info".
#include "oe/folder_list.h"

#include <algorithm>
#include <utility>

#include "core/guard.h"
#include "core/messages.h"
#include "intake/letter_record.h"
#include "intake/reader_link.h"
#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "oe/state.h"
#include "oe/tree_walk.h"
#include "platform/charset.h"
#include "platform/files.h"

namespace tarnwick::oe {

template <typename Archive>
void Pass(Archive& archive, FolderRow& row) {
  constexpr size_t kPurposes = static_cast<size_t>(Purpose::kDrafts) + 1;
  archive(row.displayName, row.fileName, row.number, row.parent,
          intake::OneOf{row.purpose, kPurposes});
}

template <typename Archive>
void Pass(Archive& archive, FolderListReading& r) {
  archive(r.rows, r.isDamaged, r.tellings);
}

namespace {

constexpr size_t kFolderInfoSize = 287;
constexpr size_t kEntryCountPlace = 10;
constexpr size_t kNumberPlace = 13;     // first value byte of entry 1
constexpr size_t kParentPlace = 17;     // of entry 2
constexpr size_t kLastEntryPlace = 28;  // entry 5, its index byte
constexpr size_t kLastValuePlace = 29;  // and its first value byte
constexpr size_t kTextPlace = 32;
constexpr size_t kLongestText = 255;
constexpr uint8_t kNameEntry = 0x8A;  // the entry that ends a folder's index
constexpr uint8_t kNoEntry = 0xFF;

// Where the texts begin: the index may go on into the text, and ends with a name entry whose value
// tells whether one more word follows.
size_t FindTexts(std::string_view text, uint8_t lastEntry) {
  if (lastEntry == kNameEntry || lastEntry == kNoEntry) return 0;
  for (size_t place = 0; place < text.size(); place += 4) {
    if (Get8(text, place) != kNameEntry) continue;
    if (place + 1 >= text.size()) return 0;
    uint8_t value = Get8(text, place + 1);
    if (value == 3) return place + 4;
    return value == 2 ? place + 8 : 0;
  }
  return 0;
}

// Number, parent and texts at the places where designed reading has them. False for what is no
// folder.
bool TakeByPlaces(std::string_view bytes, FolderRow& row) {
  if (Get8(bytes, kLastValuePlace) == kNoEntry) return false;
  std::string_view text = bytes.substr(kTextPlace);
  size_t place = FindTexts(text, Get8(bytes, kLastEntryPlace));
  std::string_view displayName = ZeroTerminated(text, place);
  std::string_view fileName = ZeroTerminated(text, place + displayName.size() + 1);
  row.displayName = platform::BytesToUtf8(displayName, "");
  row.fileName = platform::BytesToUtf8(fileName, "");
  row.number = Get8(bytes, kNumberPlace);
  row.parent = Get8(bytes, kParentPlace);
  return true;
}

std::string IndexedText(ByteReader& file, const InfoIndex& index, uint8_t number, uint32_t offset) {
  std::optional<uint64_t> place = PlaceOf(index, number, offset, 1);
  if (!place) return {};
  uint64_t dataEnd = uint64_t{offset} + kInfoHead + 4 * index.entries.size() + index.dataSize;
  size_t most = std::min<uint64_t>(dataEnd - *place, kLongestText);
  return platform::BytesToUtf8(ZeroTerminated(file.Read(*place, most), 0), "");
}

// The same by the index, where it points to a name.
bool TakeByIndex(ByteReader& file, uint32_t offset, FolderRow& row) {
  std::string head(file.Read(offset, kInfoHead));
  InfoIndex index = ReadIndex(file, offset, Get32(head, 4), Get8(head, kEntryCountPlace));
  std::string name = IndexedText(file, index, kFolderName, offset);
  auto number = NumberOf(file, index, kFolderNumber, offset);
  if (name.empty() || !number) return false;
  row.displayName = std::move(name);
  row.fileName = IndexedText(file, index, kFolderFile, offset);
  row.number = static_cast<int32_t>(*number);
  row.parent = static_cast<int32_t>(NumberOf(file, index, kFolderParent, offset).value_or(0));
  uint32_t purpose = NumberOf(file, index, kFolderPurpose, offset).value_or(0);
  bool isKnown = purpose >= static_cast<uint32_t>(Purpose::kOutbox) &&
                 purpose <= static_cast<uint32_t>(Purpose::kDrafts);
  if (isKnown) row.purpose = static_cast<Purpose>(purpose);
  return true;
}

void ReportUnknownFile() {
  core::TellingsKept::Keep({.kind = core::Telling::Kind::kUnknownFile});
}

// Adds the folder of an info object, where it is one.
void ReadFolderInfo(ByteReader& file, uint32_t infoOffset, const intake::ReadingRules& rules,
                    FolderListReading& list) {
  bool ended = core::GuardedRun("ReadFolderInfo", [&] {
    std::string bytes(file.Read(infoOffset, kFolderInfoSize));
    if (bytes.size() <= kTextPlace || Get32(bytes, 0) != infoOffset) {
      ReportUnknownFile();
      list.isDamaged = true;
      return;
    }
    FolderRow row;
    bool byIndex = rules.everyTreeLevel && TakeByIndex(file, infoOffset, row);
    if (byIndex || TakeByPlaces(bytes, row)) list.rows.push_back(std::move(row));
  });
  if (!ended) list.isDamaged = true;
}

// Entries of the root node alone.
void ReadRootFolders(ByteReader& file, const DbxHeader& header, const intake::ReadingRules& rules,
                     FolderListReading& list) {
  std::optional<TreeNode> root = ReadNode(file, header.folderRoot);
  if (!root) {
    ReportUnknownFile();
    list.isDamaged = true;
    return;
  }
  bool hasChildren = root->leftChild != 0;
  for (const TreeEntry& entry : root->entries) hasChildren = hasChildren || entry.child != 0;
  bool lacksEntries = !hasChildren && root->entries.size() < header.itemCount;
  if (root->isCut || lacksEntries) list.isDamaged = true;
  for (const TreeEntry& entry : root->entries) ReadFolderInfo(file, entry.value, rules, list);
}

// The whole list.
void ReadAllFolders(const std::string& path, ByteReader& file, const DbxHeader& header,
                    const intake::ReadingRules& rules, FolderListReading& list) {
  TreeWalk walk(path, header.folderRoot, [&list] { list.isDamaged = true; });
  uint32_t entries = 0;
  while (std::optional<uint32_t> value = walk.Next()) {
    if (++entries > kMostListed) break;
    ReadFolderInfo(file, *value, rules, list);
  }
  if (entries < header.itemCount) list.isDamaged = true;
}

FolderListReading ReadListHere(const std::string& path, const intake::ReadingRules& rules) {
  FolderListReading list;
  core::TellingsKept kept;
  bool ended = core::GuardedRun("ReadFolderTree", [&] {
    ReadDbxHeader(path);
    const DbxHeader header = State().Header;
    ByteReader file(path);
    if (rules.everyTreeLevel) {
      ReadAllFolders(path, file, header, rules, list);
    } else {
      ReadRootFolders(file, header, rules, list);
    }
  });
  if (!ended) list.isDamaged = true;
  list.tellings = kept.Take();
  return list;
}

class FolderListService : public intake::LetterService {
 public:
  explicit FolderListService(const intake::ReadingRules& rules) : rules_(rules) {}

  Answer Next(std::string_view /*how*/, bool /*packs*/, const ByteSink& /*sink*/) override {
    return {};
  }
  std::string Text(std::string_view /*which*/, const ByteSink& /*longText*/) override {
    return intake::BytesOf(ReadListHere(platform::kHandedName, rules_));
  }

 private:
  intake::ReadingRules rules_;
};

FolderListReading ReadList(const std::string& path, const intake::ReadingRules& rules) {
  auto link = intake::ReaderLink::Begin(path, intake::Conversation::kFolderList, rules, {});
  if (!link) return ReadListHere(path, rules);
  std::optional<std::string_view> record = link->Text({}, {});
  if (!record && IsStopped()) return {};
  try {
    if (record) return intake::RecordOf<FolderListReading>(*record);
  } catch (const Error&) {  // told as one that does not answer
  }
  throw Error(ErrorNumber::kPathAccess, intake::kReaderLost);
}

// Keeps the folders whose files are there.
void Take(FolderListReading reading, size_t number, const intake::ReadingRules& rules) {
  const FolderFile& list = State().FolderFiles.at(number);
  auto& folders = State().Folders.at(number);
  for (FolderRow& row : reading.rows) {
    row.userName = list.userName;
    bool hasFile =
        !row.fileName.empty() && (row.parent == 0 || FindStoreFile(list.storeFolder, row.fileName));
    if (!hasFile && !rules.everyStore) continue;
    // Kept all the same, for the full names of the folders below it.
    if (!hasFile) row.fileName.clear();
    if (rules.everyStore || folders.size() < kMaxFolders) folders.push_back(std::move(row));
  }
}

}  // namespace

void ReadFolderTree(int folderFileIndex, const intake::ReadingRules& rules) {
  State().IsListDamaged = false;
  bool ended = core::GuardedRun("ReadFolderTree", [&] {
    auto number = static_cast<size_t>(folderFileIndex);
    const std::string path = State().FolderFiles.at(number).path;
    FolderListReading reading = ReadList(path, rules);
    State().IsListDamaged = reading.isDamaged;
    for (const core::Telling& telling : reading.tellings) {
      if (telling.kind == core::Telling::Kind::kUnknownFile) {
        if (MayReport()) core::ReportUnknownFormat(path);
      } else {
        core::Tell(telling);
      }
    }
    Take(std::move(reading), number, rules);
  });
  if (!ended) State().IsListDamaged = true;
}

std::unique_ptr<intake::LetterService> MakeFolderListService(const intake::ReadingRules& rules) {
  return std::make_unique<FolderListService>(rules);
}

}  // namespace tarnwick::oe
