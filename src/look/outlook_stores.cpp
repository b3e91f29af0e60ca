// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "look/outlook_stores.h"

#include <algorithm>
#include <optional>

#include "core/guard.h"
#include "core/messages.h"
#include "outlook/folder_walk.h"
#include "outlook/import.h"
#include "outlook/pst_provider.h"
#include "platform/charset.h"
#include "platform/clock.h"
#include "platform/error.h"
#include "platform/files.h"

namespace tarnwick::look {

namespace {

// Adds what one item tells.
void AddItem(outlook::Folder& folder, int64_t index, FoundMail& mail,
             std::vector<std::string>& keys) {
  std::unique_ptr<outlook::Item> item = folder.ItemAt(index);
  keys.push_back(item->EntryID());
  std::optional<int64_t> time = item->Facts().time;
  if (!time) return;
  int year = platform::LocalFromUnix(*time).ToCivil().year;
  mail.firstYear = mail.firstYear == 0 ? year : std::min(mail.firstYear, year);
  mail.lastYear = std::max(mail.lastYear, year);
}

// Folders, messages, and two messages of the largest folder.
void AddFolders(outlook::Store& store, FoundMail& mail, std::vector<std::string>& keys) {
  std::vector<outlook::WalkedFolder> folders = outlook::olWalkFolders(store);
  outlook::WalkedFolder* largest = nullptr;
  for (outlook::WalkedFolder& folder : folders) {
    core::YieldEvents();
    int64_t messages = 0;
    for (int64_t i = 0; folder.isMailFolder && i < folder.items; ++i) {
      if (!folder.folder->IsOtherKind(i)) ++messages;
    }
    if (messages == 0) continue;
    ++mail.folders;
    mail.messages += messages;
    if (largest == nullptr || folder.items > largest->items) largest = &folder;
  }
  if (largest == nullptr) return;
  AddItem(*largest->folder, 0, mail, keys);
  if (largest->items > 1) AddItem(*largest->folder, largest->items - 1, mail, keys);
}

}  // namespace

std::vector<std::string> LookIntoStore(const std::string& path, FoundMail& mail) {
  mail.program = outlook::kApplication;
  mail.place = path;
  mail.profile = platform::FolderOf(path);
  mail.option = "MSOutlook";
  mail.identity = platform::EnsureUtf8(platform::FileNameOf(path));
  std::vector<std::string> keys;
  try {
    mail.bytes = platform::FileSize(path);
    outlook::PstNamespace outlook({path});
    for (const std::unique_ptr<outlook::Store>& store : outlook.Stores()) {
      mail.identity = store->DisplayName();
      if (store->HasPassword()) mail.state = State::kPassword;
      AddFolders(*store, mail, keys);
    }
    for (const outlook::RefusedStore& store : outlook.Refused()) {
      mail.state = State::kDamaged;
      mail.fault = store.reason;
    }
  } catch (const Error& error) {
    mail.state = State::kDamaged;
    mail.fault = error.Description();
  }
  return keys;
}

}  // namespace tarnwick::look
