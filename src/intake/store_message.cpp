// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/store_message.h"

#include <algorithm>

#include "core/guard.h"
#include "core/messages.h"
#include "core/run_state.h"
#include "core/text.h"
#include "intake/message_fields.h"
#include "intake/sender_rules.h"
#include "intake/thread_ids.h"
#include "intake/unfinished.h"
#include "platform/charset.h"
#include "platform/files.h"
#include "platform/html.h"
#include "repository/repository.h"

namespace tarnwick::intake {

namespace {

using core::QuoteSql;
using repository::Repository;
using repository::RepositoryDb;

// Text for a column: whatever an importer handed over, the database never holds invalid UTF-8.
std::string Clean(const std::string& text) {
  return platform::EnsureUtf8(text);
}

// The same for a column that is shown in a list, and lies in indexes besides: what is longer than
// any such text was ever meant to be is cut. The stored file has all of it.
std::string Short(const std::string& text) {
  return std::string(platform::FirstChars(Clean(text), kMostShortText));
}

void TakeBodyFromHtml(MailMessage& message) {
  if (message.Body.empty() || IsMarkup(message.Body)) {
    message.Body = platform::HtmlToPlainText(Clean(message.HTMLBody));
  }
}

std::string WrittenText(const MessageField& field, const std::string& text) {
  if (field.writing == Writing::kKey) return StoredKey(text);
  if (IsLongText(field.column)) return Clean(text);
  std::string written = Short(text);
  bool isHigh = field.writing == Writing::kImportance && platform::AsciiUpper(written) == "HIGH";
  return isHigh ? "HIGH" : written;
}

void SetField(jet::Recordset& email, const MessageField& field, const MailMessage& message) {
  if (field.writing == Writing::kUserOfThisRun) {
    email.SetField(field.column, core::State().UserName);
  } else if (auto* text = std::get_if<std::string MailMessage::*>(&field.member)) {
    if (field.writing == Writing::kUnlessEmpty && (message.**text).empty()) return;
    email.SetField(field.column, WrittenText(field, message.**text));
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
                           std::to_string(id) + ", '" + QuoteSql(Short(name)) + "')");
  }
}

int CountOf(int16_t count, const std::vector<AddressPair>& list) {
  return static_cast<int>(std::min<size_t>(std::max<int16_t>(count, 0), list.size()));
}

// Rows for the recipients and the contacts; gives the correspondent's contact, 0 for none.
int64_t StoreRecipients(int64_t id, const MailMessage& message) {
  int64_t correspondent = 0;
  bool isOut = message.Direction == "Out";
  if (!isOut && message.Direction != "In") return 0;
  if (!isOut) correspondent = GetContactId(message.FromName, message.FromAddress);
  for (int i = 0; i < CountOf(message.ToCount, message.To); ++i) {
    const AddressPair& to = message.To[static_cast<size_t>(i)];
    if (isOut) {
      int64_t contact = GetContactId(to.Name, to.Address);
      if (i == 0) correspondent = contact;
    }
    dbSaveRecipient(id, to.Name, to.Address, Repository().ToRecordset);
  }
  for (int i = 0; i < CountOf(message.CcCount, message.Cc); ++i) {
    const AddressPair& cc = message.Cc[static_cast<size_t>(i)];
    if (isOut) GetContactId(cc.Name, cc.Address);
    dbSaveRecipient(id, cc.Name, cc.Address, Repository().CcRecordset);
  }
  return correspondent;
}

// Writes the message's own row, entered as unfinished, and gives its key. A row that an error left
// by half is taken up again.
int64_t BeginMessage(jet::Recordset& email, const MailMessage& message) {
  int64_t unfinished = UnfinishedWithKey(StoredKey(message.MessageKey));
  if (unfinished == 0) {
    email.AddNew();
  } else {
    RemoveChildRows(unfinished);
    email.Find("ID = " + std::to_string(unfinished));
  }
  auto& latest = core::State().LatestReceivedTime;
  if (!latest || message.ReceivedTime > *latest) latest = message.ReceivedTime;
  for (const MessageField& field : kMessageFields) SetField(email, field, message);
  email.Update();
  int64_t id = email.Field("ID").AsInt();
  if (unfinished == 0) EnterUnfinished(id);
  return id;
}

}  // namespace

std::string StoredKey(const std::string& messageKey) {
  return core::SanitizeFilterText(Clean(messageKey));
}

void dbSaveMesage(const std::string& messageFile, MailMessage& message,
                  const std::string& application, int16_t skipAcceptance,
                  const std::string& identity, Ending* ending) {
  core::RunState& state = core::State();
  Ending own;
  Ending& told = ending != nullptr ? *ending : own;
  told = {state.StopFlag ? Outcome::kStopped : Outcome::kUnreadable, {}};
  if (state.StopFlag) return;
  core::GuardedRun("dbSaveMesage", [&] {
    jet::Recordset email;
    email.Open("Email", RepositoryDb(), jet::CursorType::kKeyset, jet::LockType::kPessimistic,
               jet::CommandType::kTable);
    TakeBodyFromHtml(message);
    if (message.Direction == "In" && skipAcceptance == 0 && !IsMessageAccepted(message, told)) {
      return;
    }
    ++state.StoredMessages;
    int64_t errorsBefore = state.ReportedErrors;
    message.Application = application;
    message.Identity = identity;
    jet::CommitGroup group(RepositoryDb());
    int64_t id = BeginMessage(email, message);
    email.SetField("ProjectID",
                   dbSaveProject(message.Project.empty() ? message.Folder : message.Project));
    StoreAttachmentNames(id, message);
    email.SetField("FromTo", StoreRecipients(id, message));
    std::string head;
    FileToDB(messageFile, id, application, &head);
    email.SetField("Thread", jet::Bytes{StoredThread(ThreadOfHeaders(head))});
    email.Update();
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
    std::string clean = Short(name);
    contacts.Requery();
    if (!contacts.Eof()) {
      contacts.MoveFirst();
      contacts.Find("Name = '" + QuoteSql(clean) + "'");
    }
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
    std::string clean = Short(address);
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
    recordset.SetField("Address", Short(address));
    recordset.SetField("Name", Short(name));
    recordset.Update();
  });
}

int64_t dbSaveProject(const std::string& projectName) {
  return core::Guarded("dbSaveProject", int64_t{0}, [&] {
    jet::Recordset& projects = Repository().ProjectRecordset;
    std::string clean = Short(projectName);
    projects.Requery();
    if (!projects.Eof()) projects.Find("ProjectName ='" + QuoteSql(clean) + "'");
    if (projects.Eof()) {
      projects.AddNew();
      projects.SetField("ProjectName", clean);
      projects.Update();
    }
    return projects.Field("ID").AsInt();
  });
}

void FileToDB(const std::string& messageFile, int64_t emailId, const std::string& application,
              std::string* head) {
  core::GuardedRun("FileToDB", [&] {
    platform::InputFile file(messageFile);
    jet::Recordset& rows = Repository().FileRecordset;
    for (uint64_t offset = 0; offset < file.Size();) {
      std::string record(std::min<uint64_t>(kFileRecordLength, file.Size() - offset), '\0');
      record.resize(file.ReadAt(offset, record.data(), record.size()));
      if (record.empty()) break;
      if (offset == 0 && head != nullptr) *head = record;
      offset += record.size();
      rows.AddNew();
      rows.SetField("FileID", emailId);
      rows.SetField("FileBody", jet::Bytes{std::move(record)});
      rows.SetField("Application", Clean(application));
      rows.Update();
    }
  });
}

void dbSaveMeAddress(const std::string& address, const std::string& name,
                     const std::string& application) {
  core::GuardedRun("dbSaveMeAddress", [&] {
    std::string clean = Clean(address);
    jet::Recordset& own = Repository().OwnAddressRecordset;
    own.Requery();
    if (!own.Eof()) own.Find("Address = '" + QuoteSql(clean) + "'");
    if (!own.Eof()) return;
    own.AddNew();
    own.SetField("Address", clean);
    own.SetField("FromName", Clean(name));
    own.SetField("Application", Clean(application));
    own.Update();
  });
}

bool IsFromMe(const std::string& address) {
  return core::Guarded("IsFromMe", false, [&] {
    jet::Recordset& own = Repository().OwnAddressRecordset;
    own.Requery();
    if (own.Eof()) return false;
    own.Find("Address = '" + QuoteSql(Clean(address)) + "'");
    return !own.Eof();
  });
}

}  // namespace tarnwick::intake
