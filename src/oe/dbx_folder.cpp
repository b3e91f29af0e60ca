// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The folder list of a store. Section "Folder info".
#include "core/guard.h"
#include "core/messages.h"
#include "oe/byte_reader.h"
#include "oe/dbx_read.h"
#include "oe/state.h"
#include "oe/tree_node.h"
#include "platform/charset.h"

namespace tarnwick::oe {

namespace {

constexpr size_t kFolderInfoSize = 287;
constexpr size_t kNumberPlace = 13;     // first value byte of entry 1
constexpr size_t kParentPlace = 17;     // of entry 2
constexpr size_t kLastEntryPlace = 28;  // entry 5, its index byte
constexpr size_t kLastValuePlace = 29;  // and its first value byte
constexpr size_t kTextPlace = 32;
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

}  // namespace

void ReadFolderInfo(uint32_t infoOffset, int folderFileIndex) {
  bool ended = core::GuardedRun("ReadFolderInfo", [&] {
    const FolderFile& list = State().FolderFiles.at(static_cast<size_t>(folderFileIndex));
    ByteReader file(list.path);
    std::string bytes(file.Read(infoOffset, kFolderInfoSize));
    if (bytes.size() <= kTextPlace || Get32(bytes, 0) != infoOffset) {
      core::ReportUnknownFormat(list.path);
      State().IsListDamaged = true;
      return;
    }
    if (Get8(bytes, kLastValuePlace) == kNoEntry) return;
    std::string_view text = std::string_view(bytes).substr(kTextPlace);
    size_t place = FindTexts(text, Get8(bytes, kLastEntryPlace));
    std::string_view displayName = ZeroTerminated(text, place);
    std::string_view fileName = ZeroTerminated(text, place + displayName.size() + 1);
    if (fileName.empty()) return;
    FolderRow row;
    row.userName = list.userName;
    row.displayName = platform::BytesToUtf8(displayName, "");
    row.fileName = platform::BytesToUtf8(fileName, "");
    row.number = Get8(bytes, kNumberPlace);
    row.parent = Get8(bytes, kParentPlace);
    if (row.parent != 0 && !FindStoreFile(list.storeFolder, row.fileName)) return;
    auto& folders = State().Folders.at(static_cast<size_t>(folderFileIndex));
    if (folders.size() < kMaxFolders) folders.push_back(std::move(row));
  });
  if (!ended) State().IsListDamaged = true;
}

void ReadFolderTree(int folderFileIndex) {
  State().IsListDamaged = false;
  bool ended = core::GuardedRun("ReadFolderTree", [&] {
    const std::string& path = State().FolderFiles.at(static_cast<size_t>(folderFileIndex)).path;
    ReadDbxHeader(path);
    ByteReader file(path);
    std::optional<TreeNode> root = ReadNode(file, State().Header.folderRoot);
    if (!root) {
      core::ReportUnknownFormat(path);
      State().IsListDamaged = true;
      return;
    }
    bool hasChildren = root->leftChild != 0;
    for (const TreeEntry& entry : root->entries) hasChildren = hasChildren || entry.child != 0;
    bool lacksEntries = !hasChildren && root->entries.size() < State().Header.itemCount;
    if (root->isCut || lacksEntries) State().IsListDamaged = true;
    for (const TreeEntry& entry : root->entries) ReadFolderInfo(entry.value, folderFileIndex);
  });
  if (!ended) State().IsListDamaged = true;
}

}  // namespace tarnwick::oe
