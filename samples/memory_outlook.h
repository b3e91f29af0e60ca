// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Outlook's objects over a tree in memory, for tests of the walk, the conversion and the import.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "outlook/object_model.h"
#include "outlook/type_name.h"
#include "platform/error.h"

namespace tarnwick::samples {

struct MemoryItem {
  std::string entryId;
  outlook::PropertySet properties;
  std::vector<outlook::PropertySet> recipients;
  std::vector<outlook::PropertySet> attachments;
  std::map<size_t, std::string> attachmentBytes;  // one that is missing can't be read
  std::map<size_t, MemoryItem> embedded;
  bool isDamaged = false;
  int* timesRead = nullptr;

  MemoryItem& Text(outlook::Prop property, std::string text) {
    properties.SetText(property, std::move(text));
    return *this;
  }
  MemoryItem& Number(outlook::Prop property, int64_t number) {
    properties.SetNumber(property, number);
    return *this;
  }
  MemoryItem& Recipient(int64_t type, std::string name, std::string addressType,
                        std::string address, std::string smtp = {}) {
    outlook::PropertySet row;
    row.SetNumber(outlook::Prop::kRecipientType, type);
    row.SetText(outlook::Prop::kDisplayName, std::move(name));
    row.SetText(outlook::Prop::kAddressType, std::move(addressType));
    row.SetText(outlook::Prop::kAddress, std::move(address));
    if (!smtp.empty()) row.SetText(outlook::Prop::kSmtpAddress, std::move(smtp));
    recipients.push_back(std::move(row));
    return *this;
  }
  // Gives the attachment's properties, to be set further.
  outlook::PropertySet& Attachment(std::string name, std::string bytes) {
    outlook::PropertySet row;
    row.SetText(outlook::Prop::kAttachLongName, std::move(name));
    row.SetNumber(outlook::Prop::kAttachMethod, outlook::AttachMethod::kByValue);
    attachmentBytes[attachments.size()] = std::move(bytes);
    attachments.push_back(std::move(row));
    return attachments.back();
  }
  void Embed(std::string name, MemoryItem inner) {
    outlook::PropertySet row;
    row.SetText(outlook::Prop::kDisplayName, std::move(name));
    row.SetNumber(outlook::Prop::kAttachMethod, outlook::AttachMethod::kEmbeddedMessage);
    embedded.emplace(attachments.size(), std::move(inner));
    attachments.push_back(std::move(row));
  }
};

// A mail item; further properties are set by the test.
inline MemoryItem MailNamed(const std::string& entryId, const std::string& subject) {
  MemoryItem item;
  item.entryId = entryId;
  item.Text(outlook::Prop::kMessageClass, "IPM.Note").Text(outlook::Prop::kSubject, subject);
  item.Text(outlook::Prop::kSenderName, "Ann").Text(outlook::Prop::kSenderAddress, "ann@firm.test");
  item.Text(outlook::Prop::kBody, "Body of " + subject + "\r\n");
  item.properties.SetTime(outlook::Prop::kClientSubmitTime, 1015333620);  // 2002-03-05 13:07 UTC
  item.properties.SetTime(outlook::Prop::kDeliveryTime, 1015333680);
  return item;
}

struct MemoryFolder {
  std::string name;
  std::string entryId;
  outlook::FolderRole role = outlook::FolderRole::kOther;
  bool isMailFolder = true;
  bool isDamaged = false;
  std::vector<MemoryItem> items;
  std::vector<MemoryFolder*> folders;
};

struct MemoryStore {
  std::string name = "Personal Folders";
  bool hasPassword = false;
  uint64_t budget = uint64_t{1} << 30;
  MemoryFolder root{"Top", "root", outlook::FolderRole::kOther, true, false, {}, {}};
};

class MemoryOutlook : public outlook::Namespace {
 public:
  std::vector<MemoryStore*> stores;
  bool asksForAccess = false;

  std::vector<std::unique_ptr<outlook::Store>> Stores() override {
    std::vector<std::unique_ptr<outlook::Store>> result;
    for (MemoryStore* store : stores) result.push_back(std::make_unique<StoreView>(*store));
    return result;
  }
  bool AsksForAccess() override { return asksForAccess; }

  class ItemView : public outlook::PropertyItem {
   public:
    explicit ItemView(MemoryItem& item) : item_(item) {}
    std::string EntryID() override { return item_.entryId; }
    std::string TypeName() override {
      NoteRead();
      return outlook::TypeNameOf(item_.properties.Text(outlook::Prop::kMessageClass));
    }
    const outlook::PropertySet& Properties() override {
      NoteRead();
      return item_.properties;
    }
    const std::vector<outlook::PropertySet>& Recipients() override { return item_.recipients; }
    const std::vector<outlook::PropertySet>& Attachments() override { return item_.attachments; }
    void ReadAttachment(size_t index, const std::function<void(std::string_view)>& sink) override {
      auto bytes = item_.attachmentBytes.find(index);
      if (bytes == item_.attachmentBytes.end()) throw Damaged();
      std::string_view left = bytes->second;
      for (; !left.empty(); left.remove_prefix(std::min<size_t>(1000, left.size()))) {
        sink(left.substr(0, 1000));
      }
    }
    std::unique_ptr<outlook::PropertyItem> EmbeddedItem(size_t index) override {
      return std::make_unique<ItemView>(item_.embedded.at(index));
    }

   private:
    static Error Damaged() { return Error(ErrorNumber::kPathAccess, "damaged"); }
    void NoteRead() {
      if (item_.timesRead != nullptr) ++*item_.timesRead;
      if (item_.isDamaged) throw Damaged();
    }
    MemoryItem& item_;
  };

  class FolderView : public outlook::Folder {
   public:
    explicit FolderView(MemoryFolder& folder) : folder_(folder) {}
    std::string Name() override { return folder_.name; }
    std::string EntryID() override { return folder_.entryId; }
    outlook::FolderRole Role() override { return folder_.role; }
    bool IsMailFolder() override { return folder_.isMailFolder; }
    std::vector<std::unique_ptr<outlook::Folder>> Folders() override {
      std::vector<std::unique_ptr<outlook::Folder>> result;
      for (MemoryFolder* sub : folder_.folders)
        result.push_back(std::make_unique<FolderView>(*sub));
      return result;
    }
    int64_t ItemCount() override {
      if (folder_.isDamaged) throw Error(ErrorNumber::kPathAccess, "damaged");
      return static_cast<int64_t>(folder_.items.size());
    }
    std::unique_ptr<outlook::Item> ItemAt(int64_t index) override {
      return std::make_unique<ItemView>(folder_.items.at(static_cast<size_t>(index)));
    }

   private:
    MemoryFolder& folder_;
  };

  class StoreView : public outlook::Store {
   public:
    explicit StoreView(MemoryStore& store) : store_(store) {}
    std::string DisplayName() override { return store_.name; }
    std::string Location() override { return "memory"; }
    bool HasPassword() override { return store_.hasPassword; }
    std::unique_ptr<outlook::Folder> RootFolder() override {
      return std::make_unique<FolderView>(store_.root);
    }
    uint64_t OutputBudget() override { return store_.budget; }

   private:
    MemoryStore& store_;
  };
};

}  // namespace tarnwick::samples
