// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The registry view of *.dbx files that were copied without the rest of their owner's profile: one
// identity for each folder that holds some.
#include <algorithm>
#include <array>
#include <set>

#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/folder_search.h"
#include "platform/registry_tree.h"

namespace tarnwick::platform {

namespace {

std::string LastName(const std::string& folder) {
  return FileNameOf(folder.substr(0, folder.empty() ? 0 : folder.size() - 1));
}

// Folders of Windows' own: they tell nothing of whose mail lies below them.
bool IsOfWindows(const std::string& name) {
  constexpr std::array<std::string_view, 18> kNames = {"documents and settings",
                                                       "users",
                                                       "profiles",
                                                       "windows",
                                                       "winnt",
                                                       "local settings",
                                                       "appdata",
                                                       "local",
                                                       "roaming",
                                                       "application data",
                                                       "identities",
                                                       "microsoft",
                                                       "winnt.000",
                                                       "windows.old",
                                                       "outlook express",
                                                       "drive_c",
                                                       "c",
                                                       "d"};
  std::string lower = AsciiLower(name);
  return lower.starts_with('{') || std::find(kNames.begin(), kNames.end(), lower) != kNames.end();
}

// What tells the stores below one folder apart: the first folder of the way to them that tells
// something, which on an old disk is its user's.
std::string IdentityName(const std::string& folder, const std::string& store, bool isOnly) {
  std::string name = LastName(folder);
  if (!isOnly && store.size() > folder.size()) {
    std::string way = store.substr(folder.size());
    std::vector<std::string> names;
    for (size_t end = way.find(kSeparator); end != std::string::npos; end = way.find(kSeparator)) {
      names.push_back(way.substr(0, end));
      way.erase(0, end + 1);
    }
    auto telling = std::find_if_not(names.begin(), names.end(), IsOfWindows);
    if (telling != names.end()) name = *telling;
  }
  name = EnsureUtf8(name);
  return name.empty() ? "Outlook Express" : name;
}

// Registry names hold no separator.
std::string KeyName(std::string name) {
  for (char& c : name) {
    if (c == '\\' || c == '/') c = '_';
  }
  return name;
}

RegistryValue Text(std::string text) {
  RegistryValue value;
  value.type = RegistryValue::Type::kText;
  value.text = std::move(text);
  return value;
}

}  // namespace

DbxContent ReadDbxContent(const std::string& path) {
  // A class identifier behind four bytes; its first byte tells what the file holds.
  constexpr std::array<unsigned char, 20> kMark = {0xCF, 0xAD, 0x12, 0xFE, 0x00, 0xFD, 0x74,
                                                   0x6F, 0x66, 0xE3, 0xD1, 0x11, 0x9A, 0x4E,
                                                   0x00, 0xC0, 0x4F, 0xA3, 0x09, 0xD4};
  constexpr size_t kContentPlace = 4;
  try {
    std::array<unsigned char, kMark.size()> head{};
    InputFile file(path);
    if (file.ReadAt(0, head.data(), head.size()) != head.size()) return DbxContent::kUnmarked;
    for (size_t i = 0; i < head.size(); ++i) {
      if (i != kContentPlace && head[i] != kMark[i]) return DbxContent::kUnmarked;
    }
    if (head[kContentPlace] == 0xC5) return DbxContent::kMessages;
    return head[kContentPlace] == 0xC6 ? DbxContent::kFolderList : DbxContent::kOther;
  } catch (const Error&) {
    return DbxContent::kUnmarked;
  }
}

std::vector<DbxStore> FindDbxStores(const std::string& folder) {
  std::vector<DbxStore> found;
  FolderSearch search = FindFolders(folder);
  for (const std::string& path : search.folders) {
    DbxStore store{path, false};
    bool holdsMessages = false;
    for (const std::string& name : ListFiles(path, ".dbx")) {
      DbxContent content = ReadDbxContent(path + name);
      store.hasFolderList = store.hasFolderList || content == DbxContent::kFolderList;
      // In the folder that the person chose, a file with a damaged mark is worth a try.
      holdsMessages = holdsMessages || content == DbxContent::kMessages ||
                      (path == search.folders.front() && content == DbxContent::kUnmarked);
    }
    if (store.hasFolderList || holdsMessages) found.push_back(store);
  }
  return found;
}

std::unique_ptr<Registry> OpenDbxFolder(const std::string& folder) {
  auto registry = std::make_unique<RegistryTree>();
  registry->AddKey("Identities");
  std::vector<DbxStore> stores = FindDbxStores(folder);
  std::set<std::string> taken;
  for (const DbxStore& store : stores) {
    std::string first = IdentityName(folder, store.folder, stores.size() == 1);
    std::string name = first;
    for (int number = 2; !taken.insert(AsciiLower(KeyName(name))).second; ++number) {
      name = first + " " + std::to_string(number);
    }
    std::string key = "Identities\\" + KeyName(name);
    registry->AddValue(key, "Username", Text(name));
    registry->AddValue(key + "\\Software\\Microsoft\\Outlook Express\\5.0", "Store Root",
                       Text(store.folder));
  }
  return registry;
}

}  // namespace tarnwick::platform
