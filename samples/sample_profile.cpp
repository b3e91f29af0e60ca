// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "samples/sample_profile.h"

#include <stdexcept>

#include "samples/dbx_builder.h"
#include "samples/mail_encoding.h"
#include "samples/profile_builder.h"
#include "samples/sample_letters.h"

namespace tarnwick::samples {

namespace {

constexpr const char* kInbox = "Inbox";
constexpr const char* kSentItems = "Sent Items";
constexpr const char* kWorkshop = "Workshop";
constexpr const char* kDrafts = "Drafts";

SampleMessage Base(const std::string& folder, const std::string& parent, const SamplePerson& from,
                   const std::string& when, const std::string& subject) {
  SampleMessage message;
  message.folder = folder;
  message.parent = parent;
  message.subject = subject;
  message.fromName = from.name;
  message.fromAddress = from.address;
  message.direction = folder == kSentItems ? "Out" : "In";
  auto date = DateTime::FromIso(when);
  if (!date) throw std::invalid_argument("no date: " + when);
  message.date = *date;
  if (message.direction == "In") {
    message.messageId = "<" + message.date.ToKeyText() + "." + from.address + ">";
  }
  return message;
}

// The store's index entry of a message. Its texts are lossy, as real ones are.
IndexedMessage Indexed(const SampleMessage& message, int number) {
  IndexedMessage indexed;
  indexed.text = message.raw;
  indexed.date = message.date;
  indexed.fraction = static_cast<uint32_t>(number * 1000);
  indexed.subject = ToLatin1(message.subject);
  indexed.messageId = message.messageId;
  indexed.senderName = ToLatin1(message.fromName);
  indexed.senderAddress = message.fromAddress;
  indexed.flagsDirect = number % 3 != 0;
  // Not read, replied to, forwarded, flagged: of each a few.
  if (number % 9 == 4) indexed.flags = 0x01;
  if (number % 5 == 2) indexed.flags |= 0x80000;
  if (number % 11 == 6) indexed.flags |= 0x100000;
  if (number % 8 == 3) indexed.flags |= 0x20;
  return indexed;
}

std::string StoreOf(const std::string& folder, bool twoLevels) {
  MessageStoreBuilder store;
  int number = 0;
  for (const SampleMessage& message : SampleMessages()) {
    if (message.folder == folder) store.AddMessage(Indexed(message, ++number));
  }
  store.Finish(twoLevels ? 5 : 51, twoLevels);
  return store.Bytes();
}

void AddDraft(std::vector<SampleMessage>& messages) {
  SampleMessage draft = Base(kDrafts, "Local Folders.Drafts", kClara, "2006-03-01 21:15:00",
                             "Speech for Edmund's sixtieth");
  draft.isTaken = false;
  draft.raw =
      HeaderLines(draft, Mailbox(kClara), Mailbox(kMina), draft.subject, PlainContent("us-ascii")) +
      "\r\nMina, don't show him. It begins with the story of the glue pot...\r\n";
  messages.push_back(draft);
}

}  // namespace

SampleMessage InboxLetter(const SamplePerson& from, const std::string& when,
                          const std::string& subject) {
  return Base(kInbox, "Local Folders.Inbox", from, when, subject);
}

SampleMessage SentLetter(const SamplePerson& /*to*/, const std::string& when,
                         const std::string& subject) {
  return Base(kSentItems, "Local Folders.Sent Items", kClara, when, subject);
}

SampleMessage WorkshopLetter(const SamplePerson& from, const std::string& when,
                             const std::string& subject) {
  return Base(kWorkshop, "Local Folders.Inbox.Workshop", from, when, subject);
}

const std::vector<SampleMessage>& SampleMessages() {
  static const std::vector<SampleMessage> messages = [] {
    std::vector<SampleMessage> all;
    AddPlainLetters(all);
    AddForeignLetters(all);
    AddStructuredLetters(all);
    AddOddLetters(all);
    AddDraft(all);
    return all;
  }();
  return messages;
}

void WriteSampleProfile(const std::string& folder) {
  ProfileBuilder profile(folder);
  std::string store = profile.AddIdentity("Main Identity");
  std::vector<StoredFolder> folders =
      StandardFolders(StoreOf(kInbox, true), StoreOf(kSentItems, false));
  folders.push_back({{4, 1, "Outbox", ""}, ""});
  folders.push_back({{5, 1, "Deleted Items", ""}, ""});
  folders.push_back({{6, 1, kDrafts, "Drafts.dbx"}, StoreOf(kDrafts, false)});
  folders.push_back({{7, 2, kWorkshop, "Workshop.dbx"}, StoreOf(kWorkshop, false)});
  ProfileBuilder::WriteStore(store, folders);
  profile.WriteHive();
}

}  // namespace tarnwick::samples
