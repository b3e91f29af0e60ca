// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/mailbox.h"

#include <algorithm>

#include "platform/charset.h"
#include "platform/error.h"
#include "platform/files.h"
#include "sources/letter_files.h"
#include "sources/mailbox_names.h"
#include "sources/mbox.h"
#include "sources/mh.h"
#include "sources/outlook_express4.h"

namespace tarnwick::sources {

namespace {

constexpr size_t kHeadSize = 2048;

bool Holds(const std::vector<std::string>& sorted, const std::string& name) {
  return std::binary_search(sorted.begin(), sorted.end(), name);
}

// Whether a file's name may be that of a mailbox, so that a look into it is worth while: no
// extension, one that mail programs use, or something that only looks like one.
bool MayBeMailbox(const std::string& name, const std::vector<std::string>& files) {
  if (name[0] == '.') return false;
  size_t dot = name.rfind('.');
  if (dot == std::string::npos) return true;
  std::string extension = platform::AsciiLower(name.substr(dot + 1));
  constexpr std::string_view kKnown[] = {"mbx", "mbox", "mbs", "mail"};
  if (std::find(std::begin(kKnown), std::end(kKnown), extension) != std::end(kKnown)) return true;
  bool isNumber = extension.find_first_not_of("0123456789") == std::string::npos;
  constexpr size_t kUsualExtension = 5;
  return isNumber || extension.size() > kUsualExtension || Holds(files, name + ".msf") ||
         Holds(files, name + ".snm");
}

std::string Head(const std::string& path) {
  std::string head(kHeadSize, '\0');
  try {
    platform::InputFile file(path);
    head.resize(file.ReadAt(0, head.data(), head.size()));
  } catch (const Error&) {
    head.clear();
  }
  return head;
}

bool EndsIn(std::string_view name, std::string_view extension) {
  return name.size() > extension.size() &&
         platform::SameWord(name.substr(name.size() - extension.size()), extension);
}

// The program that wrote an mbox file.
std::string ProgramOf(const std::string& folder, const std::string& file,
                      const platform::FolderContent& content, std::string_view head) {
  bool isMozillas = EndsIn(WithoutSeparator(folder), ".sbd") ||
                    std::any_of(content.files.begin(), content.files.end(),
                                [](const std::string& name) { return EndsIn(name, ".msf"); });
  if (isMozillas) return "Thunderbird";
  if (Holds(content.files, file + ".snm")) return "Netscape Mail";
  if (head.starts_with("From ???@???")) return "Eudora";
  if (file == "mbox" && EndsIn(WithoutSeparator(folder), ".mbox")) return "Apple Mail";
  return "mbox";
}

}  // namespace

bool MailboxFinder::IsPart(const std::string& folder, const platform::FolderContent& content) {
  std::string name = LastName(folder);
  return (name == "cur" || name == "new" || name == "tmp") && content.folders.empty() &&
         IsMaildir(FolderAbove(folder));
}

std::vector<Mailbox> MailboxFinder::In(const std::string& folder,
                                       const platform::FolderContent& content) {
  std::vector<Mailbox> found;
  if (Holds(content.folders, "cur") && Holds(content.folders, "new")) {
    found.push_back(OfMaildir(folder, content));
    folders_[folder] = MailboxKind::kMaildir;
  }
  bool isMh = IsMhFolder(folder, content);
  if (isMh) {
    found.push_back(OfMh(folder, content));
    folders_[folder] = MailboxKind::kMh;
  }
  std::vector<std::string> letters = LetterFilesIn(content.files);
  if (!letters.empty()) {
    bool isApples = KindOfLetterFile(letters.front()) == LetterFileKind::kApple;
    found.push_back(OfLetterFiles(folder, isApples));
    folders_[folder] = MailboxKind::kLetterFiles;
  }
  for (const std::string& file : content.files) {
    if (isMh && IsMhName(file)) continue;
    if (KindOfLetterFile(file) == LetterFileKind::kNone && MayBeMailbox(file, content.files)) {
      AddFile(folder, file, content, found);
    }
  }
  return found;
}

void MailboxFinder::AddFile(const std::string& folder, const std::string& file,
                            const platform::FolderContent& content, std::vector<Mailbox>& found) {
  std::string head = Head(folder + file);
  Mailbox mailbox;
  mailbox.path = folder + file;
  if (IsOutlookExpress4(head)) {
    mailbox.kind = MailboxKind::kOutlookExpress4;
    mailbox.application = "Outlook Express 4";
  } else if (IsMbox(head)) {
    mailbox.application = ProgramOf(folder, file, content, head);
  } else {
    return;
  }
  std::string name = file;
  for (std::string_view extension : {".mbx", ".mbox", ".mbs"}) {
    if (EndsIn(name, extension)) name.resize(name.size() - extension.size());
  }
  if (mailbox.application == "Apple Mail") {
    Name(mailbox, folder, {});
  } else {
    Name(mailbox, folder, {name});
  }
  found.push_back(std::move(mailbox));
}

// Finishes the names of a mailbox. names: those known, from the top; folder: where the first of
// them lies.
void MailboxFinder::Name(Mailbox& mailbox, const std::string& folder,
                         std::vector<std::string> names) const {
  std::string above = folder;
  for (std::string last = LastName(above); !last.empty(); last = LastName(above)) {
    std::string parent = NameOfHolder(last);
    bool isNested = !parent.empty();
    bool liesInFolders =
        mailbox.kind == MailboxKind::kLetterFiles || mailbox.kind == MailboxKind::kMh;
    if (!isNested && liesInFolders && folders_.contains(above)) {
      parent = last;
      isNested = true;
    }
    if (!isNested) break;
    names.insert(names.begin(), parent);
    above = FolderAbove(above);
  }
  for (std::string& name : names) name = platform::EnsureUtf8(name);
  if (names.empty()) names.push_back(platform::EnsureUtf8(LastName(folder)));
  mailbox.name = names.back();
  if (names.size() > 1) {
    for (const std::string& name : names) {
      mailbox.fullName += mailbox.fullName.empty() ? name : "." + name;
    }
  }
  mailbox.root = above;
  mailbox.identity = platform::EnsureUtf8(LastName(above));
  for (const std::string& name : names) {
    MailboxRole role = RoleOfName(name);
    // What lies in deleted mail was deleted with it.
    if (!IsLeftOut(mailbox.role) && role != MailboxRole::kOther) mailbox.role = role;
  }
}

Mailbox MailboxFinder::OfMaildir(const std::string& folder,
                                 const platform::FolderContent& content) const {
  Mailbox mailbox;
  mailbox.kind = MailboxKind::kMaildir;
  mailbox.application = "Maildir";
  mailbox.path = folder;
  std::string name = LastName(folder);
  std::string above = FolderAbove(folder);
  auto parent = folders_.find(above);
  if (name.starts_with('.') && name.size() > 1 && parent != folders_.end() &&
      parent->second == MailboxKind::kMaildir) {
    Name(mailbox, FolderAbove(above), PartsOf(name.substr(1)));
    return mailbox;
  }
  // The root of a server's folders is the inbox itself.
  bool isRoot =
      platform::SameWord(name, "maildir") ||
      std::any_of(content.folders.begin(), content.folders.end(),
                  [&](const std::string& sub) { return sub[0] == '.' && IsMaildir(folder + sub); });
  Name(mailbox, above, {isRoot ? "Inbox" : name});
  return mailbox;
}

Mailbox MailboxFinder::OfMh(const std::string& folder,
                            const platform::FolderContent& content) const {
  Mailbox mailbox;
  mailbox.kind = MailboxKind::kMh;
  mailbox.path = folder;
  mailbox.application = ProgramOfMh(content);
  Name(mailbox, FolderAbove(folder), {LastName(folder)});
  return mailbox;
}

Mailbox MailboxFinder::OfLetterFiles(const std::string& folder, bool isApples) const {
  Mailbox mailbox;
  mailbox.kind = MailboxKind::kLetterFiles;
  mailbox.path = folder;
  mailbox.application = isApples ? "Apple Mail" : ProgramOfFolder(folder);
  std::string box = isApples ? AppleMailboxOf(folder) : std::string();
  if (box.empty()) {
    Name(mailbox, FolderAbove(folder), {LastName(folder)});
  } else {
    Name(mailbox, box, {});
  }
  return mailbox;
}

std::vector<Mailbox> MailboxAt(const std::string& path) {
  MailboxFinder finder;
  std::string absolute = platform::AbsolutePath(path);
  if (platform::FolderExists(absolute)) {
    std::string folder = platform::WithSeparator(absolute);
    auto content = platform::ListFolder(folder);
    return content ? finder.In(folder, *content) : std::vector<Mailbox>();
  }
  std::string folder = platform::FolderOf(absolute);
  auto content = platform::ListFolder(folder);
  if (!content) return {};
  content->files = {platform::FileNameOf(absolute)};
  content->folders.clear();
  std::vector<Mailbox> found = finder.In(folder, *content);
  for (Mailbox& mailbox : found) {
    if (mailbox.kind == MailboxKind::kLetterFiles) mailbox.path = absolute;
  }
  return found;
}

MailboxSearch FindMailboxes(const std::string& folder, const std::function<bool()>& goOn) {
  MailboxSearch search;
  MailboxFinder finder;
  platform::FolderWalk walk(platform::AbsolutePath(folder));
  while (goOn() && walk.Next()) {
    if (MailboxFinder::IsPart(walk.Path(), walk.Content())) continue;
    for (Mailbox& mailbox : finder.In(walk.Path(), walk.Content())) {
      search.mailboxes.push_back(std::move(mailbox));
    }
  }
  search.forbidden = walk.Forbidden();
  return search;
}

bool HoldsMailbox(const std::string& folder) {
  if (folder.empty() || !platform::FolderExists(folder)) return false;
  MailboxFinder finder;
  platform::FolderWalk walk(platform::AbsolutePath(folder));
  while (walk.Next()) {
    if (!finder.In(walk.Path(), walk.Content()).empty()) return true;
  }
  return false;
}

std::unique_ptr<LetterReader> OpenMailbox(const Mailbox& mailbox) {
  if (IsFile(mailbox.kind)) {
    bool hasIndex = mailbox.kind == MailboxKind::kOutlookExpress4;
    return OpenMailboxFile(mailbox.kind, mailbox.path, hasIndex ? IndexBeside(mailbox.path) : "");
  }
  LetterFiles::StateOf stateOf;
  if (mailbox.kind == MailboxKind::kMaildir) stateOf = StateInMaildir;
  if (mailbox.kind == MailboxKind::kMh) {
    stateOf = [sequences = MhSequences(SequencesIn(mailbox.path))](const std::string& path) {
      return sequences.StateOf(platform::FileNameOf(path));
    };
  }
  return std::make_unique<LetterFiles>(LetterPathsOf(mailbox), std::move(stateOf));
}

std::unique_ptr<LetterReader> OpenMailboxFile(MailboxKind kind, const intake::RawMessage& file,
                                              const std::string& index) {
  if (kind == MailboxKind::kOutlookExpress4) {
    return std::make_unique<OutlookExpress4Reader>(file, index);
  }
  return std::make_unique<MboxReader>(file);
}

std::vector<std::string> LetterPathsOf(const Mailbox& mailbox) {
  if (mailbox.kind == MailboxKind::kMaildir) return MaildirFiles(mailbox.path);
  if (mailbox.kind == MailboxKind::kMh) return MhFiles(mailbox.path);
  return LetterPathsIn(mailbox.path);
}

}  // namespace tarnwick::sources
