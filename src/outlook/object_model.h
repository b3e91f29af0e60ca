// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Outlook's mail as the import walks it, in the shape of Outlook's own object model: a namespace of
// stores, a store's tree of folders, a folder's items by number, an item with an entry identifier.
// Behind it stands a provider: .pst files (pst_provider.h), whose items another process makes into
// messages; Outlook's automation objects where it has those open (automated_outlook.h) and a tree
// in memory in tests, whose items show their properties.
//
// Calls that read throw Error when what they read is damaged or gone; the object stays usable.
// Texts are UTF-8. A folder or item lives only as long as its namespace.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "intake/reading_rules.h"
#include "intake/scratch_letter.h"
#include "outlook/item_reading.h"
#include "outlook/mapi.h"

namespace tarnwick::outlook {

class Item {
 public:
  virtual ~Item() = default;

  // Known without reading anything of the item; "" for an embedded message.
  virtual std::string EntryID() = 0;
  virtual ItemFacts Facts() = 0;
  // Reads it; of mail the Internet message goes to output. budget: at most how many bytes of that,
  // reduced by what was written; beyond it Error 75 is thrown.
  virtual ItemReading Read(uint64_t& budget, const intake::ReadingRules& rules,
                           intake::ScratchLetter& output) = 0;
};

// An item whose properties can be had one by one.
class PropertyItem : public Item {
 public:
  ItemFacts Facts() override;
  ItemReading Read(uint64_t& budget, const intake::ReadingRules& rules,
                   intake::ScratchLetter& output) override;

  // "MailItem", "ContactItem", ... by the message class (type_name.h).
  virtual std::string TypeName() = 0;

  // Of a MailItem.
  virtual const PropertySet& Properties() = 0;
  virtual const std::vector<PropertySet>& Recipients() = 0;
  virtual const std::vector<PropertySet>& Attachments() = 0;
  // Hands an attachment's bytes to sink, in order, piece by piece.
  virtual void ReadAttachment(size_t index, const std::function<void(std::string_view)>& sink) = 0;
  // The message that an attachment is.
  virtual std::unique_ptr<PropertyItem> EmbeddedItem(size_t index) = 0;

  // What of everything read so far of the item, and of what is embedded in it, is left out or not
  // as it was written, because the store is damaged there. In words, for the person; "" when all
  // is sound.
  virtual std::string Damage() { return {}; }
};

enum class FolderRole { kOther, kInbox, kSentItems, kOutbox, kDeletedItems };

class Folder {
 public:
  virtual ~Folder() = default;

  virtual std::string Name() = 0;
  virtual std::string EntryID() = 0;
  // What the store itself says of the folder; folders it says nothing of are known by name only.
  virtual FolderRole Role() = 0;
  // Whether the folder is made for mail, as opposed to contacts or appointments; mail may lie in
  // either.
  virtual bool IsMailFolder() = 0;
  virtual std::vector<std::unique_ptr<Folder>> Folders() = 0;
  virtual int64_t ItemCount() = 0;
  // REQUIRES: 0 <= index < ItemCount().
  virtual std::unique_ptr<Item> ItemAt(int64_t index) = 0;
  // Whether the item is known to be no mail without reading it; false where that can't be told.
  // REQUIRES: 0 <= index < ItemCount().
  virtual bool IsOtherKind(int64_t index) {
    (void)index;
    return false;
  }
  // Says which items will be read next, in this order, so that a provider may begin with them.
  virtual void ReadAhead(const std::vector<int64_t>& indices, const intake::ReadingRules& rules) {
    (void)indices;
    (void)rules;
  }
};

class Store {
 public:
  virtual ~Store() = default;

  virtual std::string DisplayName() = 0;
  // Where the store lies, for the log.
  virtual std::string Location() = 0;
  // A password guards the store: its owner wants to be asked for it.
  virtual bool HasPassword() = 0;
  // The folder above all that Outlook shows; its own name is not part of any path.
  virtual std::unique_ptr<Folder> RootFolder() = 0;
  // How much may be written for this store's messages, in bytes: a multiple of its own size.
  virtual uint64_t OutputBudget() = 0;
};

// A message that a search of a whole store found.
struct LostItem {
  std::unique_ptr<Item> item;
  // What stands for it where it is not whole: nothing of it must be taken for the message itself,
  // which may come whole from elsewhere.
  std::string partKey;
  std::string folder;  // that it lay in; "" where that is not known
  FolderRole role = FolderRole::kOther;
  std::string how;      // it was found
  bool isPart = false;  // much of it is missing for sure
};

// What a search of a store found, whether its folders lead there or not.
class LostItems {
 public:
  virtual ~LostItems() = default;

  // Of what is left of the store; "" where that is gone.
  virtual std::string DisplayName() = 0;
  virtual bool HasPassword() = 0;
  virtual uint64_t OutputBudget() = 0;
  // False behind the last one.
  virtual bool Next(LostItem& found) = 0;
};

// A store that can't be opened, and why.
struct RefusedStore {
  std::string location;
  std::string reason;
};

class Namespace {
 public:
  virtual ~Namespace() = default;

  // The stores that can be opened; one that can't is logged, left out and among the Refused.
  virtual std::vector<std::unique_ptr<Store>> Stores() = 0;
  // Those that the last Stores left out.
  virtual std::vector<RefusedStore> Refused() { return {}; }
  // Searches the whole store, opened or refused, for items; tell: how far it has come, in percent.
  // Nothing where there is no such search. Throws Error where the store can't be read at all.
  virtual std::unique_ptr<LostItems> FindLost(const std::string& location,
                                              const std::function<void(int)>& tell) {
    (void)location;
    (void)tell;
    return nullptr;
  }
  // Whether Outlook will ask its user to allow the access.
  virtual bool AsksForAccess() = 0;
};

}  // namespace tarnwick::outlook
