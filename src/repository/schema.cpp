// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "repository/schema.h"

#include "database/connection.h"
#include "platform/error.h"
#include "platform/files.h"
#include "repository/email_fields.h"
#include "repository/parameter_store.h"
#include "repository/repository.h"

namespace tarnwick::repository {

namespace {

using jet::ColumnType;
using jet::TableDefinition;

// EmailOne has the columns of Email, so that a query can take either.
std::vector<jet::ColumnDefinition> EmailColumns() {
  std::vector<jet::ColumnDefinition> columns;
  for (const EmailField& field : kEmailFields) columns.push_back({field.name, field.type});
  return columns;
}

// What the list filters, sorts and counts by, so that it touches no message.
jet::IndexDefinition ListIndexDefinition() {
  jet::IndexDefinition index{"EmailList", {}};
  for (const EmailField& field : kFilteredFields) index.columns.push_back(field.name);
  return index;
}

TableDefinition RecipientTable(std::string_view name, std::string_view index) {
  return {name,
          {{"ID", ColumnType::kAutoNumber},
           {"EmailID", ColumnType::kLong},
           {"Address", ColumnType::kText},
           {"Name", ColumnType::kText}},
          {{index, {"EmailID"}}}};
}

std::vector<TableDefinition> MakeRepositoryTables() {
  std::vector<TableDefinition> tables;
  tables.push_back({"Email",
                    EmailColumns(),
                    {{"EmailEntryID", {"EntryID"}},
                     ListIndexDefinition(),
                     // Sorts the list by subject.
                     {"EmailSubject", {"Subject"}},
                     {"EmailFromTo", {"FromTo"}}}});
  tables.push_back({"EmailOne", EmailColumns(), {}});
  tables.push_back({"Attachment",
                    {{"ID", ColumnType::kAutoNumber},
                     {"EmailID", ColumnType::kLong},
                     {"FileName", ColumnType::kText}},
                    {{"AttachmentEmailID", {"EmailID"}}, {"AttachmentFileName", {"FileName"}}}});
  tables.push_back({"FileRepository",
                    {{"ID", ColumnType::kAutoNumber},
                     {"FileID", ColumnType::kLong},
                     {"Application", ColumnType::kText},
                     {"FileBody", ColumnType::kBinary}},
                    {{"FileRepositoryFileID", {"FileID"}}}});
  tables.push_back(RecipientTable("ToRecipient", "ToRecipientEmailID"));
  tables.push_back(RecipientTable("ccRecipient", "ccRecipientEmailID"));
  tables.push_back({"MeContact",
                    {{"ID", ColumnType::kAutoNumber},
                     {"Name", ColumnType::kText},
                     {"UserName", ColumnType::kText},
                     {"PostAddress", ColumnType::kText},
                     {"PhoneHome", ColumnType::kText},
                     {"PhoneBuisness", ColumnType::kText},
                     {"PhoneMobiler", ColumnType::kText},
                     {"Remark", ColumnType::kMemo}},
                    {{"MeContactName", {"Name"}}}});
  tables.push_back({"ContactEmail",
                    {{"ID", ColumnType::kAutoNumber},
                     {"ContactID", ColumnType::kLong},
                     {"Address", ColumnType::kText}},
                    {{"ContactEmailContactID", {"ContactID", "Address"}}}});
  tables.push_back({"MeAddress",
                    {{"Address", ColumnType::kText},
                     {"FromName", ColumnType::kText},
                     {"Application", ColumnType::kText}},
                    {{"MeAddressAddress", {"Address"}}}});
  tables.push_back({"RejectSender",
                    {{"SenderName", ColumnType::kText},
                     {"Address", ColumnType::kText},
                     {"UserName", ColumnType::kText}},
                    {{"RejectSenderAddress", {"Address"}}, {"RejectSenderName", {"SenderName"}}}});
  tables.push_back({"tblProject",
                    {{"ID", ColumnType::kAutoNumber},
                     {"ProjectName", ColumnType::kText},
                     {"ProjectNote", ColumnType::kMemo}},
                    {{"tblProjectName", {"ProjectName"}}}});
  tables.push_back({"UserList", {{"User", ColumnType::kText}}, {{"UserListUser", {"User"}}}});
  tables.push_back({"IgnoredEmail",
                    {{"ID", ColumnType::kAutoNumber}, {"MessageID", ColumnType::kText}},
                    {{"IgnoredEmailMessageID", {"MessageID"}}}});
  // Messages of which an error left only a part. One that is being stored is entered in the commit
  // that holds its first row.
  tables.push_back({"Unfinished", {{"EmailID", ColumnType::kKey}}, {}});
  tables.push_back({"ObjectList", {{"ID", ColumnType::kLong}}, {{"ObjectListID", {"ID"}}}});
  return tables;
}

std::vector<TableDefinition> MakeParameterTables() {
  return {{"Parameter",
           {{"ParameterGroup", ColumnType::kText},
            {"ParameterID", ColumnType::kText},
            {"ParameterText", ColumnType::kText},
            {"ParameterDate", ColumnType::kDateTime},
            {"ParameterAmount", ColumnType::kDouble}},
           {{"ParameterKey", {"ParameterGroup", "ParameterID"}}}}};
}

void Execute(const std::string& file, const std::string& statement) {
  jet::Connection connection;
  connection.SetProperty(jet::kDataSourceProperty, file);
  connection.SetProperty(jet::kPasswordProperty, DatabasePassword());
  connection.Open();
  connection.Execute(statement);
  connection.Close();
}

}  // namespace

std::span<const TableDefinition> RepositoryTables() {
  static const std::vector<TableDefinition> tables = MakeRepositoryTables();
  return tables;
}

jet::ColumnCacheDefinition ListColumnCache() {
  jet::ColumnCacheDefinition cache{"Email", {}, {}, {}, "Attachment", "EmailID"};
  for (const EmailField& field : kFilteredFields) {
    if (field.cache == CacheUse::kDate) cache.date = field.name;
    if (field.cache == CacheUse::kReference) cache.reference = field.name;
    if (field.cache == CacheUse::kKind) cache.kinds.emplace_back(field.name);
  }
  return cache;
}

std::vector<std::string> SearchedColumns() {
  std::vector<std::string> columns;
  columns.reserve(std::size(kSearchedFields));
  for (const EmailField& field : kSearchedFields) columns.emplace_back(field.name);
  return columns;
}

std::span<const TableDefinition> ParameterTables() {
  static const std::vector<TableDefinition> tables = MakeParameterTables();
  return tables;
}

void CreateDatabaseFiles(const std::string& folder) {
  std::string place = platform::WithSeparator(folder);
  std::string emptyRepository = place + kTemplateFile;
  jet::CreateDatabaseFile(emptyRepository, DatabasePassword(), RepositoryTables(), kSchemaVersion);
  // The placeholder query takes its one row from EmailOne.
  Execute(emptyRepository, "INSERT INTO EmailOne (Subject, Direction) VALUES ('', '')");
  jet::CreateDatabaseFile(place + kParameterFile, DatabasePassword(), ParameterTables(),
                          kSchemaVersion);
  // A home that is made of these begins with complete reading; those that are there keep theirs.
  Execute(place + kParameterFile,
          std::string("INSERT INTO Parameter (ParameterGroup, ParameterID, ParameterAmount) "
                      "VALUES ('") +
              kCompleteReadingOption + "', '1', 1)");
  platform::CopyFile(emptyRepository, place + kRepositoryFile);
}

}  // namespace tarnwick::repository
