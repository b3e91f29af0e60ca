// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/import.h"

#include <algorithm>
#include <deque>
#include <map>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/late_state.h"
#include "intake/load_account.h"
#include "intake/sender_rules.h"
#include "intake/source.h"
#include "outlook/automated_outlook.h"
#include "outlook/folder_walk.h"
#include "outlook/rescue.h"
#include "outlook/store_discovery.h"
#include "outlook/take_item.h"
#include "outlook/type_name.h"
#include "platform/error.h"
#include "platform/files.h"
#include "repository/parameter_store.h"

namespace tarnwick::outlook {

namespace {

constexpr size_t kItemsAhead = 32;  // that a provider is told of

// A store being read.
struct OpenStore {
  std::unique_ptr<Store> store;
  std::vector<WalkedFolder> folders;
  uint64_t budget = 0;
  std::map<std::string, int64_t> otherKinds;
  KeyMarks settled;  // items that were read or need not be; kept where lost ones are looked for

  // A folder as the account of the load knows it.
  std::string PlaceOf(const WalkedFolder& folder) const {
    return store->Location() + ": " + folder.place.parentPath + "\\" + folder.place.name;
  }
};

// The items of a folder in their order, each with whether it is known already. Knows the next few
// and tells the provider which of them will be read.
class ItemRun {
 public:
  struct Entry {
    int64_t index = 0;
    std::unique_ptr<Item> item;  // none when it can't be had
    std::string key;
    bool isKnown = false;
    bool isRepeated = false;  // its key came just before: whether it is known shows in its turn
  };

  ItemRun(Folder& folder, int64_t items, const intake::ReadingRules& rules)
      : folder_(folder), items_(items), rules_(rules) {}

  bool AtEnd() {
    LookAhead();
    return entries_.empty();
  }
  // REQUIRES: not AtEnd.
  Entry Next() {
    Entry entry = std::move(entries_.front());
    entries_.pop_front();
    if (entry.isRepeated) entry.isKnown = intake::IsEmailExist(entry.key);
    return entry;
  }

 private:
  void LookAhead() {
    if (entries_.size() > kItemsAhead / 2) return;
    std::vector<int64_t> wanted;
    for (; next_ < items_ && entries_.size() < kItemsAhead; ++next_) {
      Entry entry;
      entry.index = next_;
      try {
        entry.item = folder_.ItemAt(next_);
        entry.key = entry.item->EntryID();
        entry.isRepeated = std::any_of(entries_.begin(), entries_.end(),
                                       [&](const Entry& e) { return e.key == entry.key; });
        entry.isKnown = intake::IsEmailExist(entry.key);
        if (!entry.isKnown && !entry.isRepeated) wanted.push_back(next_);
      } catch (const Error&) {
        entry.item.reset();
      }
      entries_.push_back(std::move(entry));
    }
    if (!wanted.empty()) folder_.ReadAhead(wanted, rules_);
  }

  Folder& folder_;
  int64_t items_;
  const intake::ReadingRules& rules_;
  int64_t next_ = 0;
  std::deque<Entry> entries_;
};

// The mail of a folder of an open store.
class ItemFolder : public intake::SourceFolder {
 public:
  ItemFolder(OpenStore& open, WalkedFolder& folder, const intake::ReadingRules& rules,
             intake::TextReader& texts)
      : open_(open),
        folder_(folder),
        rules_(rules),
        texts_(texts),
        run_(*folder.folder, folder.items, rules) {}

  std::string Place() const override { return open_.PlaceOf(folder_); }
  intake::SourceDescriptor Descriptor() const override {
    return {folder_.place.name, folder_.place.parentPath, kApplication};
  }
  std::string Identity() const override { return open_.store->DisplayName(); }

  bool Next(intake::SourceMessage& message) override {
    for (; !core::IsLoadStopped() && !run_.AtEnd(); core::YieldEvents()) {
      ItemRun::Entry entry = run_.Next();
      message.name = "item " + std::to_string(entry.index + 1);
      try {
        bool isMail = IsMail(entry, message);
        if (rules_.lostMail) open_.settled.Add(entry.key);
        if (isMail) return true;
      } catch (...) {
        if (core::IsLoadStopped()) return false;  // not reached
        Error error = core::CurrentError();
        if (core::IsDiskFull(error)) {
          core::ReportCurrentException("olImportOutlook", core::Report::kShow);
        }
        message.ending = {intake::Outcome::kUnreadable, error.Description()};
        return true;
      }
    }
    return false;
  }

  void Ended(const intake::SourceMessage& /*message*/, const intake::Ending& ending) override {
    if (ending.outcome == intake::Outcome::kStored) ++core::State().OutlookMessages;
  }

 private:
  // Reads the item. False for one of another kind, which is only noted.
  bool IsMail(const ItemRun::Entry& entry, intake::SourceMessage& message) {
    if (!entry.item) throw Error(ErrorNumber::kPathAccess, "it can't be found");
    if (entry.isKnown) {
      message.ending.outcome = intake::OutcomeOfKnown(entry.key);
      FillState(entry);
      return true;
    }
    TakenItem taken =
        TakeItem(*entry.item, folder_.place, kApplication, open_.budget, rules_, texts_);
    if (taken.type.empty()) throw Error(ErrorNumber::kPathAccess, "it has no message class");
    if (taken.type == kMailType) {
      message.name = std::move(taken.name);
      message.message = std::move(taken.prepared.message);
      message.raw = std::move(taken.raw);
      message.prepared = std::make_unique<intake::PreparedMessage>(std::move(taken.prepared));
      return true;
    }
    ++open_.otherKinds[taken.type];
    bool isAnnounced = folder_.isMailFolder && !folder_.folder->IsOtherKind(entry.index);
    if (isAnnounced) intake::Account().Withdraw(Place(), 1);
    return false;
  }

  // A stored item is only looked at again where its state was not kept.
  static void FillState(const ItemRun::Entry& entry) {
    if (!intake::LacksState(entry.key)) return;
    try {
      intake::FillState(entry.key, entry.item->Facts().state);
    } catch (const Error&) {
      // It is stored; that is what counts.
    }
  }

  OpenStore& open_;
  WalkedFolder& folder_;
  const intake::ReadingRules& rules_;
  intake::TextReader& texts_;
  ItemRun run_;
};

// What is being read: the stores, and their folders with what they announced.
class Import {
 public:
  Import(Namespace& outlook, const intake::ReadingRules& rules)
      : outlook_(outlook), rules_(rules) {}

  void Announce(bool everyStore) {
    for (std::unique_ptr<Store>& store : outlook_.Stores()) Open(std::move(store), everyStore);
    for (const RefusedStore& store : outlook_.Refused()) {
      intake::Account().Note(store.location + ": " + store.reason);
      unopened_.push_back(store.location);
      refused_.push_back(store);
    }
  }

  void Read() {
    for (bool sentItems : {true, false}) {
      for (OpenStore& open : stores_) {
        for (WalkedFolder& folder : open.folders) {
          if (folder.place.inSentItems == sentItems && !core::IsLoadStopped()) {
            Read(open, folder);
          }
        }
      }
    }
    if (rules_.lostMail) ReadLost();
    Close();
  }

  bool FoundMail() const { return foundMail_; }
  // Stores of which nothing was read.
  const std::vector<RefusedStore>& Refused() const { return refused_; }

 private:
  // Announces what a store holds, and decides whether it is read.
  void Open(std::unique_ptr<Store> store, bool everyStore) {
    OpenStore open;
    try {
      open.folders = olWalkFolders(*store);
    } catch (...) {
      Refuse({store->Location(), core::CurrentError().Description()});
      unopened_.push_back(store->Location());
      return;
    }
    open.store = std::move(store);
    std::string reason = WhyLeftAlone(*open.store, everyStore);
    for (const WalkedFolder& folder : open.folders) {
      int64_t mail = MailIn(folder);
      if (mail == 0) continue;
      foundMail_ = true;
      intake::Account().Announce(open.PlaceOf(folder), mail);
      intake::Account().SetReason(open.PlaceOf(folder), reason);
    }
    if (!reason.empty()) return;
    open.budget = open.store->OutputBudget();
    stores_.push_back(std::move(open));
  }

  void Refuse(const RefusedStore& store) {
    core::WriteLog("Outlook store skipped: " +
                   core::OneLogLine(store.location + ": " + store.reason));
    intake::Account().Note(store.location + ": " + store.reason);
    refused_.push_back(store);
  }

  // "" for a store that is read.
  std::string WhyLeftAlone(Store& store, bool everyStore) {
    std::string name = store.DisplayName();
    if (!everyStore && !IsDefaultStoreName(name)) {
      return "of \"" + name + "\": only the default store is read; \"Load from all folders\" in " +
             "the options reads every store";
    }
    if (!store.HasPassword() || IsOwnersStore(store.Location())) return {};
    Refuse({store.Location(), "It is guarded by a password."});
    return "the store is guarded by a password";
  }

  // The password is a mark in the store, which itself lies open: a store without it would be no
  // safer. Whoever says that the mail is theirs reads it.
  static bool IsOwnersStore(const std::string& location) {
    return core::AskYesNo("The Outlook store " + location +
                          " has a password. Is the mail in it yours, and shall it be read?");
  }

  // What a folder says that it holds of mail.
  static int64_t MailIn(const WalkedFolder& folder) {
    int64_t mail = 0;
    for (int64_t i = 0; folder.isMailFolder && i < folder.items; ++i) {
      if (!folder.folder->IsOtherKind(i)) ++mail;
    }
    return mail;
  }

  void Read(OpenStore& open, WalkedFolder& folder) {
    core::LogProgress(
        "Outlook folder = " + core::OneLogLine(folder.place.parentPath + "\\" + folder.place.name) +
        "\r\nItems = " + std::to_string(folder.items));
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), folder.place.name);
    ItemFolder items(open, folder, rules_, texts_);
    intake::ReadFolder(items);
  }

  // A store that could not be opened may still give what lies in it.
  void ReadLost() {
    for (OpenStore& open : stores_) {
      ReadLostItems(outlook_, open.store->Location(), std::move(open.settled), nullptr, rules_);
    }
    for (const std::string& location : unopened_) {
      if (!ReadLostItems(outlook_, location, {}, IsOwnersStore, rules_)) continue;
      foundMail_ = true;
      std::erase_if(refused_,
                    [&](const RefusedStore& store) { return store.location == location; });
    }
  }

  void Close() {
    for (const OpenStore& open : stores_) {
      for (const auto& [type, count] : open.otherKinds) {
        core::LogProgress("Outlook items that are no mail = " + std::to_string(count) + " " +
                          core::OneLogLine(type) + "\r\n" +
                          core::OneLogLine(open.store->Location()));
      }
    }
    platform::RemoveFile(core::State().TempMessageFile);
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), "");
  }

  Namespace& outlook_;
  intake::ReadingRules rules_;
  intake::TextReader texts_;
  std::vector<OpenStore> stores_;
  std::vector<RefusedStore> refused_;
  std::vector<std::string> unopened_;  // of these, what is no matter of a password
  bool foundMail_ = false;
};

// Kept from olInitialize to the end of the import.
struct OlState {
  std::vector<std::string> StoreFiles;
  std::unique_ptr<Namespace> Outlook;  // outlives what is read from it
  std::unique_ptr<Import> Running;
};

OlState& State() {
  static OlState state;
  return state;
}

class Outlook : public intake::Source {
 public:
  Outlook(std::vector<std::string> chosen, const intake::ReadingRules& rules)
      : chosen_(std::move(chosen)), rules_(rules) {}
  ~Outlook() override {
    if (hasAnnounced_) olReset();
  }
  std::string Name() const override { return kApplication; }
  const char* Option() const override { return "MSOutlook"; }
  std::string Files() const override { return "*.pst"; }
  bool IsIn(const std::string& folder) override {
    return !chosen_.empty() || !FindStores(folder).empty();
  }
  // A first load takes every store.
  bool Announce(bool whole) override {
    hasAnnounced_ = true;
    if (chosen_.empty()) return olInitialize() && olAnnounce(whole, rules_);
    olReset();
    State().StoreFiles = chosen_;
    return olAnnounce(true, rules_);
  }
  bool Read(bool /*whole*/) override { return olImportOutlook(); }

 private:
  std::vector<std::string> chosen_;
  intake::ReadingRules rules_;
  bool hasAnnounced_ = false;
};

// One box for all of them, however many.
void ShowRefused(const std::vector<RefusedStore>& stores) {
  if (stores.empty()) return;
  constexpr size_t kMostNamed = 10;
  std::string text = "These Outlook stores were not read:";
  for (size_t i = 0; i < std::min(stores.size(), kMostNamed); ++i) {
    text += "\r\n" + stores[i].location + "\r\n    " + stores[i].reason;
  }
  if (stores.size() > kMostNamed) {
    text += "\r\nand " + std::to_string(stores.size() - kMostNamed) + " more, named in the log";
  }
  core::ShowMessage(text);
}

}  // namespace

std::unique_ptr<intake::Source> MakeSource(const intake::ReadingRules& rules) {
  return std::make_unique<Outlook>(std::vector<std::string>{}, rules);
}

std::unique_ptr<intake::Source> MakeSource(std::vector<std::string> storeFiles,
                                           const intake::ReadingRules& rules) {
  return std::make_unique<Outlook>(std::move(storeFiles), rules);
}

bool olInitialize() {
  olReset();
  return core::Guarded("olInitialize", false, [&] {
    State().StoreFiles = FindStores(repository::GetProfileFolder());
    return !State().StoreFiles.empty();
  });
}

void olReset() {
  // In this order: the items before what they are read from.
  State().Running.reset();
  State().Outlook.reset();
  State().StoreFiles.clear();
}

bool olAnnounce(bool everyStore, const intake::ReadingRules& rules) {
  State().Outlook = OpenStores(State().StoreFiles);
  return olAnnounceFrom(*State().Outlook, everyStore, rules);
}

bool olAnnounceFrom(Namespace& outlook, bool everyStore, const intake::ReadingRules& rules) {
  return core::Guarded("olImportOutlook", false, [&] {
    if (outlook.AsksForAccess()) core::ShowMessage(core::kAccessAdvice);
    State().Running = std::make_unique<Import>(outlook, rules);
    State().Running->Announce(everyStore);
    return true;
  });
}

bool olImportOutlook() {
  bool done = core::Guarded("olImportOutlook", false, [&] {
    if (State().Running == nullptr) return false;
    State().Running->Read();
    ShowRefused(State().Running->Refused());
    if (!State().Running->FoundMail()) {
      core::ShowMessage("Microsoft Outlook doesn't content an email.");
    }
    return true;
  });
  olReset();
  return done;
}

}  // namespace tarnwick::outlook
