// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/store_search.h"

#include <algorithm>
#include <optional>
#include <set>

#include "core/messages.h"
#include "core/text.h"
#include "oe/dbx_read.h"
#include "oe/discovery_steps.h"
#include "oe/identity_stores.h"
#include "oe/state.h"
#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"
#include "repository/parameter_store.h"

namespace tarnwick::oe {

namespace {

using platform::DbxContent;
using platform::Registry;
using platform::WithSeparator;

struct Identity {
  std::string key;
  std::string userName;
  std::string root;  // as the registry has it
};

void Remark(const std::string& text) {
  State().Remarks.push_back(text);
  core::WriteLog("Outlook Express: " + core::OneLogLine(text));
}

std::string NameOfFolder(const std::string& folder) {
  return platform::FileNameOf(folder.substr(0, folder.empty() ? 0 : folder.size() - 1));
}

bool IsStore(const std::string& folder) {
  std::vector<std::string> names = platform::ListFiles(folder, ".dbx");
  return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
    DbxContent content = platform::ReadDbxContent(folder + name);
    return content == DbxContent::kMessages || content == DbxContent::kFolderList;
  });
}

class StoreSearch {
 public:
  StoreSearch() : profile_(WithSeparator(platform::AbsolutePath(repository::GetProfileFolder()))) {}

  void Run() {
    ReadIdentities();
    for (const Identity& identity : identities_) {
      if (!TakeStoreOf(identity)) unplaced_.push_back(identity);
    }
    TakeBelow(profile_);
    if (!unplaced_.empty() || isRegistryFaulty_) TakeOtherDrives();
    if (State().FolderFiles.empty() && unplaced_.empty()) Remark("no mail store was found");
    TellMissing();
    std::set<std::string> owners;
    for (const FolderFile& file : State().FolderFiles) owners.insert(file.userName);
    State().HasSeveralOwners = identities_.size() > 1 || owners.size() > 1;
  }

 private:
  void ReadIdentities();
  bool TakeStoreOf(const Identity& identity);
  void TakeBelow(const std::string& folder);
  void TakeOtherDrives();
  void Take(const std::string& folder, const std::string& userName);
  void ReadLists(const std::string& folder, const std::string& userName, size_t firstList,
                 const std::vector<std::string>& files, const std::set<std::string>& marked);
  std::string OwnerOf(const std::string& folder, const std::string& otherwise);
  void TellMissing();

  std::string profile_;
  bool isRegistryFaulty_ = false;
  std::vector<Identity> identities_;
  std::vector<Identity> unplaced_;  // whose store was not found yet
  std::vector<std::string> taken_;
};

void StoreSearch::ReadIdentities() {
  try {
    Registry& registry = OwnersRegistry();
    for (const std::string& key :
         registry.SubKeys(kIdentitiesKey).value_or(std::vector<std::string>())) {
      Identity identity{key, GetIdentityUserName(key), {}};
      if (identity.userName.empty()) identity.userName = NameOf(key);
      auto root = registry.Value(StoreKeyOf(key), kStoreRoot);
      if (root && root->text.size() <= kMaxValueLength) identity.root = root->text;
      State().Identities.push_back(key);
      identities_.push_back(std::move(identity));
    }
    if (identities_.empty()) Remark("the registry knows no identity");
  } catch (const Error& error) {
    Remark("the registry can't be read: " + error.Description());
  }
  isRegistryFaulty_ = identities_.empty();
}

bool StoreSearch::TakeStoreOf(const Identity& identity) {
  if (identity.root.empty()) return false;
  std::string empty;  // a folder that is there, and holds nothing
  for (const std::string& place : StorePlaces(OwnersRegistry(), identity.root, profile_)) {
    if (IsStore(place)) {
      Take(place, identity.userName);
      return true;
    }
    if (empty.empty() && platform::FolderExists(place)) empty = place;
  }
  if (empty.empty()) return false;
  if (!platform::MayRead(empty)) State().Forbidden.push_back(empty);
  return true;
}

// Whose a store is that the registry did not lead to: of the identity whose key stands in its path,
// or of the only one that has none.
std::string StoreSearch::OwnerOf(const std::string& folder, const std::string& otherwise) {
  std::string path = platform::AsciiLower(folder);
  for (const Identity& identity : identities_) {
    std::string part = platform::kSeparator + WithSeparator(platform::AsciiLower(identity.key));
    if (path.find(part) != std::string::npos) return identity.userName;
  }
  return unplaced_.size() == 1 ? unplaced_.front().userName : otherwise;
}

void StoreSearch::TakeBelow(const std::string& folder) {
  std::unique_ptr<Registry> stores = platform::OpenStoresBelow(folder);
  if (!stores) return;
  for (const std::string& key :
       stores->SubKeys(kIdentitiesKey).value_or(std::vector<std::string>())) {
    auto root = stores->Value(StoreKeyOf(key), kStoreRoot);
    if (root) Take(root->text, OwnerOf(root->text, key));
  }
}

// The folders of drives beside the one that the profile lies in.
void StoreSearch::TakeOtherDrives() {
  for (const std::string& drive : Surroundings(profile_)) {
    if (!IsDriveName(NameOfFolder(drive))) continue;
    const std::string above = ParentOf(drive);
    for (const std::string& name : platform::ListFolders(above)) {
      std::string other = WithSeparator(above + name);
      if (IsDriveName(name) && other != drive) TakeBelow(other);
    }
    return;
  }
}

void StoreSearch::Take(const std::string& folder, const std::string& userName) {
  for (const std::string& former : taken_) {
    if (former == folder || platform::IsSameFile(former, folder)) return;
  }
  taken_.push_back(folder);
  for (auto i = unplaced_.begin(); i != unplaced_.end(); ++i) {
    if (i->userName != userName) continue;
    unplaced_.erase(i);
    break;
  }
  AddUserToList(userName);
  OeState& state = State();
  const size_t firstList = state.FolderFiles.size();
  std::vector<std::string> files;
  std::set<std::string> marked;  // of these, those that say that they are message files
  for (const std::string& name : StoreFileNames(folder)) {
    const std::string path = folder + name;
    if (!platform::MayRead(path)) {
      state.Forbidden.push_back(path);
      state.MessageFiles.push_back(path);
      continue;
    }
    DbxContent content = platform::ReadDbxContent(path);
    if (content == DbxContent::kFolderList) {
      core::LogProgress("FolderFile = " + core::OneLogLine(name));
      state.FolderFiles.push_back({path, userName, folder});
    } else if (content != DbxContent::kOther) {
      core::LogProgress("EmailFile = " + core::OneLogLine(name));
      state.MessageFiles.push_back(path);
      files.push_back(name);
      if (content == DbxContent::kMessages) marked.insert(name);
    }
  }
  ReadLists(folder, userName, firstList, files, marked);
}

// The folders of the lists from firstList on, and what they do not name. Where there is no sound
// list a file without a mark may be a damaged one.
void StoreSearch::ReadLists(const std::string& folder, const std::string& userName,
                            size_t firstList, const std::vector<std::string>& files,
                            const std::set<std::string>& marked) {
  OeState& state = State();
  bool isDamaged = firstList == state.FolderFiles.size();
  if (isDamaged) state.FolderFiles.push_back({"", userName, folder});
  state.Folders.resize(std::max(state.Folders.size(), state.FolderFiles.size()));
  std::set<std::string> named;
  for (size_t list = firstList; list < state.FolderFiles.size(); ++list) {
    if (state.FolderFiles[list].path.empty()) continue;
    ReadFolderTree(static_cast<int>(list), intake::kComplete);
    if (state.IsListDamaged) {
      isDamaged = true;
      Remark("the folder list is damaged: " + state.FolderFiles[list].path);
    }
    for (const FolderRow& row : state.Folders[list]) {
      named.insert(platform::AsciiLower(row.fileName));
    }
    NameFolders(state.Folders[list]);
  }
  for (const std::string& name : files) {
    if (named.count(platform::AsciiLower(name)) > 0 || !(isDamaged || marked.count(name) > 0)) {
      continue;
    }
    FolderRow row;
    row.userName = userName;
    row.displayName = platform::EnsureUtf8(name.substr(0, name.rfind('.')));
    row.fileName = name;
    state.Folders[firstList].push_back(std::move(row));
  }
}

void StoreSearch::TellMissing() {
  std::vector<std::string> missing;
  for (const Identity& identity : unplaced_) {
    if (identity.root.empty()) {
      Remark("no mail store known for identity " + identity.userName);
      continue;
    }
    missing.push_back(identity.userName + ": " + identity.root);
    Remark("mail store not found of " + missing.back());
  }
  TellWhatIsNotThere(missing);
}

}  // namespace

void FindEveryStore() {
  StoreSearch().Run();
}

}  // namespace tarnwick::oe
