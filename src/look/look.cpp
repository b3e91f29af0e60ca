// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "look/look.h"

#include <algorithm>
#include <map>
#include <memory>

#include "core/guard.h"
#include "core/messages.h"
#include "core/text.h"
#include "intake/sender_rules.h"
#include "look/outlook_stores.h"
#include "oe/identity_stores.h"
#include "oe/import.h"
#include "oe/sample.h"
#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"
#include "platform/registry.h"
#include "sources/import.h"
#include "sources/mailbox_names.h"
#include "sources/sample.h"

namespace tarnwick::look {

namespace {

using sources::LastName;

bool EndsIn(std::string_view name, std::string_view extension) {
  return name.size() >= extension.size() &&
         platform::SameWord(name.substr(name.size() - extension.size()), extension);
}

void AddYears(int first, int last, FoundMail& mail) {
  if (first != 0) mail.firstYear = mail.firstYear == 0 ? first : std::min(mail.firstYear, first);
  mail.lastYear = std::max(mail.lastYear, last);
}

// One look while it lasts.
class Looker {
 public:
  Looker(bool ofRepository, const Progress& progress)
      : ofRepository_(ofRepository), progress_(progress) {}

  Found Run(const std::string& place) {
    std::string absolute = platform::AbsolutePath(place);
    if (platform::FolderExists(absolute)) {
      Walk(absolute);
    } else if (platform::FileExists(absolute)) {
      TakeFile(absolute);
    } else {
      throw Error(ErrorNumber::kFileNotFound, "File not found: " + place);
    }
    for (FoundMail& mail : found_.mail) Settle(mail);
    return std::move(found_);
  }

 private:
  // Where an identity of Outlook Express keeps its store.
  struct Store {
    std::string user;
    std::string identity;
    std::string profile;
  };
  // What was tried of a place.
  struct Tried {
    int known = 0;
    int unknown = 0;
  };

  void Walk(const std::string& root) {
    platform::FolderWalk walk(root);
    while (walk.Next()) {
      ++found_.foldersSeen;
      found_.filesSeen += static_cast<int64_t>(walk.Content().files.size());
      if (!progress_(found_, walk.Path())) {
        found_.isStopped = true;
        break;
      }
      TakeFolder(walk.Path(), walk.Content());
    }
    found_.forbidden = walk.Forbidden();
  }

  void TakeFile(const std::string& path) {
    std::string folder = platform::FolderOf(path);
    platform::FolderContent content;
    content.files = {platform::FileNameOf(path)};
    found_.filesSeen = 1;
    TakeFolder(folder, content);
  }

  void TakeFolder(const std::string& folder, const platform::FolderContent& content) {
    if (sources::MailboxFinder::IsPart(folder, content)) return;
    LeaveUser(folder);
    std::vector<std::string> stores;
    for (const std::string& name : content.files) {
      bool isHive = platform::SameWord(name, "ntuser.dat") || platform::SameWord(name, "user.reg");
      if (isHive) EnterUser(folder);
      if (EndsIn(name, ".dbx")) stores.push_back(name);
      if (EndsIn(name, ".pst") || EndsIn(name, ".ost")) TakeOutlook(folder + name);
    }
    if (!stores.empty()) TakeOutlookExpress(folder, stores);
    for (const sources::Mailbox& mailbox : finder_.In(folder, content)) TakeMailbox(mailbox);
  }

  // Below a folder with the settings of a Windows user all mail is theirs.
  void LeaveUser(const std::string& folder) {
    while (!users_.empty() && !folder.starts_with(users_.back())) users_.pop_back();
  }
  std::string User() const {
    return users_.empty() ? "" : platform::EnsureUtf8(LastName(users_.back()));
  }

  void EnterUser(const std::string& folder) {
    users_.push_back(folder);
    core::GuardedRun(
        "Look",
        [&] {
          std::unique_ptr<platform::Registry> registry = platform::OpenProfile(folder);
          for (const std::string& key :
               registry->SubKeys(oe::kIdentitiesKey).value_or(std::vector<std::string>())) {
            AddIdentity(*registry, folder, key);
          }
        },
        core::Report::kLog);
  }

  void AddIdentity(platform::Registry& registry, const std::string& folder,
                   const std::string& key) {
    auto name = registry.Value(std::string(oe::kIdentitiesKey) + "\\" + key, "UserName");
    auto root = registry.Value(oe::StoreKeyOf(key), oe::kStoreRoot);
    if (!root || root->text.size() > oe::kMaxValueLength) return;
    for (const std::string& place : oe::StorePlaces(registry, root->text, folder)) {
      stores_.try_emplace(platform::AbsolutePath(place),
                          Store{User(), name ? name->text : key, folder});
    }
  }

  void TakeOutlookExpress(const std::string& folder, const std::vector<std::string>& files) {
    FoundMail mail;
    mail.program = oe::kApplication;
    mail.place = mail.profile = folder;
    mail.user = User();
    mail.identity = platform::EnsureUtf8(LastName(folder));
    mail.option = "OutlookExpress";
    if (auto store = stores_.find(folder); store != stores_.end()) {
      mail.user = store->second.user;
      mail.identity = store->second.identity;
      mail.profile = store->second.profile;
    }
    Tried tried;
    bool hasList = false;
    bool hasUnmarked = false;
    for (const std::string& name : files) {
      platform::DbxContent content = platform::ReadDbxContent(folder + name);
      hasList = hasList || content == platform::DbxContent::kFolderList;
      bool isMail =
          !platform::SameWord(name, "offline.dbx") && !platform::SameWord(name, "pop3uidl.dbx");
      hasUnmarked = hasUnmarked || (isMail && content == platform::DbxContent::kUnmarked);
      if (content != platform::DbxContent::kMessages) continue;
      oe::StoreSample sample = storeSampler_.Sample(folder + name);
      ++mail.folders;
      mail.messages += sample.messages;
      mail.bytes += platform::FileSize(folder + name);
      AddYears(sample.firstYear, sample.lastYear, mail);
      if (sample.isDamaged) mail.state = State::kDamaged;
      // What a load leaves out says nothing of whether there was one.
      if (sources::IsLeftOut(sources::RoleOfName(name.substr(0, name.rfind('.'))))) continue;
      for (const std::string& key : sample.keys) Try(key, tried);
    }
    // Other programs keep other things in files of that name.
    if (mail.folders == 0 && !hasList) return;
    if (hasUnmarked) mail.state = State::kDamaged;
    Add(std::move(mail), tried);
  }

  void TakeOutlook(const std::string& path) {
    FoundMail mail;
    mail.user = User();
    Tried tried;
    for (const std::string& key : LookIntoStore(path, mail)) Try(key, tried);
    Add(std::move(mail), tried);
  }

  void TakeMailbox(const sources::Mailbox& mailbox) {
    sources::MailboxSample sample = mailboxSampler_.Sample(mailbox);
    auto [entry, isNew] =
        others_.try_emplace(mailbox.root + "\n" + mailbox.application, found_.mail.size());
    if (isNew) {
      FoundMail mail;
      mail.program = mailbox.application;
      mail.place = mailbox.root;
      mail.user = User();
      mail.identity = mailbox.identity;
      mail.option = sources::kOption;
      Add(std::move(mail), {});
    }
    FoundMail& mail = found_.mail[entry->second];
    ++mail.folders;
    mail.messages += sample.letters;
    mail.isEstimate = mail.isEstimate || sample.isEstimate;
    mail.bytes += sample.bytes;
    AddYears(sample.firstYear, sample.lastYear, mail);
    if (sample.isDamaged) mail.state = State::kDamaged;
    if (!sources::IsLeftOut(mailbox.role)) Try(sample.key, tried_[entry->second]);
    mail.mailboxes.push_back(mailbox);
  }

  void Try(const std::string& key, Tried& tried) const {
    if (!ofRepository_ || key.empty()) return;
    ++(intake::IsEmailExist(key) ? tried.known : tried.unknown);
  }

  void Add(FoundMail mail, Tried tried) {
    found_.mail.push_back(std::move(mail));
    tried_.push_back(tried);
  }

  void Settle(FoundMail& mail) const {
    if (mail.mailboxes.size() == 1) mail.place = mail.mailboxes.front().path;
    const Tried& tried = tried_[static_cast<size_t>(&mail - found_.mail.data())];
    if (tried.known > 0) mail.stored = tried.unknown > 0 ? Stored::kPartly : Stored::kYes;
  }

  bool ofRepository_;
  const Progress& progress_;
  Found found_;
  std::vector<Tried> tried_;  // of each of them
  std::vector<std::string> users_;
  std::map<std::string, Store> stores_;   // by folder
  std::map<std::string, size_t> others_;  // by place and program
  sources::MailboxFinder finder_;
  oe::StoreSampler storeSampler_;
  sources::MailboxSampler mailboxSampler_;
};

}  // namespace

Found Look(const std::string& place, bool ofRepository, const Progress& progress) {
  return Looker(ofRepository, progress).Run(place);
}

}  // namespace tarnwick::look
