// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/registry.h"

#include <algorithm>
#include <array>
#include <utility>

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

RegistryFileReader& ElsewhereReader() {
  static RegistryFileReader reader;
  return reader;
}

std::unique_ptr<RegistryKeys> KeysOf(const ProfileFiles& files) {
  std::unique_ptr<RegistryKeys> keys;
  if (ElsewhereReader()) keys = ElsewhereReader()(files.registryFile, files.kind);
  return keys ? std::move(keys) : ReadRegistryFile(files.registryFile, files.kind);
}

}  // namespace

std::unique_ptr<RegistryKeys> ReadRegistryFile(const std::string& file, ProfileKind kind) {
  return kind == ProfileKind::kHive ? ReadHive(file) : ReadWineRegistry(file);
}

void SetRegistryFileReader(RegistryFileReader reader) {
  ElsewhereReader() = std::move(reader);
}

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
      return OpenHive(absolute, KeysOf(files));
    case ProfileKind::kWine:
      return OpenWinePrefix(absolute, KeysOf(files));
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
