// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Every form of statement that the program issues, run on the real tables.
#include <string>

#include "database/connection.h"
#include "database/recordset.h"
#include "platform/error.h"
#include "repository/repository.h"
#include "repository/schema.h"
#include "support/temp_folder.h"

#include <gtest/gtest.h>

namespace tarnwick::repository {
namespace {

class Statements : public ::testing::Test {
 protected:
  Statements() {
    jet::CreateDatabaseFile(File("one.twr"), DatabasePassword(), RepositoryTables(), 1);
    jet::CreateDatabaseFile(File("two.twr"), DatabasePassword(), RepositoryTables(), 1);
    jet::CreateDatabaseFile(File("parameter.twr"), DatabasePassword(), ParameterTables(), 1);
    Open(connection_, "one.twr");
    Open(parameters_, "parameter.twr");
  }

  std::string File(const std::string& name) const { return folder_.File(name); }
  void Open(jet::Connection& connection, const std::string& name) const {
    connection.SetProperty(jet::kDataSourceProperty, File(name));
    connection.SetProperty(jet::kPasswordProperty, DatabasePassword());
    connection.Open();
  }

  static void Reads(jet::Connection& connection, const std::string& sql) {
    try {
      jet::Recordset rows;
      rows.Open(sql, connection, jet::CursorType::kKeyset, jet::LockType::kOptimistic);
      while (!rows.Eof()) {
        for (int i = 0; i < rows.FieldCount(); i++) rows.Field(i);
        rows.MoveNext();
      }
    } catch (const Error& error) {
      ADD_FAILURE() << sql << "\n" << error.what();
    }
  }
  static void Runs(jet::Connection& connection, const std::string& sql) {
    try {
      connection.Execute(sql);
    } catch (const Error& error) {
      ADD_FAILURE() << sql << "\n" << error.what();
    }
  }

  testing::TempFolder folder_;
  jet::Connection connection_;
  jet::Connection parameters_;
};

TEST_F(Statements, Changes) {
  for (const char* sql : {
           "INSERT INTO Attachment (EmailID, FileName) VALUES (1, 'Ann''s plan.doc')",
           "INSERT INTO IgnoredEmail (MessageID) VALUES ('key')",
           "INSERT INTO ObjectList VALUES (1)",
           "UPDATE Email SET Active = Null WHERE ID In (SELECT ID FROM ObjectList)",
           "DELETE FROM ObjectList",
           "DELETE * FROM Email WHERE ID=1",
           "DELETE * FROM Email WHERE FromTo=1",
           "DELETE * FROM MeContact WHERE ID=1",
           "DELETE * FROM ContactEmail WHERE ContactID=1",
           "DELETE * FROM ContactEmail WHERE ID=1",
       }) {
    Runs(connection_, sql);
  }
  for (const char* table :
       {"Email", "Attachment", "FileRepository", "MeContact", "MeAddress", "RejectSender",
        "ccRecipient", "ToRecipient", "tblProject", "UserList", "ContactEmail", "IgnoredEmail"}) {
    Runs(connection_, std::string("DELETE * FROM ") + table);
  }
  Runs(parameters_, "DELETE * FROM Parameter WHERE ParameterGroup = 'EmailGrid'");
}

TEST_F(Statements, Reads) {
  connection_.Execute("INSERT INTO Email (Subject, Direction) VALUES ('a', 'Out')");
  connection_.Execute("INSERT INTO EmailOne (Subject) VALUES ('')");
  for (const char* sql : {
           "SELECT ID FROM Email WHERE EntryID='key'",
           "SELECT ID FROM IgnoredEmail WHERE MessageID='key'",
           "SELECT FileBody FROM FileRepository WHERE FileID=1",
           "SELECT FileBody FROM FileRepository WHERE FileID=1ORDER BY ID",
           "SELECT FileBody FROM FileRepository WHERE FileID=1\r\nORDER BY ID",
           "SELECT * FROM MeContact ",
           "SELECT * FROM MeAddress ",
           "SELECT * FROM RejectSender ",
           "SELECT * FROM ContactEmail",
           "SELECT * FROM ContactEmail WHERE Address = 'a@b' AND ContactID=1",
           "SELECT * FROM RejectSender WHERE Address='a@b'",
           "SELECT * FROM RejectSender WHERE SenderName='Ann'",
           "SELECT * FROM MeContact WHERE Name='O''Neil'",
           "SELECT * From UserList WHERE User ='ann'",
           "SELECT Email.UserName From Email",
           "SELECT DISTINCT Name From MeContact ORDER BY Name",
           "SELECT DISTINCT FileName From Attachment ORDER BY FileName",
           "SELECT Active FROM Email WHERE ID=1",
           "SELECT * FROM Email Where ID = 1",
           "SELECT * From Email",
           "SELECT * From Email ORDER BY ID",
           "SELECT * From tblProject WHERE ID=1",
           "SELECT * From Attachment WHERE EmailID=1",
           "SELECT * From ToRecipient WHERE EmailID=1",
           "SELECT Format(Date(), 'ddddd hh:mm') As Sent, Email.Subject, ' ' AS FromTo, "
           "Email.Direction, Email.Active, Email.ID, Email.EmailImportance, Email.Application "
           "\r\nFROM EmailOne AS Email ",
           "SELECT Count(Email.ID) AS CountOfIN \r\nFROM (Email LEFT JOIN MeContact ON "
           "Email.FromTo = MeContact.ID)\r\nLEFT JOIN Attachment ON Email.ID = "
           "Attachment.EmailID\r\nWHERE Direction='In'",
           "SELECT Name, PostAddress as Address, PhoneHome As Home, PhoneBuisness AS Buisness, "
           "PhoneMobiler As Mobilers, Remark As Notes, ID\r\nFROM MeContact  WHERE [Name] LIKE "
           "'%an%'\r\nORDER BY Name",
           "SELECT Name, PostAddress, PhoneHome, PhoneBuisness, PhoneMobiler, Remark, ID\r\nFrom "
           "MeContact WHERE ID=1",
           "SELECT Address, ID From ContactEmail WHERE ContactID=1",
           "SELECT AddressFrom, NameFrom, gwTimeShift \r\nFrom Email Where Direction = 'Out' ORDER "
           "BY CreationTime DESC",
       }) {
    Reads(connection_, sql);
  }
  for (const char* sql : {
           "SELECT * FROM Parameter WHERE ParameterGroup = 'Repository' AND ParameterID = 'ann'",
           "SELECT * FROM Parameter WHERE ParameterGroup = 'frmContacts' ORDER BY ParameterID",
       }) {
    Reads(parameters_, sql);
  }
}

TEST_F(Statements, EveryTableGoesToAnotherFileAndBack) {
  connection_.Execute("INSERT INTO tblProject (ProjectName) VALUES ('Inbox')");
  connection_.Execute("INSERT INTO Email (Subject, ProjectID) VALUES ('a', 1)");
  const std::string two = "'" + File("two.twr") + "'";
  for (const char* table :
       {"MeAddress", "MeContact", "RejectSender", "UserList", "Attachment", "ccRecipient", "Email",
        "FileRepository", "tblProject", "toRecipient", "IgnoredEmail", "ContactEmail"}) {
    std::string name = table;
    Runs(connection_, "INSERT INTO " + name + " IN " + two + " SELECT * FROM  " + name);
    connection_.Execute("DELETE * FROM " + name);
    Runs(connection_, "INSERT INTO " + name + " SELECT * FROM  " + name + " IN " + two);
  }
  connection_.Execute("DELETE * FROM tblProject");
  connection_.Execute("INSERT INTO tblProject (ID, ProjectName) VALUES (1, 'Inbox')");
  connection_.Execute("INSERT INTO tblProject (ID, ProjectName) VALUES (2, 'Sent')");
  jet::CreateDatabaseFile(File("two.twr"), DatabasePassword(), RepositoryTables(), 1);
  Runs(connection_, "INSERT INTO FileRepository IN " + two +
                        " \r\nSELECT * FROM FileRepository WHERE FileID IN (1, 2)");
  Runs(connection_,
       "INSERT INTO tblProject IN " + two +
           "\r\nSELECT  DISTINCT tblProject.ProjectName, tblProject.ProjectNote, tblProject.ID "
           "FROM Email INNER JOIN tblProject ON Email.ProjectID = tblProject.ID\r\nWHERE Email.ID "
           "In (1, 2)");
  jet::Connection other;
  Open(other, "two.twr");
  jet::Recordset projects;
  projects.Open("SELECT * FROM tblProject", other);
  ASSERT_EQ(projects.RecordCount(), 1);
  EXPECT_EQ(projects.Field("ID").AsInt(), 1) << "the columns went by their order, not their names";
  EXPECT_EQ(projects.Field("ProjectName").AsText(), "Inbox");
}

}  // namespace
}  // namespace tarnwick::repository
