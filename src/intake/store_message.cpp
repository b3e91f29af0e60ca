// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/store_message.h"

#include <algorithm>
#include <optional>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/message_fields.h"
#include "intake/sender_rules.h"
#include "intake/thread_ids.h"
#include "intake/unfinished.h"
#include "repository/repository.h"

namespace tarnwick::intake {

namespace {

using core::QuoteSql;
using repository::Repository;
using repository::RepositoryDb;

// Sets a text, or what it was packed to ahead.
void SetText(jet::Recordset& email, const MessageField& field, const std::string& text,
             const PackedRows* rows) {
  std::string written = WrittenText(field, text);
  if (rows == nullptr) return email.SetField(field.column, std::move(written));
  auto packed = std::ranges::find(rows->texts, field.column, &PackedRows::Text::column);
  if (packed == rows->texts.end()) return email.SetField(field.column, std::move(written));
  email.SetPacked(field.column, std::move(written), packed->packed);
}

void SetField(jet::Recordset& email, const MessageField& field, const MailMessage& message,
              const PackedRows* rows) {
  if (field.writing == Writing::kUserOfThisRun) {
    email.SetField(field.column, core::State().UserName);
  } else if (auto* text = std::get_if<std::string MailMessage::*>(&field.member)) {
    if (field.writing == Writing::kUnlessEmpty && (message.**text).empty()) return;
    SetText(email, field, message.**text, rows);
  } else if (auto* date = std::get_if<DateTime MailMessage::*>(&field.member)) {
    email.SetField(field.column, message.**date);
  } else if (auto* count = std::get_if<int16_t MailMessage::*>(&field.member)) {
    email.SetField(field.column, message.**count);
  }
}

void StoreAttachmentNames(int64_t id, const MailMessage& message) {
  int count = std::min<int>(message.AttachCount, kMaxAttachments);
  for (int i = 0; i < count; ++i) {
    const std::string& name = message.Attachments[static_cast<size_t>(i)];
    if (name.empty()) continue;
    RepositoryDb().Execute("INSERT INTO Attachment (EmailID, FileName) VALUES (" +
                           std::to_string(id) + ", '" + QuoteSql(ShortText(name)) + "')");
  }
}

int CountOf(int16_t count, const std::vector<AddressPair>& list) {
  return static_cast<int>(std::min<size_t>(std::max<int16_t>(count, 0), list.size()));
}

// Makes the contacts of those whom the message was exchanged with; gives the correspondent's, 0 for
// none.
int64_t StoreContacts(const MailMessage& message) {
  if (message.Direction == "In") return GetContactId(message.FromName, message.FromAddress);
  if (message.Direction != "Out") return 0;
  int64_t correspondent = 0;
  for (int i = 0; i < CountOf(message.ToCount, message.To); ++i) {
    const AddressPair& to = message.To[static_cast<size_t>(i)];
    int64_t contact = GetContactId(to.Name, to.Address);
    if (i == 0) correspondent = contact;
  }
  for (int i = 0; i < CountOf(message.CcCount, message.Cc); ++i) {
    const AddressPair& cc = message.Cc[static_cast<size_t>(i)];
    GetContactId(cc.Name, cc.Address);
  }
  return correspondent;
}

void StoreRecipients(int64_t id, const MailMessage& message) {
  if (message.Direction != "In" && message.Direction != "Out") return;
  for (int i = 0; i < CountOf(message.ToCount, message.To); ++i) {
    const AddressPair& to = message.To[static_cast<size_t>(i)];
    dbSaveRecipient(id, to.Name, to.Address, Repository().ToRecordset);
  }
  for (int i = 0; i < CountOf(message.CcCount, message.Cc); ++i) {
    const AddressPair& cc = message.Cc[static_cast<size_t>(i)];
    dbSaveRecipient(id, cc.Name, cc.Address, Repository().CcRecordset);
  }
}

// The message with its bytes in memory, so that the file is read once; nullopt where it is long or
// can't be read, which is told of when it is stored.
std::optional<RawMessage> InMemory(const RawMessage& raw) {
  try {
    RawReader reader(raw);
    if (reader.Size() > kMostHeld) return std::nullopt;
    return RawMessage(raw.File(), std::string(reader.Read(0, reader.Size())));
  } catch (const Error&) {
    return std::nullopt;
  }
}

// What the headers say of the conversation. A file that can't be read is told of when it is stored;
// if it can then, whoever groups the mail looks at it again.
jet::Value ThreadOf(const RawMessage& raw) {
  try {
    RawReader reader(raw);
    return jet::Bytes{StoredThread(ThreadOfHeaders(reader.Read(0, kFileRecordLength)))};
  } catch (const Error&) {
    return {};
  }
}

// Writes the message's own row, entered as unfinished, and gives its key. A row that an error left
// by half is taken up again.
int64_t BeginMessage(jet::Recordset& email, const MailMessage& message, const RawMessage& raw,
                     const PackedRows* rows) {
  int64_t project = dbSaveProject(message.Project.empty() ? message.Folder : message.Project);
  int64_t correspondent = StoreContacts(message);
  int64_t unfinished = UnfinishedWithKey(StoredKey(message.MessageKey));
  if (unfinished == 0) {
    email.AddNew();
  } else {
    RemoveChildRows(unfinished);
    email.Find("ID = " + std::to_string(unfinished));
  }
  auto& latest = core::State().LatestReceivedTime;
  if (!latest || message.ReceivedTime > *latest) latest = message.ReceivedTime;
  for (const MessageField& field : kMessageFields) SetField(email, field, message, rows);
  email.SetField("ProjectID", project);
  email.SetField("FromTo", correspondent);
  email.SetField("Thread", rows != nullptr ? jet::Value(jet::Bytes{rows->thread}) : ThreadOf(raw));
  if (rows != nullptr && rows->trigrams) email.SetTrigrams(*rows->trigrams);
  email.Update();
  int64_t id = email.Field("ID").AsInt();
  if (unfinished == 0) EnterUnfinished(id);
  return id;
}

}  // namespace

void dbSaveMesage(const RawMessage& raw, MailMessage& message, const std::string& application,
                  int16_t skipAcceptance, const std::string& identity, Ending* ending,
                  const PackedRows* rows) {
  core::RunState& state = core::State();
  Ending own;
  Ending& told = ending != nullptr ? *ending : own;
  told = {state.StopFlag ? Outcome::kStopped : Outcome::kUnreadable, {}};
  if (state.StopFlag) return;
  core::GuardedRun("dbSaveMesage", [&] {
    jet::Recordset email;
    email.Open("Email", RepositoryDb(), jet::CursorType::kKeyset, jet::LockType::kPessimistic,
               jet::CommandType::kTable);
    if (rows == nullptr) TakeBodyFromHtml(message);
    if (message.Direction == "In" && skipAcceptance == 0 && !IsMessageAccepted(message, told)) {
      return;
    }
    ++state.StoredMessages;
    int64_t errorsBefore = state.ReportedErrors;
    message.Application = application;
    message.Identity = identity;
    jet::CommitGroup group(RepositoryDb());
    std::optional<RawMessage> held = raw.Held() ? std::nullopt : InMemory(raw);
    const RawMessage& original = held ? *held : raw;
    int64_t id = BeginMessage(email, message, original, rows);
    StoreAttachmentNames(id, message);
    StoreRecipients(id, message);
    FileToDB(original, id, application, rows);
    // The routines called here report their errors themselves.
    bool isWhole = state.ReportedErrors == errorsBefore;
    if (isWhole && !message.IsUnfinished) LeaveUnfinished(id);
    group.End();
    if (isWhole) told.outcome = Outcome::kStored;
  });
  if (told.outcome != Outcome::kStored || message.IsUnfinished) {
    repository::Repository().MayHoldUnfinished = true;
  }
}

int64_t GetContactId(const std::string& name, const std::string& address) {
  if (name.empty()) return 0;
  return core::Guarded("GetContactId", int64_t{0}, [&] {
    jet::Recordset& contacts = Repository().ContactRecordset;
    std::string clean = ShortText(name);
    contacts.Requery();
    contacts.Find("Name = '" + QuoteSql(clean) + "'");
    if (contacts.Eof()) {
      contacts.AddNew();
      contacts.SetField("Name", clean);
      contacts.SetField("UserName", core::State().UserName);
      contacts.Update();
    }
    int64_t id = contacts.Field("ID").AsInt();
    AddEmailID(address, id);
    return id;
  });
}

void AddEmailID(const std::string& address, int64_t contactId) {
  core::GuardedRun("AddEmailID", [&] {
    std::string clean = ShortText(address);
    jet::Recordset rows;
    rows.Open("SELECT * FROM ContactEmail WHERE Address = '" + QuoteSql(clean) +
                  "' AND ContactID=" + std::to_string(contactId),
              RepositoryDb(), jet::CursorType::kKeyset, jet::LockType::kOptimistic);
    if (!rows.Eof()) return;
    rows.AddNew();
    rows.SetField("Address", clean);
    rows.SetField("ContactID", contactId);
    rows.Update();
  });
}

void dbSaveRecipient(int64_t emailId, const std::string& name, const std::string& address,
                     jet::Recordset& recordset) {
  core::GuardedRun("dbSaveRecipient", [&] {
    recordset.AddNew();
    recordset.SetField("EmailID", emailId);
    recordset.SetField("Address", ShortText(address));
    recordset.SetField("Name", ShortText(name));
    recordset.Update();
  });
}

int64_t dbSaveProject(const std::string& projectName) {
  return core::Guarded("dbSaveProject", int64_t{0}, [&] {
    jet::Recordset& projects = Repository().ProjectRecordset;
    std::string clean = ShortText(projectName);
    projects.Requery();
    projects.Find("ProjectName ='" + QuoteSql(clean) + "'");
    if (projects.Eof()) {
      projects.AddNew();
      projects.SetField("ProjectName", clean);
      projects.Update();
    }
    return projects.Field("ID").AsInt();
  });
}

void FileToDB(const RawMessage& raw, int64_t emailId, const std::string& application,
              const PackedRows* rows) {
  core::GuardedRun("FileToDB", [&] {
    RawReader file(raw);
    jet::Recordset& pieces = Repository().FileRecordset;
    size_t number = 0;
    for (uint64_t offset = 0; offset < file.Size(); ++number) {
      std::string piece(file.Read(offset, kFileRecordLength));
      if (piece.empty()) break;
      offset += piece.size();
      pieces.AddNew();
      pieces.SetField("FileID", emailId);
      if (rows != nullptr && number < rows->pieces.size()) {
        pieces.SetPacked("FileBody", jet::Bytes{std::move(piece)}, rows->pieces[number]);
      } else {
        pieces.SetField("FileBody", jet::Bytes{std::move(piece)});
      }
      pieces.SetField("Application", CleanText(application));
      pieces.Update();
    }
  });
}

void dbSaveMeAddress(const std::string& address, const std::string& name,
                     const std::string& application) {
  core::GuardedRun("dbSaveMeAddress", [&] {
    std::string clean = CleanText(address);
    jet::Recordset& own = Repository().OwnAddressRecordset;
    own.Requery();
    own.Find("Address = '" + QuoteSql(clean) + "'");
    if (!own.Eof()) return;
    own.AddNew();
    own.SetField("Address", clean);
    own.SetField("FromName", CleanText(name));
    own.SetField("Application", CleanText(application));
    own.Update();
  });
}

bool IsFromMe(const std::string& address) {
  return core::Guarded("IsFromMe", false, [&] {
    jet::Recordset& own = Repository().OwnAddressRecordset;
    own.Requery();
    own.Find("Address = '" + QuoteSql(CleanText(address)) + "'");
    return !own.Eof();
  });
}

}  // namespace tarnwick::intake
