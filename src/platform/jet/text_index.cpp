// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "platform/jet/text_index.h"

#include <algorithm>
#include <utility>

#include "platform/jet/packing.h"
#include "platform/jet/text_order.h"

namespace tarnwick::jet {

namespace {

// Embedded in the files: another number has the index made anew.
constexpr int kFormat = 1;
// Fewer rows than this are read one by one at each search sooner than a segment is written.
constexpr int64_t kLeastSegment = 256;
// What a search takes in before it runs where nobody watches it: a few tenths of a second.
constexpr size_t kRowsBeforeSearch = 2 * kMostDocuments;
// Rows between two looks around.
constexpr size_t kStep = 64;
// With more rows than this share of all, reading them one by one costs as much as reading all.
constexpr size_t kUsefulShare = 4;
constexpr size_t kAlwaysUseful = 64;
// A list costs a look into the file; the rarest few leave next to nothing for the others.
constexpr size_t kMostLists = 12;
constexpr size_t kFewDocuments = 2;

// What a sound file can't reach: segments, and the keys that a page holds.
constexpr int64_t kMostSegments = int64_t{1} << 40;
constexpr size_t kKeysInPage = 1024;

constexpr std::pair<const char*, const char*> kTables[] = {
    {"tw_search_part", " (ID INTEGER PRIMARY KEY, Data BLOB)"},
    {"tw_search_changed", " (ID INTEGER PRIMARY KEY)"},
    {"tw_search_state", " (Made TEXT, Done INTEGER)"}};

constexpr int kInterrupted = 9;  // the engine's number

[[noreturn]] void Damaged() {
  throw Error(11, "The text index is damaged");
}

std::string Quoted(std::string_view name) {
  std::string quoted = "\"";
  for (char c : name) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + "\"";
}

void KeepCommon(std::vector<uint16_t>& documents, const std::vector<uint16_t>& others) {
  auto end = std::set_intersection(documents.begin(), documents.end(), others.begin(), others.end(),
                                   documents.begin());
  documents.erase(end, documents.end());
}

// How common a trigram has turned out to be, for the order of looking.
struct Probe {
  uint32_t trigram;
  size_t documents = 0;
};

}  // namespace

TextIndex::TextIndex(Connection::Impl& connection, std::string_view table,
                     std::vector<std::string> columns)
    : connection_(connection), table_(table), columns_(std::move(columns)) {
  MakeTables();
}

void TextIndex::MakeTables() {
  Database& engine = connection_.Engine();
  engine.Run(
      "SAVEPOINT tw_search;"
      "CREATE TEMP TABLE tw_search_found (ID INTEGER PRIMARY KEY);");
  // In tables of another shape a key could stand twice, or be none.
  for (const auto& [table, shape] : kTables) {
    Statement same(engine, "SELECT count(*) FROM main.sqlite_schema WHERE name = ?1 AND sql = ?2");
    same.BindText(1, table);
    std::string sql = std::string("CREATE TABLE ") + table + shape;
    same.BindText(2, sql);
    if (same.Step() && same.Int(0) == 1) continue;
    same.Reset();
    engine.Run((std::string("DROP TABLE IF EXISTS main.") + table).c_str());
    engine.Run((std::string("CREATE TABLE main.") + table + shape).c_str());
  }
  std::string made = std::to_string(kFormat) + ":" + std::to_string(TextOrderVersion());
  std::string watched;
  for (const std::string& column : columns_) {
    made += ":" + column;
    watched += ", " + Quoted(column);
  }
  Statement same(engine, "SELECT count(*) FROM main.tw_search_state WHERE Made = ?1");
  same.BindText(1, made);
  if (!same.Step() || same.Int(0) != 1 ||
      Number("SELECT count(*) FROM main.tw_search_state") != 1) {
    same.Reset();
    engine.Run(
        "DELETE FROM main.tw_search_part; DELETE FROM main.tw_search_changed;"
        "DELETE FROM main.tw_search_state");
    Statement begin(engine, "INSERT INTO main.tw_search_state VALUES (?1, 0)");
    begin.BindText(1, made);
    begin.Run();
  }
  same.Reset();
  // A trigger in the file would not run; one of the connection's own does.
  engine.Run(("CREATE TEMP TRIGGER tw_search_touch AFTER UPDATE OF ID" + watched + " ON main." +
              Quoted(table_) +
              " BEGIN INSERT OR IGNORE INTO tw_search_changed VALUES (OLD.ID);"
              " INSERT OR IGNORE INTO tw_search_changed VALUES (NEW.ID); END;"
              "RELEASE tw_search")
                 .c_str());
}

bool TextIndex::IsOf(std::string_view table) const {
  return SameWord(table, table_);
}

std::optional<size_t> TextIndex::Find(std::string_view column) const {
  for (size_t i = 0; i < columns_.size(); i++) {
    if (SameWord(columns_[i], column)) return i;
  }
  return std::nullopt;
}

int64_t TextIndex::Number(std::string_view sql) {
  std::shared_ptr<Statement> statement = connection_.Own(sql);
  StatementUse use(*statement);
  return connection_.StepRead(*statement) ? statement->Int(0) : 0;
}

int64_t TextIndex::Done() {
  return std::max<int64_t>(Number("SELECT Done FROM main.tw_search_state"), 0);
}

int64_t TextIndex::LastKey() {
  return std::max<int64_t>(Number("SELECT max(ID) FROM main." + Quoted(table_)), 0);
}

// All of the work or nothing, within the transaction there is or as one of its own.
template <typename Work>
void TextIndex::Write(Work&& work) {
  Database& engine = connection_.Engine();
  Database::Unwatched unwatched(engine);
  try {
    engine.Run("SAVEPOINT tw_search");
    work();
    engine.Run("RELEASE tw_search");
  } catch (const Error& error) {
    Forget();
    if (engine.InTransaction()) engine.Run("ROLLBACK TO tw_search; RELEASE tw_search");
    connection_.AfterFailure(error);
    throw;
  }
}

// The index is given up for this connection, unless the person only wanted to stop. What the engine
// took back of others' writes is no matter of the index alone.
template <typename Work>
void TextIndex::Attempt(Work&& work) {
  if (broken_) return;
  bool holdsWrites = connection_.HoldsWrites();
  try {
    work();
  } catch (const Error& error) {
    Forget();
    if (error.Number() == kInterrupted) throw;
    broken_ = true;
    if (holdsWrites && !connection_.HoldsWrites()) throw;
  }
}

void TextIndex::Forget() {
  writer_ = SegmentWriter();
  followed_.reset();
  replaced_.reset();
}

void TextIndex::Reset() {
  if (Number("SELECT count(*) FROM (SELECT 1 FROM main.tw_search_part LIMIT 1)") == 0 &&
      Number("SELECT count(*) FROM (SELECT 1 FROM main.tw_search_changed LIMIT 1)") == 0 &&
      Done() == 0) {
    return Forget();
  }
  Write([&] {
    connection_.Engine().Run(
        "DELETE FROM main.tw_search_part; DELETE FROM main.tw_search_changed;"
        "UPDATE main.tw_search_state SET Done = 0");
  });
  Forget();
}

std::vector<TextIndex::Segment> TextIndex::Segments() {
  std::vector<Segment> segments;
  std::shared_ptr<Statement> heads =
      connection_.Own("SELECT ID, Data FROM main.tw_search_part WHERE ID < 0 ORDER BY ID DESC");
  StatementUse use(*heads);
  while (connection_.StepRead(*heads)) {
    std::string head(heads->Stored(1));
    int64_t number = -1 - heads->Int(0);
    if (number >= kMostSegments) Damaged();
    segments.push_back({number, ReadSegmentSize(head), head});
  }
  return segments;
}

std::string TextIndex::Part(int64_t segment, size_t part) {
  std::shared_ptr<Statement> read =
      connection_.Own("SELECT Data FROM main.tw_search_part WHERE ID = ?1");
  StatementUse use(*read);
  read->Bind(1, segment * static_cast<int64_t>(kSegmentParts) + static_cast<int64_t>(part));
  if (!connection_.StepRead(*read)) Damaged();
  return std::string(read->Stored(0));
}

void TextIndex::TakeRow(Statement& row) {
  trigrams_.Clear();
  for (size_t i = 0; i < columns_.size(); i++) {
    auto column = static_cast<int>(i) + 1;
    std::string_view stored = row.Stored(column);
    bool isPacked = row.Kind(column) == ColumnKind::kLongText && IsPacked(stored);
    trigrams_.Add(isPacked ? UnpackScratch(stored) : row.Text(column), SaltOf(i));
  }
  writer_.Add(row.Int(0), trigrams_.Hashes());
}

std::string TextIndex::RowQuery() const {
  std::string sql = "SELECT ID";
  for (const std::string& column : columns_) sql += ", " + Quoted(column);
  return sql + " FROM main." + Quoted(table_);
}

// Reads on into the writer; gives the number of rows.
size_t TextIndex::ReadRows(size_t most) {
  std::shared_ptr<Statement> rows =
      connection_.Own(RowQuery() + " WHERE ID > ?1 ORDER BY ID LIMIT ?2");
  StatementUse use(*rows);
  rows->Bind(1, *followed_);
  rows->Bind(2, static_cast<int64_t>(most));
  size_t count = 0;
  while (!writer_.IsFull() && connection_.StepRead(*rows)) {
    TakeRow(*rows);
    followed_ = rows->Int(0);
    count++;
  }
  return count;
}

// The last segment is filled up before a new one is begun.
void TextIndex::Begin() {
  Forget();
  followed_ = Done();
  std::vector<Segment> segments = Segments();
  if (segments.empty() || segments.back().documents + kLeastSegment > kMostDocuments) return;
  const Segment& last = segments.back();
  writer_.TakeOver(last.head, [&](size_t part) { return Part(last.number, part); });
  replaced_ = last.number;
  // Long texts fill a segment of few rows.
  if (!writer_.IsFull()) return;
  writer_.Clear();
  replaced_.reset();
}

void TextIndex::TakeChanged() {
  while (!writer_.IsFull()) {
    std::vector<int64_t> keys = KeysOf("SELECT ID FROM main.tw_search_changed LIMIT 100", 0);
    if (keys.empty()) return;
    std::shared_ptr<Statement> row = connection_.Own(RowQuery() + " WHERE ID = ?1");
    std::shared_ptr<Statement> remove =
        connection_.Own("DELETE FROM main.tw_search_changed WHERE ID = ?1");
    for (int64_t key : keys) {
      if (writer_.IsFull()) return;
      {
        StatementUse use(*row);
        row->Bind(1, key);
        if (connection_.StepRead(*row)) TakeRow(*row);
      }
      remove->Bind(1, key);
      remove->Run();
    }
  }
}

void TextIndex::WriteSegment() {
  Write([&] {
    TakeChanged();
    int64_t number = replaced_ ? *replaced_ : -Number("SELECT min(ID) FROM main.tw_search_part");
    // Without a negative key, that of a head, there is no segment.
    number = std::max<int64_t>(number, 0);
    std::shared_ptr<Statement> put =
        connection_.Own("INSERT OR REPLACE INTO main.tw_search_part VALUES (?1, ?2)");
    std::string head = writer_.Head();
    put->Bind(1, -1 - number);
    put->BindBytes(2, head);
    put->Run();
    writer_.Finish([&](size_t part, std::string_view data) {
      put->Bind(1, number * static_cast<int64_t>(kSegmentParts) + static_cast<int64_t>(part));
      put->BindBytes(2, data);
      put->Run();
    });
    std::shared_ptr<Statement> done = connection_.Own("UPDATE main.tw_search_state SET Done = ?1");
    done->Bind(1, *followed_);
    done->Run();
  });
  // The writer's memory serves the next segment.
  followed_.reset();
  replaced_.reset();
}

void TextIndex::Follow(bool atEnd) {
  bool holdsWrites = connection_.HoldsWrites();
  try {
    Attempt([&] {
      if (!followed_) {
        if (LastKey() - Done() < kLeastSegment) return;
        Begin();
      }
      while (ReadRows(kMostDocuments) > 0) {
        if (!writer_.IsFull()) continue;
        WriteSegment();
        Begin();
      }
      if (!atEnd) return;
      if (*followed_ > Done()) WriteSegment();
      Forget();
    });
  } catch (const Error&) {
    if (holdsWrites && !connection_.HoldsWrites()) throw;
    // Stopped; the next search goes on from here.
  }
}

void TextIndex::CatchUp(size_t most, const std::function<bool(int64_t, int64_t)>& look) {
  auto countChanged = [&] { return Number("SELECT count(*) FROM main.tw_search_changed"); };
  Attempt([&] {
    int64_t done = Done();
    int64_t behind = std::clamp<int64_t>(LastKey() - done, 0, INT64_MAX / 2);
    int64_t total = behind + countChanged();
    if (total < kLeastSegment) return;
    bool goesOn = true;
    for (size_t taken = 0; goesOn;) {
      Begin();
      size_t before = writer_.Documents();
      for (size_t rows = 1; goesOn && rows > 0 && !writer_.IsFull();) {
        rows = ReadRows(kStep);
        taken += rows;
        goesOn = taken < most && look(*followed_ - done, total);
      }
      bool isLast = !writer_.IsFull();
      if (writer_.Documents() == before && countChanged() == 0) break;
      WriteSegment();
      if (isLast && countChanged() == 0) break;
    }
    Forget();
  });
}

std::vector<int64_t> TextIndex::KeysOf(std::string_view sql, int64_t after) {
  std::shared_ptr<Statement> statement = connection_.Own(sql);
  StatementUse use(*statement);
  if (sql.find("?1") != std::string_view::npos) statement->Bind(1, after);
  std::vector<int64_t> keys;
  while (connection_.StepRead(*statement)) keys.push_back(statement->Int(0));
  return keys;
}

uint32_t TextIndex::SaltOf(size_t column) {
  return static_cast<uint32_t>(column) * 0x1357Bu & ((1u << kTrigramBits) - 1);
}

std::optional<std::vector<int64_t>> TextIndex::Candidates(const std::vector<Wanted>& wanted) {
  std::vector<uint32_t> trigrams;
  for (const Wanted& want : wanted) {
    std::vector<uint32_t> found = TrigramsOf(want.text, want.isPattern, SaltOf(want.column));
    trigrams.insert(trigrams.end(), found.begin(), found.end());
  }
  if (trigrams.empty()) return std::nullopt;
  Database& engine = connection_.Engine();
  CatchUp(engine.IsWatched() ? SIZE_MAX : kRowsBeforeSearch, [&](int64_t, int64_t) {
    if (engine.AsksToStop()) throw Error(kInterrupted, "interrupted");
    return true;
  });
  std::optional<std::vector<int64_t>> keys;
  Attempt([&] { keys = Propose(trigrams); });
  return keys;
}

void TextIndex::Show(const std::vector<int64_t>& keys) {
  Write([&] {
    connection_.Own("DELETE FROM temp.tw_search_found")->Run();
    std::shared_ptr<Statement> add =
        connection_.Own("INSERT INTO temp.tw_search_found VALUES (?1)");
    for (int64_t key : keys) {
      add->Bind(1, key);
      add->Run();
    }
  });
}

std::optional<std::vector<int64_t>> TextIndex::Propose(const std::vector<uint32_t>& trigrams) {
  std::vector<int64_t> keys = KeysOf("SELECT ID FROM main.tw_search_changed", 0);
  std::vector<int64_t> behind =
      KeysOf("SELECT ID FROM main." + Quoted(table_) + " WHERE ID > ?1", Done());
  keys.insert(keys.end(), behind.begin(), behind.end());
  size_t all = keys.size();
  std::vector<Segment> segments = Segments();
  for (const Segment& segment : segments) all += segment.documents;
  size_t most = all / kUsefulShare + kAlwaysUseful;
  // A few bytes may claim thousands of keys.
  most = std::min(most, static_cast<size_t>(Number("PRAGMA main.page_count")) * kKeysInPage);

  std::vector<Probe> probes;
  for (uint32_t trigram : trigrams) probes.push_back({trigram});
  for (const Segment& segment : segments) {
    // The order that the segments so far have taught.
    std::stable_sort(probes.begin(), probes.end(),
                     [](const Probe& a, const Probe& b) { return a.documents < b.documents; });
    bool isFirst = &segment == &segments.front();
    bool any = true;
    std::vector<uint16_t> documents;
    size_t lists = 0;
    for (Probe& probe : probes) {
      bool enough = !any && documents.size() <= kFewDocuments;
      if (!isFirst && (enough || lists == kMostLists)) break;
      if (isFirst && lists == 2 * kMostLists) break;
      lists++;
      Postings postings = ReadPostings(Part(segment.number, probe.trigram / kPartTrigrams),
                                       probe.trigram, segment.documents);
      probe.documents += postings.isAll ? segment.documents : postings.documents.size();
      if (postings.isAll) continue;
      if (any) {
        documents = std::move(postings.documents);
        any = false;
      } else {
        KeepCommon(documents, postings.documents);
      }
    }
    if (!any && documents.empty()) continue;
    std::vector<int64_t> segmentKeys = ReadSegmentKeys(segment.head);
    if (any) keys.insert(keys.end(), segmentKeys.begin(), segmentKeys.end());
    for (uint16_t document : documents) keys.push_back(segmentKeys[document]);
    if (keys.size() > most) return std::nullopt;
  }
  if (keys.size() > most) return std::nullopt;
  std::sort(keys.begin(), keys.end());
  keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
  return keys;
}

}  // namespace tarnwick::jet
