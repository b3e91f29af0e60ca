// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/engine/packing.h"

#include <random>

#include "database/connection_impl.h"
#include "mail_database.h"

namespace tarnwick::jet {
namespace {

std::string Lines(int lines) {
  std::string letter;
  for (int i = 0; i < lines; i++) {
    letter += "Dear Ann, line " + std::to_string(i * 7919) + " of the letter is here.\r\n";
  }
  return letter;
}

TEST(Packing, EveryLengthComesBack) {
  std::mt19937 random(1);
  std::string noise;
  for (size_t i = 0; i < 3000; i++) noise += static_cast<char>(random());
  std::string letter = Lines(2000);
  for (size_t size : {0, 1, 63, 64, 65, 500, 3000, 32767, 100000}) {
    std::string_view plain = std::string_view(letter).substr(0, size);
    std::string packed(Pack(plain));
    EXPECT_EQ(packed.empty(), size < 64) << size;
    if (packed.empty()) continue;
    EXPECT_TRUE(IsPacked(packed));
    EXPECT_LT(packed.size() * 2, plain.size() + 60) << size;
    EXPECT_EQ(Unpack(packed), plain);
  }
  EXPECT_EQ(Pack(noise), "");
  // Nothing that would come back as a suspiciously huge value is ever written.
  for (size_t size : {33'000, 2'000'000}) {
    std::string same(size, 'x');
    std::string packed(Pack(same));
    EXPECT_TRUE(packed.size() >= size / 1000 && packed.size() < size / 1000 + 60) << packed.size();
    EXPECT_TRUE(Unpack(packed) == same);
  }
}

// The bytes lie in every repository: another dictionary or frame would make them unreadable.
TEST(Packing, ReadsWhatWasPackedBefore) {
  constexpr std::string_view kHex =
      "0128b52ffd20e05d0200e341059134f53152a69c2edf88a4487a3926bd5755c986ce12fc5082e20e819ac37c006c"
      "8777f6c30232b1d26c8443a3366d04f5eb3500f295d18562eea1f70ea68ba783e891821ca9c501";
  std::string packed;
  for (size_t i = 0; i < kHex.size(); i += 2) {
    packed += static_cast<char>(std::stoi(std::string(kHex.substr(i, 2)), nullptr, 16));
  }
  EXPECT_EQ(
      Unpack(packed),
      "Received: from localhost (localhost [127.0.0.1])\r\n\tby mail.example.org with ESMTP id "
      "4711\r\nSubject: Guten Tag und viele Grüße\r\nContent-Type: text/plain;\r\n\tcharset="
      "\"iso-8859-1\"\r\n\r\nDear Ann, thanks in advance. Best regards\r\n");
}

TEST(Packing, DamageGivesAnErrorAndNoHugeMemory) {
  std::string letter = Lines(100);
  std::string packed(Pack(letter));
  std::mt19937 random(2);
  for (size_t i = 0; i < 3000; i++) {
    std::string damaged =
        packed.substr(0, i % 3 == 0 ? 6 + random() % packed.size() : packed.size());
    size_t place = 5 + random() % (damaged.size() - 5);
    damaged[place] = static_cast<char>(damaged[place] ^ (1 + random() % 255));
    int error = ErrorOf([&] { EXPECT_LE(Unpack(damaged).size(), damaged.size() * 1000 + 1000); });
    EXPECT_TRUE(error == 0 || error == 11) << error;
  }
  EXPECT_EQ(ErrorOf([&] { Unpack(packed.substr(0, packed.size() - 1)); }), 11);
  // A whole and sound value of a million characters in sixty bytes is not believed either.
  std::string same(2'000'000, 'x');
  std::string filled(Pack(same));
  EXPECT_EQ(ErrorOf([&] { Unpack(filled.substr(0, filled.find("\x50\x2A\x4D\x18"))); }), 11);
  // Four gigabytes are told of.
  EXPECT_EQ(
      ErrorOf([] { Unpack(std::string("\x01\x28\xB5\x2F\xFD\xA0\xFF\xFF\xFF\xFF\x01", 11)); }), 11);
}

class PackedColumns : public MailDatabase {
 protected:
  PackedColumns() {
    for (const std::string& body : {letter_ + "straße ÄPFEL", std::string("short"), letter_}) {
      rows_.AddNew();
      rows_.SetField("Subject", "letter");
      rows_.SetField("Body", body);
      rows_.Update();
      files_.AddNew();
      files_.SetField("FileID", rows_.Field("ID"));
      files_.SetField("FileBody", Bytes{body + '\xFF'});
      files_.Update();
    }
  }
  ~PackedColumns() override {
    if (connection_.IsOpen()) connection_.Close();
  }

  // How many values of a column lie packed in the file, past the dialect.
  int64_t PackedIn(const std::string& column, const char* type) {
    std::string sql = "SELECT count(*) FROM " + column.substr(0, column.find('.'));
    sql += " WHERE typeof(" + column + ") = '" + type + "'";
    return connection_.GetImpl().session.Engine().Number(sql.c_str());
  }

  std::string letter_ = Lines(50);
  Recordset rows_ = OpenTable("Email");
  Recordset files_ = OpenTable("FileRepository");
};

TEST_F(PackedColumns, StatementsMeetPlainValues) {
  EXPECT_EQ(PackedIn("Email.Body", "blob"), 2);
  EXPECT_EQ(PackedIn("FileRepository.FileBody", "text"), 2);
  std::string length = std::to_string(letter_.size());
  for (const auto& [sql, wanted] : std::vector<std::pair<std::string, std::string>>{
           {"SELECT Body FROM Email WHERE ID=3", letter_},
           {"SELECT Body AS Text FROM Email WHERE ID=3 ORDER BY Text", letter_},
           {"SELECT ID FROM Email WHERE Body = '" + letter_ + "STRAßE äpfel'", "1"},
           {"SELECT ID FROM Email WHERE Body Like '%LINE 7919 %' ORDER BY ID", "1|3"},
           {"SELECT ID FROM Email WHERE NOT Body Like '%äpfel'", "2|3"},
           {"SELECT InStr(Body, 'ANN') FROM Email WHERE InStr(Email.Body, 'ann') <> 0", "6|6"},
           {"SELECT Len(E.Body) FROM Email AS E WHERE E.ID = 3", length},
           {"SELECT Max(Len(Body)) FROM Email WHERE Body IS NOT NULL AND ID > 1", length},
           {"SELECT Count(Body) FROM Email", "3"},
           {"SELECT Body & '!' FROM Email WHERE ID = 2", "short!"},
           {"SELECT ID FROM Email ORDER BY Body, ID", "3|1|2"},
           {"SELECT DISTINCT Body FROM Email WHERE ID = 3", letter_},
           {"SELECT Count(*) FROM Email GROUP BY Body ORDER BY Body", "1|1|1"},
           {"SELECT ID FROM Email WHERE Body IN (SELECT Body FROM Email WHERE ID = 3)", "3"},
           {"SELECT FileBody FROM FileRepository WHERE FileID=3ORDER BY ID", letter_ + '\xFF'},
           {"SELECT Len(FileBody) FROM FileRepository WHERE FileID=3",
            std::to_string(letter_.size() + 1)}}) {
    EXPECT_EQ(Column(sql), wanted) << sql;
  }
  rows_.MoveFirst();
  rows_.Find("Body = 'SHORT'");
  EXPECT_EQ(rows_.Field("ID"), Value(2));
  rows_.MoveFirst();
  rows_.Find("Body Like 'dear%here.\r\n'");
  EXPECT_EQ(rows_.Field("ID"), Value(3));
}

TEST_F(PackedColumns, WhatStatementsWriteIsPackedToo) {
  Run("UPDATE Email SET Body = Body & '" + letter_ + "' WHERE ID = 2");
  Run("UPDATE Email SET Body = 'plain' WHERE ID = 3");
  Run("INSERT INTO Email (Subject, Body) SELECT Subject, Body FROM Email WHERE ID = 1");
  Run("INSERT INTO Email (Subject, Body) SELECT Body, Subject FROM Email WHERE ID = 2");
  EXPECT_EQ(PackedIn("Email.Body", "blob"), 3);
  EXPECT_EQ(Column("SELECT Body FROM Email WHERE ID = 2"), "short" + letter_);
  EXPECT_EQ(Column("SELECT Body FROM Email WHERE ID = 3"), "plain");
  EXPECT_EQ(Column("SELECT Body FROM Email WHERE ID = 4"), letter_ + "straße ÄPFEL");
  EXPECT_EQ(Column("SELECT Subject & Body FROM Email WHERE ID = 5"), "short" + letter_ + "letter");
  // Bytes that begin as a packed value does are a value like any other.
  std::string odd(Pack(letter_));
  files_.AddNew();
  files_.SetField("FileBody", Bytes{odd});
  files_.Update();
  EXPECT_EQ(files_.Field("FileBody"), Value(Bytes{odd}));
  EXPECT_EQ(Column("SELECT FileBody FROM FileRepository WHERE ID = 4"), odd);
}

TEST_F(PackedColumns, GoToAnotherFileAndBackAsTheyAre) {
  std::string other = MakeFile("other.twr");
  uint64_t before = UnpackCount();
  for (const char* table : {"Email", "FileRepository"}) {
    std::string name(table);
    Run("INSERT INTO " + name + " IN '" + other + "' SELECT * FROM " + name);
    Run("DELETE FROM " + name);
    Run("INSERT INTO " + name + " SELECT * FROM " + name + " IN '" + other + "'");
  }
  EXPECT_EQ(UnpackCount(), before);
  EXPECT_EQ(PackedIn("Email.Body", "blob"), 2);
  EXPECT_EQ(Column("SELECT Body FROM Email IN '" + other + "' WHERE ID = 3"), letter_);
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE Body Like '%straße%'"), "1");
  EXPECT_EQ(Column("SELECT FileBody FROM FileRepository WHERE ID = 3"), letter_ + '\xFF');
}

TEST_F(PackedColumns, ADamagedValueCostsItselfAlone) {
  connection_.GetImpl().session.Engine().Run(
      "UPDATE Email SET Body = cast(substr(Body, 1, 60) AS BLOB) WHERE ID = 1");
  EXPECT_EQ(ErrorOf([&] { Column("SELECT Body FROM Email WHERE ID = 1"); }), 11);
  EXPECT_EQ(Column("SELECT ID FROM Email WHERE Body Like '%e%'"), "3");
  EXPECT_EQ(Column("SELECT Subject FROM Email WHERE ID = 1"), "letter");
  EXPECT_EQ(Column("SELECT Body FROM Email WHERE ID = 3"), letter_);
  EXPECT_EQ(Run("UPDATE Email SET Body = 'mended' WHERE ID = 1"), 1);
  EXPECT_EQ(Column("SELECT Body FROM Email WHERE ID = 1"), "mended");
}

}  // namespace
}  // namespace tarnwick::jet
