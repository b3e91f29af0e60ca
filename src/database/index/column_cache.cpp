// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "database/index/column_cache.h"

#include <algorithm>
#include <iterator>

#include "database/engine/catalog.h"
#include "platform/utf8.h"

namespace tarnwick::jet {

namespace {

// Reading a row singly costs what fifty do in a pass over all.
constexpr size_t kSingleCost = 50;
constexpr size_t kFewChanges = 200;
constexpr size_t kSpareShare = 8;  // of the memory for rows this part may stay unused
// What is kept by key for the time of a query takes a few bytes for each number up to the highest.
constexpr size_t kSpareKeys = 4000000;
constexpr size_t kMostGaps = 16;
constexpr int64_t kLeastRowBytes = 64;  // of the file, for a row and what the indexes hold of it
constexpr int kKeyColumn = 0;
constexpr int kDateColumn = 1;
constexpr int kReferenceColumn = 2;
constexpr int kFirstKind = 3;

// A value in one word, never 0; 0 when it does not fit.
uint64_t ShortWord(const PassedRow& values, int column) {
  StoredType type = values.TypeOf(column);
  auto mark = static_cast<uint64_t>(type);
  if (type == StoredType::kNull) return mark;
  if (type == StoredType::kInteger) {
    int64_t number = values.Int(column);
    return number >= 0 && number < int64_t{1} << 32 ? static_cast<uint64_t>(number) << 8 | mark : 0;
  }
  if (type != StoredType::kText) return 0;
  std::string_view text = values.Text(column);
  if (text.size() > 6) return 0;
  uint64_t word = text.size();
  for (char c : text) word = word << 8 | static_cast<unsigned char>(c);
  return word << 8 | mark;
}

}  // namespace

ColumnCache::ColumnCache(Session& session, ColumnCacheDefinition definition)
    : session_(session), definition_(std::move(definition)) {
  std::string table = "main." + QuotedName(definition_.table);
  std::string pass = "tw_pass(?1, _rowid_, " + QuotedName(definition_.date) + ", " +
                     QuotedName(definition_.reference);
  for (const std::string& kind : definition_.kinds) pass += ", " + QuotedName(kind);
  pass += ')';
  readAll_ =
      "SELECT 1 FROM " + table + " WHERE " + pass + " ORDER BY " + QuotedName(definition_.date);
  readOne_ = "SELECT 1 FROM " + table + " WHERE _rowid_ = ?2 AND " + pass;
  readHighest_ = "SELECT max(_rowid_) FROM " + table;
  std::string owner = QuotedName(definition_.detailKey);
  // The limit keeps the order: a condition is else asked before rows are sorted.
  readDetails_ = "SELECT 1 FROM (SELECT " + owner + " AS owner FROM main." +
                 QuotedName(definition_.details) + " ORDER BY 1 LIMIT -1) WHERE tw_pass(?1, owner)";
}

void ColumnCache::RowChanged(std::string_view table, int64_t key) {
  if (platform::SameWord(table, definition_.details)) repeatsRead_ = false;
  if (!isRead_ || !platform::SameWord(table, definition_.table)) return;
  ForgetTextOrder();
  if (changed_.size() > kFewChanges && changed_.size() > rows_.size() / kSingleCost) {
    isRead_ = false;
    changed_ = {};
  } else if (changed_.empty() || changed_.back() != key) {
    changed_.push_back(key);
  }
}

const std::vector<uint32_t>& ColumnCache::KeepTextOrder(const std::string& name,
                                                        std::vector<uint32_t> keys) {
  textOrderName_ = name;
  textOrder_ = std::move(keys);
  return textOrder_;
}

void ColumnCache::ForgetTextOrder() {
  textOrderName_.clear();
  textOrder_ = {};
}

void ColumnCache::Forget() {
  isRead_ = false;
  repeatsRead_ = false;
  changed_.clear();
}

bool ColumnCache::Refresh() {
  if (isRead_ && !changed_.empty()) {
    if (isFit_) {
      ReadChanged();
    } else {
      isRead_ = false;
    }
  }
  if (!isRead_) ReadAll();
  return isFit_;
}

// As many as there are where the keys have no gaps, and never more memory than the file's size
// allows for. Growing step by step would have two copies in memory, and copy what was read.
size_t ColumnCache::LikelyRows() {
  Database& engine = session_.Engine();
  int64_t highest = engine.Number(readHighest_.c_str());
  int64_t size = engine.Number("PRAGMA page_count") * engine.Number("PRAGMA page_size");
  return static_cast<size_t>(std::clamp<int64_t>(highest, 0, size / kLeastRowBytes));
}

void ColumnCache::ReadAll() {
  ForgetTextOrder();
  rows_.clear();
  distant_.clear();
  kinds_.clear();
  kindPlaces_.clear();
  seen_ = {};
  changed_.clear();
  highestKey_ = 0;
  highestReference_ = 0;
  isFit_ = true;
  std::shared_ptr<Statement> all = session_.Own(readAll_);
  StatementUse use(*all);
  readings_++;
  rows_.reserve(LikelyRows());
  RowTaker take = [this, row = Row()](const PassedRow& values) mutable {
    isFit_ = Take(values, row);
    if (isFit_) rows_.push_back(row);
    return !isFit_;
  };
  all->BindTaker(1, take);
  session_.StepRead(*all);
  isFit_ = isFit_ && highestKey_ <= kSpareKeys + kMostGaps * rows_.size();
  if (isFit_) {
    SortRows();
  } else {
    rows_ = {};
  }
  if (rows_.capacity() > rows_.size() + rows_.size() / kSpareShare) rows_.shrink_to_fit();
  isRead_ = true;
}

bool ColumnCache::Take(const PassedRow& values, Row& row) {
  using Type = StoredType;
  int64_t key = values.Int(kKeyColumn);
  if (key < 0 || key >= int64_t{std::numeric_limits<uint32_t>::max()}) return false;
  row.key = static_cast<uint32_t>(key);
  highestKey_ = std::max(highestKey_, row.key);

  Type dateType = values.TypeOf(kDateColumn);
  if (dateType != Type::kInteger && dateType != Type::kNull) return false;
  int64_t seconds = dateType == Type::kNull ? kNoDate : values.Int(kDateColumn);
  constexpr int64_t kLeast = std::numeric_limits<int32_t>::min();
  constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
  row.seconds = static_cast<int32_t>(std::clamp(seconds, kLeast, kMost));
  if (seconds <= kLeast || seconds >= kMost) distant_[row.key] = seconds;

  Type referenceType = values.TypeOf(kReferenceColumn);
  int64_t reference = kNoReference;
  if (referenceType == Type::kInteger) {
    reference = values.Int(kReferenceColumn);
    if (reference < 0 || reference >= int64_t{kNoReference}) return false;
  } else if (referenceType != Type::kNull) {
    return false;
  }
  row.reference = static_cast<uint32_t>(reference) & kNoReference;
  if (row.reference != kNoReference) {
    highestReference_ = std::max(highestReference_, uint32_t{row.reference});
  }
  return TakeKind(values, row);
}

bool ColumnCache::TakeKind(const PassedRow& values, Row& row) {
  uint32_t kind = 0;
  std::array<uint64_t, kShortKinds> words = {};
  size_t count = definition_.kinds.size();
  bool isShort = count <= kShortKinds;
  uint64_t hash = 0;
  for (size_t i = 0; isShort && i < count; i++) {
    words[i] = ShortWord(values, kFirstKind + static_cast<int>(i));
    isShort = words[i] != 0;
    hash = (hash ^ words[i]) * 0x9E3779B97F4A7C15ULL;
  }
  SeenKind& seen = seen_[hash >> 56];
  if (isShort && seen.words == words) {
    kind = seen.kind;
  } else {
    if (!FindKind(values, kind)) return false;
    if (isShort) seen = {words, kind};
  }
  row.kind = kind & (kMostKinds - 1);
  return true;
}

bool ColumnCache::FindKind(const PassedRow& values, uint32_t& kind) {
  auto end = kFirstKind + static_cast<int>(definition_.kinds.size());
  kindText_.clear();
  for (int column = kFirstKind; column < end; column++) {
    StoredType type = values.TypeOf(column);
    kindText_ += static_cast<char>(type);
    if (type == StoredType::kInteger) {
      int64_t number = values.Int(column);
      kindText_.append(reinterpret_cast<const char*>(&number), sizeof number);
    } else if (type == StoredType::kText) {
      std::string_view text = values.Text(column);
      kindText_.append(text);
      kindText_ += '\0';
      if (text.find('\0') != std::string_view::npos) return false;
    } else if (type != StoredType::kNull) {
      return false;
    }
  }
  auto [place, isNew] = kindPlaces_.try_emplace(kindText_, static_cast<uint32_t>(kinds_.size()));
  if (isNew) {
    if (kinds_.size() == kMostKinds) return false;
    std::vector<Value>& made = kinds_.emplace_back();
    for (int column = kFirstKind; column < end; column++) {
      StoredType type = values.TypeOf(column);
      made.emplace_back();
      if (type == StoredType::kInteger) made.back() = values.Int(column);
      if (type == StoredType::kText) made.back() = std::string(values.Text(column));
    }
  }
  kind = place->second;
  return true;
}

int64_t ColumnCache::SecondsOf(const Row& row) const {
  bool isDistant = row.seconds == std::numeric_limits<int32_t>::min() ||
                   row.seconds == std::numeric_limits<int32_t>::max();
  return isDistant ? distant_.at(row.key) : int64_t{row.seconds};
}

bool ColumnCache::IsBefore(const Row& a, const Row& b) const {
  int64_t secondsA = SecondsOf(a);
  int64_t secondsB = SecondsOf(b);
  return secondsA != secondsB ? secondsA < secondsB : a.key < b.key;
}

// Where an index was gone over, the engine gave them in the order of their dates.
void ColumnCache::SortRows() {
  auto before = [this](const Row& a, const Row& b) { return IsBefore(a, b); };
  for (auto run = rows_.begin(); run != rows_.end();) {
    auto end = run + 1;
    bool isSorted = true;
    for (; end != rows_.end() && end->seconds == run->seconds; ++end) {
      isSorted = isSorted && IsBefore(*(end - 1), *end);
    }
    if (end != rows_.end() && end->seconds < run->seconds) {
      return std::sort(rows_.begin(), rows_.end(), before);
    }
    if (!isSorted) std::sort(run, end, before);
    run = end;
  }
}

void ColumnCache::ReadChanged() {
  std::sort(changed_.begin(), changed_.end());
  changed_.erase(std::unique(changed_.begin(), changed_.end()), changed_.end());
  std::vector<bool> isChanged(size_t{highestKey_} + 1);
  for (int64_t key : changed_) {
    if (key >= 0 && key <= highestKey_) isChanged[static_cast<size_t>(key)] = true;
  }
  // Left half done by an error, all is read anew.
  isRead_ = false;
  std::erase_if(rows_, [&](const Row& row) { return isChanged[row.key]; });
  std::vector<Row> fresh;
  std::shared_ptr<Statement> one = session_.Own(readOne_);
  bool isFit = true;
  RowTaker take = [&](const PassedRow& values) {
    rowsReadAgain_++;
    isFit = Take(values, fresh.emplace_back());
    return true;
  };
  for (int64_t key : changed_) {
    if (key >= 0 && key <= highestKey_) distant_.erase(static_cast<uint32_t>(key));
    StatementUse use(*one);
    one->BindTaker(1, take);
    one->Bind(2, key);
    session_.StepRead(*one);
    if (!isFit) return;
  }
  if (highestKey_ > kSpareKeys + kMostGaps * (rows_.size() + fresh.size())) return;
  auto before = [this](const Row& a, const Row& b) { return IsBefore(a, b); };
  std::sort(fresh.begin(), fresh.end(), before);
  // Many come at once while mail is stored; a little room spares copying all for each.
  size_t wanted = rows_.size() + fresh.size();
  if (wanted > rows_.capacity()) rows_.reserve(wanted + wanted / 64);
  auto middle = static_cast<std::ptrdiff_t>(rows_.size());
  rows_.insert(rows_.end(), fresh.begin(), fresh.end());
  std::inplace_merge(rows_.begin(), rows_.begin() + middle, rows_.end(), before);
  changed_.clear();
  isRead_ = true;
}

size_t ColumnCache::From(int64_t seconds) const {
  auto found = std::partition_point(rows_.begin(), rows_.end(),
                                    [&](const Row& row) { return SecondsOf(row) < seconds; });
  return static_cast<size_t>(found - rows_.begin());
}

const std::vector<ColumnCache::Repeat>& ColumnCache::Repeats() {
  if (repeatsRead_) return repeats_;
  repeats_.clear();
  std::shared_ptr<Statement> statement = session_.Own(readDetails_);
  StatementUse use(*statement);
  Repeat run = {};  // the details of one row
  auto end = [&] {
    if (run.count > 1) repeats_.push_back(run);
    run = {};
  };
  RowTaker take = [&](const PassedRow& values) {
    int64_t key = values.Int(0);
    // Any other key is that of no row in the column cache.
    bool isKey = values.TypeOf(0) == StoredType::kInteger && key >= 0 && key <= UINT32_MAX;
    if (!isKey || key != run.key) end();
    if (isKey) run = {static_cast<uint32_t>(key), run.count + 1};
    return false;
  };
  statement->BindTaker(1, take);
  session_.StepRead(*statement);
  end();
  repeats_.shrink_to_fit();
  repeatsRead_ = true;
  return repeats_;
}

}  // namespace tarnwick::jet
