// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include <algorithm>
#include <random>

#include "database/connection_impl.h"
#include "database/engine/packing.h"
#include "database/index/text_index.h"
#include "database/index/text_segment.h"
#include "mail_database.h"

namespace tarnwick::jet {
namespace {

TEST(TextSegment, ListsComeBackAlsoFromATakenOverOne) {
  std::mt19937 random(3);
  std::map<uint32_t, std::set<uint16_t>> held;
  SegmentWriter writer;
  std::string head;
  std::vector<std::string> parts(kSegmentParts);
  auto add = [&](uint16_t document) {
    std::set<uint32_t> trigrams = {0, (1u << kTrigramBits) - 1, 4711u + document % 3};
    // From very common to very rare ones, some of them neighbours.
    for (int i = 0; i < 400; i++) trigrams.insert(random() % (1u << (3 + random() % 15)));
    for (uint32_t trigram : trigrams) held[trigram].insert(document);
    writer.Add(document * 1000 - document % 7, {trigrams.begin(), trigrams.end()});
  };
  auto finish = [&] {
    head = writer.Head();
    writer.Finish([&](size_t part, std::string_view data) { parts[part] = data; });
  };
  for (uint16_t i = 0; i < 300; i++) add(i);
  finish();
  writer.TakeOver(head, [&](size_t part) { return parts[part]; });
  for (uint16_t i = 300; i < 1000; i++) add(i);
  finish();
  ASSERT_EQ(ReadSegmentSize(head), 1000u);
  EXPECT_EQ(ReadSegmentKeys(head)[999], 999 * 1000 - 5);
  size_t leftOut = 0;
  for (uint32_t trigram = 0; trigram < 1u << kTrigramBits; trigram += trigram < 3000 ? 1 : 1009) {
    Postings found = ReadPostings(parts[trigram / kPartTrigrams], trigram, 1000);
    const std::set<uint16_t>& wanted = held[trigram];
    if (found.isAll) {
      leftOut++;
      EXPECT_GT(wanted.size(), 60u) << trigram;
    } else {
      EXPECT_EQ(std::set<uint16_t>(found.documents.begin(), found.documents.end()), wanted);
    }
  }
  EXPECT_GT(leftOut, 3u);

  // Whatever happens to it, nothing but an error or another list comes of it.
  for (int i = 0; i < 4000; i++) {
    std::string part = parts[static_cast<size_t>(i) % 8];
    part[random() % std::min<size_t>(part.size(), 200)] ^= static_cast<char>(1u << random() % 8);
    part.resize(i % 5 == 0 ? random() % part.size() : part.size());
    int error = ErrorOf([&] {
      Postings found = ReadPostings(part, random() % (8 * kPartTrigrams), 1000);
      for (uint16_t document : found.documents) EXPECT_LT(document, 1000);
    });
    EXPECT_TRUE(error == 0 || error == 11);
  }
}

class TextIndexTest : public MailDatabase {
 protected:
  TextIndexTest() { connection_.KeepTextIndex("Email", {"Body", "Subject"}); }

  void Reopen() {
    connection_.Close();
    connection_.Open();
    connection_.KeepTextIndex("Email", {"Body", "Subject"});
  }

  const std::string& Word() {
    static const std::vector<std::string> words = {
        "letter", "Meeting", "Straße", "GRÜSSE", "Ελλάς",    "σίγμα", "Привет",
        "письмо", "日本語",  "テスト", "naïve",  "İstanbul", "ﬁsh",   "100%",
        "a_b",    "it's",    "x",      "Ǆungla", "[a-c]",    "ŉote",  "\x01\x28"};
    return words[random_() % words.size()];
  }
  std::string Text(int words) {
    std::string text;
    for (int i = 0; i < words; i++) text += Word() + (random_() % 9 == 0 ? "\r\n" : " ");
    return text + std::to_string(random_() % 5000);
  }
  void Add(Connection& connection, int rows) {
    connection.BeginGroup();
    for (int i = 0; i < rows; i++) {
      std::string body = random_() % 20 == 0 ? "Null" : Quoted(Text(4));
      connection.Execute("INSERT INTO Email (ReceivedTime, Subject, Body) VALUES (#01/0" +
                         std::to_string(1 + i % 9) + "/2003 10:00#, " + Quoted(Text(1)) + ", " +
                         body + ")");
      connection.EndUnit();
    }
    connection.EndGroup();
  }

  // Every search gives what reading all texts gives; behind "&" a column is not looked up.
  void ExpectExact(const std::string& when) {
    for (const char* wanted :
         {"letter m",  "STRASSE", "straßE", "grüsse", "σΊΓΜΑ", "ς 4",       "ПИСЬМО п", "日本語 テ",
          "語",        "i̇st",     "ǆUNGLA", "fish",   "ﬁSH ",  "100%%4",    "a_b",      "a__ ",
          "it''s %12", "",        "x ",     "zzzz",   "999",   "te%\r\n%7", "4321",     "1234",
          "[A-C] l",   "[!x]",    "ŉOTE",   "ʼn",     "ẞ",     "istan",     "a%b",      "%%%"}) {
      std::string text(wanted);
      std::string rest = " AND ID IN (SELECT ID FROM Email WHERE ID > 9)";
      EXPECT_EQ(Groups("Body Like '%" + text + "%'" + rest),
                Groups("(Body & '') Like '%" + text + "%' AND Body IS NOT NULL" + rest))
          << when << ": " << text;
      EXPECT_EQ(Column("SELECT ID FROM Email WHERE Body Like '%" + text + "%' ORDER BY ID"),
                Column("SELECT ID FROM Email WHERE (Body & '') Like '%" + text +
                       "%' AND Body IS NOT NULL ORDER BY ID"))
          << when << ": " << text;
      EXPECT_EQ(Column("SELECT Count(ID) FROM Email WHERE INSTR(Email.Subject, '" + text +
                       "') <> 0 AND Email.Body Like '%1%'"),
                Column("SELECT Count(ID) FROM Email WHERE INSTR(Email.Subject & '', '" + text +
                       "') <> 0 AND Subject IS NOT NULL AND (Body & '') Like '%1%'"))
          << when << ": " << text;
      ExpectProposed(when, text);
    }
  }

  // Whatever can hold a text is proposed, however many rows that are.
  void ExpectProposed(const std::string& when, const std::string& text) {
    if (text.find('\'') != std::string::npos) return;
    auto proposed = connection_.MayHold("Email", "Subject", text);
    if (!proposed) return;
    connection_.ReadRows("SELECT ID FROM Email WHERE INSTR(Email.Subject, '" + text + "') <> 0",
                         [&](const PassingRow& row) {
                           EXPECT_TRUE(std::ranges::binary_search(*proposed, row.Int(0)))
                               << when << ": " << text << ": " << row.Int(0);
                         });
  }

  std::multiset<std::string> Groups(const std::string& condition) {
    std::multiset<std::string> groups;
    for (Recordset rows = OpenText(
             "SELECT DateValue(ReceivedTime) AS ReceivedDay, Count(*) AS N FROM Email WHERE " +
             condition + " GROUP BY DateValue(ReceivedTime)");
         !rows.Eof(); rows.MoveNext()) {
      groups.insert(rows.Field(0).AsText() + ":" + rows.Field(1).AsText());
    }
    return groups;
  }

  // Texts that are unpacked or read for a search for something rare; -1 when it isn't found.
  int64_t RowsRead(const std::string& sql, const std::string& wanted) {
    uint64_t before = UnpackCount();
    std::string found = Column(sql);
    return found == wanted ? static_cast<int64_t>(UnpackCount() - before) : -1;
  }

  Database& Engine() { return connection_.GetImpl().session.Engine(); }
  int64_t Segments() { return Engine().Number("SELECT count(*) FROM tw_search_part WHERE ID < 0"); }

  std::mt19937 random_{7};
};

TEST_F(TextIndexTest, FindsWhatReadingAllFindsWhateverHappens) {
  Add(connection_, 100);
  ExpectExact("too few for a segment");
  Add(connection_, 2000);
  EXPECT_EQ(Segments(), 1);
  ExpectExact("after a load");
  Run("DELETE FROM Email WHERE ID IN (SELECT FileID FROM FileRepository) OR InStr(Body, '77') > 0");
  Run("UPDATE Email SET Body = 'zzzz ' & Body WHERE ID > 50 AND ID < 60");
  Run("UPDATE Email SET Subject = 'grüsse 999' WHERE ID = 70");
  Recordset rows = OpenText("SELECT * FROM Email WHERE ID=80");
  rows.SetField("Body", "zzzz");
  rows.Update();
  rows.Close();
  Run("UPDATE Email SET ID = 5000 WHERE ID = 81");
  ExpectExact("after changes");
  Reopen();
  EXPECT_EQ(Segments(), 1);
  ExpectExact("opened again");
  Run("UPDATE Email SET Body = 'many zzzz' WHERE ID > 1000");
  ExpectExact("after many changes");
  EXPECT_EQ(Engine().Number("SELECT count(*) FROM tw_search_changed"), 0);
  Add(connection_, 3500);
  EXPECT_GE(Segments(), 2);
  ExpectExact("after another load");
  auto proposed = connection_.MayHold("Email", "Subject", "zzzzzz");
  ASSERT_TRUE(proposed.has_value());
  EXPECT_LT(proposed->size(), 2000U);

  std::string other = MakeFile("other.twr");
  Run("INSERT INTO Email IN '" + other + "' SELECT * FROM Email");
  Run("DELETE * FROM Email");
  EXPECT_EQ(Segments(), 0);
  ExpectExact("emptied");
  Add(connection_, 300);
  Run("INSERT INTO Email SELECT * FROM Email IN '" + other + "'");
  ExpectExact("with rows of a file");
  Run("DELETE FROM Email WHERE ID = 3");
  Run("INSERT INTO Email (ID, Body) VALUES (3, 'zzzz')");
  rows = OpenTable("Email");
  rows.AddNew();
  rows.SetField("ID", 81);
  rows.SetField("Body", "zzzz");
  rows.Update();
  rows.Close();
  ExpectExact("with keys of our choice");
  EXPECT_EQ(connection_.IntegrityCheck(), "");
}

// A search reads the texts that it finds and few others.
TEST_F(TextIndexTest, ReadsFewTexts) {
  connection_.BeginGroup();
  std::string filler =
      "a body that is long enough to be packed when it is stored, and is stored so";
  for (int i = 1; i <= 5000; i++) {
    Run("INSERT INTO Email (Subject, Body) VALUES ('subject', '" + filler + filler +
        (i % 1000 == 0 ? " needle" : "") + " " + std::to_string(i * 7919) + "')");
  }
  connection_.EndGroup();
  std::string wanted = "1000|2000|3000|4000|5000";
  std::string sql = "SELECT ID FROM Email WHERE Body Like '%NEEDLE%' ORDER BY ID";
  EXPECT_EQ(RowsRead(sql, wanted), 5);
  EXPECT_EQ(
      RowsRead("SELECT Count(Email.ID) AS N FROM (Email LEFT JOIN MeContact ON Email.FromTo = "
               "MeContact.ID) LEFT JOIN Attachment ON Email.ID = Attachment.EmailID WHERE "
               "Email.Body Like '%needle%' AND Email.Body Like '%body%'",
               "5"),
      10);
  EXPECT_EQ(RowsRead("SELECT ID FROM Email WHERE Body Like '%nothing of this%'", ""), 0);
  // Rows behind the last segment and changed ones are read besides.
  Run("UPDATE Email SET Body = Body & '!' WHERE ID < 11");
  EXPECT_EQ(RowsRead(sql, wanted), 15);
  // Without a segment's part the texts are read one by one.
  Engine().Run("DELETE FROM tw_search_part WHERE ID > 100");
  EXPECT_EQ(RowsRead(sql, wanted), 5000);
}

TEST_F(TextIndexTest, CatchesUpInStepsThatCanBeStopped) {
  auto addWithoutIndex = [&](int rows) {
    connection_.Close();
    connection_.Open();
    Add(connection_, rows);
    Reopen();
  };
  addWithoutIndex(9000);
  // With so many missing, no search waits for them.
  EXPECT_NE(Column("SELECT ID FROM Email WHERE Body Like '%4321%'"), "");
  EXPECT_EQ(Segments(), 0);
  int steps = 0;
  bool isComplete = false;
  for (; !isComplete && steps < 100; steps++) {
    int looks = 0;
    isComplete = connection_.CatchUpTextIndex([&](int64_t, int64_t) { return ++looks < 10; });
    EXPECT_LE(looks, 10);
    if (steps % 7 == 3) Run("UPDATE Email SET Body = 'zzzz ' & Body WHERE ID < 400");
    if (steps == 8) Run("DELETE FROM Email WHERE ID < 300");
  }
  EXPECT_GT(steps, 12);  // of nine looks at sixty-four rows each
  EXPECT_EQ(Segments(), 3);
  EXPECT_EQ(Engine().Number("SELECT Done FROM tw_search_state"), 9000);
  ExpectExact("caught up");
  // A statement that is watched stops while it takes rows in, and the next goes on from there.
  addWithoutIndex(3000);
  connection_.SetProgressHandler([] { return true; });
  EXPECT_FALSE(connection_.CatchUpTextIndex([](int64_t, int64_t) { return true; }));
  EXPECT_EQ(ErrorOf([&] { Column("SELECT ID FROM Email WHERE Body Like '%zzzz%'"); }), 9);
  connection_.SetProgressHandler({});
  EXPECT_NE(Column("SELECT ID FROM Email WHERE Body Like '%zzzz%'"), "");
  EXPECT_EQ(Engine().Number("SELECT Done FROM tw_search_state"), 12000);
}

// Another text order folds otherwise: the index is made anew. So is one that is not right.
TEST_F(TextIndexTest, OfAnotherMakeOrDamagedIsMadeAnew) {
  Add(connection_, 2000);
  Engine().Run("UPDATE tw_search_state SET Made = '0'; UPDATE tw_search_part SET Data = x'00'");
  Reopen();
  EXPECT_EQ(Segments(), 0);
  ExpectExact("made anew");
  EXPECT_EQ(Segments(), 1);
  EXPECT_EQ(ErrorOf([&] { Run("DELETE FROM tw_search_part"); }), 1);

  // All that was changed is gone when it would be taken in, and there is no segment to fill up.
  Run("UPDATE Email SET Body = 'zzzz' WHERE ID < 300");
  Run("DELETE FROM Email WHERE ID < 300");
  ExpectExact("nothing left of the changes");
  EXPECT_EQ(Engine().Number("SELECT count(*) FROM tw_search_changed"), 0);
  EXPECT_GE(Segments(), 1);

  // A text that can't be read is found by nothing, and keeps nothing else from being found.
  Engine().Run("UPDATE Email SET Body = x'0128B52FFD00' WHERE ID = 1000");
  EXPECT_NE(Column("SELECT ID FROM Email WHERE Body Like '%tt%'"), "");
  Run("UPDATE Email SET Subject = Subject & '!' WHERE ID > 900");
  EXPECT_NE(Column("SELECT ID FROM Email WHERE Body Like '%etter%' AND ID > 900"), "");
  EXPECT_LT(Engine().Number("SELECT count(*) FROM tw_search_changed"), 256);
  Run("DELETE FROM Email WHERE ID = 1000");

  for (const char* harm :
       {"UPDATE tw_search_part SET Data = x'00' WHERE ID < 0",
        "UPDATE tw_search_part SET Data = zeroblob(99999) WHERE ID > 0",
        "UPDATE tw_search_part SET Data = 'text' WHERE ID > 0",
        "INSERT INTO tw_search_part VALUES (-9223372036854775808, x'018020807F')",
        "UPDATE tw_search_state SET Done = 9000000000000000000",
        "UPDATE tw_search_state SET Done = -1", "DELETE FROM tw_search_state",
        "INSERT INTO tw_search_state SELECT * FROM tw_search_state",
        "DROP TABLE tw_search_part; CREATE VIEW tw_search_part AS SELECT 1 AS ID, 2 AS Data"}) {
    Engine().Run(harm);
    Reopen();
    ExpectExact(harm);
    Add(connection_, 300);
  }
}

// A load's rows are handed over as they are written, and what counts is what the file holds of
// them.
TEST_F(TextIndexTest, TakesRowsOfALoadWithoutReadingThemBack) {
  Add(connection_, 2000);
  TextIndex& index = *connection_.GetImpl().Index();
  std::string filler(200, 'q');
  Recordset rows;
  auto write = [&](Value subject, Value body) {
    rows.AddNew();
    rows.SetField("Subject", std::move(subject));
    if (!body.IsNull()) rows.SetField("Body", std::move(body));
    rows.Update();
    connection_.EndUnit();
  };
  auto begin = [&] {
    connection_.BeginGroup();
    rows = OpenTable("Email");
    for (int i = 0; i < 300; i++) write(Text(1), Text(4));
  };

  begin();
  uint64_t before = UnpackCount();
  for (int i = 0; i < 1500; i++) write(Text(1), filler + Text(4));
  write("Caf\xE9 zzzz", "a\xE9\xE8 [!x] 999 \x80" + filler);
  write(std::string("a\0b zzzz 999", 12), filler + std::string("\0 999", 5));
  EXPECT_FALSE(index.IsNext("MeContact", 3803));
  EXPECT_TRUE(index.IsNext("Email", 3803));
  Run("UPDATE Email SET Body = 'zzzz' WHERE ID = 3000");
  Run("DELETE FROM Email WHERE ID = 3001");
  EXPECT_EQ(UnpackCount(), before);
  // A text that is none is read back, and so is what comes behind it.
  write(999, "zzzz 999");
  write("grüsse 999", Value());
  for (int i = 0; i < 20; i++) write(Text(1), filler + Text(4));
  EXPECT_FALSE(index.IsNext("Email", 3825));
  rows.Close();
  connection_.EndGroup();
  EXPECT_EQ(UnpackCount(), before + 20);
  EXPECT_EQ(Segments(), 1);
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE Body Like '%éè [!X]%'"), "3801");
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE Subject Like '%B ZZZZ 9%'"), "3802");
  ExpectExact("handed over");

  // What was taken back with its keys given anew is not what was handed over.
  begin();
  for (int i = 0; i < 300; i++) write("before", "zzzz before");
  connection_.SetProgressHandler([] { return true; });
  EXPECT_EQ(ErrorOf([&] { Run("UPDATE Email SET Active = 'x'"); }), 9);
  connection_.SetProgressHandler({});
  EXPECT_FALSE(connection_.GetImpl().session.HoldsWrites());
  connection_.EndUnit();
  rows.Close();
  rows = OpenTable("Email");
  for (int i = 0; i < 900; i++) write(Text(1), Text(4));
  rows.Close();
  connection_.EndGroup();
  EXPECT_EQ(Segments(), 2);
  ExpectExact("after a rollback");
  EXPECT_EQ(connection_.IntegrityCheck(), "");
}

// What the program sees as its last key is none of the index's own rows.
TEST_F(TextIndexTest, KeepsTheLastKey) {
  Add(connection_, 300);
  int64_t last = connection_.LastIdentity();
  EXPECT_EQ(last, 300);
  Run("UPDATE Email SET Body = 'zzzz'");
  ExpectExact("changed");
  EXPECT_EQ(connection_.LastIdentity(), last);
}

}  // namespace
}  // namespace tarnwick::jet
