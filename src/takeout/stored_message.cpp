// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "takeout/stored_message.h"

#include "database/recordset.h"
#include "repository/repository.h"

namespace tarnwick::takeout {

namespace {

using repository::RepositoryDb;

std::vector<intake::AddressPair> ReadRecipients(const std::string& table, int64_t id) {
  std::vector<intake::AddressPair> recipients;
  jet::Recordset rows;
  rows.Open("SELECT * From " + table + " WHERE EmailID=" + std::to_string(id) + " ORDER BY ID",
            RepositoryDb());
  for (; !rows.Eof(); rows.MoveNext()) {
    recipients.push_back({rows.Field("Name").AsText(), rows.Field("Address").AsText()});
  }
  return recipients;
}

}  // namespace

std::optional<StoredMessage> ReadStoredMessage(int64_t id) {
  jet::Recordset email;
  email.Open("SELECT * FROM Email Where ID = " + std::to_string(id), RepositoryDb());
  if (email.Eof()) return std::nullopt;
  StoredMessage message;
  message.id = id;
  message.subject = email.Field("Subject").AsText();
  message.fromName = email.Field("NameFrom").AsText();
  message.fromAddress = email.Field("AddressFrom").AsText();
  message.sent = email.Field("CreationTime").AsDate();
  message.received = email.Field("ReceivedTime").AsDate();
  message.direction = email.Field("Direction").AsText();
  message.folder = email.Field("Folder").AsText();
  message.application = email.Field("Application").AsText();
  message.body = email.Field("Body").AsText();
  message.htmlBody = email.Field("HTMLBody").AsText();
  message.state = intake::StateOfStored(email.Field("State").AsText());
  message.to = ReadRecipients("ToRecipient", id);
  message.cc = ReadRecipients("ccRecipient", id);
  jet::Recordset files;
  files.Open("SELECT * From Attachment WHERE EmailID=" + std::to_string(id) + " ORDER BY ID",
             RepositoryDb());
  for (; !files.Eof(); files.MoveNext()) {
    message.attachments.push_back(files.Field("FileName").AsText());
  }
  return message;
}

}  // namespace tarnwick::takeout
