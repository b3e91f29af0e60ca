// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/import.h"

#include <algorithm>
#include <array>
#include <set>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "intake/sender_rules.h"
#include "oe/state.h"
#include "platform/files.h"
#include "platform/registry.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::oe {

namespace {

constexpr std::array<std::string_view, 3> kUnreadFolders = {"Drafts", "Deleted Items", "Outbox"};
constexpr std::string_view kSentItems = "Sent Items";
constexpr std::string_view kHotmail = "Hotmail";

bool Contains(const std::string& text, std::string_view part) {
  return text.find(part) != std::string::npos;
}

// Calls visit for every folder that a pass looks at, until it returns false. The folder lists are
// counted by the identities: the j-th list is taken to be the j-th identity's.
template <typename Visit>
void ForEachFolder(Visit visit) {
  OeState& state = State();
  size_t lists = std::min(state.Identities.size(), state.FolderFiles.size());
  for (size_t j = 0; j < lists; ++j) {
    for (const FolderRow& folder : state.Folders[j]) {
      if (!visit(state.FolderFiles[j], folder)) return;
    }
  }
}

std::string PathOf(const FolderFile& list, const FolderRow& folder) {
  return FindStoreFile(list.storeFolder, folder.fileName)
      .value_or(list.storeFolder + folder.fileName);
}

FolderRecord RecordOf(const FolderFile& list, const FolderRow& folder) {
  std::string prefix = Contains(folder.fullName, kHotmail) ? "Hotmail_" : "";
  bool isOneOfMany = State().Identities.size() > 1;
  std::string label = (isOneOfMany ? list.userName + "_" : "") + prefix + folder.displayName;
  return {label, folder.fullName, list.userName};
}

// Says beforehand why a file's messages may stay unread; what is read drops its reason.
void SetReasons() {
  OeState& state = State();
  for (size_t j = state.Identities.size(); j < state.FolderFiles.size(); ++j) {
    for (const FolderRow& folder : state.Folders[j]) {
      if (auto path = FindStoreFile(state.FolderFiles[j].storeFolder, folder.fileName)) {
        state.Account.SetReason(*path, reason::kBeyondIdentities);
      }
    }
  }
  ForEachFolder([&](const FolderFile& list, const FolderRow& folder) {
    if (auto path = FindStoreFile(list.storeFolder, folder.fileName)) {
      state.Account.SetReason(*path, reason::kStopped);
    }
    return true;
  });
}

// The files in the order of their first folder. A file that several folders name is read once: what
// it holds is in the repository by then.
void ReadFolders() {
  LoadAccount& account = State().Account;
  std::set<std::string> filesRead;
  ForEachFolder([&](const FolderFile& list, const FolderRow& folder) {
    std::string path = PathOf(list, folder);
    bool exists = platform::FileExists(path);
    if (IsFolderToRead(folder)) {
      if (!filesRead.insert(path).second) return true;
      if (exists) account.SetReason(path, "");
      ReadMessageTree(path, kMsgToDb, RecordOf(list, folder));
    } else if (exists && filesRead.count(path) == 0) {
      account.SetReason(path, reason::kFolderRule);
    }
    return !IsStopped();
  });
}

}  // namespace

bool ProfileKnown() {
  return platform::DetectProfile(repository::GetProfileFolder()) != platform::ProfileKind::kNone;
}

bool oeInitialize() {
  OeState& state = State();
  state.CanRead = false;
  state.CanRead = core::Guarded("oeInitialize", false,
                                [&] { return ProfileKnown() && DiscoverOutlookExpress(); });
  state.OpenedRegistry.reset();
  return state.CanRead;
}

bool IsFolderToRead(const FolderRow& folder) {
  return std::none_of(kUnreadFolders.begin(), kUnreadFolders.end(), [&](std::string_view name) {
    return Contains(folder.fullName, name) || folder.displayName == name;
  });
}

void CollectMeAddresses() {
  core::GuardedRun("CollectMeAddresses", [&] {
    if (!State().CanRead) return;
    std::set<std::string> filesRead;
    ForEachFolder([&](const FolderFile& list, const FolderRow& folder) {
      if (Contains(folder.fullName, kSentItems) || folder.displayName == kSentItems) {
        std::string path = PathOf(list, folder);
        if (filesRead.insert(path).second)
          ReadMessageTree(path, kMeAddress, RecordOf(list, folder));
      }
      return !IsStopped();
    });
  });
}

void ImportOutlookExpress() {
  LoadAccount& account = State().Account;
  core::GuardedRun("ImportOutlookExpress", [&] {
    const std::string& end = State().End.reason;
    if (!State().CanRead && end.empty()) return;
    State().MayKnowFormerKeys = !repository::HasNoEmail() || intake::HoldsIgnoredMessages();
    account.Open(State().MessageFiles);
    if (!State().CanRead) {
      for (const std::string& file : State().MessageFiles) account.SetReason(file, end);
      return;
    }
    SetReasons();
    ReadFolders();
  });
  core::GuardedRun("ImportOutlookExpress", [&] {
    account.Close();
    platform::RemoveFile(core::State().TempMessageFile);
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), "");
    core::RunState& run = core::State();
    if (run.Ui != nullptr) run.Ui->ShowProgress(run.Counts.found, run.Counts.found);
  });
}

}  // namespace tarnwick::oe
