// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "support/repository_content.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "core/run_state.h"
#include "core/text.h"
#include "database/recordset.h"
#include "intake/sender_rules.h"
#include "intake/store_message.h"
#include "maintenance/export.h"
#include "platform/files.h"
#include "repository/keys.h"
#include "repository/repository.h"
#include "repository/schema.h"

namespace tarnwick::testing {

namespace {

using repository::RepositoryDb;

constexpr const char* kNames[] = {
    "Ann Lee", "Dora O'Hara", "\"Quoted\" Name", "Иван Петров", "山田 太郎", "anna LEE", "Émile"};
constexpr const char* kStates[] = {"S", "U", "", "SRF", "UP", "SD", "URPF"};
constexpr const char* kFolders[] = {"Inbox", "Sent Items", "O'Brien's letters", "Архив"};

std::string Pick(const char* const* texts, size_t count, int number) {
  return texts[static_cast<size_t>(number) % count];
}

void OpenWithPassword(jet::Connection& connection, const std::string& file) {
  connection.SetProperty(jet::kDataSourceProperty, file);
  connection.SetPasswords(repository::PasswordOf);
  connection.Open();
}

}  // namespace

intake::MailMessage VariedMessage(int number) {
  std::string n = std::to_string(number);
  intake::MailMessage message;
  message.Subject = "Plan's \"" + n + "\" — счёт";
  message.MessageKey = "<" + n + "@example.org>";
  message.SentTime = DateTime::FromDate(2004, 1, 1).AddSeconds(int64_t{number} * 3671);
  message.ReceivedTime = message.SentTime.AddSeconds(number % 90);
  message.TimeShift = number % 4 == 0 ? "" : "+0300";
  message.Direction = number % 11 == 5 ? "" : number % 3 == 0 ? "Out" : "In";
  message.FromName = Pick(kNames, std::size(kNames), number);
  message.FromAddress = "from" + std::to_string(number % 50) + "@example.org";
  message.FromToName = message.FromName;
  message.FromToAddress = message.FromAddress;
  message.Folder = Pick(kFolders, std::size(kFolders), number);
  message.Parent = "Local Folders";
  message.Application = "Outlook Express";
  message.Charset = number % 2 == 0 ? "koi8-r" : "";
  message.Encoding = "8bit";
  message.State = Pick(kStates, std::size(kStates), number);
  message.Importance = number % 6 == 0 ? "High" : number % 6 == 1 ? "low" : "";
  message.Body = number % 5 == 0 ? "" : "Body of " + n + "\r\nit's here\r\n";
  if (number % 2 == 0) message.HTMLBody = "<html><body><p>Body of " + n + "</p></body></html>";
  if (number % 8 == 1) message.Notes = "Note on " + n + "\nsecond line";
  message.ToCount = static_cast<int16_t>(1 + number % 4);
  for (int i = 0; i < message.ToCount; ++i) {
    message.To[static_cast<size_t>(i)] = {Pick(kNames, std::size(kNames), number + i),
                                          "to" + std::to_string(i) + "@example.org"};
  }
  message.CcCount = static_cast<int16_t>(number % 3);
  for (int i = 0; i < message.CcCount; ++i) {
    message.Cc[static_cast<size_t>(i)] = {"", "cc" + std::to_string(i) + "@example.org"};
  }
  message.AttachCount = static_cast<int16_t>(number % 4);
  for (int i = 0; i < message.AttachCount; ++i) {
    message.Attachments[static_cast<size_t>(i)] = "file's " + n + "." + std::to_string(i);
  }
  return message;
}

std::string VariedFile(int number) {
  size_t length = number % 9 == 4   ? 0
                  : number % 9 == 7 ? 32767
                  : number % 9 == 0 ? 70000
                                    : 400 + static_cast<size_t>(number) % 700;
  std::string bytes;
  bytes.reserve(length);
  auto seed = static_cast<uint32_t>(number) * 2654435761U + 12345U;
  for (size_t i = 0; i < length; ++i) {
    seed = seed * 1664525U + 1013904223U;
    bytes += static_cast<char>(seed >> 24);
  }
  return bytes;
}

void StoreVariedMessages(int count, int first) {
  jet::CommitGroup group(RepositoryDb());
  for (int number = first; number < first + count; ++number) {
    intake::MailMessage message = VariedMessage(number);
    platform::WriteFile(core::State().TempMessageFile, VariedFile(number));
    intake::dbSaveMesage(core::State().TempMessageFile, message, message.Application, 1,
                         "Main Identity");
    RepositoryDb().EndUnit();
  }
  group.End();
  platform::RemoveFile(core::State().TempMessageFile);
}

void StoreRulesAndMarks() {
  intake::SetAddresseeReject("Spam O'Matic", "spam@example.org");
  intake::SetAddresseeReject("", "second@example.org");
  intake::AddIgnoredMessage("<ignored@example.org>");
  intake::dbSaveMeAddress("me@example.org", "Me", "Outlook Express");
  for (const char* statement :
       {"INSERT INTO UserList (User) VALUES ('Main Identity')",
        "UPDATE Email SET Active = '+' WHERE Direction = 'Out'",
        "UPDATE tblProject SET ProjectNote = 'a note' WHERE ID = 1",
        "UPDATE MeContact SET PhoneBuisness = '555', Remark = 'it''s a remark' WHERE ID = 1",
        // A gap in the identifiers, as deleting leaves it.
        "DELETE * FROM ContactEmail WHERE ID = 2"}) {
    RepositoryDb().Execute(statement);
  }
}

void ExportAll(const std::string& file) {
  jet::Recordset list;
  list.Open("SELECT ID, ReceivedTime FROM Email", RepositoryDb(), jet::CursorType::kKeyset);
  EXPECT_EQ(maintenance::ExportEmails(file, list), maintenance::Result::kDone);
}

std::vector<std::string> DumpTable(jet::Connection& connection, const std::string& table,
                                   const std::vector<std::string>& without) {
  std::vector<std::string> lines;
  jet::Recordset rows;
  rows.Open("SELECT * FROM " + table, connection);
  for (; !rows.Eof(); rows.MoveNext()) {
    std::string line;
    for (int i = 0; i < rows.FieldCount(); ++i) {
      std::string name = rows.FieldName(i);
      if (std::find(without.begin(), without.end(), name) != without.end()) continue;
      jet::Value value = rows.Field(i);
      line += name + "=" +
              (value.IsNull() ? "Null" : std::to_string(value.Data().index()) + value.AsText()) +
              "|";
    }
    lines.push_back(std::move(line));
  }
  return lines;
}

std::map<std::string, std::vector<std::string>> DumpRepository(jet::Connection& connection) {
  std::map<std::string, std::vector<std::string>> dump;
  for (const jet::TableDefinition& table : repository::RepositoryTables()) {
    std::string name(table.name);
    if (name != "ObjectList") dump[name] = DumpTable(connection, name);
  }
  return dump;
}

std::map<std::string, std::vector<std::string>> DumpFile(const std::string& file) {
  jet::Connection connection;
  OpenWithPassword(connection, file);
  return DumpRepository(connection);
}

void MakeFormerFile(const std::string& file, const std::vector<std::string>& without, int version) {
  std::vector<jet::TableDefinition> tables(repository::RepositoryTables().begin(),
                                           repository::RepositoryTables().end());
  std::erase_if(tables, [](const auto& table) { return table.name == "Unfinished"; });
  std::erase_if(tables[0].columns, [&](const auto& column) {
    return std::find(without.begin(), without.end(), column.name) != without.end();
  });
  jet::CreateDatabaseFile(file, repository::DatabasePassword(), tables, version);
  for (const jet::TableDefinition& table : tables) {
    std::string name(table.name);
    RepositoryDb().Execute("INSERT INTO " + name + " IN '" + core::QuoteSql(file) +
                           "' SELECT * FROM " + name);
  }
}

std::map<std::string, std::string> AllMessages(jet::Connection& connection, bool withMarks) {
  std::map<std::string, std::string> hanging;  // by the message's ID
  for (const std::string table : {"ToRecipient", "ccRecipient", "Attachment", "FileRepository"}) {
    jet::Recordset rows;
    rows.Open("SELECT * FROM " + table + " ORDER BY ID", connection);
    for (; !rows.Eof(); rows.MoveNext()) {
      std::string& text = hanging[rows.Field(table[0] == 'F' ? "FileID" : "EmailID").AsText()];
      for (const char* name : {"Name", "Address", "FileName", "FileBody"}) {
        bool isThere = false;
        for (int i = 0; i < rows.FieldCount(); ++i) isThere |= rows.FieldName(i) == name;
        if (isThere) text += table + rows.Field(name).AsText() + "\n";
      }
    }
  }
  std::map<std::string, std::string> projects;
  jet::Recordset rows;
  for (rows.Open("SELECT * FROM tblProject", connection); !rows.Eof(); rows.MoveNext()) {
    projects[rows.Field("ID").AsText()] = rows.Field("ProjectName").AsText();
  }
  rows.Close();
  std::vector<std::string> columns =
      DumpTable(connection, "Email ORDER BY ID", {"ID", "FromTo", "ProjectID", "Active"});
  std::map<std::string, std::string> messages;
  rows.Open("SELECT * FROM Email ORDER BY ID", connection);
  for (size_t i = 0; !rows.Eof(); rows.MoveNext(), ++i) {
    std::string& message = messages[rows.Field("EntryID").AsText()];
    message += columns[i] + projects[rows.Field("ProjectID").AsText()] + "\n" +
               hanging[rows.Field("ID").AsText()];
    if (withMarks)
      message += rows.Field("Active").AsText() +
                 (rows.Field("FromTo").AsInt() != 0 ? "correspondent" : "");
  }
  return messages;
}

}  // namespace tarnwick::testing
