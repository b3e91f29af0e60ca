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

#include "intake/reading_rules.h"

namespace tarnwick::oe {

// Limits of the design.
inline constexpr int kMaxIdentities = 20;
inline constexpr int kMaxFolderFiles = 100;
inline constexpr int kMaxFolders = 255;  // in one folder list
// Complete reading has one for the objects of a folder list, and one for a folder's ancestors, both
// beyond what anybody has.
inline constexpr int kMostListed = 10'000;
inline constexpr size_t kMostAncestors = 64;

// A folder list. path is empty for one that stands for a store without a list, its folders being
// the store's files.
struct FolderFile {
  std::string path;
  std::string userName;
  std::string storeFolder;
};

// Which of the program's own folders one is, whatever it is called in the program's language. The
// numbers are the format's.
enum class Purpose : uint32_t {
  kNone = 0,
  kOutbox = 2,
  kSentItems = 3,
  kDeletedItems = 4,
  kDrafts = 5
};

struct FolderRow {
  std::string userName;
  std::string displayName;
  std::string fileName;  // "" for one that only gives the folders below it their full names
  int32_t number = 0;
  int32_t parent = 0;    // 0 for a top folder
  std::string fullName;  // "" for a top folder
  // Its own or that of a folder above it; complete reading alone asks for it.
  Purpose purpose = Purpose::kNone;
};

// Why a discovery ended before its end, for the log and the account; empty when it did not. It is
// no failure of a load: what was found until then, and where the stores behind it can be found,
// stands in State().MessageFiles, to be counted and not read.
struct DiscoveryEnd {
  std::string identity;  // the name of the one whose store is not known, where that is why
  std::string reason;
};

inline constexpr const char* kMayNotBeRead = "it may not be read";

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

// Lists the *.dbx files behind the prefix into the table of folder lists. Where there is no list
// the person is asked whether the files are to be read by themselves.
void CollectStoreFiles(const std::string& storeFolder, const std::string& userName);

// The whole run. False when the repository belongs to another user than the one logged on, or when
// identities or a store folder could not be found; State().End then says which.
//
// The person is told of stores that are not there and of what may not be read, and is asked whether
// the mail files are to be read as they are where the registry does not lead to them, and by
// themselves where a folder list is damaged.
// By the rules of complete reading it is FindEveryStore (store_search.h) and ends early only for
// another user.
bool DiscoverOutlookExpress(const intake::ReadingRules& rules = intake::kDesigned);

// The path of a file of a store, its name found without regard to case; nullopt when there is none
// or the name is not a plain one.
std::optional<std::string> FindStoreFile(const std::string& storeFolder, const std::string& name);

}  // namespace tarnwick::oe
