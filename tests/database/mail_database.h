// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A small mail database of a test's own, open.
#pragma once

#include "database/connection.h"
#include "database/recordset.h"
#include "database/table_definition.h"
#include "support/testing.h"

namespace tarnwick::jet {

inline constexpr char kPassword[] = "nine char";

inline std::vector<TableDefinition> MailTables() {
  return {{"Email",
           {{"ID", ColumnType::kAutoNumber},
            {"EntryID", ColumnType::kText},
            {"Subject", ColumnType::kText},
            {"Direction", ColumnType::kText},
            {"Active", ColumnType::kText},
            {"ReceivedTime", ColumnType::kDateTime},
            {"FromTo", ColumnType::kLong},
            {"FilesNum", ColumnType::kLong},
            {"Weight", ColumnType::kDouble},
            {"Body", ColumnType::kMemo}},
           {{"EmailEntryID", {"EntryID"}}, {"EmailReceivedTime", {"ReceivedTime"}}}},
          {"MeContact",
           {{"ID", ColumnType::kAutoNumber}, {"Name", ColumnType::kText}},
           {{"MeContactName", {"Name"}}}},
          {"Attachment",
           {{"ID", ColumnType::kAutoNumber},
            {"EmailID", ColumnType::kLong},
            {"FileName", ColumnType::kText}},
           {{"AttachmentEmailID", {"EmailID"}}}},
          {"FileRepository",
           {{"ID", ColumnType::kAutoNumber},
            {"FileID", ColumnType::kLong},
            {"FileBody", ColumnType::kBinary}},
           {}},
          {"ObjectList", {{"ID", ColumnType::kLong}}, {}}};
}

inline void OpenFile(Connection& connection, const std::string& path,
                     const std::string& password = kPassword) {
  connection.SetProvider(kProvider);
  connection.SetProperty(kDataSourceProperty, path);
  connection.SetProperty(kPasswordProperty, password);
  connection.Open();
}

// A text as a statement holds it.
inline std::string Quoted(const std::string& text) {
  std::string quoted;
  for (char c : text) quoted += c == '\'' ? std::string("''") : std::string(1, c);
  return "'" + quoted + "'";
}

// The number of the Error that body throws; 0 when it throws none.
template <typename Body>
int ErrorOf(Body&& body) {
  try {
    body();
  } catch (const Error& error) {
    return error.Number();
  }
  return 0;
}

class MailDatabase : public ::testing::Test {
 protected:
  MailDatabase() {
    platform::SetLocaleOverride("en_US");
    CreateDatabaseFile(path_, kPassword, MailTables(), 1);
    OpenFile(connection_, path_);
  }
  ~MailDatabase() override { platform::SetLocaleOverride(""); }

  // The first field of every row, joined by "|"; "Null" for Null.
  std::string Column(const std::string& sql) {
    Recordset rows;
    rows.Open(sql, connection_);
    std::string result;
    for (; !rows.Eof(); rows.MoveNext()) {
      if (!result.empty()) result += "|";
      Value value = rows.Field(0);
      result += value.IsNull() ? "Null" : value.AsText();
    }
    return result;
  }
  int64_t Run(const std::string& sql) { return connection_.Execute(sql); }
  // A contact of each name.
  void AddNames(std::initializer_list<const char*> names) {
    for (const char* name : names)
      Run("INSERT INTO MeContact (Name) VALUES (" + Quoted(name) + ")");
  }
  Recordset OpenTable(const std::string& name) {
    Recordset rows;
    rows.Open(name, connection_, CursorType::kKeyset, LockType::kPessimistic, CommandType::kTable);
    return rows;
  }
  Recordset OpenText(const std::string& sql) {
    Recordset rows;
    rows.Open(sql, connection_, CursorType::kKeyset, LockType::kOptimistic);
    return rows;
  }
  // Another file like it, empty.
  std::string MakeFile(const std::string& name, const std::string& password = kPassword) {
    CreateDatabaseFile(folder_.File(name), password, MailTables(), 1);
    return folder_.File(name);
  }

  testing::TempFolder folder_;
  std::string path_ = folder_.File("mail.twr");
  Connection connection_;
};

}  // namespace tarnwick::jet
