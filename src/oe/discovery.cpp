// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/discovery.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <set>
#include <unordered_map>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "oe/dbx_read.h"
#include "oe/discovery_steps.h"
#include "oe/identity_stores.h"
#include "oe/state.h"
#include "oe/store_search.h"
#include "platform/charset.h"
#include "platform/environment.h"
#include "platform/error.h"
#include "platform/files.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::oe {

namespace {

using platform::DbxContent;
using platform::RegistryValue;

constexpr const char* kCannotOpen = "Could not open Registry Key.";

std::string TooMany(const std::string& what) {
  return what + " are great than " + std::to_string(kMaxIdentities) + " .Program takes only .";
}

void EmptyTables() {
  OeState& state = State();
  state.Identities.clear();
  state.FolderFiles.clear();
  state.Folders.assign(kMaxFolderFiles, {});
  state.MessageFiles.clear();
  state.OpenedRegistry.reset();
  state.End = {};
  state.Remarks.clear();
  state.Forbidden.clear();
}

// Ends the run, once.
bool EndWith(const std::string& reason, const std::string& identity = {}) {
  DiscoveryEnd& end = State().End;
  if (end.reason.empty()) {
    end = {identity, reason};
    core::WriteLog("Outlook Express: " + core::OneLogLine(reason));
  }
  return false;
}

std::string Lines(const std::vector<std::string>& texts) {
  constexpr size_t kMost = 10;
  std::string lines;
  for (size_t i = 0; i < std::min(texts.size(), kMost); ++i) lines += "\r\n" + texts[i];
  if (texts.size() > kMost) lines += "\r\nand " + std::to_string(texts.size() - kMost) + " more";
  return lines;
}

// Each message file becomes a folder of its name.
void AddFilesAsFolders(size_t list, const std::vector<std::string>& names) {
  std::vector<FolderRow>& folders = State().Folders[list];
  for (const std::string& name : names) {
    if (folders.size() == kMaxFolders) break;
    FolderRow row;
    row.userName = State().FolderFiles[list].userName;
    row.displayName = platform::EnsureUtf8(name.substr(0, name.rfind('.')));
    row.fileName = name;
    row.number = static_cast<int16_t>(folders.size() + 1);
    folders.push_back(std::move(row));
  }
}

// A store without a folder list.
void ListFilesAsFolders(const std::string& storeFolder, const std::string& userName,
                        const std::vector<std::string>& names) {
  OeState& state = State();
  if (names.empty() || state.FolderFiles.size() == kMaxFolderFiles) return;
  state.FolderFiles.push_back({"", userName, storeFolder});
  AddFilesAsFolders(state.FolderFiles.size() - 1, names);
}

bool AskToReadByThemselves(const std::string& what, size_t files) {
  return core::AskYesNo(what + "\r\n" + std::to_string(files) +
                        (files == 1 ? " mail file" : " mail files") +
                        " of its folder would not be read.\r\n\r\nRead such files by themselves, "
                        "each as a folder of its own name?");
}

// Offers to read what a damaged list does not name.
void MendFolderList(size_t list) {
  OeState& state = State();
  const FolderFile& file = state.FolderFiles[list];
  std::set<std::string> named;
  for (size_t j = 0; j < state.FolderFiles.size(); ++j) {
    if (state.FolderFiles[j].storeFolder != file.storeFolder) continue;
    for (const FolderRow& row : state.Folders[j]) named.insert(platform::AsciiLower(row.fileName));
  }
  std::vector<std::string> unnamed;
  bool namesOne = false;
  for (const std::string& name : StoreFileNames(file.storeFolder)) {
    std::string path = platform::FolderOf(file.storeFolder) + name;
    if (platform::ReadDbxContent(path) != DbxContent::kMessages) continue;
    bool isNamed = named.count(platform::AsciiLower(name)) > 0;
    namesOne = namesOne || isNamed;
    if (!isNamed) unnamed.push_back(name);
  }
  if (unnamed.empty() || (!state.IsListDamaged && namesOne)) return;
  if (!AskToReadByThemselves("The folder list is damaged: " + file.path, unnamed.size())) return;
  AddFilesAsFolders(list, unnamed);
}

// Says of a store folder that it is not there, or that it may not be read; true when it is sound.
bool IsStoreThere(const std::string& storeFolder, const std::string& userName,
                  std::vector<std::string>& missing) {
  std::string folder = platform::FolderOf(storeFolder);
  if (!platform::MayRead(folder)) {
    core::WriteLog(core::OneLogLine(folder + ": " + kMayNotBeRead));
    State().Forbidden.push_back(folder);
    return false;
  }
  if (platform::FolderExists(folder)) return true;
  std::string place = storeFolder;
  bool isWindowsPath = place.size() > 1 && place[1] == ':';
  if (isWindowsPath) std::replace(place.begin(), place.end(), '/', '\\');
  core::WriteLog("Mail store of " + core::OneLogLine(userName + " not found: " + place));
  missing.push_back(userName + ": " + place);
  return false;
}

// Notes the files of a store that is not read, so that they are counted.
void CountFilesOf(const std::string& storeFolder) {
  std::vector<std::string>& files = State().MessageFiles;
  for (const std::string& name : StoreFileNames(storeFolder)) {
    std::string path = platform::FolderOf(storeFolder) + name;
    bool isKnown = std::find(files.begin(), files.end(), path) != files.end();
    if (!isKnown && platform::ReadDbxContent(path) != DbxContent::kFolderList) {
      files.push_back(path);
    }
  }
}

// The stores of all identities of a registry, without a word about what is wrong with them.
void CountStoresOf(platform::Registry& registry) {
  try {
    for (const std::string& identity :
         registry.SubKeys(kIdentitiesKey).value_or(std::vector<std::string>())) {
      auto root = registry.Value(StoreKeyOf(identity), kStoreRoot);
      if (!root || root->text.size() > kMaxValueLength) continue;
      bool expands = root->type == RegistryValue::Type::kExpandableText;
      CountFilesOf(registry.MapPath(expands ? registry.Expand(root->text) : root->text));
    }
  } catch (const Error& error) {
    core::WriteLog(error.Description());
  }
}

constexpr const char* kNamesNoStore = "names no mail store of Outlook Express";

// Why the registry leads to no store; "" when it does.
std::string FaultOfRegistry() {
  try {
    auto keys = OwnersRegistry().SubKeys(kIdentitiesKey);
    if (!keys || keys->empty()) return "knows no identity of Outlook Express";
    bool namesOne = std::any_of(keys->begin(), keys->end(), [](const std::string& identity) {
      return OwnersRegistry().Value(StoreKeyOf(identity), kStoreRoot).has_value();
    });
    return namesOne ? "" : kNamesNoStore;
  } catch (const Error& error) {
    bool isForbidden = error.Number() == ErrorNumber::kPermissionDenied;
    return isForbidden ? "may not be read" : "is damaged";
  }
}

// Where the registry leads nowhere but there are mail files, they are offered as they would be read
// without one.
void OfferStoresWithoutRegistry(platform::ProfileKind kind) {
  if (kind != platform::ProfileKind::kHive && kind != platform::ProfileKind::kWine) return;
  std::string fault = FaultOfRegistry();
  if (fault.empty()) return;
  std::string folder = repository::GetProfileFolder();
  std::unique_ptr<platform::Registry> stores = platform::OpenStoresBelow(folder);
  if (!stores) return;
  std::string file = kind == platform::ProfileKind::kHive ? "NTUSER.DAT" : "user.reg";
  std::string what =
      "The file " + file + ", in which Windows keeps the settings of this user, " + fault + ".";
  core::WriteLog(what);
  if (core::AskYesNo(what + "\r\nBut there are mail files (*.dbx) in or below " + folder +
                     "\r\n\r\nRead them without it, each folder of files as a store?")) {
    State().OpenedRegistry = std::move(stores);
    State().HasCopiedStores = true;
    return;
  }
  // An identity without a store ends the run in its turn, under its own name.
  if (fault != kNamesNoStore) EndWith(file + " " + fault);
  CountStoresOf(*stores);
}

// Identities and their stores. False ends the run.
bool ReadIdentities() {
  OeState& state = State();
  std::vector<std::string> missing;
  bool isWhole = true;
  for (size_t i = 0; i < state.Identities.size(); ++i) {
    const std::string& key = state.Identities[i];
    core::LogProgress("Identities = " + std::to_string(i + 1) + " " + core::OneLogLine(key));
    std::optional<std::string> store = GetStoreRoot(key);
    if (!store) {
      std::string name = NameOf(key);
      isWhole = EndWith("no mail store known for identity " + name, name);
      break;
    }
    std::string user = GetIdentityUserName(key);
    AddUserToList(user);
    if (IsStoreThere(*store, user, missing)) CollectStoreFiles(*store, user);
  }
  TellWhatIsNotThere(missing);
  return isWhole;
}

// For a run that ends: what lies behind is counted all the same.
bool EndAfterIdentities() {
  bool isOpen = State().OpenedRegistry != nullptr;
  EndWith(isOpen
              ? "its identities can't be listed, or are more than " + std::to_string(kMaxIdentities)
              : "the registry of the mail's owner can't be read");
  if (isOpen) CountStoresOf(*State().OpenedRegistry);
  return false;
}

using FoldersByNumber = std::unordered_map<int32_t, const FolderRow*>;

// The folders above one, the nearest first.
std::vector<const FolderRow*> FoldersAbove(const FoldersByNumber& folders,
                                           const FolderRow& folder) {
  std::vector<const FolderRow*> above;
  std::set<int32_t> passed = {folder.number};
  int32_t parent = folder.parent;
  while (parent != 0 && passed.size() <= kMostAncestors && passed.insert(parent).second) {
    auto found = folders.find(parent);
    if (found == folders.end()) break;
    above.push_back(found->second);
    parent = found->second->parent;
  }
  return above;
}

}  // namespace

platform::Registry& OwnersRegistry() {
  auto& registry = State().OpenedRegistry;
  if (!registry) registry = platform::OpenProfile(repository::GetProfileFolder());
  return *registry;
}

std::string NameOf(const std::string& identity) {
  auto name = OwnersRegistry().Value(std::string(kIdentitiesKey) + "\\" + identity, "UserName");
  return name && !name->text.empty() ? name->text : identity;
}

std::vector<std::string> StoreFileNames(const std::string& storeFolder) {
  std::vector<std::string> names;
  std::string prefix = platform::AsciiLower(platform::FileNameOf(storeFolder));
  for (const std::string& name : platform::ListFiles(platform::FolderOf(storeFolder), ".dbx")) {
    if (platform::AsciiLower(name).starts_with(prefix)) names.push_back(name);
  }
  return names;
}

void AddUserToList(const std::string& user) {
  jet::Recordset users;
  users.Open("SELECT * From UserList WHERE User ='" + core::QuoteSql(user) + "'",
             repository::RepositoryDb(), jet::CursorType::kKeyset, jet::LockType::kOptimistic);
  if (!users.Eof()) return;
  users.AddNew();
  users.SetField("User", user);
  users.Update();
}

void TellWhatIsNotThere(const std::vector<std::string>& missing) {
  if (!missing.empty()) {
    core::ShowMessage("The mail store can't be found here of" + Lines(missing) +
                      "\r\n\r\nIt lay on another drive or has been moved. If you have a copy of "
                      "that drive, choose the folder where the *.dbx files lie in it under "
                      "Tools!Options.");
  }
  const std::vector<std::string>& forbidden = State().Forbidden;
  if (!forbidden.empty()) core::ShowMessage("These may not be read:" + Lines(forbidden));
}

void NameFolders(std::vector<FolderRow>& folders) {
  FoldersByNumber byNumber;
  for (const FolderRow& row : folders) byNumber[row.number] = &row;
  for (FolderRow& row : folders) {
    // The display names from the top folder down to this one.
    if (row.parent != 0) row.fullName = row.displayName;
    for (const FolderRow* above : FoldersAbove(byNumber, row)) {
      row.fullName.insert(0, above->displayName + ".");
      if (row.purpose == Purpose::kNone) row.purpose = above->purpose;
    }
    core::LogProgress("Folders = Parent = " + std::to_string(row.parent) + " " +
                      core::OneLogLine(row.fullName) + "\r\nMe = " + std::to_string(row.number) +
                      " " + core::OneLogLine(row.displayName) + "\r\n" +
                      core::OneLogLine(row.fileName));
  }
}

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
  std::optional<std::string> root =
      GetKeyValue(Hive::kCurrentUser, StoreKeyOf(identityKey), kStoreRoot);
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
    size_t messageFiles = 0;
    bool hasList = false;
    for (const std::string& name : StoreFileNames(storeFolder)) {
      std::string path = platform::FolderOf(storeFolder) + name;
      if (!platform::MayRead(path)) {
        core::WriteLog(core::OneLogLine(path + ": " + kMayNotBeRead));
        state.Forbidden.push_back(path);
        state.MessageFiles.push_back(path);
        continue;
      }
      if (!IsFolderTreeFile(path)) {
        core::LogProgress("EmailFile = " + core::OneLogLine(name));
        state.MessageFiles.push_back(path);
        DbxContent content = platform::ReadDbxContent(path);
        if (content != DbxContent::kOther) unlisted.push_back(name);
        if (content == DbxContent::kMessages) ++messageFiles;
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
    if (hasList) return;
    if (state.HasCopiedStores ||
        (messageFiles > 0 &&
         AskToReadByThemselves("There is no sound folder list in " + storeFolder, messageFiles))) {
      ListFilesAsFolders(storeFolder, userName, unlisted);
    }
  });
}

bool DiscoverOutlookExpress(const intake::ReadingRules& rules) {
  return core::Guarded("DiscoverOutlookExpress", false, [&] {
    State().End = {};
    if (platform::LogonName() != core::State().UserName) {
      return EndWith("the repository belongs to another user");
    }
    EmptyTables();
    OeState& state = State();
    if (rules.everyStore) {
      FindEveryStore();
      return true;
    }
    platform::ProfileKind kind = platform::DetectProfile(repository::GetProfileFolder());
    state.HasCopiedStores = kind == platform::ProfileKind::kDbxFiles ||
                            kind == platform::ProfileKind::kDbxWithFolderList;
    OfferStoresWithoutRegistry(kind);
    if (!EnumIdentities()) return EndAfterIdentities();
    if (!ReadIdentities()) return EndAfterIdentities();
    state.HasSeveralOwners = state.Identities.size() > 1;
    for (size_t j = 0; j < state.FolderFiles.size(); ++j) {
      if (state.FolderFiles[j].path.empty()) continue;
      ReadFolderTree(static_cast<int>(j));
      MendFolderList(j);
    }
    for (size_t j = 0; j < state.Identities.size() && j < state.FolderFiles.size(); ++j) {
      NameFolders(state.Folders[j]);
    }
    return true;
  });
}

}  // namespace tarnwick::oe
