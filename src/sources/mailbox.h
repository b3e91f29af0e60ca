// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Mailboxes: the folders of mail programs other than Outlook Express 5 and 6 and Outlook, as they
// lie on a disk, and what they are called. Nothing here writes.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "intake/raw_message.h"
#include "platform/folder_search.h"
#include "sources/letter_reader.h"

namespace tarnwick::sources {

enum class MailboxKind { kMbox, kMaildir, kMh, kLetterFiles, kOutlookExpress4 };

enum class MailboxRole {
  kOther,
  kSent,
  // Not read unless the rules say so, or somebody asks for it.
  kDrafts,
  kDeleted,
  kOutbox,
};

struct Mailbox {
  MailboxKind kind = MailboxKind::kMbox;
  std::string path;  // a file (of kLetterFiles: the only letter), or a folder with its separator
  std::string application;  // "Thunderbird"; the program that wrote it, as far as that shows
  std::string identity;     // the account, or the folder that it lies in
  std::string name;         // "Inbox"
  std::string fullName;     // "Inbox.Project", of one that lies in another; else ""
  MailboxRole role = MailboxRole::kOther;
  std::string root;  // the folder, with its separator, in which the topmost of its folders lies
};

constexpr bool IsLeftOut(MailboxRole role) {
  return role == MailboxRole::kDrafts || role == MailboxRole::kDeleted ||
         role == MailboxRole::kOutbox;
}

// The role of a folder by its name, in the languages that mail programs came in.
MailboxRole RoleOfName(const std::string& name);

// Tells the mailboxes of one folder after the other, in the order of a walk: whether a folder of
// letters lies in another shows only then.
class MailboxFinder {
 public:
  // Those in a folder, or the folder itself. REQUIRES: the folders above it were asked about
  // before.
  std::vector<Mailbox> In(const std::string& folder, const platform::FolderContent& content);
  // True for a folder that only parts of a mailbox lie in: nothing more is in or below it.
  static bool IsPart(const std::string& folder, const platform::FolderContent& content);

 private:
  void AddFile(const std::string& folder, const std::string& file,
               const platform::FolderContent& content, std::vector<Mailbox>& found);
  void Name(Mailbox& mailbox, const std::string& folder, std::vector<std::string> names) const;
  Mailbox OfMaildir(const std::string& folder, const platform::FolderContent& content) const;
  Mailbox OfMh(const std::string& folder, const platform::FolderContent& content) const;
  Mailbox OfLetterFiles(const std::string& folder, bool isApples) const;

  // Those that hold letters themselves.
  std::map<std::string, MailboxKind> folders_;
};

// The mailbox that a path is, file or folder; none where there is none.
std::vector<Mailbox> MailboxAt(const std::string& path);

// All of a folder and below it. goOn is asked between folders; its false ends the search.
struct MailboxSearch {
  std::vector<Mailbox> mailboxes;
  std::vector<std::string> forbidden;
};
MailboxSearch FindMailboxes(const std::string& folder, const std::function<bool()>& goOn);
// Whether there is any.
bool HoldsMailbox(const std::string& folder);

// A mailbox that is a file; the rest are folders.
constexpr bool IsFile(MailboxKind kind) {
  return kind == MailboxKind::kMbox || kind == MailboxKind::kOutlookExpress4;
}

// Throws Error where it can't be read.
std::unique_ptr<LetterReader> OpenMailbox(const Mailbox& mailbox);
// One that is a file; index: the bytes of the file beside it (outlook_express4.h). What is in
// memory outlives the reader.
std::unique_ptr<LetterReader> OpenMailboxFile(MailboxKind kind, const intake::RawMessage& file,
                                              const std::string& index);
// The files of the letters of a mailbox that is a folder.
std::vector<std::string> LetterPathsOf(const Mailbox& mailbox);

}  // namespace tarnwick::sources
