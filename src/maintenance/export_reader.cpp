// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "maintenance/export_reader.h"

#include <algorithm>
#include <cstdint>
#include <variant>

#include "intake/message_fields.h"
#include "maintenance/database_file.h"
#include "platform/files.h"

namespace tarnwick::maintenance {

namespace {

using intake::MailMessage;

// A count as the message had it: at least the rows that were found, at most what a record can hold.
int16_t CountOf(int16_t stored, int rows, int capacity) {
  return static_cast<int16_t>(std::clamp<int>(stored, rows, capacity));
}

// Null for a column that the file is too old to have.
jet::Value FieldOf(jet::Recordset& rows, std::string_view column) {
  return rows.HasField(column) ? rows.Field(column) : jet::Value();
}

void ReadField(jet::Recordset& rows, const intake::MessageField& field, MailMessage& message) {
  if (auto* text = std::get_if<std::string MailMessage::*>(&field.member)) {
    message.** text = FieldOf(rows, field.column).AsText();
  } else if (auto* date = std::get_if<DateTime MailMessage::*>(&field.member)) {
    message.** date = FieldOf(rows, field.column).AsDate().value_or(DateTime());
  } else if (auto* count = std::get_if<int16_t MailMessage::*>(&field.member)) {
    int64_t stored = FieldOf(rows, field.column).AsInt();
    message.** count = static_cast<int16_t>(std::clamp<int64_t>(stored, 0, INT16_MAX));
  }
}

std::string Where(const char* start, int64_t id) {
  return start + std::to_string(id);
}

}  // namespace

ExportReader::ExportReader(const std::string& file) {
  OpenFile(connection_, file);
  hasUnfinished_ = connection_.HasTable("Unfinished") && CountRows(connection_, "Unfinished") > 0;
}

int64_t ExportReader::Count() {
  return CountRows(connection_, "Email");
}

std::optional<ExportedMessage> ExportReader::Next() {
  if (first_) {
    emails_.Open("SELECT * From Email ORDER BY ID", connection_);
    first_ = false;
  } else if (!emails_.Eof()) {
    emails_.MoveNext();
  }
  if (emails_.Eof()) return std::nullopt;
  std::optional<ExportedMessage> exported(std::in_place);
  ReadColumns(*exported);
  return exported;
}

void ExportReader::ReadColumns(ExportedMessage& exported) {
  MailMessage& message = exported.message;
  exported.id = emails_.Field("ID").AsInt();
  for (const intake::MessageField& field : intake::kMessageFields) {
    ReadField(emails_, field, message);
  }
  if (!FieldOf(emails_, "ReceivedTime").AsDate()) message.ReceivedTime = message.SentTime;
  if (jet::Value project = FieldOf(emails_, "ProjectID"); !project.IsNull()) {
    message.Project = ReadProject(project.AsInt());
  }
  message.IsUnfinished =
      hasUnfinished_ && CountRows(connection_, Where("Unfinished WHERE EmailID=", exported.id)) > 0;
  ReadAttachments(exported);
  int to = ReadRecipients("ToRecipient", exported.id, message.To);
  int cc = ReadRecipients("ccRecipient", exported.id, message.Cc);
  // Of a message that is neither sent nor received no recipients are kept, only their numbers.
  bool hasRows = message.Direction == "In" || message.Direction == "Out";
  message.ToCount = CountOf(message.ToCount, to, hasRows ? to : INT16_MAX);
  message.CcCount = CountOf(message.CcCount, cc, hasRows ? cc : INT16_MAX);
}

std::string ExportReader::ReadProject(int64_t id) {
  jet::Recordset project;
  project.Open(Where("SELECT * From tblProject WHERE ID=", id), connection_);
  return project.Eof() ? std::string() : FieldOf(project, "ProjectName").AsText();
}

void ExportReader::ReadAttachments(ExportedMessage& exported) {
  MailMessage& message = exported.message;
  jet::Recordset rows;
  rows.Open(Where("SELECT * From Attachment WHERE EmailID=", exported.id), connection_);
  int count = 0;
  for (; !rows.Eof() && count < intake::kMaxAttachments; rows.MoveNext()) {
    message.Attachments[static_cast<size_t>(count++)] = FieldOf(rows, "FileName").AsText();
  }
  message.AttachCount = CountOf(message.AttachCount, count, intake::kMaxAttachments);
}

template <typename Pairs>
int16_t ExportReader::ReadRecipients(const char* table, int64_t id, Pairs& pairs) {
  jet::Recordset rows;
  rows.Open(Where((std::string("SELECT * From ") + table + " WHERE EmailID=").c_str(), id),
            connection_);
  int16_t count = 0;
  for (; !rows.Eof() && count < INT16_MAX; rows.MoveNext()) {
    if (pairs.size() == static_cast<size_t>(count)) pairs.emplace_back();
    pairs[static_cast<size_t>(count++)] = {FieldOf(rows, "Name").AsText(),
                                           FieldOf(rows, "Address").AsText()};
  }
  return count;
}

void ExportReader::WriteFile(int64_t id, const std::string& path) {
  platform::RemoveFile(path);
  platform::OutputFile file(path);
  jet::Recordset rows;
  rows.Open(Where("SELECT FileBody FROM FileRepository WHERE FileID=", id) + "\r\nORDER BY ID",
            connection_);
  for (; !rows.Eof(); rows.MoveNext()) file.Write(rows.Field("FileBody").AsText());
  file.Close();
}

}  // namespace tarnwick::maintenance
