// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "sources/mailbox_names.h"

#include <algorithm>

#include "platform/charset.h"
#include "platform/files.h"
#include "platform/folder_search.h"
#include "sources/letter_files.h"
#include "sources/mailbox.h"

namespace tarnwick::sources {

namespace {

// Lower case, as platform::FoldCase gives it.
constexpr std::string_view kSentNames[] = {"sent",
                                           "sent items",
                                           "sent mail",
                                           "sent-mail",
                                           "sent messages",
                                           "sent objects",
                                           "out",
                                           "gesendet",
                                           "gesendete objekte",
                                           "gesendete elemente",
                                           "éléments envoyés",
                                           "envoyés",
                                           "messages envoyés",
                                           "elementos enviados",
                                           "enviados",
                                           "posta inviata",
                                           "inviata",
                                           "itens enviados",
                                           "verzonden items",
                                           "verzonden",
                                           "skickat",
                                           "sendt post",
                                           "отправленные",
                                           "надіслані",
                                           "изпратени",
                                           "wysłane",
                                           "elementy wysłane",
                                           "odeslaná pošta"};
constexpr std::string_view kDraftNames[] = {"drafts",     "draft",    "templates",  "entwürfe",
                                            "brouillons", "bozze",    "borradores", "rascunhos",
                                            "concepten",  "черновики"};
constexpr std::string_view kDeletedNames[] = {"trash",
                                              "deleted items",
                                              "deleted messages",
                                              "papierkorb",
                                              "gelöschte objekte",
                                              "gelöschte elemente",
                                              "corbeille",
                                              "éléments supprimés",
                                              "papelera",
                                              "elementos eliminados",
                                              "cestino",
                                              "posta eliminata",
                                              "lixeira",
                                              "itens excluídos",
                                              "verwijderde items",
                                              "prullenbak",
                                              "корзина",
                                              "удаленные"};
constexpr std::string_view kOutboxNames[] = {
    "outbox",          "unsent messages", "postausgang", "boîte d'envoi", "bandeja de salida",
    "posta in uscita", "исходящие"};

template <size_t Count>
bool IsOneOf(const std::string& folded, const std::string_view (&names)[Count]) {
  return std::find(std::begin(names), std::end(names), folded) != std::end(names);
}

}  // namespace

MailboxRole RoleOfName(const std::string& name) {
  std::string folded = platform::FoldCase(name);
  if (IsOneOf(folded, kSentNames)) return MailboxRole::kSent;
  if (IsOneOf(folded, kDraftNames)) return MailboxRole::kDrafts;
  if (IsOneOf(folded, kDeletedNames)) return MailboxRole::kDeleted;
  return IsOneOf(folded, kOutboxNames) ? MailboxRole::kOutbox : MailboxRole::kOther;
}

std::string WithoutSeparator(const std::string& folder) {
  return folder.substr(0, folder.empty() ? 0 : folder.size() - 1);
}

std::string LastName(const std::string& folder) {
  return platform::FileNameOf(WithoutSeparator(folder));
}

std::string FolderAbove(const std::string& folder) {
  return platform::FolderOf(WithoutSeparator(folder));
}

std::string NameOfHolder(const std::string& name) {
  for (std::string_view extension : {".sbd", ".fol", ".mbox", ".imapmbox"}) {
    if (name.size() > extension.size() &&
        platform::SameWord(name.substr(name.size() - extension.size()), extension)) {
      return name.substr(0, name.size() - extension.size());
    }
  }
  constexpr std::string_view kDirectory = ".directory";
  if (name.starts_with('.') && name.ends_with(kDirectory) && name.size() > kDirectory.size() + 1) {
    return name.substr(1, name.size() - kDirectory.size() - 1);
  }
  return {};
}

std::string FromServerName(const std::string& name) {
  std::string text;
  for (size_t i = 0; i < name.size(); ++i) {
    size_t end = name[i] == '&' ? name.find('-', i) : std::string::npos;
    if (end == std::string::npos) {
      text.push_back(name[i]);
      continue;
    }
    std::string coded = name.substr(i + 1, end - i - 1);
    std::replace(coded.begin(), coded.end(), ',', '/');
    // Ordinary UTF-7 but for its mark.
    auto piece = platform::CharsetToUtf8("+" + coded + "-", "utf-7");
    bool isSound = piece && piece->find("\xEF\xBF\xBD") == std::string::npos;
    text += coded.empty() ? "&" : isSound ? *piece : name.substr(i, end - i + 1);
    i = end;
  }
  return text;
}

std::vector<std::string> PartsOf(const std::string& name) {
  std::vector<std::string> parts;
  for (size_t begin = 0; begin <= name.size();) {
    size_t end = std::min(name.find('.', begin), name.size());
    if (end > begin) parts.push_back(FromServerName(name.substr(begin, end - begin)));
    begin = end + 1;
  }
  if (parts.empty()) parts.push_back(name);
  return parts;
}

bool IsMaildir(const std::string& folder) {
  std::string path = platform::WithSeparator(folder);
  return platform::FolderExists(path + "cur") && platform::FolderExists(path + "new");
}

std::string ProgramOfFolder(const std::string& folder) {
  for (const char* program : {"Windows Live Mail", "Windows Mail"}) {
    std::string part = platform::kSeparator + platform::WithSeparator(program);
    if (folder.find(part) != std::string::npos) return program;
  }
  return "Message files";
}

std::string AppleMailboxOf(const std::string& folder) {
  // "INBOX.mbox/Messages/", later "INBOX.mbox/ID/Data/3/Messages/".
  constexpr int kMostAbove = 8;
  std::string above = folder;
  for (int i = 0; i < kMostAbove && !above.empty(); ++i) {
    if (!NameOfHolder(LastName(above)).empty()) return above;
    above = FolderAbove(above);
  }
  return {};
}

std::vector<std::string> LetterPathsIn(const std::string& folder) {
  if (!folder.ends_with(platform::kSeparator)) return {folder};
  std::vector<std::string> paths;
  auto content = platform::ListFolder(folder);
  if (!content) return paths;
  for (const std::string& name : LetterFilesIn(content->files)) paths.push_back(folder + name);
  return paths;
}

}  // namespace tarnwick::sources
