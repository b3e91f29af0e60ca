// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/index/column_cache.h"

#include <random>
#include <set>

#include "database/connection_impl.h"
#include "mail_database.h"
#include "platform/utf8.h"

namespace tarnwick::jet {
namespace {

constexpr char kTables[] =
    "FROM (Email LEFT JOIN MeContact ON Email.FromTo = MeContact.ID)\r\n"
    "LEFT JOIN Attachment ON Email.ID = Attachment.EmailID\r\n";
// True of every row, and of two tables at once: no column cache answers a condition with it.
constexpr char kOnlyByStatement[] = " AND (Email.ID > 0 OR MeContact.Name = 'nobody')";

const std::vector<std::string> kConditions = {
    "Email.ID <> 0",
    "Email.ReceivedTime BETWEEN #03/02/2005 00:00:00# AND #03/04/2005 23:59:59#",
    "Direction = 'in'",
    "ReceivedTime BETWEEN #12/31/2030# AND #01/01/1990#",
    "Direction <> 'In' AND Active = '+'",
    "FilesNum <> 0 AND FilesNum < 3",
    "FilesNum <> '0'",
    "Direction = 5",
    "Active Is Null",
    "Active Is Not Null AND NOT Direction Is Null",
    "INSTR(MeContact.Name, 'n') <> 0 AND INSTR(Email.Subject, 'e') <> 0",
    "Attachment.FileName Like '%a%' AND Attachment.FileName Like '%.doc'",
    "Attachment.FileName Is Null AND Email.Body Like '%b%'",
    "Email.Body Like '%b%' AND Direction = 'In'",
    "INSTR(Email.Subject, '') <> 0 AND MeContact.Name = 'ANN'",
};
const std::vector<std::string> kOrders = {
    "",
    "ORDER BY Email.ReceivedTime",
    "ORDER BY Email.ReceivedTime DESC",
    "ORDER BY Email.Subject",
    "ORDER BY Email.Subject DESC",
    "ORDER BY MeContact.Name",
    "ORDER BY MeContact.Name DESC",
    "ORDER BY Email.Direction DESC",
    "ORDER BY Email.FilesNum",
};

const std::vector<std::string> kGroups = {
    "Direction",
    "FromTo",
    "DateValue(ReceivedTime)",
    "DateValue(ReceivedTime), Email.Direction, FilesNum",
    "Active, FromTo",
};

class ColumnCacheTest : public MailDatabase {
 protected:
  ColumnCacheTest() {
    connection_.KeepColumnCache({"Email",
                                 "ReceivedTime",
                                 "FromTo",
                                 {"Direction", "Active", "FilesNum"},
                                 "Attachment",
                                 "EmailID"});
    connection_.BeginGroup();
    // Two of one name, one of none, and a gap in the keys.
    AddNames({"Ann", "ann", "Zoë"});
    Run("INSERT INTO MeContact (Name) VALUES (Null)");
    AddNames({"Bob"});
    Run("DELETE * FROM MeContact WHERE Name = 'Bob'");
    for (int i = 0; i < 120; i++) AddRow();
    connection_.EndGroup();
  }

  std::string Pick(const std::vector<std::string>& choices) {
    return choices[random_() % choices.size()];
  }

  void AddRow() {
    Run("INSERT INTO Email (Subject, Direction, Active, ReceivedTime, FromTo, FilesNum, Body) "
        "VALUES (" +
        Pick({"'Re: plan'", "'re: PLAN'", "'Élan'", "Null", "'beta'", "''"}) + ", " +
        Pick({"'In'", "'Out'", "'IN'", "Null"}) + ", " + Pick({"'+'", "Null"}) + ", " +
        Pick({"#03/01/2005#", "#03/02/2005 10:00:00#", "#03/04/2005 23:59:59#", "Null",
              "#05/05/1605#", "#05/05/2905#"}) +
        ", " + Pick({"1", "2", "3", "4", "5", "0", "Null"}) + ", " +
        Pick({"0", "2", "12", "Null"}) + ", " + Pick({"'about'", "'nothing'", "Null"}) + ")");
    int64_t id = connection_.LastIdentity();
    for (size_t i = random_() % 5; i > 2; i--) {
      Run("INSERT INTO Attachment (EmailID, FileName) VALUES (" + std::to_string(id) + ", " +
          Pick({"'a.doc'", "'b.doc'", "'A.xls'", "Null"}) + ")");
    }
  }

  // Every query gives what its statement gives.
  void Compare(const std::string& when) {
    EXPECT_EQ(Column("SELECT Count(*) AS N FROM Email"),
              Column("SELECT Count(*) AS N FROM Email WHERE ID <> -1"))
        << when;
    for (const std::string& condition : kConditions) {
      std::string ofRows =
          "WHERE ReceivedTime BETWEEN #01/01/1000# AND #12/31/9000# AND " + condition;
      std::string where = kTables + ofRows;
      EXPECT_EQ(Column("SELECT Count(Email.ID) AS N " + where),
                Column("SELECT Count(Email.ID) AS N " + where + kOnlyByStatement))
          << when << ": " << condition;
      bool isJoined = condition.find("MeContact") != std::string::npos ||
                      condition.find("Attachment") != std::string::npos;
      if (!isJoined) CompareGroups(when, ofRows);
      for (const std::string& order : kOrders) {
        auto listed = [&](const char* more) {
          std::string sql = "SELECT DISTINCT Email.ID, Email.Subject, MeContact.Name ";
          return Column(sql.append(where).append(more).append("\r\n").append(order));
        };
        EXPECT_EQ(listed(""), listed(kOnlyByStatement))
            << when << ": " << condition << " " << order;
      }
    }
  }

  // How many rows each group has, with the group's texts in one case.
  std::multiset<std::string> GroupsOf(const std::string& query) {
    std::multiset<std::string> groups;
    for (Recordset rows = OpenText(query); !rows.Eof(); rows.MoveNext()) {
      std::string group;
      for (int i = 0; i < rows.FieldCount(); i++) {
        group += rows.Field(i).IsNull() ? "-" : platform::FoldCase(rows.Field(i).AsText());
        group += "|";
      }
      groups.insert(group);
    }
    return groups;
  }

  // A sum of ones is left to the engine.
  void CompareGroups(const std::string& when, const std::string& where) {
    for (const std::string& group : kGroups) {
      auto query = [&](const char* count) {
        return "SELECT " + group + ", " + count + " AS N FROM Email " + where + " GROUP BY " +
               group;
      };
      EXPECT_EQ(GroupsOf(query("Count(*)")), GroupsOf(query("Sum(1)")))
          << when << ": " << where << " " << group;
    }
  }

  ColumnCache& Kept() { return *connection_.GetImpl().GetColumnCache(); }

  std::mt19937 random_{11};
};

TEST_F(ColumnCacheTest, AnswersAsTheStatementsDoWhateverIsWritten) {
  Compare("at first");
  struct Case {
    const char* what;
    std::function<void()> write;
    int64_t readings;  // passes over all rows so far
  };
  const Case kCases[] = {
      {"rows added",
       [&] {
         for (int i = 0; i < 5; i++) AddRow();
       },
       1},
      {"marked and moved in time",
       [&] {
         Run("UPDATE Email SET Active = '+', Subject = ID, ReceivedTime = #03/03/2005# WHERE ID < "
             "9");
         Run("UPDATE Email SET ReceivedTime = Null WHERE ID = 9");
       },
       1},
      {"rows and details deleted",
       [&] {
         Run("DELETE * FROM Email WHERE ID > 20 AND ID < 30");
         Run("DELETE * FROM Attachment WHERE EmailID < 40");
       },
       1},
      {"a contact renamed", [&] { Run("UPDATE MeContact SET Name = 'Yan' WHERE ID = 1"); }, 1},
      {"through a recordset",
       [&] {
         Recordset row = OpenText("SELECT Active, ID FROM Email WHERE ID = 3");
         row.SetField("Active", {});
         row.Update();
         row.Delete();
       },
       1},
      {"a statement that failed half way",
       [&] {
         EXPECT_NE(ErrorOf([&] { Run("UPDATE Email SET Direction = 'Out', ID = ID + 1"); }), 0);
       },
       2},
      {"many rows written",
       [&] {
         for (int i = 0; i < 3; i++) Run("UPDATE Email SET Active = Null");
       },
       3},
      {"a kind of text too many to count apart",
       [&] {
         for (int i = 0; i < 1100; i++) {
           Run("INSERT INTO Email (Direction) VALUES ('" + std::to_string(i) + "')");
         }
       },
       4},
      {"all rows deleted at once", [&] { Run("DELETE * FROM Email"); }, 5},
      {"begun again",
       [&] {
         for (int i = 0; i < 50; i++) AddRow();
       },
       5},
      {"a contact far away",
       [&] {
         Run("INSERT INTO Email (FromTo, Direction, FilesNum, ReceivedTime) "
             "VALUES (99999999999, 'In', 1, #03/03/2005#)");
       },
       6},
      {"a key far away",
       [&] {
         Run("DELETE * FROM Email WHERE FromTo > 99");
         Run("INSERT INTO Email (ID, FromTo, Direction, FilesNum, ReceivedTime) "
             "VALUES (4294968596, 1, 'In', 1, #03/03/2005#)");
       },
       7},
  };
  for (const Case& test : kCases) {
    test.write();
    Compare(test.what);
    EXPECT_EQ(Kept().Readings(), test.readings) << test.what;
  }
}

// Rows that a condition was tested on are remembered, but no longer than they stay as they are.
TEST_F(ColumnCacheTest, WhatWasFoundIsLookedForAgainAfterAWrite) {
  const std::string where =
      std::string(kTables) +
      "WHERE ReceivedTime BETWEEN #01/01/1000# AND #12/31/9000# AND Email.Body Like '%quetzal%'";
  Recordset list = OpenText("SELECT DISTINCT Email.ID " + where + " ORDER BY Email.Subject");
  EXPECT_EQ(list.RecordCount(), 0);
  for (const char* change : {"UPDATE Email SET Body = 'quetzal', Subject = ID WHERE ID IN (7, 12)",
                             "UPDATE Email SET Body = Null WHERE ID = 12",
                             "UPDATE Email SET Body = 'quetzal', Subject = Null WHERE ID = 100",
                             "DELETE * FROM Email WHERE ID = 7"}) {
    Run(change);
    list.Requery();
    std::string found;
    for (; !list.Eof(); list.MoveNext()) found += list.Field("ID").AsText() + "|";
    if (!found.empty()) found.pop_back();
    EXPECT_EQ(found, Column("SELECT DISTINCT Email.ID, Email.Subject " + where + kOnlyByStatement +
                            " ORDER BY Email.Subject"))
        << change;
  }
}

TEST_F(ColumnCacheTest, RowsAreReadInAnyOrder) {
  Database& engine = connection_.GetImpl().session.Engine();
  for (const char* table : {"Email", "Attachment"}) {
    std::string names =
        "SELECT name FROM sqlite_schema WHERE sql IS NOT NULL AND type = 'index'"
        " AND tbl_name = '" +
        std::string(table) + "'";
    std::vector<std::string> indexes;
    for (Statement found(engine, names); found.Step();) indexes.emplace_back(found.Text(0));
    for (const std::string& index : indexes) engine.Run(("DROP INDEX " + index).c_str());
  }
  engine.Run("UPDATE Attachment SET EmailID = 1 + ID * 31 % 50");
  Compare("without indexes");
}

TEST_F(ColumnCacheTest, WhatTheEngineRollsBackIsForgotten) {
  Compare("before");
  connection_.BeginGroup();
  Run("DELETE * FROM Email WHERE ID < 50");
  Compare("in between");
  connection_.GetImpl().session.Engine().Run("ROLLBACK; BEGIN");
  Compare("after");
  connection_.EndGroup();
}

// The work of a filter's change, of a mark and of the counts, as the engine counts it.
TEST_F(ColumnCacheTest, ALookAtTheListCostsNoPassOverTheTable) {
  std::string list = std::string("SELECT DISTINCT Email.ID, Email.Subject ") + kTables +
                     "WHERE ReceivedTime BETWEEN #01/01/1990# AND #12/31/2030# AND "
                     "Direction = 'In' ORDER BY Email.ReceivedTime DESC";
  Recordset rows;
  rows.Open(list, connection_);
  EXPECT_GT(rows.RecordCount(), 0);
  int64_t steps = connection_.GetImpl().session.Engine().StepsRun();
  for (const char* order : {"", " AND Active = '+'", " AND FilesNum <> 0"}) {
    Recordset again;
    again.Open(std::string("SELECT Count(Email.ID) AS N ") + kTables +
                   "WHERE ReceivedTime BETWEEN #01/01/1990# AND #12/31/2030#" + order,
               connection_);
    EXPECT_FALSE(again.Eof());
  }
  // By subjects in one pass over an index, once.
  for (const char* order : {"Subject", "Subject DESC"}) {
    Recordset again;
    again.Open(std::string("SELECT DISTINCT Email.ID ") + kTables +
                   "WHERE ReceivedTime BETWEEN #01/01/1990# AND #12/31/2030# AND FilesNum <> 0 "
                   "ORDER BY Email." +
                   order,
               connection_);
    EXPECT_FALSE(again.Eof());
  }
  // Which rows have several attachments, once.
  EXPECT_LE(connection_.GetImpl().session.Engine().StepsRun() - steps, 125);
  steps = connection_.GetImpl().session.Engine().StepsRun();
  Run("UPDATE Email SET Active = '+' WHERE ID = 7");
  rows.Requery();
  EXPECT_GT(rows.RecordCount(), 0);
  EXPECT_LE(connection_.GetImpl().session.Engine().StepsRun() - steps, 4);
  EXPECT_EQ(Kept().RowsReadAgain(), 1);
}

TEST_F(ColumnCacheTest, LookingAtRowsOneByOneCanBeStoppedAndGoesOn) {
  const std::string sql =
      "SELECT FromTo, Count(*) AS N FROM Email WHERE ReceivedTime BETWEEN #01/01/1000# AND "
      "#12/31/9000# AND Active Is Null AND Email.Body Like '%b%' GROUP BY FromTo";
  connection_.SetProgressHandler([] { return true; });
  EXPECT_EQ(ErrorOf([&] { GroupsOf(sql); }), kInterrupted);
  connection_.SetProgressHandler({});
  EXPECT_EQ(GroupsOf(sql), GroupsOf(sql + ", FromTo"));
}

}  // namespace
}  // namespace tarnwick::jet
