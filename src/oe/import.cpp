// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "oe/import.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "intake/load_account.h"
#include "intake/sender_rules.h"
#include "oe/rescue.h"
#include "oe/state.h"
#include "platform/charset.h"
#include "platform/files.h"
#include "platform/registry.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::oe {

namespace {

using intake::ReadingRules;

// Folders that are left out unless the rules have them read.
struct UnreadFolder {
  std::string_view name;
  Purpose purpose;
  bool ReadingRules::*isRead;
};
constexpr std::array<UnreadFolder, 3> kUnreadFolders = {
    {{"Drafts", Purpose::kDrafts, &ReadingRules::drafts},
     {"Deleted Items", Purpose::kDeletedItems, &ReadingRules::deletedItems},
     {"Outbox", Purpose::kOutbox, &ReadingRules::outbox}}};
constexpr std::string_view kSentItems = "Sent Items";
constexpr std::string_view kHotmail = "Hotmail";

bool Contains(const std::string& text, std::string_view part) {
  return text.find(part) != std::string::npos;
}

// By its name or that of a folder above it, or by what its list says of it in any language.
bool IsCalled(const FolderRow& folder, std::string_view name, Purpose purpose) {
  return Contains(folder.fullName, name) || folder.displayName == name || folder.purpose == purpose;
}

// By design the folder lists are counted by the identities: the j-th list is taken to be the j-th
// identity's.
size_t ListsToRead(const ReadingRules& rules) {
  OeState& state = State();
  if (rules.everyStore) return state.FolderFiles.size();
  return std::min(state.Identities.size(), state.FolderFiles.size());
}

// Calls visit for every folder that a pass looks at, until it returns false.
template <typename Visit>
void ForEachFolder(const ReadingRules& rules, Visit visit) {
  OeState& state = State();
  for (size_t j = 0; j < ListsToRead(rules); ++j) {
    for (const FolderRow& folder : state.Folders[j]) {
      if (!folder.fileName.empty() && !visit(state.FolderFiles[j], folder)) return;
    }
  }
}

std::string PathOf(const FolderFile& list, const FolderRow& folder) {
  return FindStoreFile(list.storeFolder, folder.fileName)
      .value_or(list.storeFolder + folder.fileName);
}

FolderRecord RecordOf(const FolderFile& list, const FolderRow& folder) {
  std::string prefix = Contains(folder.fullName, kHotmail) ? "Hotmail_" : "";
  std::string owner = State().HasSeveralOwners ? list.userName + "_" : "";
  std::string label = owner + prefix + folder.displayName;
  return {label, folder.fullName, list.userName};
}

// Reads the files of the folders that are wanted, in the order of their first folder. A file that
// several folders name is read once.
template <typename IsWanted>
void ReadFolders(const ReadingRules& rules, std::string_view operation, IsWanted isWanted) {
  std::set<std::string> filesRead;
  ForEachFolder(rules, [&](const FolderFile& list, const FolderRow& folder) {
    if (isWanted(folder)) {
      std::string path = PathOf(list, folder);
      if (filesRead.insert(path).second) {
        ReadMessageTree(path, operation, RecordOf(list, folder), rules);
      }
    }
    return !IsStopped();
  });
}

// The files that compacting leaves beside a store's, when it was broken off.
constexpr std::array<std::string_view, 3> kLeftCopies = {".dbk", ".bak", ".dbt"};

std::string Stem(const std::string& path) {
  std::string name = platform::FileNameOf(path);
  size_t dot = name.find('.');
  return platform::AsciiLower(platform::FolderOf(path) + name.substr(0, dot));
}

// Looks for lost messages in every message file, whether its folder is read or not, and in what
// compacting left of it.
void ReadLostMail(const ReadingRules& rules) {
  std::map<std::string, FolderRecord> records;  // by path
  ForEachFolder(rules, [&](const FolderFile& list, const FolderRow& folder) {
    records.emplace(PathOf(list, folder), RecordOf(list, folder));
    return true;
  });
  for (const std::string& path : State().MessageFiles) {
    std::string name = platform::FileNameOf(path);
    records.emplace(path,
                    FolderRecord{platform::EnsureUtf8(name.substr(0, name.rfind('.'))), "", ""});
  }
  std::map<std::string, FolderRecord> byStem;
  std::set<std::string> stores;
  for (const auto& [path, record] : records) {
    byStem.emplace(Stem(path), record);
    stores.insert(platform::FolderOf(path));
    if (!IsStopped()) ReadLostMessages(path, record, false, rules);
  }
  for (const std::string& store : stores) {
    for (std::string_view extension : kLeftCopies) {
      for (const std::string& name : platform::ListFiles(store, extension)) {
        auto record = byStem.find(Stem(store + name));
        FolderRecord own{platform::EnsureUtf8(name.substr(0, name.find('.'))), "", ""};
        if (IsStopped()) return;
        ReadLostMessages(store + name, record != byStem.end() ? record->second : own, true, rules);
      }
    }
  }
}

bool IsSentItems(const FolderRow& folder) {
  return IsCalled(folder, kSentItems, Purpose::kSentItems);
}

// Says why the files of a folder list are not read; "" that they are.
void SetReason(const FolderFile& list, const FolderRow& folder, const std::string& reason) {
  auto path = FindStoreFile(list.storeFolder, folder.fileName);
  if (path) intake::Account().SetReason(*path, reason);
}

bool IsProfile(const std::string& folder) {
  return platform::DetectProfile(folder) != platform::ProfileKind::kNone;
}

class OutlookExpress : public intake::Source {
 public:
  explicit OutlookExpress(const ReadingRules& rules) : rules_(rules) {}

  std::string Name() const override { return kApplication; }
  const char* Option() const override { return "OutlookExpress"; }
  std::string Files() const override { return "*.dbx"; }
  bool IsIn(const std::string& folder) override { return IsProfile(folder); }

  // A discovery that ended as it is meant to is no failure; the account says how.
  bool Announce(bool /*whole*/) override {
    bool done = oeInitialize(rules_) || !State().End.reason.empty();
    AnnounceMessages(rules_);
    return done;
  }

  bool Read(bool whole) override {
    if (whole) CollectMeAddresses(rules_);
    ImportOutlookExpress(rules_);
    return true;
  }

 private:
  ReadingRules rules_;
};

}  // namespace

std::unique_ptr<intake::Source> MakeSource(const ReadingRules& rules) {
  return std::make_unique<OutlookExpress>(rules);
}

bool ProfileKnown() {
  return IsProfile(repository::GetProfileFolder());
}

bool oeInitialize(const ReadingRules& rules) {
  OeState& state = State();
  state.CanRead = false;
  state.CanRead = core::Guarded("oeInitialize", false,
                                [&] { return ProfileKnown() && DiscoverOutlookExpress(rules); });
  state.OpenedRegistry.reset();
  return state.CanRead;
}

bool IsFolderToRead(const FolderRow& folder, const ReadingRules& rules) {
  return std::none_of(kUnreadFolders.begin(), kUnreadFolders.end(), [&](const UnreadFolder& each) {
    return !(rules.*each.isRead) && IsCalled(folder, each.name, each.purpose);
  });
}

void CollectMeAddresses(const ReadingRules& rules) {
  core::GuardedRun("CollectMeAddresses", [&] {
    if (State().CanRead) ReadFolders(rules, kMeAddress, IsSentItems);
  });
}

void AnnounceMessages(const ReadingRules& rules) {
  core::GuardedRun("AnnounceMessages", [&] {
    OeState& state = State();
    // Two identities may have one store.
    for (const std::string& path :
         std::set<std::string>(state.MessageFiles.begin(), state.MessageFiles.end())) {
      intake::Account().Announce(path, AnnouncedMessages(path));
      intake::Account().SetReason(path, state.CanRead ? reason::kNotListed : state.End.reason);
    }
    if (!state.End.reason.empty()) intake::Account().Note("Outlook Express: " + state.End.reason);
    for (const std::string& remark : state.Remarks) {
      intake::Account().Note("Outlook Express: " + remark);
    }
    for (const std::string& path : state.Forbidden) {
      intake::Account().Note(path + ": " + kMayNotBeRead);
    }
    if (!state.CanRead) return;
    for (size_t j = ListsToRead(rules); j < state.FolderFiles.size(); ++j) {
      for (const FolderRow& folder : state.Folders[j]) {
        SetReason(state.FolderFiles[j], folder, reason::kBeyondIdentities);
      }
    }
    // A file that two folders name is read if one of them is.
    for (bool toRead : {false, true}) {
      ForEachFolder(rules, [&](const FolderFile& list, const FolderRow& folder) {
        if (IsFolderToRead(folder, rules) == toRead) {
          SetReason(list, folder, toRead ? "" : reason::kFolderRule);
        }
        return true;
      });
    }
  });
}

void ImportOutlookExpress(const ReadingRules& rules) {
  core::GuardedRun("ImportOutlookExpress", [&] {
    if (!State().CanRead) return;
    State().MayKnowFormerKeys = !repository::HasNoEmail() || intake::HoldsIgnoredMessages();
    ReadFolders(rules, kMsgToDb,
                [&](const FolderRow& folder) { return IsFolderToRead(folder, rules); });
    if (rules.lostMail) ReadLostMail(rules);
  });
  core::GuardedRun("ImportOutlookExpress", [&] {
    platform::RemoveFile(core::State().TempMessageFile);
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), "");
  });
}

}  // namespace tarnwick::oe
