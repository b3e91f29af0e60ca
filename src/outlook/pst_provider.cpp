// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/pst_provider.h"

#include <algorithm>
#include <cassert>
#include <map>
#include <optional>
#include <set>
#include <unordered_set>
#include <utility>

#include "core/messages.h"
#include "core/text.h"
#include "outlook/mapi_text.h"
#include "outlook/pst_protocol.h"
#include "outlook/raw_row.h"
#include "outlook/type_name.h"
#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::outlook {

namespace {

constexpr size_t kStoreKeySize = 16;
constexpr size_t kEntryIdSize = 24;
constexpr uint64_t kOutputFactor = 8;  // the raw text in base64, and both bodies again
constexpr uint64_t kOutputFloor = uint64_t{64} << 20;
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

// The node that an entry identifier of the store's own properties names; 0 for none.
uint32_t NodeOfEntry(const std::string& entry) {
  return entry.size() == kEntryIdSize ? TakeNumber(entry, kEntryIdSize - 4) : 0;
}

std::string Listed(const std::set<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += (all.empty() ? "" : ", ") + text;
  return all;
}

// What all objects of one store share.
struct StoreContext {
  explicit StoreContext(PstClient reader) : client(std::move(reader)) {}

  // What the store says of itself.
  void Take(const RawAnswer& store, const std::string& file) {
    root = store.folders.empty() ? 0 : store.folders[0];
    properties = Decoded(store.properties);
    LogLost(store.lost, file);
    key = properties.Bytes(Prop::kRecordKey);
    if (key.size() == kStoreKeySize) return;
    // A store that lost its own key is known by where it lies.
    key.clear();
    for (char part = '0'; part < '4'; ++part) PutNumber(key, Fnv(file + part));
  }

  PstClient client;
  std::string key;  // kStoreKeySize bytes
  uint32_t root = 0;
  PropertySet properties;

  // A row of the store's own, or of a message that names no code page.
  PropertySet Decoded(const RawRow& row) {
    return Decode(row, HasByteTexts(row) ? Charset() : std::string());
  }
  // Of the store's own byte texts. An ANSI store does not tell, but the first messages in it do.
  const std::string& Charset() {
    if (!charset_) {
      charset_ = "";
      FindCharset();
    }
    return *charset_;
  }

  // A damaged message is taken as far as it goes; its owner can see that it was more.
  void LogLost(const std::set<std::string>& lost, const std::string& subject) {
    if (lost.empty() || ++damagedItems_ > kMaxLoggedItems) return;
    core::WriteLog("Outlook item damaged, not all of it is taken as it was written (" +
                   Listed(lost) + "): " + core::LoggedMailText(subject));
  }

  std::string EntryID(uint32_t node) const {
    std::string bytes(4, '\0');
    bytes += key;
    PutNumber(bytes, node);
    return Hex(bytes);
  }

 private:
  void FindCharset() {
    constexpr size_t kMaxFolders = 50;
    constexpr size_t kItemsOfEach = 3;
    std::vector<uint32_t> folders = {root};
    for (size_t next = 0; next < std::min(folders.size(), kMaxFolders); ++next) {
      core::YieldEvents();
      try {
        RawAnswer folder = client.Ask(frame::kFolder, {folders[next]});
        folders.insert(folders.end(), folder.folders.begin(), folder.folders.end());
        for (uint32_t i = 0; i < std::min(folder.items.size(), kItemsOfEach); ++i) {
          RawAnswer item = client.Ask(frame::kItem, {folders[next], i, folder.items[i]});
          charset_ = CharsetOfWriter(item.properties);
          if (!charset_->empty()) return;
        }
      } catch (const Error&) {
        // There are others.
      }
    }
  }

  std::optional<std::string> charset_;
  int damagedItems_ = 0;
};
using Context = std::shared_ptr<StoreContext>;

class PstItem : public Item {
 public:
  using Lost = std::shared_ptr<std::set<std::string>>;

  // lost: what was lost so far, shared with the item that this one is embedded in.
  PstItem(Context context, std::vector<uint32_t> place, std::vector<uint32_t> path, Lost lost)
      : context_(std::move(context)),
        place_(std::move(place)),
        path_(std::move(path)),
        lost_(std::move(lost)) {}

  std::string EntryID() override { return path_.empty() ? context_->EntryID(place_[2]) : ""; }
  std::string TypeName() override {
    // Whatever is embedded is shown as a message.
    if (!path_.empty()) return "MailItem";
    std::string type = TypeNameOf(Read().Text(Prop::kMessageClass));
    // Of a damaged item a class that nobody knows may have been that of mail.
    if (type == kUnknownType && !lost_->empty()) {
      throw Error(ErrorNumber::kPathAccess, "its message class is damaged");
    }
    return type;
  }
  const PropertySet& Properties() override { return Read(); }
  const std::vector<PropertySet>& Recipients() override {
    Read();
    return recipients_;
  }
  const std::vector<PropertySet>& Attachments() override {
    Read();
    return attachments_;
  }
  void ReadAttachment(size_t index, const std::function<void(std::string_view)>& sink) override {
    auto came = attachmentBytes_.find(index);
    if (came != attachmentBytes_.end()) return sink(came->second);
    std::set<std::string> lost;
    try {
      context_->client.AskBytes(Numbers(Below(index)), sink, lost);
    } catch (const Error&) {
      lost.insert("an attachment");
      Lose(lost);
      throw;
    }
    Lose(lost);
  }
  std::unique_ptr<Item> EmbeddedItem(size_t index) override {
    if (path_.size() >= kMaxEmbedding) {
      throw Error(ErrorNumber::kSubscript, "Messages are embedded too deep");
    }
    return std::make_unique<PstItem>(context_, place_, Below(index), lost_);
  }
  std::string Damage() override { return Listed(*lost_); }

 private:
  void Lose(const std::set<std::string>& lost) {
    context_->LogLost(lost, properties_.Text(Prop::kSubject));
    lost_->insert(lost.begin(), lost.end());
  }
  std::vector<uint32_t> Below(size_t index) const {
    std::vector<uint32_t> path = path_;
    path.push_back(static_cast<uint32_t>(index));
    return path;
  }
  std::vector<uint32_t> Numbers(const std::vector<uint32_t>& path) const {
    std::vector<uint32_t> numbers = place_;
    numbers.insert(numbers.end(), path.begin(), path.end());
    return numbers;
  }

  const PropertySet& Read() {
    if (isRead_) return properties_;
    RawAnswer answer =
        context_->client.Ask(path_.empty() ? frame::kItem : frame::kEmbedded, Numbers(path_));
    std::string charset = CharsetOfMessage(answer.properties);
    if (charset.empty() && HasByteTexts(answer.properties)) charset = context_->Charset();
    properties_ = Decode(answer.properties, charset);
    for (const RawRow& row : answer.recipients) recipients_.push_back(Decode(row, charset));
    for (const RawRow& row : answer.attachments) attachments_.push_back(Decode(row, charset));
    attachmentBytes_ = std::move(answer.attachmentBytes);
    Lose(answer.lost);
    isRead_ = true;
    return properties_;
  }

  Context context_;
  std::vector<uint32_t> place_;  // folder, index, node
  std::vector<uint32_t> path_;   // attachments down to this message
  Lost lost_;
  bool isRead_ = false;
  PropertySet properties_;
  std::vector<PropertySet> recipients_;
  std::vector<PropertySet> attachments_;
  std::map<size_t, std::string> attachmentBytes_;
};

class PstFolder : public Folder {
 public:
  PstFolder(Context context, uint32_t node) : context_(std::move(context)), node_(node) {}

  std::string Name() override { return Read().Text(Prop::kDisplayName); }
  std::string EntryID() override { return context_->EntryID(node_); }
  FolderRole Role() override {
    const PropertySet& store = context_->properties;
    if (NodeOfEntry(store.Bytes(Prop::kSentMailEntry)) == node_) return FolderRole::kSentItems;
    if (NodeOfEntry(store.Bytes(Prop::kOutboxEntry)) == node_) return FolderRole::kOutbox;
    if (NodeOfEntry(store.Bytes(Prop::kDeletedItemsEntry)) == node_) {
      return FolderRole::kDeletedItems;
    }
    return FolderRole::kOther;
  }
  bool IsMailFolder() override {
    std::string kind = platform::AsciiLower(Read().Text(Prop::kContainerClass));
    return kind.empty() || core::BeginsWith(kind, "ipf.note") || kind == "ipf" ||
           core::BeginsWith(kind, "ipf.imap");
  }
  std::vector<std::unique_ptr<Folder>> Folders() override {
    Read();
    std::vector<std::unique_ptr<Folder>> folders;
    for (uint32_t node : folders_) folders.push_back(std::make_unique<PstFolder>(context_, node));
    return folders;
  }
  int64_t ItemCount() override {
    Read();
    return static_cast<int64_t>(items_.size());
  }
  std::unique_ptr<Item> ItemAt(int64_t index) override {
    assert(index >= 0 && index < ItemCount());
    return std::make_unique<PstItem>(context_, PlaceOf(index), std::vector<uint32_t>{},
                                     std::make_shared<std::set<std::string>>(lost_));
  }
  bool IsOtherKind(int64_t index) override {
    assert(index >= 0 && index < ItemCount());
    Read();
    return otherItems_.count(items_.at(static_cast<size_t>(index))) > 0;
  }
  void ReadAhead(const std::vector<int64_t>& indices) override {
    std::vector<PstClient::Numbers> places;
    places.reserve(indices.size());
    for (int64_t index : indices) places.push_back(PlaceOf(index));
    context_->client.ReadAhead(places);
  }

 private:
  PstClient::Numbers PlaceOf(int64_t index) const {
    return {node_, static_cast<uint32_t>(index), items_.at(static_cast<size_t>(index))};
  }
  const PropertySet& Read() {
    if (isRead_) return properties_;
    core::YieldEvents();
    RawAnswer answer = context_->client.Ask(frame::kFolder, {node_});
    properties_ = context_->Decoded(answer.properties);
    folders_ = std::move(answer.folders);
    items_ = std::move(answer.items);
    otherItems_ = {answer.otherItems.begin(), answer.otherItems.end()};
    for (const std::string& what : answer.lost) lost_.insert("of its folder " + what);
    context_->LogLost(lost_, properties_.Text(Prop::kDisplayName));
    isRead_ = true;
    return properties_;
  }

  Context context_;
  uint32_t node_;
  bool isRead_ = false;
  PropertySet properties_;
  std::vector<uint32_t> folders_;
  std::vector<uint32_t> items_;
  std::unordered_set<uint32_t> otherItems_;
  std::set<std::string> lost_;
};

class PstStore : public Store {
 public:
  PstStore(Context context, std::string path)
      : context_(std::move(context)), path_(std::move(path)) {}

  std::string DisplayName() override { return context_->properties.Text(Prop::kDisplayName); }
  std::string Location() override { return path_; }
  bool HasPassword() override { return context_->properties.Number(Prop::kPstPassword) != 0; }
  std::unique_ptr<Folder> RootFolder() override {
    uint32_t top = NodeOfEntry(context_->properties.Bytes(Prop::kIpmSubtree));
    if (top != 0) {
      auto folder = std::make_unique<PstFolder>(context_, top);
      try {
        folder->ItemCount();
        return folder;
      } catch (const Error&) {
        // The store names a top that is gone: the root above it still leads to everything.
      }
    }
    if (context_->root == 0) {
      throw Error(ErrorNumber::kPathAccess, "The Outlook store has no folders");
    }
    return std::make_unique<PstFolder>(context_, context_->root);
  }
  uint64_t OutputBudget() override {
    return kOutputFactor * context_->client.StoreSize() + kOutputFloor;
  }

 private:
  Context context_;
  std::string path_;
};

const char* TextOf(LostHow how) {
  switch (how) {
    case LostHow::kUnlisted:
      return "in no folder that Outlook shows";
    case LostHow::kDeleted:
      return "deleted";
    case LostHow::kIndexLost:
      return "where the index of the store is lost";
    case LostHow::kAlone:
      return "by its own properties alone";
  }
  return "";
}

class PstLostItems : public LostItems {
 public:
  PstLostItems(Context context, std::vector<FoundItem> items)
      : context_(std::move(context)), items_(std::move(items)) {}

  std::string DisplayName() override { return context_->properties.Text(Prop::kDisplayName); }
  bool HasPassword() override { return context_->properties.Number(Prop::kPstPassword) != 0; }
  uint64_t OutputBudget() override {
    return kOutputFactor * context_->client.StoreSize() + kOutputFloor;
  }
  bool Next(LostItem& found) override {
    if (next_ == items_.size()) return false;
    const FoundItem& item = items_[next_++];
    found = {};
    found.item = std::make_unique<PstItem>(
        context_, std::vector<uint32_t>{item.folder, 0, item.node}, std::vector<uint32_t>{},
        std::make_shared<std::set<std::string>>());
    std::string data;
    for (int shift = 0; shift < 64; shift += 32) {
      PutNumber(data, static_cast<uint32_t>(item.data >> shift));
    }
    found.partKey = "part_" + Hex(context_->key) + "_" + Hex(data);
    found.how = TextOf(item.how);
    found.isPart = item.how == LostHow::kAlone;
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
  std::vector<FoundItem> items_;
  size_t next_ = 0;
  std::map<uint32_t, FolderLabel> folders_;
};

}  // namespace

std::vector<std::unique_ptr<Store>> PstNamespace::Stores() {
  std::vector<std::unique_ptr<Store>> stores;
  refused_.clear();
  for (const std::string& file : files_) {
    try {
      auto context = std::make_shared<StoreContext>(PstClient(file, program_, limits_));
      RawAnswer answer = context->client.Ask(frame::kStore, {});
      context->Take(answer, file);
      if (!answer.isReaderShutIn && !std::exchange(hasToldOpenReader_, true)) {
        core::WriteLog(
            "Outlook stores are read without the protection of the system: it can confine no "
            "process.");
      }
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
  constexpr int kMostSearches = 5;  // one for each start of the reader
  ReaderLimits limits = limits_;
  limits.restarts = std::min(limits.restarts, kMostSearches);
  auto context = std::make_shared<StoreContext>(
      PstClient(location, program_, limits, PstClient::Way::kBySearch));
  std::vector<FoundItem> items = context->client.FindLost(tell);
  RawAnswer store;
  try {
    store = context->client.Ask(frame::kStore, {});
  } catch (const Error&) {
    // What it said of itself is gone.
  }
  context->Take(store, location);
  return std::make_unique<PstLostItems>(context, std::move(items));
}

}  // namespace tarnwick::outlook
