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
#include "oe/state.h"
#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"
#include "repository/parameter_store.h"

namespace tarnwick::oe {

namespace {

using platform::DbxContent;
using platform::FindIgnoringCase;
using platform::Registry;
using platform::WithSeparator;

// "WINNT\Profiles\Ann" of a drive's folder, and the folder that holds the drives.
constexpr int kLevelsAbove = 4;

struct Identity {
  std::string key;
  std::string userName;
  std::string root;  // as the registry has it
};

void Remark(const std::string& text) {
  State().Remarks.push_back(text);
  core::WriteLog("Outlook Express: " + core::OneLogLine(text));
}

bool IsLetter(std::string_view name) {
  return !name.empty() && platform::AsciiLower(name)[0] >= 'a' &&
         platform::AsciiLower(name)[0] <= 'z';
}

// "C" or "C:", as the folder of a copied drive is called.
bool IsDriveName(std::string_view name) {
  return IsLetter(name) && (name.size() == 1 || (name.size() == 2 && name[1] == ':'));
}

std::string ParentOf(const std::string& folder) {
  return folder.size() < 2 ? std::string()
                           : platform::FolderOf(folder.substr(0, folder.size() - 1));
}

std::string NameOfFolder(const std::string& folder) {
  return platform::FileNameOf(folder.substr(0, folder.empty() ? 0 : folder.size() - 1));
}

// The profile's folder and those above it, the machine's root left out.
std::vector<std::string> Surroundings(const std::string& profile) {
  std::vector<std::string> folders;
  std::string folder = profile;
  for (int level = 0; level <= kLevelsAbove && folder.size() > 1; ++level) {
    folders.push_back(folder);
    folder = ParentOf(folder);
  }
  return folders;
}

bool IsStore(const std::string& folder) {
  std::vector<std::string> names = platform::ListFiles(folder, ".dbx");
  return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
    DbxContent content = platform::ReadDbxContent(folder + name);
    return content == DbxContent::kMessages || content == DbxContent::kFolderList;
  });
}

// The folders that a store root may mean, the likeliest first; they need not be there.
std::vector<std::string> PlacesOf(const std::string& root, const std::string& profile) {
  std::string expanded = OwnersRegistry().Expand(root);
  std::vector<std::string> places = {WithSeparator(OwnersRegistry().MapPath(root))};
  std::string drive;
  if (IsDriveName(expanded.substr(0, 2))) {
    drive = expanded.substr(0, 1);
    expanded.erase(0, 2);
  }
  std::replace(expanded.begin(), expanded.end(), '\\', '/');
  for (const std::string& folder : Surroundings(profile)) {
    std::vector<std::string> ways = {expanded};
    for (const char* mark : {":/", "/"}) {
      if (!drive.empty())
        ways.insert(ways.begin(), std::string(drive).append(mark).append(expanded));
    }
    for (const std::string& way : ways) {
      if (auto found = FindIgnoringCase(folder, way)) places.push_back(WithSeparator(*found));
    }
  }
  return places;
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
  for (const std::string& place : PlacesOf(identity.root, profile_)) {
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
