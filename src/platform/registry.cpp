// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/registry.h"

#include <algorithm>
#include <array>

#include "platform/error.h"
#include "platform/files.h"
#include "platform/registry_tree.h"

namespace tarnwick::platform {

namespace {

struct ProfileFiles {
  ProfileKind kind = ProfileKind::kNone;
  std::string registryFile;  // kHive, kWine
};

ProfileFiles Look(const std::string& folder) {
  if (folder.empty() || !FolderExists(folder)) return {};
  std::string own = OwnProfileFolder();
  if (!own.empty() && IsSameFile(folder, own)) return {ProfileKind::kOwn, {}};
  struct Candidate {
    const char* name;
    ProfileKind kind;
  };
  constexpr std::array<Candidate, 2> kCandidates = {
      {{"NTUSER.DAT", ProfileKind::kHive}, {"user.reg", ProfileKind::kWine}}};
  for (const Candidate& candidate : kCandidates) {
    auto found = FindIgnoringCase(folder, candidate.name);
    if (found && FileExists(*found)) return {candidate.kind, *found};
  }
  std::vector<DbxStore> stores = FindDbxStores(folder);
  if (stores.empty()) return {};
  bool hasList = std::any_of(stores.begin(), stores.end(),
                             [](const DbxStore& store) { return store.hasFolderList; });
  return {hasList ? ProfileKind::kDbxWithFolderList : ProfileKind::kDbxFiles, {}};
}

}  // namespace

ProfileKind DetectProfile(const std::string& folder) {
  return Look(WithSeparator(folder)).kind;
}

std::unique_ptr<Registry> OpenProfile(const std::string& folder) {
  std::string absolute = WithSeparator(AbsolutePath(folder));
  ProfileFiles files = Look(absolute);
  switch (files.kind) {
    case ProfileKind::kOwn:
      return OpenOwnRegistry();
    case ProfileKind::kHive:
      return OpenHive(absolute, files.registryFile);
    case ProfileKind::kWine:
      return OpenWinePrefix(absolute, files.registryFile);
    case ProfileKind::kDbxWithFolderList:
    case ProfileKind::kDbxFiles:
      return OpenDbxFolder(absolute);
    case ProfileKind::kNone:
      break;
  }
  throw Error(ErrorNumber::kFileNotFound, "File not found: " + folder + "NTUSER.DAT");
}

std::unique_ptr<Registry> OpenStoresBelow(const std::string& folder) {
  std::string absolute = WithSeparator(AbsolutePath(folder));
  return FindDbxStores(absolute).empty() ? nullptr : OpenDbxFolder(absolute);
}

}  // namespace tarnwick::platform
