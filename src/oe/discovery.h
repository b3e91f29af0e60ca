// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Which identities the mail's owner has, where each keeps its store, which folder lists lie there
// and which folders they hold. Everything is found through the registry (platform/registry.h) and
// by listing the store folders. The tables are those of State(); they are emptied by the next run.
//
// Texts are UTF-8. A store folder is a prefix, not a folder: nothing is put between it and a file's
// name, so files are found only when it ends with the separator.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tarnwick::oe {

inline constexpr int kMaxIdentities = 20;
inline constexpr int kMaxFolderFiles = 100;
inline constexpr int kMaxFolders = 255;  // in one folder list

// A folder list. path is empty for one that stands for a store without a list, its folders being
// the store's files.
struct FolderFile {
  std::string path;
  std::string userName;
  std::string storeFolder;
};

struct FolderRow {
  std::string userName;
  std::string displayName;
  std::string fileName;
  int16_t number = 0;
  int16_t parent = 0;    // 0 for a top folder
  std::string fullName;  // "" for a top folder
};

enum class Hive { kCurrentUser };

// Fills the identity list. False after an error box: no key, or more identities than
// kMaxIdentities.
bool EnumIdentities();

// The store folder of an identity, on this machine. nullopt when the registry has none.
std::optional<std::string> GetStoreRoot(const std::string& identityKey);

std::string GetIdentityUserName(const std::string& identityKey);

// A value as text: expandable text is expanded, a number is "&h" and its hexadecimal digits, any
// other type comes as read. nullopt when it is missing or longer than 1024 characters; a missing
// key is an error box too.
std::optional<std::string> GetKeyValue(Hive hive, const std::string& keyPath,
                                       const std::string& valueName);

// Lists the *.dbx files behind the prefix into the table of folder lists.
void CollectStoreFiles(const std::string& storeFolder, const std::string& userName);

// The whole run. False when the repository belongs to another user than the one logged on, or when
// identities or a store folder could not be found.
bool DiscoverOutlookExpress();

// The path of a file of a store, its name found without regard to case; nullopt when there is none
// or the name is not a plain one.
std::optional<std::string> FindStoreFile(const std::string& storeFolder, const std::string& name);

}  // namespace tarnwick::oe
