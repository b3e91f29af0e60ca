// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/recordset.h"

#include "mail_database.h"

namespace tarnwick::jet {
namespace {

constexpr char kListItems[] =
    "SELECT DISTINCT Format$(Email.ReceivedTime, 'Short Date') & ' ' & "
    "Format$(Email.ReceivedTime, 'hh:mm') As Received, Email.Subject, MeContact.Name AS FromTo, "
    "Email.Direction, Email.Active, Email.ID, Email.ReceivedTime \r\n"
    "FROM (Email LEFT JOIN MeContact ON Email.FromTo = MeContact.ID)\r\n"
    "LEFT JOIN Attachment ON Email.ID = Attachment.EmailID\r\n";

class RecordsetTest : public MailDatabase {
 protected:
  RecordsetTest() {
    connection_.BeginGroup();
    AddNames({"Ann", "Bob", "Zoë"});
    // ID 1..6, one a day; 4 has no contact; 2 and 5 have attachments.
    for (int i = 1; i <= 6; i++) {
      std::string contact = i == 4 ? "Null" : std::to_string(i % 3 + 1);
      Run("INSERT INTO Email (Subject, Direction, ReceivedTime, FromTo) VALUES ('Subject " +
          std::to_string(i % 2) + "', '" + (i % 3 == 0 ? "Out" : "In") + "', #03/0" +
          std::to_string(i) + "/2005 10:00:00#, " + contact + ")");
    }
    for (const char* row : {"2, 'plan.doc'", "2, 'plan.xls'", "5, 'photo.jpg'"}) {
      Run(std::string("INSERT INTO Attachment (EmailID, FileName) VALUES (") + row + ")");
    }
    connection_.EndGroup();
  }

  static std::string Ids(Recordset& rows) {
    std::string ids;
    for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) ids += rows.Field("ID").AsText() + " ";
    return ids;
  }
};

TEST_F(RecordsetTest, HeldRowsStayTheOnesThatWereChosen) {
  Recordset rows = OpenText(std::string(kListItems) + "ORDER BY Email.ReceivedTime DESC");
  EXPECT_EQ(rows.Keys(), (std::vector<int64_t>{6, 5, 4, 3, 2, 1}));
  rows.Hold({5, 3});
  rows.HoldMore({1});
  EXPECT_EQ(Ids(rows), "5 3 1 ");
  Run("DELETE FROM Email WHERE ID = 3");
  rows.Requery();
  EXPECT_EQ(Ids(rows), "5 1 ");
  rows.HoldMore({2});
  EXPECT_EQ(Ids(rows), "5 1 2 ");
  rows.Requery();
  EXPECT_EQ(Ids(rows), "5 2 1 ");
  rows.Close();
  rows = OpenText(std::string(kListItems) + "ORDER BY Email.ReceivedTime DESC");
  EXPECT_EQ(rows.RecordCount(), 5);
  EXPECT_EQ(ErrorOf([&] { OpenText("SELECT Count(*) AS N FROM Email").Hold({1}); }), 3251);
}

TEST_F(RecordsetTest, RowsAreReadInOnePass) {
  std::string read;
  connection_.ReadRows("SELECT TOP 3 ID, FromTo, Subject FROM Email WHERE ID > 2 ORDER BY ID",
                       [&](const PassingRow& row) {
                         read += std::to_string(row.Int(0)) + std::to_string(row.Int(1)) +
                                 std::string(row.Text(2)) + "|";
                       });
  EXPECT_EQ(read, "31Subject 1|40Subject 0|53Subject 1|");
  auto nothing = [](const PassingRow&) {};
  EXPECT_NE(ErrorOf([&] { connection_.ReadRows("DELETE FROM Email", nothing); }), 0);
}

TEST_F(RecordsetTest, TheListShowsEachMessageOnceInOrder) {
  struct Case {
    const char* what;
    const char* condition;
    const char* order;
    const char* ids;
  };
  const Case kCases[] = {
      {"by date, newest first", "", "ORDER BY Email.ReceivedTime DESC", "6 5 4 3 2 1 "},
      {"by subject, ties by key", "", "ORDER BY Email.Subject", "2 4 6 1 3 5 "},
      {"by subject downwards", "", "ORDER BY Email.Subject DESC", "5 3 1 6 4 2 "},
      {"by name, those without one first", "", "ORDER BY MeContact.Name", "4 3 6 1 2 5 "},
      {"in no order", "", "", "1 2 3 4 5 6 "},
      {"attachments", "AND Attachment.FileName Like '%PLAN%'", "ORDER BY Email.ReceivedTime", "2 "},
      {"every attachment", "AND Attachment.FileName Like '%%'", "", "2 5 "},
      {"no attachment", "AND Attachment.FileName Is Null", "", "1 3 4 6 "},
      {"a name", "AND INSTR(MeContact.Name, 'zoË') <> 0 ", "ORDER BY Email.ReceivedTime", "2 5 "},
      {"a name or none", "AND (MeContact.Name = 'Bob' OR MeContact.Name Is Null)", "", "1 4 "},
      {"direction unqualified", "AND Direction = 'Out'", "", "3 6 "},
      {"some days", "AND ReceivedTime BETWEEN #03/02/2005 00:00:00# AND #03/03/2005 23:59:59#", "",
       "2 3 "},
      {"nothing", "AND Email.Subject = 'none'", "ORDER BY Email.Direction", ""},
  };
  for (const Case& test : kCases) {
    Recordset list = OpenText(std::string(kListItems) +
                              "WHERE ReceivedTime BETWEEN #01/01/2005# AND #12/31/2005# " +
                              test.condition + "\r\n" + test.order);
    EXPECT_EQ(Ids(list), test.ids) << test.what;
  }
}

TEST_F(RecordsetTest, TheListsFieldsHaveTheirNamesAndTypes) {
  Recordset list = OpenText(std::string(kListItems) + "ORDER BY Email.ReceivedTime DESC");
  std::string names;
  for (int i = 0; i < list.FieldCount(); i++) names += list.FieldName(i) + " ";
  EXPECT_EQ(names, "Received Subject FromTo Direction Active ID ReceivedTime ");
  list.SetAbsolutePosition(2);
  EXPECT_EQ(list.Field("received").AsText(), "3/5/2005 10:00");
  EXPECT_EQ(list.Field(2), Value("Zoë"));
  EXPECT_TRUE(list.Field("Active").IsNull());
  EXPECT_EQ(list.Field("ReceivedTime"), Value(DateTime::FromDate(2005, 3, 5).WithTime(10, 0, 0)));
  EXPECT_EQ(ErrorOf([&] { list.Field("None"); }), ErrorNumber::kNoSuchItem);
  EXPECT_EQ(ErrorOf([&] { list.Field(7); }), ErrorNumber::kNoSuchItem);
}

TEST_F(RecordsetTest, Moves) {
  for (const char* sql :
       {"SELECT ID FROM Email ORDER BY ID", "SELECT DISTINCT Subject & ID FROM Email"}) {
    SCOPED_TRACE(sql);
    Recordset rows = OpenText(sql);
    auto refuses = [&](auto move) {
      EXPECT_EQ(ErrorOf([&] { rows.Field(0); }), ErrorNumber::kNoCurrentRow);
      EXPECT_EQ(ErrorOf(move), ErrorNumber::kNoCurrentRow);
    };
    EXPECT_FALSE(rows.Eof() || rows.Bof());
    EXPECT_EQ(rows.AbsolutePosition(), 1);
    EXPECT_EQ(rows.RecordCount(), 6);
    rows.MovePrevious();
    EXPECT_TRUE(rows.Bof());
    EXPECT_EQ(rows.AbsolutePosition(), 0);
    refuses([&] { rows.MovePrevious(); });
    rows.MoveNext();
    EXPECT_EQ(rows.AbsolutePosition(), 1);
    rows.MoveLast();
    EXPECT_EQ(rows.AbsolutePosition(), 6);
    rows.MoveNext();
    EXPECT_TRUE(rows.Eof());
    refuses([&] { rows.MoveNext(); });
    rows.MovePrevious();
    EXPECT_EQ(rows.AbsolutePosition(), 6);
    for (int64_t beyond : {7, 0}) {
      EXPECT_EQ(ErrorOf([&] { rows.SetAbsolutePosition(beyond); }), ErrorNumber::kNoCurrentRow);
    }
  }
}

TEST_F(RecordsetTest, WithoutRowsBothEndsAreTrue) {
  for (const char* sql : {"SELECT * FROM ObjectList", "SELECT * FROM Email WHERE ID=99",
                          "SELECT DISTINCT Name FROM MeContact WHERE ID=99"}) {
    SCOPED_TRACE(sql);
    Recordset rows = OpenText(sql);
    EXPECT_TRUE(rows.Eof() && rows.Bof());
    rows.MoveFirst();
    EXPECT_TRUE(rows.Eof() && rows.Bof());
    rows.MoveLast();
    EXPECT_EQ(rows.RecordCount() + rows.AbsolutePosition(), 0);
    EXPECT_EQ(ErrorOf([&] { rows.MoveNext(); }), ErrorNumber::kNoCurrentRow);
    EXPECT_EQ(ErrorOf([&] { rows.Field(0); }), ErrorNumber::kNoCurrentRow);
  }
}

TEST_F(RecordsetTest, AddsRowsAndKnowsTheirKeys) {
  Recordset contacts = OpenTable("MeContact");
  contacts.AddNew();
  contacts.SetField("name", "Dora");
  EXPECT_EQ(contacts.Field("Name").AsText(), "Dora");
  EXPECT_TRUE(contacts.Field("ID").IsNull());
  contacts.Update();
  EXPECT_EQ(contacts.Field("ID").AsInt(), 4);
  EXPECT_EQ(contacts.Field("Name").AsText(), "Dora");
  EXPECT_EQ(contacts.RecordCount(), 4);
  EXPECT_EQ(contacts.AbsolutePosition(), 4);
  contacts.AddNew();
  contacts.Update();
  EXPECT_EQ(contacts.Field("ID").AsInt(), 5) << "a row of nothing but its key";
  contacts.AddNew();
  contacts.SetField("ID", int64_t{1} << 40);
  contacts.Update();
  EXPECT_EQ(contacts.RecordCount(), 6);
  contacts.Requery();
  contacts.MoveLast();
  EXPECT_EQ(contacts.Field("ID").AsInt(), int64_t{1} << 40);
  contacts.Delete();
  contacts.AddNew();
  contacts.SetField("Name", "never");
  contacts.CancelUpdate();
  contacts.MoveFirst();
  EXPECT_EQ(contacts.Field("Name").AsText(), "Ann");
  EXPECT_EQ(contacts.RecordCount(), 5);
}

TEST_F(RecordsetTest, KeepsEveryKindOfValue) {
  const std::vector<std::pair<const char*, Value>> kFields = {
      {"ReceivedTime", DateTime::FromDate(102, 1, 2)},
      {"FilesNum", int64_t{1} << 40},
      {"Weight", 2.5},
      {"Body", std::string("a\0b", 3)},
      {"Active", Value()}};
  Recordset email = OpenTable("Email");
  email.AddNew();
  email.SetField("Subject", "Gr\xfc\xdf\x65");
  for (const auto& [name, value] : kFields) email.SetField(name, value);
  email.Update();
  Recordset file = OpenTable("FileRepository");
  file.AddNew();
  Value bytes = Bytes{std::string("\0\xff'\x80", 4)};
  file.SetField("FileBody", bytes);
  file.Update();
  Recordset read = OpenText("SELECT * FROM Email WHERE ID=" + email.Field("ID").AsText());
  EXPECT_EQ(read.Field("Subject"), Value("Grüße"));
  for (const auto& [name, value] : kFields) EXPECT_EQ(read.Field(name), value) << name;
  EXPECT_EQ(OpenTable("FileRepository").Field("FileBody"), bytes);
}

TEST_F(RecordsetTest, ChangesTheCurrentRow) {
  Recordset hot = OpenText("SELECT Active FROM Email WHERE ID=5");
  hot.SetField("Active", "+");
  EXPECT_EQ(hot.Field("Active").AsText(), "+");
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE Active='+'"), "") << "not before Update";
  hot.Update();
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE Active='+'"), "5");
  hot.Requery();
  hot.SetField("Active", Value());
  hot.Update();
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE Active='+'"), "");

  Recordset all = OpenText("SELECT * From Email ORDER BY ID DESC");
  for (; !all.Eof(); all.MoveNext()) {
    all.SetField("Body", "body of " + all.Field("ID").AsText());
    if (all.Field("ID").AsInt() % 2 == 0) all.Update();  // the others by moving on
  }
  EXPECT_EQ(Column("SELECT Body FROM Email WHERE ID > 4"), "body of 5|body of 6");
}

TEST_F(RecordsetTest, ChangesOnlyWhatItMay) {
  Recordset readOnly;
  readOnly.Open("SELECT * FROM MeContact", connection_);
  EXPECT_EQ(ErrorOf([&] { readOnly.AddNew(); }), ErrorNumber::kNotUpdatable);
  EXPECT_EQ(ErrorOf([&] { readOnly.SetField("Name", "x"); }), ErrorNumber::kNotUpdatable);
  EXPECT_EQ(ErrorOf([&] { readOnly.Delete(); }), ErrorNumber::kNotUpdatable);
  Recordset kept = OpenText("SELECT Count(*) FROM MeContact");
  EXPECT_EQ(ErrorOf([&] { kept.AddNew(); }), ErrorNumber::kNotUpdatable);
  Recordset list = OpenText(std::string(kListItems) + "ORDER BY Email.ID");
  EXPECT_EQ(ErrorOf([&] { list.SetField("FromTo", "x"); }), ErrorNumber::kNotUpdatable);
  list.SetField("Subject", "changed");
  list.Update();
  EXPECT_EQ(Column("SELECT Subject FROM Email WHERE ID=1"), "changed");
}

TEST_F(RecordsetTest, DeletesTheCurrentRow) {
  Recordset rows = OpenText("SELECT * FROM Email ORDER BY ID");
  rows.SetAbsolutePosition(2);
  rows.Delete();
  EXPECT_TRUE(rows.Field("Subject").IsNull());
  rows.MoveNext();
  EXPECT_EQ(rows.Field("ID").AsInt(), 3);
  rows.MoveLast();
  rows.Delete();
  EXPECT_EQ(rows.RecordCount(), 4);
  rows.MovePrevious();
  EXPECT_EQ(rows.Field("ID").AsInt(), 5);
  EXPECT_EQ(Column("SELECT ID FROM Email"), "1|3|4|5");
}

TEST_F(RecordsetTest, KeepsItsRowsWhileOthersChangeThem) {
  Recordset rows = OpenText("SELECT * FROM Email ORDER BY ID");
  EXPECT_EQ(rows.RecordCount(), 6);
  Run("DELETE * FROM Email WHERE ID=2");
  Run("UPDATE Email SET Subject='new' WHERE ID=1");
  Run("INSERT INTO Email (Subject) VALUES ('seventh')");
  EXPECT_EQ(rows.Field("Subject").AsText(), "new");
  rows.MoveNext();
  EXPECT_TRUE(rows.Field("ID").IsNull()) << "deleted meanwhile";
  EXPECT_EQ(ErrorOf([&] {
              rows.SetField("Subject", "x");
              rows.Update();
            }),
            ErrorNumber::kNoCurrentRow);
  rows.CancelUpdate();
  EXPECT_EQ(rows.RecordCount(), 6);
  rows.Requery();
  EXPECT_EQ(Ids(rows), "1 3 4 5 6 7 ");
}

TEST_F(RecordsetTest, ShowsWhatOthersHaveWrittenInARowThatItRead) {
  for (size_t size : {10, 10000}) {
    SCOPED_TRACE(size);
    Recordset rows = OpenText("SELECT ID, Body FROM Email ORDER BY ID");
    for (char c : {'a', 'b', 'c'}) {
      std::string body(size, c);
      Run("UPDATE Email SET Body = '" + body + "' WHERE ID = 1");
      EXPECT_TRUE(rows.Field("Body").AsText() == body) << c;
    }
    Run("DELETE * FROM Email WHERE ID = 1");
    EXPECT_TRUE(rows.Field("Body").IsNull());
    Run("INSERT INTO Email (ID) VALUES (1)");
  }
}

TEST_F(RecordsetTest, FindsFromTheCurrentRowOn) {
  struct Case {
    const char* what;
    const char* sql;
    const char* criteria;
    int64_t from;
    int64_t found;  // an ID; 0 none
  };
  const char* table = "SELECT * FROM Email ";
  const char* sorted = "SELECT * FROM Email ORDER BY ID DESC";
  const Case kCases[] = {
      {"case is ignored", table, "Subject = 'SUBJECT 0'", 1, 2},
      {"no blanks", table, "Subject='subject 0'", 3, 4},
      {"the current row counts", table, "[Subject] = 'Subject 1'", 5, 5},
      {"not found", table, "Subject = 'Subject 1'", 6, 0},
      {"an accent counts", table, "Subject = 'Sübject 1'", 1, 0},
      {"a number", table, "ID = 3", 1, 3},
      {"a negative number", table, "ID > -5", 2, 2},
      {"like", table, "Subject Like '%T 0%'", 1, 2},
      {"not equal", table, "Direction <> 'In'", 4, 6},
      {"a date", table, "ReceivedTime >= #03/04/2005#", 1, 4},
      {"a sorted query", sorted, "Subject = 'subject 0'", 2, 4},
      {"a sorted query, not found", sorted, "ID > 5", 2, 0},
      {"a sorted query, like", sorted, "Direction like 'o%'", 2, 3},
  };
  for (const Case& test : kCases) {
    SCOPED_TRACE(test.what);
    Recordset rows = OpenText(test.sql);
    rows.SetAbsolutePosition(test.from);
    rows.Find(test.criteria);
    EXPECT_EQ(rows.Eof() ? 0 : rows.Field("ID").AsInt(), test.found);
  }
  Recordset rows = OpenTable("Email");
  rows.Find("ID = 2");
  rows.MoveNext();  // to the neighbour of what was found
  EXPECT_EQ(rows.Field("ID").AsInt(), 3);
  for (const char* wrong : {"", "Subject", "Subject =", "Subject = x", "Subject = 'a' AND ID=1",
                            "Subject & 'a'", "'a' = Subject"}) {
    EXPECT_EQ(ErrorOf([&] { rows.Find(wrong); }), 1) << wrong;
  }
  EXPECT_EQ(ErrorOf([&] { rows.Find("None = 1"); }), ErrorNumber::kNoSuchItem);
}

TEST_F(RecordsetTest, AskingForTheEndFetchesNoKeys) {
  // With a handler that stops any statement of more than a few thousand steps.
  connection_.BeginGroup();
  for (int i = 0; i < 20000; i++) Run("INSERT INTO ObjectList VALUES (" + std::to_string(i) + ")");
  connection_.EndGroup();
  connection_.SetProgressHandler([] { return true; });
  Recordset list = OpenTable("ObjectList");
  EXPECT_FALSE(list.Eof());
  EXPECT_FALSE(list.Bof());
  EXPECT_EQ(list.Field("ID").AsInt(), 0);
  list.AddNew();
  list.SetField("ID", 5);
  list.Update();
  EXPECT_EQ(list.Field("ID").AsInt(), 5);
  EXPECT_EQ(ErrorOf([&] { list.MoveLast(); }), 9);
  connection_.SetProgressHandler({});
  list.MoveLast();
  EXPECT_EQ(list.AbsolutePosition(), 20001);
}

TEST_F(RecordsetTest, OpenAndClosed) {
  Recordset rows;
  EXPECT_EQ(ErrorOf([&] { rows.Close(); }), ErrorNumber::kObjectClosed);
  EXPECT_EQ(ErrorOf([&] { rows.MoveFirst(); }), ErrorNumber::kObjectClosed);
  EXPECT_EQ(ErrorOf([&] { rows.RecordCount(); }), ErrorNumber::kObjectClosed);
  rows.Open("SELECT * FROM Email", connection_);
  EXPECT_EQ(ErrorOf([&] { rows.Open("Email", connection_); }), 3705);
  rows.Close();
  EXPECT_EQ(ErrorOf([&] { rows.Open("DELETE * FROM Email", connection_); }), 1);
  EXPECT_EQ(ErrorOf([&] { OpenTable("NoTable"); }), 1);
  EXPECT_FALSE(rows.IsOpen());
  rows.Open("SELECT Count(*) AS N FROM Email", connection_);
  EXPECT_EQ(rows.Field("N").AsInt(), 6);
}

TEST_F(RecordsetTest, MaySurviveTheConnection) {
  Recordset rows;
  {
    testing::TempFolder folder;
    CreateDatabaseFile(folder.File("a.twr"), kPassword, MailTables(), 1);
    Connection connection;
    OpenFile(connection, folder.File("a.twr"));
    rows.Open("SELECT * FROM Email", connection);
  }
  EXPECT_FALSE(rows.IsOpen());
}

TEST_F(RecordsetTest, AnEditThatFailsLeavesNothingForTheNextRow) {
  Recordset rows = OpenTable("MeContact");
  auto edit = [&](int64_t takenKey) {
    rows.SetField("Name", "Half");
    rows.SetField("ID", takenKey);
  };
  rows.AddNew();
  edit(1);
  EXPECT_NE(ErrorOf([&] { rows.Update(); }), 0);
  rows.AddNew();
  edit(1);
  EXPECT_NE(ErrorOf([&] { rows.AddNew(); }), 0);
  rows.AddNew();
  rows.SetField("Name", "Half");
  EXPECT_EQ(ErrorOf([&] { rows.SetField("NoSuchField", 1); }), ErrorNumber::kNoSuchItem);
  rows.MoveFirst();
  edit(2);
  EXPECT_NE(ErrorOf([&] { rows.MoveNext(); }), 0);
  EXPECT_EQ(rows.Field("Name").AsText(), "Ann");
  rows.AddNew();
  rows.Update();
  EXPECT_EQ(Column("SELECT Name FROM MeContact"), "Ann|Bob|Zoë|Null");
}

}  // namespace
}  // namespace tarnwick::jet
