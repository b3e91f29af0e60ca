// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/index/text_index.h"

#include <algorithm>
#include <cassert>
#include <utility>

#include "database/engine/catalog.h"
#include "database/engine/packing.h"
#include "database/text/order.h"
#include "platform/charset.h"

namespace tarnwick::jet {

namespace {

// Embedded in the files: another number has the index made anew.
constexpr int kFormat = 2;
// Fewer rows than this are read one by one at each search sooner than a segment is written.
constexpr int64_t kLeastSegment = 256;
// Rows between two looks around.
constexpr size_t kStep = 64;
constexpr int64_t kMostSegments = int64_t{1} << 32;

constexpr std::pair<const char*, const char*> kTables[] = {
    {"tw_search_part", " (ID INTEGER PRIMARY KEY, Data BLOB)"},
    {"tw_search_changed", " (ID INTEGER PRIMARY KEY)"},
    {"tw_search_state", " (Made TEXT, Done INTEGER)"}};

// The engine's numbers.
constexpr int kDamaged = 11;

[[noreturn]] void Damaged() {
  throw Error(kDamaged, "The text index is damaged");
}

}  // namespace

TextIndex::TextIndex(Session& session, std::string_view table, std::vector<std::string> columns)
    : session_(session), table_(table), columns_(std::move(columns)) {
  MakeTables();
  session_.SetFollower(this);
}

void TextIndex::MakeTables() {
  Database& engine = session_.Engine();
  engine.Run(
      "SAVEPOINT tw_search;"
      "CREATE TEMP TABLE tw_search_found (ID INTEGER PRIMARY KEY);");
  // In tables of another shape a key could stand twice, or be none.
  bool isWhole = true;
  for (const auto& [table, shape] : kTables) {
    Statement same(engine, "SELECT count(*) FROM main.sqlite_schema WHERE name = ?1 AND sql = ?2");
    same.BindText(1, table);
    std::string sql = std::string("CREATE TABLE ") + table + shape;
    same.BindText(2, sql);
    if (same.Step() && same.Int(0) == 1) continue;
    same.Reset();
    isWhole = false;
    engine.Run((std::string("DROP TABLE IF EXISTS main.") + table).c_str());
    engine.Run((std::string("CREATE TABLE main.") + table + shape).c_str());
  }
  std::string made = std::to_string(kFormat) + ":" + std::to_string(TextOrderVersion());
  std::string watched;
  for (const std::string& column : columns_) {
    made += ":" + column;
    watched += ", " + QuotedName(column);
  }
  Statement same(engine, "SELECT count(*) FROM main.tw_search_state WHERE Made = ?1");
  same.BindText(1, made);
  Statement last(engine, "SELECT max(seq) FROM main.sqlite_sequence WHERE name = ?1");
  last.BindText(1, table_);
  bool isOfTheFile = isWhole && same.Step() && same.Int(0) == 1 && last.Step() && Done() >= 0 &&
                     Done() <= std::max(last.Int(0), LastKey()) &&
                     Number("SELECT count(*) FROM main.tw_search_state") == 1;
  last.Reset();
  if (!isOfTheFile) {
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
              QuotedName(table_) +
              " BEGIN INSERT OR IGNORE INTO tw_search_changed VALUES (OLD.ID);"
              " INSERT OR IGNORE INTO tw_search_changed VALUES (NEW.ID); END;"
              "RELEASE tw_search")
                 .c_str());
}

bool TextIndex::IsOf(std::string_view table) const {
  return platform::SameWord(table, table_);
}

std::optional<size_t> TextIndex::Find(std::string_view column) const {
  for (size_t i = 0; i < columns_.size(); i++) {
    if (platform::SameWord(columns_[i], column)) return i;
  }
  return std::nullopt;
}

int64_t TextIndex::Number(std::string_view sql) {
  std::shared_ptr<Statement> statement = session_.Own(sql);
  StatementUse use(*statement);
  return session_.StepRead(*statement) ? statement->Int(0) : 0;
}

int64_t TextIndex::Done() {
  return std::max<int64_t>(Number("SELECT Done FROM main.tw_search_state"), 0);
}

int64_t TextIndex::LastKey() {
  return std::max<int64_t>(Number("SELECT max(ID) FROM main." + QuotedName(table_)), 0);
}

// All of the work or nothing, within the transaction there is or as one of its own.
void TextIndex::Write(const std::function<void()>& work) {
  Database& engine = session_.Engine();
  Database::Unwatched unwatched(engine);
  // The key that the last row got is that of a row of the program's.
  struct KeepLastRowId {
    Database& engine;
    int64_t last = engine.LastRowId();
    ~KeepLastRowId() { engine.SetLastRowId(last); }
  } keep{engine};
  try {
    engine.Run("SAVEPOINT tw_search");
    work();
    engine.Run("RELEASE tw_search");
  } catch (const Error& error) {
    Forget();
    if (engine.InTransaction()) engine.Run("ROLLBACK TO tw_search; RELEASE tw_search");
    session_.AfterFailure(error);
    throw;
  }
}

// What is damaged is made anew, once; after anything else the index is given up for this
// connection, unless the person only wanted to stop. What the engine took back of others' writes is
// no matter of the index alone.
void TextIndex::Attempt(const std::function<void()>& work) {
  if (broken_) return;
  bool holdsWrites = session_.HoldsWrites();
  try {
    work();
  } catch (const Error& error) {
    if (error.Number() == kStopped) throw;
    Forget();
    bool isHopeless = error.Number() != kDamaged || wasDamaged_;
    wasDamaged_ = true;
    broken_ = true;
    if (holdsWrites && !session_.HoldsWrites()) throw;
    try {
      if (!isHopeless) Empty();
      broken_ = isHopeless;
    } catch (const Error&) {
      if (holdsWrites && !session_.HoldsWrites()) throw;
      // Searched without.
    }
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
  Empty();
}

void TextIndex::Empty() {
  Write([&] {
    session_.Engine().Run(
        "DELETE FROM main.tw_search_part; DELETE FROM main.tw_search_changed;"
        "UPDATE main.tw_search_state SET Done = 0");
  });
  Forget();
}

std::vector<TextIndex::Segment> TextIndex::Segments() {
  std::vector<Segment> segments;
  std::shared_ptr<Statement> heads =
      session_.Own("SELECT ID, Data FROM main.tw_search_part WHERE ID < 0 ORDER BY ID DESC");
  StatementUse use(*heads);
  while (session_.StepRead(*heads)) {
    std::string head(heads->Stored(1));
    if (heads->Int(0) < -kMostSegments) Damaged();
    segments.push_back({-1 - heads->Int(0), ReadSegmentSize(head), head});
  }
  return segments;
}

std::string TextIndex::Part(int64_t segment, size_t part) {
  std::shared_ptr<Statement> read =
      session_.Own("SELECT Data FROM main.tw_search_part WHERE ID = ?1");
  StatementUse use(*read);
  read->Bind(1, segment * static_cast<int64_t>(kSegmentParts) + static_cast<int64_t>(part));
  if (!session_.StepRead(*read)) Damaged();
  return std::string(read->Stored(0));
}

void TextIndex::TakeRow(Statement& row) {
  for (size_t i = 0; i < columns_.size(); i++) {
    auto column = static_cast<int>(i) + 1;
    bool isPacked = row.Kind(column) == ColumnKind::kLongText &&
                    row.TypeOf(column) == Statement::Type::kBytes && IsPacked(row.Stored(column));
    if (!isPacked) {
      trigrams_.Add(row.Text(column), SaltOf(i));
      continue;
    }
    try {
      trigrams_.Add(UnpackScratch(row.Stored(column)), SaltOf(i));
    } catch (const Error&) {
      // Nothing is found in a damaged text.
    }
  }
  writer_.Add(row.Int(0), trigrams_.Take());
}

std::string TextIndex::RowQuery() const {
  std::string sql = "SELECT ID";
  for (const std::string& column : columns_) sql += ", " + QuotedName(column);
  return sql + " FROM main." + QuotedName(table_);
}

// Reads on into the writer; gives the number of rows.
size_t TextIndex::ReadRows(size_t most) {
  std::shared_ptr<Statement> rows =
      session_.Own(RowQuery() + " WHERE ID > ?1 ORDER BY ID LIMIT ?2");
  StatementUse use(*rows);
  rows->Bind(1, *followed_);
  rows->Bind(2, static_cast<int64_t>(most));
  size_t count = 0;
  while (!writer_.IsFull() && session_.StepRead(*rows)) {
    TakeRow(*rows);
    followed_ = rows->Int(0);
    count++;
  }
  return count;
}

// The last segment is filled up before a new one is begun.
void TextIndex::Begin() {
  // Its memory serves one segment after the other.
  writer_.Clear();
  replaced_.reset();
  std::vector<Segment> segments = Segments();
  if (!segments.empty() && segments.back().documents + kLeastSegment <= kMostDocuments) {
    const Segment& last = segments.back();
    writer_.TakeOver(last.head, [&](size_t part) { return Part(last.number, part); });
    replaced_ = last.number;
    // Long texts fill a segment of few rows.
    if (writer_.IsFull()) {
      writer_.Clear();
      replaced_.reset();
    }
  }
  followed_ = Done();
}

void TextIndex::TakeChanged() {
  while (!writer_.IsFull()) {
    std::vector<int64_t> keys = KeysOf(kChanged, kBeforeAll, 100);
    if (keys.empty()) return;
    std::shared_ptr<Statement> row = session_.Own(RowQuery() + " WHERE ID = ?1");
    std::shared_ptr<Statement> remove =
        session_.Own("DELETE FROM main.tw_search_changed WHERE ID = ?1");
    for (int64_t key : keys) {
      if (writer_.IsFull()) return;
      {
        StatementUse use(*row);
        row->Bind(1, key);
        if (session_.StepRead(*row)) TakeRow(*row);
      }
      remove->Bind(1, key);
      remove->Run();
    }
  }
}

void TextIndex::Put(int64_t segment) {
  std::shared_ptr<Statement> put =
      session_.Own("INSERT OR REPLACE INTO main.tw_search_part VALUES (?1, ?2)");
  std::string head = writer_.Head();
  put->Bind(1, -1 - segment);
  put->BindBytes(2, head);
  put->Run();
  writer_.Finish([&](size_t part, std::string_view data) {
    put->Bind(1, segment * static_cast<int64_t>(kSegmentParts) + static_cast<int64_t>(part));
    put->BindBytes(2, data);
    put->Run();
  });
}

void TextIndex::WriteSegment() {
  Write([&] {
    TakeChanged();
    int64_t number = replaced_ ? *replaced_ : -Number("SELECT min(ID) FROM main.tw_search_part");
    // Without a negative key, that of a head, there is no segment; and all that was changed may
    // have been deleted since.
    if (writer_.Documents() > 0) Put(std::max<int64_t>(number, 0));
    std::shared_ptr<Statement> done = session_.Own("UPDATE main.tw_search_state SET Done = ?1");
    done->Bind(1, *followed_);
    done->Run();
  });
  // The writer's memory serves the next segment.
  followed_.reset();
  replaced_.reset();
}

int64_t TextIndex::Changed() {
  return Number("SELECT count(*) FROM main.tw_search_changed");
}

int64_t TextIndex::Missing() {
  // A file can hold any key.
  return std::clamp<int64_t>(LastKey() - Done(), 0, INT64_MAX / 2) + Changed();
}

bool TextIndex::IsNext(std::string_view table, int64_t key) {
  if (broken_ || !IsOf(table)) return false;
  if (!followed_) unfollowed_++;
  return followed_ && key > 0 && key - 1 == *followed_ && !writer_.IsFull();
}

bool TextIndex::IsFollowDue() const {
  return !broken_ && (followed_ ? writer_.IsFull() : unfollowed_ >= kLeastSegment);
}

void TextIndex::AddTo(TrigramSet& trigrams, size_t column, std::string_view text) {
  // What is bound is mended likewise.
  if (platform::IsValidUtf8(text)) {
    trigrams.Add(text, SaltOf(column));
  } else {
    trigrams.Add(platform::MendUtf8(text), SaltOf(column));
  }
}

void TextIndex::HandOver(int64_t key, const std::vector<std::string_view>& texts) {
  for (size_t i = 0; i < columns_.size(); i++) AddTo(trigrams_, i, texts[i]);
  HandOver(key, trigrams_.Take());
}

void TextIndex::HandOver(int64_t key, const std::vector<uint32_t>& trigrams) {
  assert(followed_ && key - 1 == *followed_);
  writer_.Add(key, trigrams);
  followed_ = key;
}

void TextIndex::Follow(bool atEnd) {
  bool holdsWrites = session_.HoldsWrites();
  unfollowed_ = 0;
  try {
    Attempt([&] {
      if (!followed_) {
        if (LastKey() - Done() < kLeastSegment) return;
        Begin();
      }
      size_t taken = 0;
      while (taken < kMostAtOnce) {
        size_t rows = ReadRows(kMostAtOnce - taken);
        if (rows == 0 && !writer_.IsFull()) break;
        taken += rows;
        if (!writer_.IsFull()) continue;
        WriteSegment();
        Begin();
      }
      if (!atEnd) return;
      if (*followed_ > Done()) WriteSegment();
      Forget();
    });
  } catch (const Error&) {
    if (holdsWrites && !session_.HoldsWrites()) throw;
    // Stopped; what comes next goes on from here.
  }
}

bool TextIndex::CatchUp(const std::function<bool(int64_t, int64_t)>& look) {
  bool isComplete = false;
  Attempt([&] {
    int64_t done = Done();
    int64_t total = Missing();
    isComplete = total < kLeastSegment;
    while (!isComplete) {
      if (!followed_) Begin();
      while (!writer_.IsFull() && ReadRows(kStep) > 0) {
        if (!look(*followed_ - done, total)) return;
      }
      bool isLast = !writer_.IsFull();
      if (*followed_ > Done() || Changed() > 0) WriteSegment();
      isComplete = isLast && Changed() == 0;
    }
    Forget();
  });
  return isComplete || broken_;
}

std::vector<int64_t> TextIndex::KeysOf(std::string_view table, int64_t after, size_t most) {
  std::shared_ptr<Statement> statement = session_.Own("SELECT ID FROM main." + QuotedName(table) +
                                                      " WHERE ID > ?1 ORDER BY ID LIMIT ?2");
  StatementUse use(*statement);
  statement->Bind(1, after);
  statement->Bind(2, static_cast<int64_t>(most));
  std::vector<int64_t> keys;
  while (session_.StepRead(*statement)) keys.push_back(statement->Int(0));
  return keys;
}

uint32_t TextIndex::SaltOf(size_t column) {
  return static_cast<uint32_t>(column) * 0x1357Bu & ((1u << kTrigramBits) - 1);
}

}  // namespace tarnwick::jet
