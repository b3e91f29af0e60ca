// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/discovery.h"

#include <cstdio>
#include <set>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "oe/dbx_read.h"
#include "oe/state.h"
#include "platform/charset.h"
#include "platform/clock.h"
#include "platform/files.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::oe {

namespace {

using platform::DbxContent;
using platform::RegistryValue;

constexpr const char* kIdentitiesKey = "Identities";
constexpr const char* kCannotOpen = "Could not open Registry Key.";
constexpr size_t kMaxValueLength = 1024;

// The registry of the mail's owner, opened at its first use in a run.
platform::Registry& OwnersRegistry() {
  auto& registry = State().OpenedRegistry;
  if (!registry) registry = platform::OpenProfile(repository::GetProfileFolder());
  return *registry;
}

std::string TooMany(const std::string& what) {
  return what + " are great than " + std::to_string(kMaxIdentities) + " .Program takes only .";
}

void EmptyTables() {
  OeState& state = State();
  state.Identities.clear();
  state.FolderFiles.clear();
  for (auto& folders : state.Folders) folders.clear();
  state.MessageFiles.clear();
  state.OpenedRegistry.reset();
}

// The repository's list of the users whose mail it holds.
void AddUserToList(const std::string& user) {
  jet::Recordset users;
  users.Open("SELECT * From UserList WHERE User ='" + core::QuoteSql(user) + "'",
             repository::RepositoryDb(), jet::CursorType::kKeyset, jet::LockType::kOptimistic);
  if (!users.Eof()) return;
  users.AddNew();
  users.SetField("User", user);
  users.Update();
}

// A store without a folder list: each message file is a folder of its name.
void ListFilesAsFolders(const std::string& storeFolder, const std::string& userName,
                        const std::vector<std::string>& names) {
  OeState& state = State();
  if (names.empty() || state.FolderFiles.size() == kMaxFolderFiles) return;
  std::vector<FolderRow>& folders = state.Folders[state.FolderFiles.size()];
  state.FolderFiles.push_back({"", userName, storeFolder});
  for (const std::string& name : names) {
    if (folders.size() == kMaxFolders) break;
    FolderRow row;
    row.userName = userName;
    row.displayName = platform::EnsureUtf8(name.substr(0, name.rfind('.')));
    row.fileName = name;
    row.number = static_cast<int16_t>(folders.size() + 1);
    folders.push_back(std::move(row));
  }
}

// Identities and their stores. False ends the run: an identity has no store. The files of the
// others are listed all the same, for the account of the load.
bool ReadIdentities() {
  OeState& state = State();
  for (size_t i = 0; i < state.Identities.size(); ++i) {
    const std::string& key = state.Identities[i];
    bool isEnded = !state.WhyEnded.empty();
    if (!isEnded) {
      core::LogProgress("Identities = " + std::to_string(i + 1) + " " + core::OneLogLine(key));
    }
    std::optional<std::string> store = GetStoreRoot(key);
    std::string user = GetIdentityUserName(key);
    if (store) {
      if (!isEnded) AddUserToList(user);
      CollectStoreFiles(*store, user);
    } else if (!isEnded) {
      state.WhyEnded = "no mail store known for identity " + (user.empty() ? key : user);
    }
  }
  return state.WhyEnded.empty();
}

// The display names from the top folder down to this one, with "." between.
std::string FullNameOf(const std::vector<FolderRow>& folders, const FolderRow& folder) {
  std::string name = folder.displayName;
  std::set<int16_t> passed = {folder.number};
  int16_t parent = folder.parent;
  while (parent != 0 && passed.insert(parent).second) {
    const FolderRow* found = nullptr;
    for (const FolderRow& row : folders) {
      if (row.number == parent) found = &row;
    }
    if (found == nullptr) break;
    name.insert(0, found->displayName + ".");
    parent = found->parent;
  }
  return name;
}

void NameFolders(std::vector<FolderRow>& folders) {
  for (FolderRow& row : folders) {
    if (row.parent != 0) row.fullName = FullNameOf(folders, row);
    core::LogProgress("Folders = Parent = " + std::to_string(row.parent) + " " +
                      core::OneLogLine(row.fullName) + "\r\nMe = " + std::to_string(row.number) +
                      " " + core::OneLogLine(row.displayName) + "\r\n" +
                      core::OneLogLine(row.fileName));
  }
}

}  // namespace

bool EnumIdentities() {
  return core::Guarded("EnumIdentities", false, [&] {
    std::vector<std::string>& identities = State().Identities;
    identities.clear();
    std::optional<std::vector<std::string>> keys;
    try {
      keys = OwnersRegistry().SubKeys(kIdentitiesKey);
    } catch (const Error& error) {
      core::ShowError(std::string(kCannotOpen) + " RegQueryInfoKey");
      core::WriteLog(error.Description());
      return false;
    }
    if (!keys) {
      core::ShowError(std::string(kCannotOpen) + " RegOpenKeyEx");
      return false;
    }
    if (keys->size() > kMaxIdentities) {
      core::ShowMessage(TooMany("Identtities"));
      return false;
    }
    identities = std::move(*keys);
    return true;
  });
}

std::optional<std::string> GetKeyValue(Hive /*hive*/, const std::string& keyPath,
                                       const std::string& valueName) {
  using Result = std::optional<std::string>;
  return core::Guarded("GetKeyValue", Result(), [&]() -> Result {
    bool keyExists = false;
    std::optional<RegistryValue> value = OwnersRegistry().Value(keyPath, valueName, &keyExists);
    if (!keyExists) {
      core::ShowError(std::string(kCannotOpen) + " GetKeyValue " +
                      core::OneLogLine(keyPath + " " + valueName));
      return std::nullopt;
    }
    if (!value || value->text.size() > kMaxValueLength) return std::nullopt;
    switch (value->type) {
      case RegistryValue::Type::kExpandableText:
        return OwnersRegistry().Expand(value->text);
      case RegistryValue::Type::kNumber: {
        char digits[16];
        std::snprintf(digits, sizeof digits, "&h%X", static_cast<unsigned>(value->number));
        return digits;
      }
      case RegistryValue::Type::kText:
      case RegistryValue::Type::kBinary:
      case RegistryValue::Type::kOther:
        break;
    }
    return value->text;
  });
}

std::optional<std::string> GetStoreRoot(const std::string& identityKey) {
  std::string key = std::string(kIdentitiesKey) + "\\" + identityKey +
                    "\\Software\\Microsoft\\Outlook Express\\5.0";
  std::optional<std::string> root = GetKeyValue(Hive::kCurrentUser, key, "Store Root");
  if (!root) return std::nullopt;
  return core::Guarded("GetStoreRoot", std::optional<std::string>(),
                       [&] { return std::optional(OwnersRegistry().MapPath(*root)); });
}

std::string GetIdentityUserName(const std::string& identityKey) {
  std::string key = std::string(kIdentitiesKey) + "\\" + identityKey;
  std::string name = GetKeyValue(Hive::kCurrentUser, key, "UserName").value_or("");
  return name == "Main Identity" ? core::State().UserName : name;
}

std::optional<std::string> FindStoreFile(const std::string& storeFolder, const std::string& name) {
  if (name.empty() || name.find_first_of("/\\") != std::string::npos) return std::nullopt;
  std::string folder = platform::FolderOf(storeFolder);
  auto found = platform::FindIgnoringCase(folder, platform::FileNameOf(storeFolder) + name);
  return found && platform::FileExists(*found) ? found : std::nullopt;
}

void CollectStoreFiles(const std::string& storeFolder, const std::string& userName) {
  core::GuardedRun("CollectStoreFiles", [&] {
    OeState& state = State();
    std::vector<std::string> unlisted;
    bool hasList = false;
    std::string prefix = platform::FileNameOf(storeFolder);
    for (const std::string& name : platform::ListFiles(platform::FolderOf(storeFolder), ".dbx")) {
      if (!platform::AsciiLower(name).starts_with(platform::AsciiLower(prefix))) continue;
      std::string path = platform::FolderOf(storeFolder) + name;
      if (!IsFolderTreeFile(path)) {
        core::LogProgress("EmailFile = " + core::OneLogLine(name));
        state.MessageFiles.push_back(path);
        if (platform::ReadDbxContent(path) != DbxContent::kOther) unlisted.push_back(name);
        continue;
      }
      core::LogProgress("FolderFile = " + core::OneLogLine(name));
      hasList = true;
      if (state.FolderFiles.size() == kMaxFolderFiles) {
        core::ShowMessage(TooMany("Folders"));
        return;
      }
      state.FolderFiles.push_back({storeFolder + name, userName, storeFolder});
    }
    if (!hasList && state.HasCopiedStores) ListFilesAsFolders(storeFolder, userName, unlisted);
  });
}

bool DiscoverOutlookExpress() {
  return core::Guarded("DiscoverOutlookExpress", false, [&] {
    if (platform::LogonName() != core::State().UserName) {
      State().WhyEnded = "the repository belongs to the user " + core::State().UserName;
      return false;
    }
    EmptyTables();
    OeState& state = State();
    platform::ProfileKind kind = platform::DetectProfile(repository::GetProfileFolder());
    state.HasCopiedStores = kind == platform::ProfileKind::kDbxFiles ||
                            kind == platform::ProfileKind::kDbxWithFolderList;
    if (!EnumIdentities()) return false;
    if (!ReadIdentities()) {
      core::WriteLog("Outlook Express is not read: " + state.WhyEnded);
      return false;
    }
    for (size_t j = 0; j < state.FolderFiles.size(); ++j) {
      if (!state.FolderFiles[j].path.empty()) ReadFolderTree(static_cast<int>(j));
    }
    for (size_t j = 0; j < state.Identities.size() && j < state.FolderFiles.size(); ++j) {
      NameFolders(state.Folders[j]);
    }
    return true;
  });
}

}  // namespace tarnwick::oe
