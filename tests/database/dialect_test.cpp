// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/dialect/dialect.h"

#include "database/connection_impl.h"
#include "database/dialect/dialect_tree.h"
#include "mail_database.h"

namespace tarnwick::jet {
namespace {

class Dialect : public MailDatabase {
 protected:
  Dialect() {
    Run("INSERT INTO Email (Subject, Direction, ReceivedTime, FilesNum, FromTo, Body) "
        "VALUES ('Budget', 'In', #03/07/2005 14:07:09#, 2, 1, 'See the attached plan')");
    Run("INSERT INTO Email (Subject, Direction, ReceivedTime, FilesNum, FromTo) "
        "VALUES ('Re: budget', 'Out', #03/08/2005#, 0, 2)");
    Run("INSERT INTO Email (Subject, Direction, ReceivedTime, FilesNum) "
        "VALUES ('Привет', 'In', #12/31/1999 23:59:59#, 0)");
    AddNames({"Ann", "O'Neil"});
  }
};

TEST_F(Dialect, Answers) {
  const Case kAnswers[] = {
      {"equality ignores case", "SELECT ID FROM Email WHERE Direction = 'IN'", "1|3"},
      {"bracketed names", "SELECT [ID] FROM [Email] WHERE [Email].[Subject]='budget'", "1"},
      {"double quotes hold texts", "SELECT ID FROM Email WHERE Subject=\"budget\"", "1"},
      {"a doubled apostrophe", "SELECT ID FROM MeContact WHERE Name='o''neil'", "2"},
      {"a doubled double quote", "SELECT 'x' FROM MeContact WHERE Name<>\"a\"\"b\"", "x|x"},
      {"a word right behind a number", "SELECT Subject FROM Email WHERE ID=1ORDER BY ID", "Budget"},
      {"two minus signs", "SELECT 3--2 FROM MeContact WHERE ID=1", "5"},
      {"dates",
       "SELECT ID FROM Email WHERE ReceivedTime BETWEEN #03/07/2005 00:00:00# AND "
       "#03/07/2005 23:59:59#",
       "1"},
      {"Format",
       "SELECT Format$(ReceivedTime, 'Short Date') & ' ' & Format(ReceivedTime, 'hh:mm') "
       "FROM Email WHERE ID=1",
       "3/7/2005 14:07"},
      {"DateValue is the day, also before 1970",
       "SELECT ID FROM Email WHERE DateValue(ReceivedTime)=#12/31/1999# OR "
       "DateValue(ReceivedTime)=#3/7/2005# OR DateValue(#1/1/1960 23:00#)<>#1/1/1960#",
       "1|3"},
      {"Null side by side with text", "SELECT Active & 'x' & FilesNum FROM Email WHERE ID=1", "x2"},
      {"InStr counts characters", "SELECT INSTR(Subject, 'вЕТ') FROM Email WHERE ID=3", "4"},
      {"Like", "SELECT ID FROM Email WHERE Subject LIKE '%BUDGET%'", "1|2"},
      {"Not Like", "SELECT ID FROM Email WHERE Subject Not Like '%budget%'", "3"},
      {"Like on Null holds for none", "SELECT ID FROM Email WHERE Body Like '%%'", "1"},
      {"a subselect",
       "SELECT ID FROM Email WHERE FromTo In (SELECT ID FROM MeContact WHERE "
       "Name='Ann')",
       "1"},
      {"a list", "SELECT ID FROM Email WHERE ID NOT IN (1, 2)", "3"},
      {"Is Null", "SELECT ID FROM Email WHERE FromTo IS NULL OR NOT Body Is Not Null", "2|3"},
      {"counting skips Null", "SELECT Count(Email.FromTo) AS N FROM Email", "2"},
      {"grouping", "SELECT Direction & Count(*) FROM Email GROUP BY Direction", "In2|Out1"},
      {"the first rows", "SELECT TOP 2 Subject FROM Email ORDER BY ReceivedTime DESC",
       "Re: budget|Budget"},
      {"sums", "SELECT FilesNum + 3 - (1 - 2) FROM Email WHERE ID=1", "6"},
      {"and binds closer than or", "SELECT ID FROM Email WHERE ID=1 OR ID=2 AND FilesNum=9", "1"},
      {"a star of one table",
       "SELECT MeContact.* FROM Email INNER JOIN MeContact ON "
       "Email.FromTo=MeContact.ID WHERE Email.ID=2",
       "2"},
      {"texts that look like code",
       "SELECT ID FROM MeContact WHERE Name='x''; DELETE * FROM Email; --' OR ID=1", "1"},
      {"comments in texts", "SELECT '/*' & '--' & \"'\" & '#' & '[a]' FROM MeContact WHERE ID=1",
       "/*--'#[a]"},
  };
  for (const Case& test : kAnswers) {
    EXPECT_EQ(Column(test.given), test.expected) << test.what;
  }
}

TEST_F(Dialect, RefusesWhatItDoesNotSpeak) {
  for (const char* sql : {"",
                          ";",
                          "ATTACH 'x' AS y",
                          "PRAGMA key='x'",
                          "CREATE TABLE x (y)",
                          "DROP TABLE Email",
                          "VACUUM",
                          "BEGIN",
                          "SELECT ID FROM Email; DELETE * FROM Email",
                          "DELETE * FROM Email; DELETE * FROM MeContact",
                          "SELECT ID FROM Email -- all of them",
                          "SELECT ID FROM Email /* all of them */",
                          "SELECT ID FROM Email UNION SELECT ID FROM MeContact",
                          "SELECT name FROM sqlite_schema",
                          "SELECT sql FROM SQLITE_MASTER",
                          "SELECT * FROM pragma_table_list",
                          "SELECT * FROM json_each",
                          "SELECT ID FROM Email, MeContact",
                          "SELECT value FROM carray",
                          "SELECT randomblob(5) FROM Email",
                          "SELECT load_extension('x') FROM Email",
                          "SELECT tw_like('a', 'a') FROM Email",
                          "SELECT InStr(Subject) FROM Email",
                          "SELECT ID FROM Email WHERE Subject='x",
                          "SELECT ID FROM Email WHERE ReceivedTime=#03/07/2005",
                          "SELECT ID FROM Email WHERE ReceivedTime=#02/30/2005#",
                          "SELECT ID FROM Email WHERE ReceivedTime=#13/01/2005#",
                          "SELECT ID FROM Email WHERE [Subject='x'",
                          "SELECT ID FROM Email WHERE ID=?1",
                          "SELECT ID FROM Email WHERE ID=:id",
                          "SELECT ID FROM Email ORDER BY 1",
                          "SELECT ID FROM (SELECT ID FROM Email)",
                          "SELECT ID FROM NoTable",
                          "SELECT NoColumn FROM Email",
                          "SELECT FROM Email",
                          "INSERT INTO Email",
                          "UPDATE Email SET Subject",
                          "DELETE FROM"}) {
    Recordset rows;
    EXPECT_EQ(ErrorOf([&] { rows.Open(sql, connection_); }), 1) << sql;
    EXPECT_EQ(ErrorOf([&] { connection_.Execute(sql); }), 1) << sql;
  }
  EXPECT_EQ(Column("SELECT Count(*) FROM Email"), "3");
}

TEST_F(Dialect, NestingIsBounded) {
  for (const char* piece : {"(", "NOT "}) {
    std::string deep = "SELECT ID FROM Email WHERE ";
    for (int i = 0; i < 100000; i++) deep += piece;
    EXPECT_EQ(ErrorOf([&] { Column(deep + "ID=1"); }), 1) << piece;
  }
}

TEST_F(Dialect, LiteralsReachTheDatabaseAsTheyAre) {
  const std::string kTexts[] = {std::string("a\0b'c", 5),       "'); DELETE * FROM Email; --",
                                "/* */ -- #1/1/2000# [x] %_?*", "\"double\" and \\back\\",
                                "line\r\nbreak\ttab",           "日本語 ü 😀",
                                std::string(70000, 'x')};
  for (const std::string& text : kTexts) {
    EXPECT_EQ(Run("INSERT INTO MeContact (Name) VALUES (" + Quoted(text) + ")"), 1);
    Recordset found;
    found.Open("SELECT Name FROM MeContact WHERE Name=" + Quoted(text), connection_);
    ASSERT_FALSE(found.Eof());
    EXPECT_EQ(found.Field("Name").AsText(), text);
  }
  EXPECT_EQ(Column("SELECT Count(*) FROM Email"), "3");
  Run("INSERT INTO MeContact (Name) VALUES ('M\xfcller \x80')");
  EXPECT_EQ(Column("SELECT Name FROM MeContact WHERE ID=10"), "Müller €") << "as Windows-1252";
}

TEST_F(Dialect, ChangesRowsAndCountsThem) {
  EXPECT_EQ(Run("UPDATE Email SET Active = '+', FilesNum = FilesNum + 1 WHERE Direction='In'"), 2);
  EXPECT_EQ(Column("SELECT FilesNum FROM Email WHERE Active='+'"), "3|1");
  Run("INSERT INTO ObjectList VALUES (1)");
  EXPECT_EQ(Run("UPDATE Email SET Active = Null WHERE ID In (SELECT ID FROM ObjectList)"), 1);
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE Active='+'"), "3");
  EXPECT_EQ(Run("DELETE FROM Email WHERE ID=3"), 1);
  EXPECT_EQ(Run("DELETE * FROM Email"), 2);
  EXPECT_EQ(Run("DELETE FROM ObjectList"), 1);
}

TEST_F(Dialect, ClockIsOneWithinAStatement) {
  SetNow(DateTime::FromDate(2020, 6, 15).WithTime(12, 30, 45));
  EXPECT_EQ(Column("SELECT Format(Date(), 'ddddd hh:mm') FROM MeContact WHERE ID=1"),
            "6/15/2020 00:00");
  Run("UPDATE Email SET ReceivedTime = Date() WHERE ID=1");
  platform::SetClockOverride({});
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE ReceivedTime=#06/15/2020#"), "1");
}

TEST_F(Dialect, ListsOfManyThousandIds) {
  std::string list;
  for (int i = 2; i < 200000; i++) list += (i > 2 ? ", " : "") + std::to_string(i);
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE ID IN (" + list + ") ORDER BY ID"), "2|3");
  std::string texts;
  for (int i = 0; i < 5000; i++) texts += "'text " + std::to_string(i) + "', ";
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE Subject IN (" + texts + "'budget')"), "1");
  std::string chain = "SELECT ID FROM Email WHERE ID=3";
  for (int i = 10; i < 500; i++) chain += " OR ID=" + std::to_string(i);
  EXPECT_EQ(Column(chain), "3");
}

// A long list says what a short one says, in every place that it can stand in.
TEST_F(Dialect, LongListsMeanWhatShortOnesMean) {
  Run("UPDATE Email SET EntryID = '2' WHERE ID = 1");
  Run("UPDATE Email SET EntryID = '02' WHERE ID = 2");
  std::string others;
  for (int i = 400; i > 10; i--) others += " ,\r\n" + std::to_string(i);
  int64_t last = connection_.LastIdentity();
  for (const char* sql :
       {"SELECT ID FROM Email WHERE ID IN # ORDER BY ID", "SELECT ID FROM Email WHERE ID NOT IN #",
        "SELECT ID FROM Email WHERE EntryID IN # ORDER BY ID",
        "SELECT ID FROM Email WHERE ID + 1 IN # ORDER BY ID",
        "SELECT ID FROM Email WHERE FromTo NOT IN #", "SELECT ID FROM Email WHERE Weight IN #",
        "SELECT ID FROM Email WHERE ID IN # AND ID NOT IN (9, 9, 1)",
        "SELECT Email.ID FROM Email LEFT JOIN MeContact ON Email.FromTo = MeContact.ID WHERE "
        "MeContact.ID IN # OR Email.ID IN (1) ORDER BY Email.ID",
        "SELECT Count(*) FROM Email WHERE ID IN #",
        "SELECT ID FROM Email WHERE ID IN (SELECT ID FROM Email WHERE ID IN #)"}) {
    std::string text(sql);
    std::string shortOne = text;
    shortOne.replace(text.find('#'), 1, "(3, 2, 3)");
    text.replace(text.find('#'), 1, "(3, 2, 3" + others + ")");
    EXPECT_EQ(Column(text), Column(shortOne)) << sql;
  }
  EXPECT_EQ(connection_.LastIdentity(), last);
  for (const char* wrong : {"(1, 2, )", "(1, 2", "(1 2)"}) {
    std::string list(wrong);
    list.insert(2, others);
    EXPECT_EQ(ErrorOf([&] { Column("SELECT ID FROM Email WHERE ID IN " + list); }), 1) << wrong;
  }
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE ID IN (2.0, -1" + others + ")"), "2");

  // What is open keeps its list, whatever else is run.
  std::string sql = "SELECT ID FROM Email WHERE ID IN (3, 2" + others + ") ORDER BY ID";
  {
    Recordset rows;
    rows.Open(sql, connection_);
    EXPECT_EQ(rows.RecordCount(), 2);
    EXPECT_EQ(Run("UPDATE Email SET Subject = 'listed' WHERE ID IN (3" + others + ")"), 1);
    rows.Requery();
    EXPECT_EQ(rows.RecordCount(), 2);
    EXPECT_EQ(Run("DELETE FROM Email WHERE ID IN (2" + others + ")"), 1);
    rows.Requery();
    EXPECT_EQ(rows.RecordCount(), 1);
  }
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE Subject = 'listed'"), "3");
}

TEST(Lift, StatementsOfOneShapeShareIt) {
  LiftedSql a;
  LiftedSql b;
  Lift("SELECT ID FROM Email WHERE EntryID='x' AND ID=5", a);
  Lift("SELECT  ID\r\nFROM Email WHERE EntryID='it''s ''; --' AND ID=77", b);
  EXPECT_EQ(a.shape, b.shape);
  EXPECT_EQ(b.literals[0], Value("it's '; --"));
  EXPECT_EQ(b.literals[1], Value(77));
  Lift("SELECT ID FROM Email WHERE [EntryID]='x' AND ID=5", b);
  EXPECT_NE(a.shape, b.shape);
}

}  // namespace
}  // namespace tarnwick::jet
