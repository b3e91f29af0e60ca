// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/pst_provider.h"

#include <cassert>
#include <map>
#include <optional>
#include <unordered_set>
#include <utility>

#include "core/messages.h"
#include "core/text.h"
#include "outlook/little_endian.h"
#include "outlook/output_budget.h"
#include "outlook/pst_link.h"
#include "outlook/type_name.h"
#include "platform/charset.h"
#include "platform/error.h"

namespace tarnwick::outlook {

namespace {

constexpr size_t kStoreKeySize = 16;
constexpr int kMaxLoggedItems = 200;  // of one store

std::string Hex(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (char c : bytes) {
    text.push_back(kDigits[static_cast<unsigned char>(c) >> 4]);
    text.push_back(kDigits[static_cast<unsigned char>(c) & 15]);
  }
  return text;
}

// Part of stored keys, do not change (FNV-1a, 32 bits).
uint32_t Fnv(std::string_view text) {
  uint32_t hash = 2166136261u;
  for (char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 16777619u;
  return hash;
}

// What all objects of one store share.
struct StoreContext {
  StoreContext(const std::string& file, const std::string& program, PstLink::Way way)
      : link(file, program, way) {}

  // What the store says of itself.
  void Take(StoreSays said, const std::string& file) {
    store = std::move(said);
    LogLost(store.damage, file);
    if (store.key.size() == kStoreKeySize) return;
    // A store that lost its own key is known by where it lies.
    store.key.clear();
    for (char part = '0'; part < '4'; ++part) PutNumber(store.key, Fnv(file + part));
  }

  // A damaged message is taken as far as it goes; its owner can see that it was more.
  void LogLost(const std::string& damage, const std::string& subject) {
    if (damage.empty() || ++damagedItems_ > kMaxLoggedItems) return;
    core::WriteLog("Outlook item damaged, not all of it is taken as it was written (" + damage +
                   "): " + core::LoggedMailText(subject));
  }

  std::string EntryID(uint32_t node) const {
    std::string bytes(4, '\0');
    bytes += store.key;
    PutNumber(bytes, node);
    return Hex(bytes);
  }

  PstLink link;
  StoreSays store;

 private:
  int damagedItems_ = 0;
};
using Context = std::shared_ptr<StoreContext>;

class PstItem : public Item {
 public:
  // folderDamage: of the folder that lists it.
  PstItem(Context context, const reader::ItemPlace& place, std::string folderDamage)
      : context_(std::move(context)), place_(place), folderDamage_(std::move(folderDamage)) {}

  std::string EntryID() override { return context_->EntryID(place_.node); }
  ItemFacts Facts() override { return context_->link.Facts(place_); }
  ItemReading Read(uint64_t& budget, const intake::ReadingRules& rules,
                   intake::ScratchLetter& output) override {
    ItemReading reading = context_->link.Letter(place_, rules, budget, output);
    intake::MailMessage& message = reading.prepared.message;
    message.MessageKey = EntryID();
    context_->LogLost(reading.damage, message.Subject);
    if (folderDamage_.empty()) return reading;
    // Of a damaged item a class that nobody knows may have been that of mail.
    if (reading.type == kUnknownType) {
      throw Error(ErrorNumber::kPathAccess, "its message class is damaged");
    }
    reading.damage = folderDamage_ + (reading.damage.empty() ? "" : ", ") + reading.damage;
    return reading;
  }

 private:
  Context context_;
  reader::ItemPlace place_;
  std::string folderDamage_;
};

class PstFolder : public Folder {
 public:
  PstFolder(Context context, uint32_t node) : context_(std::move(context)), node_(node) {}

  std::string Name() override { return Read().name; }
  std::string EntryID() override { return context_->EntryID(node_); }
  FolderRole Role() override {
    const StoreSays& store = context_->store;
    if (store.sentMail == node_) return FolderRole::kSentItems;
    if (store.outbox == node_) return FolderRole::kOutbox;
    if (store.deletedItems == node_) return FolderRole::kDeletedItems;
    return FolderRole::kOther;
  }
  bool IsMailFolder() override {
    std::string kind = platform::AsciiLower(Read().container);
    return kind.empty() || core::BeginsWith(kind, "ipf.note") || kind == "ipf" ||
           core::BeginsWith(kind, "ipf.imap");
  }
  std::vector<std::unique_ptr<Folder>> Folders() override {
    std::vector<std::unique_ptr<Folder>> folders;
    for (uint32_t node : Read().folders) {
      folders.push_back(std::make_unique<PstFolder>(context_, node));
    }
    return folders;
  }
  int64_t ItemCount() override { return static_cast<int64_t>(Read().items.size()); }
  std::unique_ptr<Item> ItemAt(int64_t index) override {
    assert(index >= 0 && index < ItemCount());
    return std::make_unique<PstItem>(context_, PlaceOf(index), damage_);
  }
  bool IsOtherKind(int64_t index) override {
    assert(index >= 0 && index < ItemCount());
    return otherItems_.count(Read().items.at(static_cast<size_t>(index))) > 0;
  }
  void ReadAhead(const std::vector<int64_t>& indices, const intake::ReadingRules& rules) override {
    std::vector<reader::ItemPlace> places;
    places.reserve(indices.size());
    for (int64_t index : indices) places.push_back(PlaceOf(index));
    context_->link.AskAhead(places, rules);
  }

 private:
  reader::ItemPlace PlaceOf(int64_t index) {
    return {node_, static_cast<uint32_t>(index), Read().items.at(static_cast<size_t>(index))};
  }
  const FolderSays& Read() {
    if (said_) return *said_;
    core::YieldEvents();
    said_ = context_->link.Folder(node_);
    otherItems_ = {said_->otherItems.begin(), said_->otherItems.end()};
    if (!said_->damage.empty()) damage_ = "of its folder " + said_->damage;
    context_->LogLost(damage_, said_->name);
    return *said_;
  }

  Context context_;
  uint32_t node_;
  std::optional<FolderSays> said_;
  std::unordered_set<uint32_t> otherItems_;
  std::string damage_;
};

class PstStore : public Store {
 public:
  PstStore(Context context, std::string path)
      : context_(std::move(context)), path_(std::move(path)) {}

  std::string DisplayName() override { return context_->store.name; }
  std::string Location() override { return path_; }
  bool HasPassword() override { return context_->store.hasPassword; }
  std::unique_ptr<Folder> RootFolder() override {
    if (context_->store.top != 0) {
      auto folder = std::make_unique<PstFolder>(context_, context_->store.top);
      try {
        folder->ItemCount();
        return folder;
      } catch (const Error&) {
        // The store names a top that is gone: the root above it still leads to everything.
      }
    }
    if (context_->store.root == 0) {
      throw Error(ErrorNumber::kPathAccess, "The Outlook store has no folders");
    }
    return std::make_unique<PstFolder>(context_, context_->store.root);
  }
  uint64_t OutputBudget() override { return OutputBudgetOf(context_->link.StoreSize()); }

 private:
  Context context_;
  std::string path_;
};

const char* TextOf(reader::LostHow how) {
  switch (how) {
    case reader::LostHow::kUnlisted:
      return "in no folder that Outlook shows";
    case reader::LostHow::kDeleted:
      return "deleted";
    case reader::LostHow::kIndexLost:
      return "where the index of the store is lost";
    case reader::LostHow::kAlone:
      return "by its own properties alone";
  }
  return "";
}

class PstLostItems : public LostItems {
 public:
  PstLostItems(Context context, std::vector<reader::FoundItem> items)
      : context_(std::move(context)), items_(std::move(items)) {}

  std::string DisplayName() override { return context_->store.name; }
  bool HasPassword() override { return context_->store.hasPassword; }
  uint64_t OutputBudget() override { return OutputBudgetOf(context_->link.StoreSize()); }
  bool Next(LostItem& found) override {
    if (next_ == items_.size()) return false;
    const reader::FoundItem& item = items_[next_++];
    found = {};
    found.item = std::make_unique<PstItem>(context_, reader::ItemPlace{item.folder, 0, item.node},
                                           std::string());
    std::string data;
    for (int shift = 0; shift < 64; shift += 32) {
      PutNumber(data, static_cast<uint32_t>(item.data >> shift));
    }
    found.partKey = "part_" + Hex(context_->store.key) + "_" + Hex(data);
    found.how = TextOf(item.how);
    found.isPart = item.how == reader::LostHow::kAlone;
    if (!found.isPart) SetFolder(item.folder, found);
    return true;
  }

 private:
  void SetFolder(uint32_t node, LostItem& found) {
    auto [folder, isNew] = folders_.try_emplace(node);
    if (isNew) {
      PstFolder lay(context_, node);
      folder->second.role = lay.Role();
      try {
        folder->second.name = lay.Name();
      } catch (const Error&) {
        // It is gone.
      }
    }
    found.folder = folder->second.name;
    found.role = folder->second.role;
  }

  struct FolderLabel {
    std::string name;
    FolderRole role = FolderRole::kOther;
  };
  Context context_;
  std::vector<reader::FoundItem> items_;
  size_t next_ = 0;
  std::map<uint32_t, FolderLabel> folders_;
};

}  // namespace

std::vector<std::unique_ptr<Store>> PstNamespace::Stores() {
  std::vector<std::unique_ptr<Store>> stores;
  refused_.clear();
  for (const std::string& file : files_) {
    try {
      auto context = std::make_shared<StoreContext>(file, program_, PstLink::Way::kByIndex);
      context->Take(context->link.Store(), file);
      stores.push_back(std::make_unique<PstStore>(context, file));
    } catch (const Error& error) {
      if (error.Number() == ErrorNumber::kFileNotFound) throw;
      bool isForbidden = error.Number() == ErrorNumber::kPermissionDenied;
      refused_.push_back({file, isForbidden ? "It may not be read." : error.Description()});
      core::WriteLog("Outlook store skipped: " +
                     core::OneLogLine(file + ": " + refused_.back().reason));
    }
  }
  return stores;
}

std::unique_ptr<LostItems> PstNamespace::FindLost(const std::string& location,
                                                  const std::function<void(int)>& tell) {
  auto context = std::make_shared<StoreContext>(location, program_, PstLink::Way::kBySearch);
  std::vector<reader::FoundItem> items = context->link.Found(tell);
  StoreSays store;
  try {
    store = context->link.Store();
  } catch (const Error&) {
    // What it said of itself is gone.
  }
  context->Take(std::move(store), location);
  return std::make_unique<PstLostItems>(context, std::move(items));
}

}  // namespace tarnwick::outlook
