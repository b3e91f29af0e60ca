// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A malicious repository: packed values, segments of the text index, and rows of both
// within a file. All of it is read, or refused as damaged, and gives no more than its bytes can
// hold. The first byte chooses.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "database/connection_impl.h"
#include "database/engine/packing.h"
#include "database/index/text_index.h"
#include "database/index/text_segment.h"
#include "database/recordset.h"
#include "platform/error.h"
#include "repository/schema.h"
#include "support/temp_folder.h"

namespace {

using namespace tarnwick;
using namespace tarnwick::jet;

void Demand(bool holds) {
  if (!holds) std::abort();
}

// Runs body; false when it finds its input damaged, which is all it may complain of.
template <typename Body>
bool Read(Body&& body) {
  try {
    body();
    return true;
  } catch (const Error& error) {
    Demand(error.Number() == 11);
    return false;
  }
}

// Takes from the front of the input; what is not there is empty.
class Input {
 public:
  explicit Input(std::string_view data) : data_(data) {}
  bool IsEmpty() const { return data_.empty(); }
  std::string_view Take(size_t count) {
    std::string_view taken = data_.substr(0, count);
    data_.remove_prefix(taken.size());
    return taken;
  }
  int64_t Number(size_t bytes) {
    uint64_t number = 0;
    for (char c : Take(bytes)) number = number << 8 | static_cast<unsigned char>(c);
    return static_cast<int64_t>(number);
  }
  std::string_view Rest() { return Take(data_.size()); }

 private:
  std::string_view data_;
};

void TryValue(std::string_view stored) {
  std::string packed(Pack(stored));
  if (!packed.empty()) Demand(IsPacked(packed) && Unpack(packed) == stored);
  if (!IsPacked(stored)) return;
  std::string plain;
  if (!Read([&] { plain = Unpack(stored); })) return;
  Demand(plain.size() <= stored.size() * 1000 + 1000);
  Demand(UnpackScratch(stored) == plain);
}

// A part without a list.
const std::string& NoLists() {
  static const std::string kPart = [] {
    std::string part;
    SegmentWriter writer;
    writer.Add(1, {});
    writer.Finish([&](size_t number, std::string_view data) {
      if (number == 0) part = data;
    });
    return part;
  }();
  return kPart;
}

// A head, and a part that stands for some of the segment's.
void TrySegment(Input input) {
  std::string_view head = input.Take(static_cast<size_t>(input.Number(1)));
  std::string part(input.Rest());
  size_t documents = 0;
  if (!Read([&] { documents = ReadSegmentKeys(head).size(); })) return;
  Demand(documents == ReadSegmentSize(head) && documents <= kMostDocuments);
  size_t postings = 0;
  bool isSound = true;
  for (uint32_t trigram = 0; trigram < kPartTrigrams; trigram += trigram < 10 ? 1 : 37) {
    isSound = Read([&] {
                Postings found = ReadPostings(part, trigram, documents);
                const std::vector<uint16_t>& list = found.documents;
                Demand(std::adjacent_find(list.begin(), list.end(), std::greater_equal<>()) ==
                       list.end());
                Demand(list.empty() || list.back() < documents);
                postings += list.size();
              }) &&
              isSound;
  }
  Demand(postings <= part.size() * 8);
  SegmentWriter writer;
  bool taken = Read([&] {
    writer.TakeOver(head, [&](size_t number) { return number % 100 == 0 ? part : NoLists(); });
  });
  if (!taken) return;
  Demand(isSound);
  std::string newHead = writer.Head();
  Demand(ReadSegmentKeys(newHead) == ReadSegmentKeys(head));
  writer.Finish([&](size_t number, std::string_view data) {
    if (number % 100 != 0) return;
    for (uint32_t trigram = 0; trigram < kPartTrigrams; trigram += 117) {
      Postings before = ReadPostings(part, trigram, documents);
      Postings after = ReadPostings(data, trigram, documents);
      Demand(before.isAll == after.isAll && before.documents == after.documents);
    }
  });
}

Connection& Opened() {
  static const testing::TempFolder folder;
  static Connection connection;
  if (!connection.IsOpen()) {
    std::string file = folder.File("packed.twr");
    CreateDatabaseFile(file, "password", repository::RepositoryTables(), 1);
    connection.SetProperty(kDataSourceProperty, file);
    connection.SetProperty(kPasswordProperty, "password");
    connection.Open();
    connection.KeepTextIndex("Email", {"Body", "Subject"});
    connection.BeginGroup();
    for (int i = 0; i < 300; ++i) {
      std::string text = "letter " + std::to_string(i * i);
      std::string body = text;
      body.append(100, 'x');
      std::string values = "('";
      values.append(text).append("', '").append(body).append("')");
      connection.Execute("INSERT INTO Email (Subject, Body) VALUES " + values);
      connection.Execute("INSERT INTO FileRepository (FileID, FileBody) VALUES (1, '" + text +
                         "')");
    }
    connection.EndGroup();
    connection.Close();
    connection.Open();
  }
  return connection;
}

void Change(jet::Database& engine, Input& input) {
  // A text that is none is stored as it is.
  static const char* const kChanges[] = {
      "INSERT OR REPLACE INTO tw_search_part VALUES (?1, ?2)",
      "INSERT OR REPLACE INTO tw_search_changed VALUES (?1)",
      "UPDATE tw_search_state SET Done = ?1",
      "UPDATE Email SET Body = ?2 WHERE ID = ?1",
      "UPDATE Email SET Body = cast(?2 AS TEXT), Subject = cast(?2 AS TEXT) WHERE ID = ?1",
      "UPDATE FileRepository SET FileBody = cast(?2 AS TEXT) WHERE ID = ?1",
      "UPDATE OR IGNORE Email SET ID = ?1 WHERE ID = 7",
      "DELETE FROM tw_search_part WHERE ID >= ?1",
  };
  int64_t choice = input.Number(1);
  std::string_view sql = kChanges[choice % 8];
  // A small key, one of a segment's head or part, or any number.
  int64_t key = (choice & 64) != 0 ? input.Number(8) : input.Number(1) - (choice & 32) / 4;
  std::string_view data =
      input.Take(static_cast<size_t>(input.Number((choice & 128) != 0 ? 2 : 1)));
  Statement change(engine, sql);
  change.Bind(1, key);
  if (sql.find("?2") != std::string_view::npos) change.BindBytes(2, data);
  change.Run();
}

void TryFile(Input input) {
  Connection& connection = Opened();
  jet::Database& engine = connection.GetImpl().session.Engine();
  engine.Run("BEGIN");
  for (int i = 0; i < 20 && !input.IsEmpty(); ++i) Change(engine, input);
  {
    TextIndex index(connection.GetImpl().session, "Email", {"Body", "Subject"});
    for (const char* wanted : {"letter 9", "xxx", "961"}) {
      auto keys = index.Candidates({{0, wanted, false}, {1, "let%", true}});
      if (!keys) continue;
      Demand(std::is_sorted(keys->begin(), keys->end()) && keys->size() < 100'000);
      index.Show(*keys);
    }
    index.Follow(true);
  }
  for (const char* sql : {"SELECT ID, Subject, Body FROM Email ORDER BY Subject",
                          "SELECT ID FROM Email WHERE Body Like '%r 9%' OR InStr(Subject, '6') > 0",
                          "SELECT FileBody FROM FileRepository WHERE ID < 20"}) {
    Read([&] {
      Recordset rows;
      rows.Open(sql, connection, CursorType::kKeyset);
      for (int i = 0; i < 30 && !rows.Eof(); ++i, rows.MoveNext()) {
        for (int k = 0; k < rows.FieldCount(); ++k) {
          Read([&] { rows.Field(k); });
        }
      }
    });
  }
  engine.Run("ROLLBACK");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Input input({reinterpret_cast<const char*>(data), size});
  switch (input.Number(1) % 3) {
    case 0:
      TryValue(input.Rest());
      break;
    case 1:
      TrySegment(input);
      break;
    default:
      TryFile(input);
  }
  return 0;
}
