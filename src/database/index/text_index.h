// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The text index of a file: which rows of one table can hold a text in some of its columns. It
// proposes rows, always all that match and few others; the texts themselves decide. Internal to
// the database.
//
// It lies in three tables of the file that statements can't name: tw_search_part (segments,
// text_segment.h: a head under the key -1 - segment, parts under segment * 256 + part),
// tw_search_state (one row: for which columns and text order it was made, and Done: every row with
// a key up to it is in a segment or was changed since) and tw_search_changed (keys of rows that
// were changed since they were taken in). A row is noted as changed by a trigger of the
// connection's own, so within the statement that changes it; rows behind Done and changed ones are
// proposed always. So the index is never behind, whatever a crash takes.
//
// Rows are taken in behind a load, commit by commit, while the program has nothing else to do, and
// before a search where few are missing. A failure in here costs the index, never a search or a
// row: without it texts are read one by one. Where the engine answers a failure by taking back what
// a group has written so far, it is thrown on, so that nobody takes those writes for done.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "database/engine/session.h"
#include "database/index/text_segment.h"

namespace tarnwick::jet {

class TextIndex final : public Follower {
 public:
  // Makes the tables if the file has none, and the trigger. REQUIRES: the table has an automatic
  // key and the columns.
  TextIndex(Session& session, std::string_view table, std::vector<std::string> columns);
  ~TextIndex() override { session_.SetFollower(nullptr); }
  TextIndex(const TextIndex&) = delete;
  TextIndex& operator=(const TextIndex&) = delete;

  bool IsOf(std::string_view table) const;
  // The place of a column among those that are indexed.
  std::optional<size_t> Find(std::string_view column) const;

  struct Wanted {
    size_t column;
    std::string text;
    bool isPattern;  // of Like; else a text as it is
  };
  enum class Share : uint8_t { kUseful, kAny };
  // The keys of all rows that can satisfy every one of them, and some that don't, ascending;
  // nullopt where nothing can be said and, unless any share of the rows is wanted, where reading
  // every row is as fast.
  std::optional<std::vector<int64_t>> Candidates(const std::vector<Wanted>& wanted,
                                                 Share share = Share::kUseful);

  // Lists them in temp.tw_search_found, for a statement to read.
  void Show(const std::vector<int64_t>& keys);

  // During a load, before each commit: reads new rows into memory, some thousands at most, and
  // writes a segment when one is full. At its end what was read is written. Throws only as said
  // above.
  void Follow(bool atEnd) override;
  // A load's row can be handed over as it is written, which saves reading it back: true where
  // the row that was just added is the next that Follow would read. What is not handed over is
  // read by the next Follow.
  bool IsNext(std::string_view table, int64_t key);
  const std::vector<std::string>& Columns() const { return columns_; }
  // texts: what was written into the columns. REQUIRES: IsNext(..., key).
  void HandOver(int64_t key, const std::vector<std::string_view>& texts);
  // trigrams: what AddTo made of them.
  void HandOver(int64_t key, const std::vector<uint32_t>& trigrams);
  // Adds the trigrams of a text that is written into one of the columns.
  static void AddTo(TrigramSet& trigrams, size_t column, std::string_view text);
  // Nothing more can be handed over before the next Follow, which need not wait for a commit.
  bool IsFollowDue() const override;
  // Takes in what is missing. look is called with the rows done and those there are, and stops it
  // by returning false; the next call goes on where it was. True when nothing is missing that
  // would be worth it.
  bool CatchUp(const std::function<bool(int64_t, int64_t)>& look);

  void Forget() override;
  // Before a statement that may give a row a key of its own choice, or empties the table. Throws
  // where the file can't be written.
  void Reset();

 private:
  // What a search takes in before it runs, and a load behind each of its commits: some tenths of a
  // second. The rest is taken in while the program has nothing else to do.
  static constexpr int64_t kMostAtOnce = 2 * kMostDocuments;
  static constexpr std::string_view kChanged = "tw_search_changed";
  static constexpr int64_t kBeforeAll = std::numeric_limits<int64_t>::min();

  struct Segment {
    int64_t number;
    size_t documents;
    std::string head;
  };

  void MakeTables();
  void Write(const std::function<void()>& work);
  void Attempt(const std::function<void()>& work);
  int64_t Number(std::string_view sql);
  int64_t Done();
  int64_t LastKey();
  int64_t Changed();
  int64_t Missing();
  std::vector<Segment> Segments();
  std::string Part(int64_t segment, size_t part);
  std::string RowQuery() const;
  // The first keys of a table behind one.
  std::vector<int64_t> KeysOf(std::string_view table, int64_t after, size_t most);
  static uint32_t SaltOf(size_t column);

  void Begin();
  size_t ReadRows(size_t most);
  void TakeRow(Statement& row);
  void TakeChanged();
  void Put(int64_t segment);
  void WriteSegment();
  void Empty();
  std::optional<std::vector<int64_t>> Propose(const std::vector<uint32_t>& trigrams, Share share);

  Session& session_;
  std::string table_;
  std::vector<std::string> columns_;
  bool broken_ = false;
  bool wasDamaged_ = false;

  // Rows in memory, behind Done and up to followed_, and the segment that is being filled up.
  SegmentWriter writer_;
  TrigramSet trigrams_;
  std::optional<int64_t> followed_;
  int64_t unfollowed_ = 0;  // rows added while none are followed
  std::optional<int64_t> replaced_;
};

}  // namespace tarnwick::jet
