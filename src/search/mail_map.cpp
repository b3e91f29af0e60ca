// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/mail_map.h"

#include <algorithm>

#include "database/connection.h"
#include "database/recordset.h"
#include "intake/message_state.h"
#include "platform/utf8.h"
#include "repository/repository.h"

namespace tarnwick::search {

namespace {

using platform::FoldCase;
using repository::RepositoryDb;

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

int32_t DayOf(int64_t seconds) {
  constexpr int64_t kDaySeconds = 86400;
  int64_t day = seconds / kDaySeconds - (seconds % kDaySeconds < 0 ? 1 : 0);
  constexpr int64_t kMost = (1 << 23) - 1;  // what a letter has room for: 22,000 years
  return static_cast<int32_t>(std::clamp(day, -kMost, kMost));
}

}  // namespace

void TextPool::Add(int64_t owner, std::string_view text) {
  begins_.push_back(texts_.size());
  owners_.push_back(owner);
  texts_.append(FoldCase(text)).append(1, '\0');
}

void TextPool::AddOwnersWith(std::string_view part, KeySet& owners) const {
  std::string wanted = FoldCase(part);
  size_t found = texts_.find(wanted);
  while (found < texts_.size()) {
    auto next = std::upper_bound(begins_.begin(), begins_.end(), found);
    owners.Add(owners_[static_cast<size_t>(next - begins_.begin()) - 1]);
    if (next == begins_.end()) break;
    found = texts_.find(wanted, *next);
  }
}

MailMap& Map() {
  static MailMap map;
  return map;
}

uint32_t MailMap::Names::NumberOf(std::string_view first, std::string_view second) {
  key.assign(first).append(1, '\0').append(second);
  auto [place, isNew] = numbers.try_emplace(key, static_cast<uint32_t>(pairs.size()));
  if (isNew) {
    std::string_view whole = place->first;  // stays where it is
    pairs.emplace_back(whole.substr(0, first.size()), whole.substr(first.size() + 1));
  }
  return place->second;
}

bool MailMap::Read(int64_t milliseconds) {
  return steps_.Run(
      milliseconds, [this] { return isUnfit_ || IsComplete(); },
      [this](int64_t rows) { ReadNext(rows); });
}

void MailMap::ReadNext(int64_t rows) {
  if (!messages_.IsAtEnd()) {
    ReadMessages(rows);
  } else if (!to_.IsAtEnd()) {
    ReadLinks("ToRecipient", "Address, Name", rows, people_, recipients_, to_);
  } else if (!cc_.IsAtEnd()) {
    ReadLinks("ccRecipient", "Address, Name", rows, people_, recipients_, cc_);
  } else if (!attachments_.IsAtEnd()) {
    ReadLinks("Attachment", "FileName, Null AS Nothing", rows, files_, attached_, attachments_);
  } else if (!contactNames_.IsAtEnd()) {
    ReadContacts("MeContact", "ID AS Owner, Name", rows, contactNames_);
  } else {
    ReadContacts("ContactEmail", "ContactID, Address", rows, contactAddresses_);
  }
}

bool MailMap::IsComplete() {
  if (isUnfit_ || !RepositoryDb().IsOpen()) return false;
  messages_.end = LastKey("Email");
  to_.end = LastKey("ToRecipient");
  cc_.end = LastKey("ccRecipient");
  attachments_.end = LastKey("Attachment");
  contactNames_.end = LastKey("MeContact");
  contactAddresses_.end = LastKey("ContactEmail");
  return messages_.IsAtEnd() && to_.IsAtEnd() && cc_.IsAtEnd() && attachments_.IsAtEnd() &&
         contactNames_.IsAtEnd() && contactAddresses_.IsAtEnd();
}

void MailMap::ForgetContacts() {
  contacts_ = {};
  contactNames_ = contactAddresses_ = {};
}

void MailMap::ReadMessages(int64_t rows) {
  std::string sql =
      NextRows("AddressFrom, NameFrom, Identity, Folder, FromTo, Direction, State, ReceivedTime",
               "Email", messages_.last, rows);
  ReserveByKey(letters_, messages_.end, KeySet::kHighestKey);
  RepositoryDb().ReadRows(sql, [&](const jet::PassingRow& row) {
    int64_t key = row.Int(0);
    int64_t contact = row.Int(5);
    messages_.last = key;
    isUnfit_ = isUnfit_ || key > KeySet::kHighestKey || contact > KeySet::kHighestKey ||
               key > kKeysAtFirst + kSparsest * ++read_;
    if (isUnfit_ || key < 0) return;
    if (static_cast<size_t>(key) >= letters_.size()) letters_.resize(static_cast<size_t>(key) + 1);
    Message& letter = letters_[static_cast<size_t>(key)];
    letter.sender = people_.NumberOf(FoldCase(row.Text(1)), FoldCase(row.Text(2)));
    letter.folder = folders_.NumberOf(row.Text(3), row.Text(4));
    letter.contact = contact > 0 ? static_cast<uint32_t>(contact) & kNoContact : kNoContact;
    letter.isReceived = platform::EqualIgnoringCase(row.Text(6), "In") ? 1 : 0;
    letter.isSent = platform::EqualIgnoringCase(row.Text(6), "Out") ? 1 : 0;
    letter.day = DayOf(row.Int(8));
    letter.states = 0;
    std::string_view states = row.Text(7);
    for (size_t i = 0; i < std::size(intake::kStateMarks); ++i) {
      bool has = states.find(intake::kStateMarks[i].letter) != std::string_view::npos;
      letter.states |= has ? 1U << i & UINT8_MAX : 0U;
    }
  });
}

void MailMap::ReadLinks(std::string_view table, std::string_view columns, int64_t rows,
                        Names& names, Links& links, Progress& progress) {
  std::string sql = NextRows(std::string("EmailID, ").append(columns), table, progress.last, rows);
  RepositoryDb().ReadRows(sql, [&](const jet::PassingRow& row) {
    progress.last = row.Int(0);
    int64_t key = row.Int(1);
    if (key < 0 || key > KeySet::kHighestKey) return;
    links.Add(static_cast<uint32_t>(key),
              names.NumberOf(FoldCase(row.Text(2)), FoldCase(row.Text(3))));
  });
}

void MailMap::ReadContacts(std::string_view table, std::string_view columns, int64_t rows,
                           Progress& progress) {
  RepositoryDb().ReadRows(NextRows(columns, table, progress.last, rows),
                          [&](const jet::PassingRow& row) {
                            progress.last = row.Int(0);
                            contacts_.Add(row.Int(1), row.Text(2));
                          });
}

std::vector<bool> MailMap::Names::With(std::string_view text) const {
  std::string wanted = FoldCase(text);
  std::vector<bool> with(pairs.size());
  for (size_t i = 0; i < with.size(); ++i) {
    with[i] = Contains(pairs[i].first, wanted) || Contains(pairs[i].second, wanted);
  }
  return with;
}

void MailMap::AddLinked(const Links& links, const std::vector<bool>& wanted, KeySet& keys) {
  links.ForEach([&](uint32_t message, uint32_t name) {
    if (wanted[name]) keys.Add(message);
  });
}

template <typename Test>
void MailMap::AddLetters(const Test& test, KeySet& keys) const {
  for (size_t key = 0; key < letters_.size(); ++key) {
    const Message& letter = letters_[key];
    if (letter.sender != kNone && test(letter)) keys.Add(static_cast<int64_t>(key));
  }
}

void MailMap::AddWrittenBy(std::string_view text, KeySet& keys) const {
  std::vector<bool> wanted = people_.With(text);
  AddLetters([&](const Message& letter) { return wanted[letter.sender]; }, keys);
}

void MailMap::AddOfContacts(std::string_view text, bool received, bool sent, KeySet& keys) const {
  KeySet contacts;
  contacts_.AddOwnersWith(text, contacts);
  AddLetters(
      [&](const Message& letter) {
        bool isOne = letter.contact != kNoContact && contacts.Holds(letter.contact);
        return isOne && ((received && sent) || (received && letter.isReceived != 0) ||
                         (sent && letter.isSent != 0));
      },
      keys);
}

void MailMap::AddReceivedBy(std::string_view text, KeySet& keys) const {
  AddLinked(recipients_, people_.With(text), keys);
}

void MailMap::AddWithFile(std::string_view text, KeySet& keys) const {
  AddLinked(attached_, files_.With(text), keys);
}

void MailMap::AddInFolders(std::string_view text, KeySet& keys) const {
  std::string part = FoldCase(text);
  std::vector<bool> wanted;
  for (const auto& [identity, name] : folders_.pairs) {
    wanted.push_back(Contains(FoldCase(name), part));
  }
  AddLetters([&](const Message& letter) { return wanted[letter.folder]; }, keys);
}

void MailMap::AddInFolder(const std::string& identity, const std::string& name,
                          KeySet& keys) const {
  auto found = folders_.numbers.find(identity + '\0' + name);
  if (found == folders_.numbers.end()) return;
  AddLetters([&](const Message& letter) { return letter.folder == found->second; }, keys);
}

void MailMap::AddInState(char letter, KeySet& keys) const {
  uint8_t wanted = 0;
  for (size_t i = 0; i < std::size(intake::kStateMarks); ++i) {
    if (intake::kStateMarks[i].letter == letter) wanted = static_cast<uint8_t>(1U << i);
  }
  AddLetters([&](const Message& message) { return (message.states & wanted) != 0; }, keys);
}

std::optional<MailMap::Traits> MailMap::Of(int64_t message) const {
  auto place = static_cast<size_t>(message);
  if (message < 0 || place >= letters_.size() || letters_[place].sender == kNone) {
    return std::nullopt;
  }
  const Message& letter = letters_[place];
  return Traits{letter.day, letter.isReceived != 0,
                letter.contact == kNoContact ? 0 : letter.contact};
}

// Where some have been deleted, it takes a look at each to see which.
void MailMap::CountLeft(std::vector<Folder>& folders) const {
  for (Folder& folder : folders) folder.messages = 0;
  RepositoryDb().ReadRows("SELECT ID FROM Email", [&](const jet::PassingRow& row) {
    auto key = static_cast<size_t>(row.Int(0));
    uint32_t folder = key < letters_.size() ? letters_[key].folder : kNone;
    if (folder != kNone) folders[folder].messages++;
  });
}

std::vector<Folder> MailMap::Folders() const {
  std::vector<Folder> folders;
  for (const auto& [identity, name] : folders_.pairs) {
    folders.push_back({std::string(identity), std::string(name)});
  }
  int64_t known = 0;
  for (const Message& letter : letters_) {
    if (letter.folder == kNone) continue;
    folders[letter.folder].messages++;
    known++;
  }
  // By a recordset, which has it out of the column cache: ten million take the engine a pass over
  // more than it keeps of the file.
  jet::Recordset stored;
  stored.Open("SELECT Count(*) AS N FROM Email", RepositoryDb());
  if (LastKey("Email") > messages_.last || stored.Field(0).AsInt() != known) CountLeft(folders);
  std::erase_if(folders, [](const Folder& folder) { return folder.messages == 0; });
  std::sort(folders.begin(), folders.end(), [](const Folder& a, const Folder& b) {
    return std::pair(FoldCase(a.identity), FoldCase(a.name)) <
           std::pair(FoldCase(b.identity), FoldCase(b.name));
  });
  return folders;
}

}  // namespace tarnwick::search
