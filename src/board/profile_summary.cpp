// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/profile_summary.h"

#include <algorithm>
#include <memory>

#include "board/sources.h"
#include "core/guard.h"
#include "core/messages.h"
#include "oe/discovery.h"
#include "oe/import.h"
#include "outlook/import.h"
#include "outlook/store_discovery.h"
#include "platform/files.h"
#include "platform/registry.h"

namespace tarnwick::board {

namespace {

// Message files behind the prefix that a store folder is.
int64_t CountFolders(const std::string& store) {
  int64_t folders = 0;
  for (const std::string& name : platform::ListFiles(platform::FolderOf(store), ".dbx")) {
    std::string path = platform::FolderOf(store) + name;
    if (platform::ReadDbxContent(path) == platform::DbxContent::kMessages) ++folders;
    core::YieldEvents();
  }
  return folders;
}

void ReadIdentities(platform::Registry& registry, options::ProfileSummary& found) {
  auto keys = registry.SubKeys("Identities");
  if (!keys) return;
  // A load refuses a profile with more than it takes; looking at so many is enough to tell.
  size_t count = std::min<size_t>(keys->size(), oe::kMaxIdentities + 1);
  for (size_t i = 0; i < count; ++i) {
    std::string key = "Identities\\" + (*keys)[i];
    auto name = registry.Value(key, "UserName");
    found.identities.push_back(name ? name->text : (*keys)[i]);
    auto store = registry.Value(key + "\\Software\\Microsoft\\Outlook Express\\5.0", "Store Root");
    if (!store) continue;
    bool expands = store->type == platform::RegistryValue::Type::kExpandableText;
    found.folders +=
        CountFolders(registry.MapPath(expands ? registry.Expand(store->text) : store->text));
  }
}

}  // namespace

options::ProfileSummary ReadProfile(const std::string& folder) {
  options::ProfileSummary found;
  core::GuardedRun(
      "ReadProfile",
      [&] {
        for (const std::string& store : outlook::FindStores(folder)) {
          found.outlookStores.push_back(platform::FileNameOf(store));
        }
        for (const auto& source : EverySource()) {
          const std::string name = source->Name();
          bool isTold = name == oe::kApplication || name == outlook::kApplication;  // in detail
          if (!isTold && source->IsIn(folder)) found.otherMailers.push_back(name);
        }
        if (platform::DetectProfile(folder) == platform::ProfileKind::kNone) return;
        std::unique_ptr<platform::Registry> registry = platform::OpenProfile(folder);
        ReadIdentities(*registry, found);
      },
      core::Report::kLog);
  return found;
}

}  // namespace tarnwick::board
