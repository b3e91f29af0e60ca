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
#include "intake/header_parser.h"
#include "intake/sender_rules.h"
#include "intake/store_message.h"
#include "outlook/folder_walk.h"
#include "outlook/letter.h"
#include "outlook/message_of_letter.h"
#include "outlook/mime_message.h"
#include "outlook/pst_provider.h"
#include "outlook/store_discovery.h"
#include "platform/error.h"
#include "platform/files.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::outlook {

namespace {

constexpr const char* kMailItem = "MailItem";
constexpr int kMaxLoggedItems = 200;  // of one store; the rest is only counted
constexpr size_t kItemsAhead = 32;    // that a provider is told of

struct OlState {
  std::vector<std::string> StoreFiles;
};

OlState& State() {
  static OlState state;
  return state;
}

bool IsStopped() {
  return core::State().ImportCancelFlag || core::State().StopFlag;
}

// A store being read.
struct OpenStore {
  std::unique_ptr<Store> store;
  std::vector<WalkedFolder> folders;
  uint64_t budget = 0;
  int logged = 0;
  std::map<std::string, int64_t> otherKinds;
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

  ItemRun(Folder& folder, int64_t items) : folder_(folder), items_(items) {}

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
    if (!wanted.empty()) folder_.ReadAhead(wanted);
  }

  Folder& folder_;
  int64_t items_;
  int64_t next_ = 0;
  std::deque<Entry> entries_;
};

class Import {
 public:
  explicit Import(bool everyStore) : everyStore_(everyStore) {}

  void Run(Namespace& outlook) {
    for (std::unique_ptr<Store>& store : outlook.Stores()) Open(std::move(store));
    for (RefusedStore& store : outlook.Refused()) refused_.push_back(std::move(store));
    for (bool sentItems : {true, false}) {
      for (OpenStore& open : stores_) {
        for (WalkedFolder& folder : open.folders) {
          if (folder.place.inSentItems == sentItems && !IsStopped()) ReadFolder(open, folder);
        }
      }
    }
    Close();
  }

  bool FoundMail() const { return found_ > 0; }
  // Stores of which nothing was read.
  const std::vector<RefusedStore>& Refused() const { return refused_; }

 private:
  // Decides whether the store is read, and announces what it holds.
  void Open(std::unique_ptr<Store> store) {
    std::string name = store->DisplayName();
    std::string location = store->Location();
    OpenStore open;
    try {
      open.folders = olWalkFolders(*store);
    } catch (...) {
      std::string reason = core::CurrentError().Description();
      core::WriteLog("Outlook store skipped: " + core::OneLogLine(location + ": " + reason));
      refused_.push_back({location, reason});
      return;
    }
    int64_t mail = 0;
    for (const WalkedFolder& folder : open.folders) {
      if (!folder.isMailFolder) continue;
      for (int64_t i = 0; i < folder.items; ++i) mail += folder.folder->IsOtherKind(i) ? 0 : 1;
    }
    Found(mail);
    if (!everyStore_ && !IsDefaultStoreName(name)) {
      core::WriteLog("Not reached = " + std::to_string(mail) + "\r\n" + core::OneLogLine(location) +
                     "\r\nof \"" + core::OneLogLine(name) +
                     "\": only the default store is read; \"Load from all folders\" in " +
                     "the options reads every store");
      return;
    }
    if (store->HasPassword() && !IsOwnersStore(location)) {
      Count(core::State().Counts.unreadable, mail);
      core::WriteLog("Outlook store skipped: " + core::OneLogLine(location) +
                     ": it is guarded by a password");
      refused_.push_back({location, "It is guarded by a password."});
      return;
    }
    for (const WalkedFolder& folder : open.folders) total_ += folder.items;
    open.budget = store->OutputBudget();
    open.store = std::move(store);
    stores_.push_back(std::move(open));
  }

  // The password is a mark in the store, which itself lies open: a store without it would be no
  // safer. Whoever says that the mail is theirs reads it.
  static bool IsOwnersStore(const std::string& location) {
    return core::AskYesNo("The Outlook store " + location +
                          " has a password. Is the mail in it yours, and shall it be read?");
  }

  void ReadFolder(OpenStore& open, WalkedFolder& folder) {
    std::string path = folder.place.parentPath + "\\" + folder.place.name;
    core::LogProgress("Outlook folder = " + core::OneLogLine(path) +
                      "\r\nItems = " + std::to_string(folder.items));
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), folder.place.name);
    for (ItemRun run(*folder.folder, folder.items); !run.AtEnd();) {
      core::YieldEvents();
      if (IsStopped()) return;
      ReadItem(open, folder, run.Next());
      repository::RepositoryDb().EndUnit();
      ++visited_;
      if (core::State().Ui != nullptr) core::State().Ui->ShowProgress(visited_, total_);
    }
  }

  void ReadItem(OpenStore& open, WalkedFolder& folder, const ItemRun::Entry& entry) {
    core::LoadCounts& counts = core::State().Counts;
    // In a folder made for something else nothing was announced: what turns up is found now.
    bool announced = folder.isMailFolder && !folder.folder->IsOtherKind(entry.index);
    auto announce = [&] {
      if (!announced) Found(1);
      announced = true;
    };
    try {
      if (!entry.item) throw Error(ErrorNumber::kPathAccess, "it can't be found");
      if (entry.isKnown) {
        announce();
        return Count(intake::IsMessageIgnored(entry.key) ? counts.ignored : counts.alreadyStored,
                     1);
      }
      std::string type = entry.item->TypeName();
      if (type != kMailItem) {
        LeaveOut(open, *entry.item, type);
        if (announced) Found(-1);
        return;
      }
      announce();
      TakeIn(open, folder, *entry.item);
    } catch (...) {
      announce();
      if (IsStopped()) return;  // not reached
      Count(counts.unreadable, 1);
      if (++open.logged > kMaxLoggedItems) return;
      core::WriteLog("Outlook item " + std::to_string(entry.index + 1) + " of " +
                     core::OneLogLine(folder.place.parentPath + "\\" + folder.place.name + " in " +
                                      open.store->Location() +
                                      " skipped: " + core::CurrentError().Description()));
    }
  }

  void TakeIn(OpenStore& open, WalkedFolder& folder, Item& item) {
    Letter letter = ReadLetter(item);
    intake::MailMessage message = MessageOf(letter, item, folder.place, intake::IsFromMe);
    const std::string& file = core::State().TempMessageFile;
    // Emptied instead, the last message's file would first be brought to the disk.
    platform::RemoveFile(file);
    {
      platform::OutputFile output(file);
      WriteMime(item, letter, open.budget, [&](std::string_view bytes) { output.Write(bytes); });
      output.Close();
    }
    if (letter.plainBody.empty() && letter.htmlBody.empty() && IsSecured(letter, item)) {
      TakeBodiesOfRawText(file, folder.place, message);
    }
    if (std::string damage = item.Damage(); !damage.empty()) {
      message.Notes = "This message is damaged in its Outlook store (" + damage +
                      "). Parts of it may be missing or not as they were written.";
    }
    core::State().NewMessageFlag = true;
    if (folder.place.inSentItems && letter.ownAddress != intake::kNoAddress) {
      intake::dbSaveMeAddress(letter.ownAddress, letter.from.Name, kApplication);
    }
    intake::SetLastOutcome(intake::Outcome::kNone);
    intake::dbSaveMesage(file, message, kApplication, 0, open.store->DisplayName());
    CountOutcome();
  }

  // The texts of a signed letter lie in what was signed.
  static void TakeBodiesOfRawText(const std::string& file, const FolderPlace& place,
                                  intake::MailMessage& message) {
    intake::MailMessage parsed;
    intake::SourceDescriptor source{place.name, place.parentPath, kApplication};
    if (!intake::ParseMessageFile(file, source, intake::IsFromMe, parsed)) return;
    message.Body = parsed.Body;
    message.HTMLBody = parsed.HTMLBody;
    message.Attachments = parsed.Attachments;
    message.AttachCount = parsed.AttachCount;
  }

  void CountOutcome() {
    core::LoadCounts& counts = core::State().Counts;
    switch (intake::LastOutcome()) {
      case intake::Outcome::kStored:
        ++core::State().OutlookMessages;
        return Count(counts.stored, 1);
      case intake::Outcome::kAlreadyStored:
        return Count(counts.alreadyStored, 1);
      case intake::Outcome::kRefused:
        return Count(counts.refused, 1);
      case intake::Outcome::kIgnored:
        return Count(counts.ignored, 1);
      case intake::Outcome::kStopped:
        return;  // not reached
      case intake::Outcome::kNone:
      case intake::Outcome::kUnreadable:
        return Count(counts.unreadable, 1);
    }
  }

  // An item of another kind is no message.
  static void LeaveOut(OpenStore& open, Item& item, const std::string& type) {
    if (item.Properties().Text(Prop::kMessageClass).empty()) {
      throw Error(ErrorNumber::kPathAccess, "it has no message class");
    }
    ++open.otherKinds[type];
  }

  void Found(int64_t messages) {
    core::State().Counts.found += messages;
    found_ += messages;
  }
  void Count(int64_t& counter, int64_t messages) {
    counter += messages;
    accounted_ += messages;
  }

  void Close() {
    int64_t missing = found_ - accounted_;
    core::State().Counts.notReached += missing;
    for (const OpenStore& open : stores_) {
      if (open.logged > kMaxLoggedItems) {
        core::WriteLog("Outlook items skipped without a line of their own = " +
                       std::to_string(open.logged - kMaxLoggedItems) + "\r\n" +
                       core::OneLogLine(open.store->Location()));
      }
      for (const auto& [type, count] : open.otherKinds) {
        core::LogProgress("Outlook items that are no mail = " + std::to_string(count) + " " +
                          core::OneLogLine(type) + "\r\n" +
                          core::OneLogLine(open.store->Location()));
      }
    }
    platform::RemoveFile(core::State().TempMessageFile);
    core::SetStatus(static_cast<int>(core::StatusPanel::kProgress), "");
    if (core::State().Ui != nullptr) core::State().Ui->ShowProgress(total_, total_);
  }

  bool everyStore_;
  std::vector<OpenStore> stores_;
  std::vector<RefusedStore> refused_;
  int64_t found_ = 0;
  int64_t accounted_ = 0;
  int64_t visited_ = 0;
  int64_t total_ = 0;
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

bool olInitialize() {
  olReset();
  return core::Guarded("olInitialize", false, [] {
    State().StoreFiles = FindStores(repository::GetProfileFolder());
    return !State().StoreFiles.empty();
  });
}

const std::vector<std::string>& olStoreFiles() {
  return State().StoreFiles;
}

void olReset() {
  State() = OlState();
}

bool olImportFrom(Namespace& outlook, bool everyStore) {
  return core::Guarded("olImportOutlook", false, [&] {
    if (outlook.AsksForAccess()) core::ShowMessage(core::kAccessAdvice);
    Import import(everyStore);
    import.Run(outlook);
    ShowRefused(import.Refused());
    if (!import.FoundMail()) {
      core::ShowMessage("Microsoft Outlook doesn't content an email.");
    }
    return true;
  });
}

bool olImportOutlook(bool everyStore) {
  PstNamespace outlook(State().StoreFiles);
  return olImportFrom(outlook, everyStore);
}

}  // namespace tarnwick::outlook
