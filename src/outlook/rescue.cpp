// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "outlook/rescue.h"

#include <algorithm>
#include <functional>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/load_account.h"
#include "intake/sender_rules.h"
#include "intake/source.h"
#include "intake/stored_file.h"
#include "outlook/import.h"
#include "outlook/take_item.h"
#include "outlook/type_name.h"
#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::outlook {

namespace {

std::string FileLabel(const std::string& location) {
  return platform::EnsureUtf8(platform::FileNameOf(location));
}

// "Found in outlook.pst: deleted. It is whole."
std::string NoteOf(const LostItem& lost, const std::string& location, const std::string& damage) {
  std::string note = "Found in " + FileLabel(location) + ": " + lost.how + ".\r\n";
  if (lost.isPart) {
    note +=
        "What else belonged to it is not known: recipients, attachments or a long text may be "
        "missing.";
  } else if (damage.empty()) {
    note += "It is whole.";
  } else {
    note += "Not all of it is there (" + damage + ").";
  }
  return note;
}

// The lost mail of a store as a folder of a load.
class LostFolder : public intake::SourceFolder {
 public:
  LostFolder(const std::string& location, LostItems& items, const KeyMarks& settled,
             const intake::ReadingRules& rules)
      : location_(location),
        items_(items),
        settled_(settled),
        rules_(rules),
        store_(items.DisplayName()),
        budget_(items.OutputBudget()) {
    if (store_.empty()) store_ = FileLabel(location);
  }

  std::string Place() const override { return location_ + ": lost messages"; }
  intake::SourceDescriptor Descriptor() const override {
    return {"Recovered from " + FileLabel(location_), "\\\\" + store_, kApplication};
  }
  std::string Identity() const override { return store_; }
  const intake::ReadingRules& Rules() const override { return rules_; }

  bool Next(intake::SourceMessage& message) override {
    for (LostItem lost; !core::IsLoadStopped() && items_.Next(lost); core::YieldEvents()) {
      std::string key = lost.item->EntryID();
      if (!lost.isPart && settled_.Has(key)) continue;
      if (IsKnown(key, message) || IsKnown(lost.partKey, message)) return Found();
      try {
        if (IsMail(lost, message)) return Found();
      } catch (...) {
        if (core::IsDiskFull(core::CurrentError())) throw;
        if (core::IsLoadStopped()) return false;
        ++gone_;
      }
    }
    return false;
  }

  bool HasFound() const { return hasFound_; }
  // Items of which nothing could be read.
  int64_t Gone() const { return gone_; }

 private:
  bool Found() {
    hasFound_ = true;
    return true;
  }
  static bool IsKnown(const std::string& key, intake::SourceMessage& message) {
    if (!intake::IsEmailExist(key)) return false;
    message.ending = {intake::OutcomeOfKnown(key), {}};
    return true;
  }
  FolderPlace PlaceOf(const LostItem& lost) const {
    FolderPlace place;
    std::string folder = lost.folder.empty() ? FileLabel(location_) : lost.folder;
    place.name = "Recovered from " + folder;
    place.parentPath = "\\\\" + store_;
    place.inSentItems = lost.role == FolderRole::kSentItems || lost.role == FolderRole::kOutbox ||
                        lost.folder == "Sent Items";
    place.inInbox = lost.role == FolderRole::kInbox || lost.folder == "Inbox";
    return place;
  }
  // Reads it; false for an item of another kind.
  bool IsMail(LostItem& lost, intake::SourceMessage& message);

  const std::string& location_;
  LostItems& items_;
  const KeyMarks& settled_;
  const intake::ReadingRules& rules_;
  std::string store_;
  uint64_t budget_;
  intake::TextReader texts_;
  bool hasFound_ = false;
  int64_t gone_ = 0;
};

bool LostFolder::IsMail(LostItem& lost, intake::SourceMessage& message) {
  TakenItem taken = TakeItem(*lost.item, PlaceOf(lost), kApplication, budget_, rules_, texts_);
  if (taken.type != kMailType) return false;
  message.name = std::move(taken.name);
  intake::MailMessage& mail = taken.prepared.message;
  bool isPart = lost.isPart || !taken.damage.empty();
  bool isStored =
      isPart ? intake::IsLetterStored(mail) : intake::IsStoredFile(mail.ReceivedTime, taken.raw);
  if (isStored) {
    message.ending = {intake::Outcome::kAlreadyStored, {}};
    return true;
  }
  if (isPart) mail.MessageKey = lost.partKey;
  intake::SetNotes(taken.prepared, NoteOf(lost, location_, taken.damage));
  message.message = std::move(mail);
  message.raw = std::move(taken.raw);
  message.prepared = std::make_unique<intake::PreparedMessage>(std::move(taken.prepared));
  return true;
}

}  // namespace

void KeyMarks::Add(const std::string& key) {
  marks_.push_back(std::hash<std::string>()(key));
}

void KeyMarks::Sort() {
  std::sort(marks_.begin(), marks_.end());
}

bool KeyMarks::Has(const std::string& key) const {
  return std::binary_search(marks_.begin(), marks_.end(), std::hash<std::string>()(key));
}

bool ReadLostItems(Namespace& outlook, const std::string& location, KeyMarks settled,
                   bool (*isOwners)(const std::string& location),
                   const intake::ReadingRules& rules) {
  return core::Guarded("ReadLostItems", false, [&] {
    if (core::IsLoadStopped()) return false;
    core::LogProgress("Looks for lost messages = " + core::OneLogLine(location));
    std::unique_ptr<LostItems> items;
    try {
      items = outlook.FindLost(location, [&](int percent) {
        core::SetStatus(static_cast<int>(core::StatusPanel::kProgress),
                        "Looking for lost messages: " + FileLabel(location) + ", " +
                            std::to_string(percent) + " %");
      });
    } catch (const Error& error) {
      intake::Account().Note(location +
                             ": it can't be searched for lost messages: " + error.Description());
    }
    if (items == nullptr) return false;
    if (items->HasPassword() && isOwners != nullptr && !isOwners(location)) return false;
    settled.Sort();
    LostFolder folder(location, *items, settled, rules);
    intake::ReadFolder(folder);
    if (folder.Gone() > 0) {
      intake::Account().Note(location + ": of " + std::to_string(folder.Gone()) +
                             " lost items nothing but the place is known");
    }
    return folder.HasFound();
  });
}

}  // namespace tarnwick::outlook
