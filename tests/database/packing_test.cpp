// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/engine/packing.h"

#include <algorithm>
#include <random>

#include "database/connection_impl.h"
#include "database/engine/base64_folding.h"
#include "mail_database.h"
#include "platform/base64.h"

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

std::string Noise(std::mt19937& random, size_t size) {
  std::string noise(size, '\0');
  for (char& c : noise) c = static_cast<char>(random());
  return noise;
}

std::string Base64Lines(const std::string& bytes, size_t groups, const char* lineEnd) {
  std::string text;
  std::string line(4 * groups, '\0');
  for (size_t place = 0; place + 3 * groups <= bytes.size(); place += 3 * groups) {
    platform::EncodeBase64Groups(bytes.data() + place, groups, line.data());
    text += line + lineEnd;
  }
  return text;
}

// Attachments in all the ways that they are written and cut in pieces, some with an odd line.
TEST(Packing, Base64PacksAsItsBytes) {
  std::mt19937 random(3);
  int folded = 0;
  for (int i = 0; i < 400; i++) {
    std::string text;
    for (size_t part = random() % 4; part < 4; part++) {
      size_t groups = i % 3 == 0 ? 10 + random() % 250 : 19;
      text += Lines(static_cast<int>(random() % 8));
      text +=
          Base64Lines(Noise(random, random() % 6000), groups, random() % 2 == 0 ? "\r\n" : "\n");
    }
    size_t place = random() % (text.size() + 1);
    if (i % 4 == 0) text.insert(place, 1, "= \n\r-"[i / 4 % 5]);
    text.erase(0, random() % 200);
    text.resize(text.size() - std::min<size_t>(text.size(), random() % 200));
    std::string packed(Pack(text));
    if (packed.empty()) continue;
    EXPECT_EQ(ToldSize(packed), text.size());
    ASSERT_EQ(Unpack(packed), text) << i;
    folded += packed.front() == 2 ? 1 : 0;
  }
  EXPECT_GT(folded, 200);
  std::string noise = Base64Lines(Noise(random, 24'000), 19, "\r\n");
  EXPECT_LT(Pack(noise).size(), noise.size() * 74 / 100);
  // What repeats in the bytes, though not in the characters.
  std::string repeating;
  for (int i = 0; i < 500; i++) repeating += "a word of 25 bytes, often" + std::to_string(i);
  std::string text = Base64Lines(repeating, 19, "\r\n");
  EXPECT_LT(Pack(text).size() * 5, text.size());
}

// The bytes lie in every repository: another dictionary or frame would make them unreadable.
TEST(Packing, ReadsWhatWasPackedBefore) {
  auto bytesOf = [](std::string_view hex) {
    std::string bytes;
    for (size_t i = 0; i < hex.size(); i += 2) {
      bytes += static_cast<char>(std::stoi(std::string(hex.substr(i, 2)), nullptr, 16));
    }
    return bytes;
  };
  const std::string letter = bytesOf(
      "0128b52ffd20e05d0200e341059134f53152a69c2edf88a4487a3926bd5755c986ce12fc5082e20e819ac37c006c"
      "8777f6c30232b1d26c8443a3366d04f5eb3500f295d18562eea1f70ea68ba783e891821ca9c501");
  EXPECT_EQ(
      Unpack(letter),
      "Received: from localhost (localhost [127.0.0.1])\r\n\tby mail.example.org with ESMTP id "
      "4711\r\nSubject: Guten Tag und viele Grüße\r\nContent-Type: text/plain;\r\n\tcharset="
      "\"iso-8859-1\"\r\n\r\nDear Ann, thanks in advance. Best regards\r\n");
  const std::string attachment = bytesOf(
      "029a01000028b52ffd6049000d030072c41018706573e44877a1283aa9aa16fe9316c8b14435fba36f5d0a71dbd9"
      "97d3308b922087f1551ceee302efc4bec93d021c6e8cdbce52a9a64ab512b4aa836dc176da0e020c002014101e08"
      "190805840742064201e1c5cff55a0682017a952f");
  std::string bytes;
  for (int i = 0; i < 12; i++) bytes += "a letter of mine, number " + std::to_string(i) + "; ";
  EXPECT_EQ(Unpack(attachment), "--edge\r\n\r\n" + Base64Lines(bytes, 19, "\r\n") + "--edge--\r\n");
}

TEST(Packing, DamageGivesAnErrorAndNoHugeMemory) {
  std::mt19937 random(2);
  std::string packed(Pack(Lines(100)));
  std::string folded(Pack(Lines(3) + Base64Lines(Lines(20), 19, "\r\n")));
  EXPECT_EQ(folded.front(), 2);
  for (size_t i = 0; i < 6000; i++) {
    const std::string& sound = i % 2 == 0 ? packed : folded;
    std::string damaged = sound.substr(0, i % 3 == 0 ? 10 + random() % sound.size() : sound.size());
    size_t place = 1 + random() % (damaged.size() - 1);
    damaged[place] = static_cast<char>(damaged[place] ^ (1 + random() % 255));
    if (!IsPacked(damaged)) continue;
    int error = ErrorOf([&] { EXPECT_LE(Unpack(damaged).size(), damaged.size() * 1000 + 1000); });
    EXPECT_TRUE(error == 0 || error == 11) << error;
  }
  // A folded text that tells of other parts than it has: none reaches beyond the text.
  for (size_t i = 0; i < 2000; i++) {
    std::string text = Lines(1) + Base64Lines(Noise(random, 800), 19, "\n");
    std::string parts;
    ASSERT_TRUE(FoldBase64(text, parts));
    parts[random() % 24] = static_cast<char>(random());
    if (i % 5 == 0) parts.resize(random() % parts.size());
    std::string unfolded(text.size() + 1, '!');
    UnfoldBase64(parts, unfolded.data(), text.size());
    EXPECT_EQ(unfolded.back(), '!');
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
