// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/connection.h"

#include "database/connection_impl.h"
#include "database/engine/engine.h"
#include "database/text/order.h"
#include "mail_database.h"
#include "support/faults.h"
#include "support/machine.h"

namespace tarnwick::jet {
namespace {

using ConnectionTest = MailDatabase;

TEST_F(ConnectionTest, RefusesWhatIsNoDatabaseOfOurs) {
  std::string damaged = platform::ReadFile(MakeFile("damaged.twr"));
  damaged[200] = static_cast<char>(damaged[200] ^ 1);
  const struct {
    const char* what;
    std::string bytes;
  } kFiles[] = {
      {"another password", platform::ReadFile(MakeFile("other.twr", "something"))},
      {"no password of ours", platform::ReadFile(MakeFile("third.twr", ""))},
      {"a plain database", "SQLite format 3" + std::string(1, '\0') + std::string(8000, 'x')},
      {"an empty file", ""},
      {"another kind of file", std::string(10000, 'a')},
      {"a changed byte", damaged},
  };
  Connection connection;
  auto refuses = [&](const std::string& path, int number, const std::string& description) {
    try {
      OpenFile(connection, path);
      ADD_FAILURE() << "it was opened";
    } catch (const Error& error) {
      EXPECT_EQ(error.Number(), number);
      EXPECT_EQ(error.Description(), description);
    }
    EXPECT_FALSE(connection.IsOpen());
  };
  for (const auto& file : kFiles) {
    SCOPED_TRACE(file.what);
    platform::WriteFile(folder_.File("tried.twr"), file.bytes);
    refuses(folder_.File("tried.twr"), 26, "file is not a database");
    EXPECT_EQ(platform::FileSize(folder_.File("tried.twr")), file.bytes.size());
  }
  refuses(folder_.File("none.twr"), 14, "unable to open database file");
  refuses(folder_.Path(), 14, "unable to open database file");
  EXPECT_FALSE(platform::FileExists(folder_.File("none.twr")));
}

TEST_F(ConnectionTest, HoldsItsFileForItself) {
  auto open = [&] {
    Connection second;
    OpenFile(second, path_);
  };
  EXPECT_FALSE(testing::RunInChild(open));
  EXPECT_EQ(ErrorOf(open), 5);
  connection_.Close();
  EXPECT_TRUE(testing::RunInChild(open));
}

TEST_F(ConnectionTest, AtRestIsASingleFileThatCanBeCopied) {
  AddNames({"Ann"});
  connection_.Close();
  EXPECT_THAT(platform::ListFiles(folder_.Path()), ElementsAre("mail.twr"));
  EXPECT_THAT(platform::ReadFile(path_), Not(HasSubstr("MeContact"))) << "stored in the clear";
  platform::CopyFile(path_, folder_.File("copy.twr"));
  OpenFile(connection_, folder_.File("copy.twr"));
  EXPECT_EQ(Column("SELECT Name FROM MeContact"), "Ann");
}

// As a file made with another version of the text order is.
TEST_F(ConnectionTest, RebuildsIndexesOfAnotherTextOrder) {
  AddNames({"b", "A", "c"});
  connection_.Close();
  std::string other = MakeFile("other.twr");
  std::string source = MakeFile("source #1%3Fmode=rw.twr");
  for (const std::string& path : {path_, other, source}) {
    Database file(path, kPassword, Database::Mode::kExisting);
    file.Run("PRAGMA application_id = 1");
  }
  std::string bytes = platform::ReadFile(source);
  connection_.Open();
  EXPECT_EQ(connection_.IntegrityCheck(), "");
  EXPECT_EQ(Column("SELECT Name FROM MeContact ORDER BY Name"), "A|b|c");
  Run("INSERT INTO MeContact IN '" + other + "' SELECT * FROM MeContact");
  // What is only read from stays as it is.
  Run("INSERT INTO MeContact SELECT * FROM MeContact IN '" + source + "'");
  EXPECT_EQ(Column("SELECT Name FROM MeContact IN '" + source + "'"), "");
  connection_.Close();
  EXPECT_TRUE(platform::ReadFile(source) == bytes);
  for (const std::string& path : {path_, other}) {
    Database file(path, kPassword, Database::Mode::kExisting);
    EXPECT_EQ(file.Number("PRAGMA application_id"), TextOrderVersion());
  }
}

// As a file is that was brought up to date column by column.
TEST_F(ConnectionTest, RowsFindTheirColumnsInWhateverOrderAnotherFileHasThem) {
  Run("INSERT INTO Email (Subject, Direction) VALUES ('letter', 'In')");
  std::string other = folder_.File("other.twr");
  std::vector<TableDefinition> tables = MailTables();
  std::swap(tables.front().columns[2], tables.front().columns[3]);
  CreateDatabaseFile(other, kPassword, tables, 1);
  Run("INSERT INTO Email IN '" + other + "' SELECT * FROM Email");
  EXPECT_EQ(Column("SELECT Subject & Direction FROM Email IN '" + other + "'"), "letterIn");
}

TEST_F(ConnectionTest, ForReadingAFileIsNeverChanged) {
  AddNames({"Ann"});
  connection_.Close();
  std::string bytes = platform::ReadFile(path_);
  Connection reader;
  reader.SetProperty(kModeProperty, kModeRead);
  OpenFile(reader, path_);
  EXPECT_EQ(reader.IntegrityCheck(), "");
  EXPECT_EQ(ErrorOf([&] { reader.Execute("DELETE * FROM MeContact"); }), 8);
  reader.Close();
  EXPECT_TRUE(platform::ReadFile(path_) == bytes);
  EXPECT_THAT(platform::ListFiles(folder_.Path()), ElementsAre("mail.twr"));
}

// A copy of a file that is open says of itself that it has a log.
TEST_F(ConnectionTest, NothingIsPutBesideAFileThatIsRead) {
  std::string copy = folder_.File("copy.twr");
  platform::CopyFile(path_, copy);
  std::vector<std::string> names = platform::ListFiles(folder_.Path());
  Run("INSERT INTO MeContact SELECT * FROM MeContact IN '" + copy + "'");
  EXPECT_EQ(Column("SELECT Name FROM MeContact IN '" + copy + "'"), "");
  Connection reader;
  reader.SetProperty(kModeProperty, kModeRead);
  OpenFile(reader, copy);
  EXPECT_EQ(reader.IntegrityCheck(), "");
  EXPECT_EQ(platform::ListFiles(folder_.Path()), names);
  reader.Close();
  EXPECT_EQ(platform::ListFiles(folder_.Path()), names);
  // With its log beside it, the file alone is not what it was.
  platform::WriteFile(copy + "-wal", "log");
  EXPECT_EQ(ErrorOf([&] { OpenFile(reader, copy); }), 75);
  EXPECT_EQ(ErrorOf([&] { Column("SELECT Name FROM MeContact IN '" + copy + "'"); }), 75);
  EXPECT_EQ(platform::ReadFile(copy + "-wal"), "log");
}

TEST_F(ConnectionTest, InBulkNoLogIsWritten) {
  {
    BulkScope bulk(connection_);
    CommitGroup group(connection_);
    EXPECT_TRUE(platform::FileExists(path_ + "-wal")) << "until something is written";
    AddNames({"Ann"});
    EXPECT_FALSE(platform::FileExists(path_ + "-wal"));
    constexpr int kFull = 2;
    EXPECT_EQ(connection_.GetImpl().session.Engine().Number("PRAGMA synchronous"), kFull);
    EXPECT_EQ(Column("SELECT Name FROM MeContact"), "Ann");
  }
  AddNames({"Bob"});
  EXPECT_TRUE(platform::FileExists(path_ + "-wal"));
  connection_.Close();
  EXPECT_THAT(platform::ListFiles(folder_.Path()), ElementsAre("mail.twr"));
  connection_.Open();
  EXPECT_EQ(Column("SELECT Name FROM MeContact"), "Ann|Bob");
}

TEST_F(ConnectionTest, CloseEndsRecordsetsAndMayBeRepeated) {
  Recordset rows;
  rows.Open("SELECT * FROM MeContact", connection_);
  connection_.Close();
  EXPECT_FALSE(rows.IsOpen());
  EXPECT_EQ(ErrorOf([&] { rows.Eof(); }), ErrorNumber::kObjectClosed);
  EXPECT_EQ(ErrorOf([&] { Run("DELETE * FROM Email"); }), ErrorNumber::kObjectClosed);
  connection_.Close();
  connection_.Open();
  EXPECT_EQ(ErrorOf([&] { connection_.Open(); }), ErrorNumber::kObjectOpen);
  EXPECT_EQ(Column("SELECT Count(*) FROM MeContact"), "0");
}

TEST_F(ConnectionTest, KeysAreNeverGivenTwice) {
  AddNames({"x", "x", "x"});
  Run("DELETE * FROM MeContact WHERE ID=3");
  AddNames({"y"});
  EXPECT_EQ(connection_.LastIdentity(), 4);
}

// A unit writes a contact and two rows that belong to it.
void WriteUnit(Connection& connection, int number) {
  std::string id = std::to_string(number);
  connection.Execute("INSERT INTO MeContact (ID, Name) VALUES (" + id + ", 'x')");
  for (int i = 0; i < 2; i++) {
    connection.Execute("INSERT INTO Attachment (EmailID, FileName) VALUES (" + id + ", 'a')");
  }
}

TEST_F(ConnectionTest, AKilledProcessLeavesWholeUnits) {
  connection_.Close();
  constexpr int kUnits = 400;
  platform::ClockOverride clock;
  clock.tickStep = 40;
  platform::SetClockOverride(clock);
  testing::RunInChild([&] {
    Connection connection;
    OpenFile(connection, path_);
    connection.BeginGroup();
    for (int i = 1; i <= kUnits; i++) {
      WriteUnit(connection, i);
      connection.EndUnit();
      if (i == 100) connection.FlushGroup();
    }
    connection.Execute("INSERT INTO MeContact (ID, Name) VALUES (1000, 'half a unit')");
    testing::KillThisProcess();
  });
  platform::SetClockOverride({});
  connection_.Open();
  EXPECT_EQ(connection_.IntegrityCheck(), "");
  int64_t units = std::stoll(Column("SELECT Count(*) FROM MeContact"));
  EXPECT_GE(units, kUnits - 10) << "commits are further apart than they should be";
  EXPECT_LE(units, kUnits);
  EXPECT_EQ(std::stoll(Column("SELECT Count(*) FROM Attachment")), 2 * units);
  EXPECT_EQ(Column("SELECT ID FROM MeContact WHERE ID=1000"), "");
}

// Stopping a change within a commit makes the engine roll the whole commit back.
TEST_F(ConnectionTest, KnowsTheBatchesThatTheEngineTookBack) {
  connection_.BeginGroup();
  int64_t batches[4] = {};
  for (int i = 1; i <= 3; i++) {
    WriteUnit(connection_, i);
    batches[i] = connection_.Batch();
    connection_.EndUnit();
    if (i == 1) connection_.FlushGroup();
  }
  EXPECT_EQ(batches[2], batches[3]);
  connection_.Execute("INSERT INTO ObjectList VALUES (4)");
  std::string list;
  for (int i = 1; i < 50000; i++) list += (i > 1 ? ", " : "") + std::to_string(i);
  std::string sql = "UPDATE Attachment SET FileName='b' WHERE EmailID IN (" + list + ")";
  connection_.SetProgressHandler([] { return true; });
  EXPECT_EQ(ErrorOf([&] { connection_.Execute(sql); }), 9);
  connection_.SetProgressHandler({});
  EXPECT_FALSE(connection_.IsTakenBack(batches[1]));
  EXPECT_TRUE(connection_.IsTakenBack(batches[2]));
  // The rest of the unit whose beginning is lost is not written either, whatever a message box that
  // comes in between commits.
  connection_.FlushGroup();
  EXPECT_EQ(ErrorOf([&] { WriteUnit(connection_, 4); }), 9);
  connection_.EndUnit();
  WriteUnit(connection_, 5);
  connection_.EndUnit();
  connection_.EndGroup();
  EXPECT_EQ(connection_.BatchesTakenBack(), 1);
  EXPECT_EQ(Column("SELECT ID FROM MeContact ORDER BY ID"), "1|5");
  EXPECT_EQ(Column("SELECT Count(*) FROM ObjectList"), "0");
}

TEST_F(ConnectionTest, AFailedStatementTakesNothingElseBackAndGroupsNest) {
  {
    CommitGroup outer(connection_);
    CommitGroup inner(connection_);
    WriteUnit(connection_, 1);
    EXPECT_EQ(ErrorOf([&] { WriteUnit(connection_, 1); }), 19);
    WriteUnit(connection_, 2);
    connection_.EndUnit();
    inner.End();
    EXPECT_TRUE(connection_.InGroup());
    outer.End();
    EXPECT_FALSE(connection_.InGroup());
  }
  EXPECT_FALSE(connection_.InGroup());
  EXPECT_EQ(connection_.BatchesTakenBack(), 0);
  EXPECT_EQ(Column("SELECT ID FROM MeContact ORDER BY ID"), "1|2");
}

TEST_F(ConnectionTest, StopsALongStatement) {
  connection_.BeginGroup();
  for (int i = 1; i <= 3000; i++) WriteUnit(connection_, i);
  connection_.EndGroup();
  int calls = 0;
  connection_.SetProgressHandler([&] { return ++calls == 3; });
  EXPECT_EQ(ErrorOf([&] {
              Column(
                  "SELECT Count(*) FROM Attachment INNER JOIN MeContact ON FileName Like '%' & "
                  "Name");
            }),
            9);
  EXPECT_EQ(calls, 3);
  connection_.SetProgressHandler({});
  EXPECT_EQ(Column("SELECT Count(*) FROM MeContact"), "3000");
}

class OtherFile : public ConnectionTest {
 protected:
  OtherFile() {
    AddNames({"Ann", "Bob", "Cid"});
    Run("DELETE * FROM MeContact WHERE ID=1");
  }

  std::string path2_ = MakeFile("Ann's backup [1].twb");
  std::string in_ = " IN " + Quoted(path2_);
};

TEST_F(OtherFile, TablesGoThereAndComeBackWithTheirKeys) {
  int64_t seen = connection_.RowsSeen();
  EXPECT_EQ(Run("INSERT INTO mecontact" + in_ + " SELECT * FROM  mecontact"), 2);
  EXPECT_EQ(connection_.RowsSeen(), seen + 2) << "while they are copied";
  Run("DELETE * FROM MeContact");
  seen = connection_.RowsSeen();
  EXPECT_EQ(Column("SELECT ID FROM MeContact" + in_), "2|3");
  EXPECT_EQ(Run("INSERT INTO MeContact SELECT * FROM  MeContact" + in_), 2);
  EXPECT_EQ(connection_.RowsSeen(), seen + 2);
  EXPECT_EQ(Column("SELECT Name FROM MeContact ORDER BY ID"), "Bob|Cid");
  // The other file is let go and whole.
  Connection other;
  OpenFile(other, path2_);
  EXPECT_EQ(other.IntegrityCheck(), "");
  other.Close();
  EXPECT_EQ(platform::ListFiles(folder_.Path(), ".twb").size(), 1u);
}

TEST_F(OtherFile, TakesRowsOfAListAndOfAJoinIntoTheColumnsOfTheirNames) {
  Run("INSERT INTO Attachment (EmailID, FileName) VALUES (3, 'a')");
  const std::string insert = "INSERT INTO MeContact" + in_;
  EXPECT_EQ(Run(insert + " \r\nSELECT * FROM MeContact WHERE ID IN (3, 9)"), 1);
  EXPECT_EQ(
      Run(insert +
          "\r\nSELECT  DISTINCT MeContact.Name, 20 + MeContact.ID AS ID FROM Attachment "
          "INNER JOIN MeContact ON Attachment.EmailID = MeContact.ID\r\nWHERE EmailID In (3)"),
      1);
  EXPECT_EQ(Run(insert + " SELECT  DISTINCT MeContact.Name, MeContact.ID FROM MeContact WHERE "
                         "ID < 3"),
            1);
  EXPECT_EQ(Column("SELECT ID & Name FROM MeContact" + in_), "2Bob|3Cid|23Cid");
  EXPECT_EQ(Run("INSERT INTO MeContact SELECT Name & '!' AS Name FROM MeContact"), 2);
  EXPECT_EQ(Column("SELECT Name FROM MeContact ORDER BY ID"), "Bob|Cid|Bob!|Cid!");
}

TEST_F(OtherFile, IsLetGoAfterAnError) {
  std::string insert = "INSERT INTO MeContact" + in_ + " SELECT * FROM MeContact";
  Run(insert);
  EXPECT_EQ(ErrorOf([&] { Run(insert); }), 19) << "the same keys again";
  EXPECT_EQ(ErrorOf([&] { Column("SELECT None FROM MeContact" + in_); }), 1);
  EXPECT_EQ(ErrorOf([&] { Column("SELECT * FROM MeContact IN 'nowhere.twb'"); }), 14);
  EXPECT_EQ(ErrorOf([&] { Column("SELECT * FROM MeContact IN " + Quoted(path_)); }), 75);
  std::string foreign = MakeFile("foreign.twr", "another");
  EXPECT_EQ(ErrorOf([&] { Column("SELECT * FROM MeContact IN " + Quoted(foreign)); }), 26);
  EXPECT_EQ(Column("SELECT ID FROM MeContact" + in_), "2|3");
}

TEST_F(OtherFile, WorksWithinAGroup) {
  connection_.BeginGroup();
  WriteUnit(connection_, 7);
  Run("INSERT INTO MeContact" + in_ + " SELECT * FROM MeContact");
  WriteUnit(connection_, 8);
  connection_.EndGroup();
  EXPECT_EQ(Column("SELECT ID FROM MeContact" + in_), "2|3|7");
  EXPECT_EQ(Column("SELECT Count(*) FROM Attachment"), "4");
}

}  // namespace
}  // namespace tarnwick::jet
