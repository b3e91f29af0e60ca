// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/conversation_list.h"

#include <algorithm>
#include <utility>

#include "board/list_query.h"
#include "core/guard.h"
#include "search/conversations.h"

namespace tarnwick::board {

namespace {

using search::Conversations;

// So many steps ahead memory is asked for that is looked at in no order.
constexpr size_t kAhead = 16;

// Beside the number of a row's conversation.
constexpr uint32_t kUnread = uint32_t{1} << 31;

struct Grouping {
  std::vector<ListedConversation> listed;
  // Of each row of the list its place; on the way there its key, and its conversation.
  std::vector<uint32_t> rows;
};

std::vector<uint32_t> KeysOf(jet::Recordset& list) {
  std::vector<uint32_t> keys;
  keys.reserve(static_cast<size_t>(list.RecordCount()));
  list.EachKey([&](int64_t key) {
    bool isShort = key >= 0 && key < int64_t{Conversations::kNone};
    keys.push_back(isShort ? static_cast<uint32_t>(key) : Conversations::kNone);
  });
  return keys;
}

void CountLetter(uint32_t row, std::vector<ListedConversation>& listed) {
  ListedConversation& conversation = listed[row & ~kUnread];
  ++conversation.start;
  if ((row & kUnread) != 0) ++conversation.unread;
}

// Numbers the conversations as they come, and counts the letters of each in start. Each kind of
// memory is asked for when it is known what will be wanted, and looked at some rows later.
void FindGroups(const Conversations& all, Grouping& grouping) {
  std::vector<uint32_t>& rows = grouping.rows;
  std::vector<ListedConversation>& listed = grouping.listed;
  listed.reserve(rows.size());
  std::vector<uint32_t> groupOfSet(static_cast<size_t>(all.End()), Conversations::kNone);
  for (size_t i = 0; i < rows.size(); ++i) {
    if (i + 2 * kAhead < rows.size()) {
      all.Expect(rows[i + 2 * kAhead]);
      uint32_t set = all.Of(rows[i + kAhead]);
      if (set != Conversations::kNone) __builtin_prefetch(&groupOfSet[set], 1);
    }
    auto next = static_cast<uint32_t>(listed.size());
    uint32_t group = next;  // on its own where nothing is known
    if (uint32_t set = all.Of(rows[i]); set != Conversations::kNone) {
      if (groupOfSet[set] == Conversations::kNone) groupOfSet[set] = next;
      group = groupOfSet[set];
    }
    if (group == next) listed.emplace_back();
    __builtin_prefetch(&listed[group], 1);
    rows[i] = group | (all.IsUnread(rows[i]) ? kUnread : 0);
    if (i >= kAhead) CountLetter(rows[i - kAhead], listed);
  }
  for (size_t i = rows.size() - std::min(rows.size(), kAhead); i < rows.size(); ++i) {
    CountLetter(rows[i], listed);
  }
}

// Those of one conversation behind each other. Each starts at its end and is filled from there.
void FindPlaces(Grouping& grouping) {
  std::vector<uint32_t>& rows = grouping.rows;
  std::vector<ListedConversation>& listed = grouping.listed;
  int end = 0;
  for (ListedConversation& each : listed) each.start = end += each.start;
  for (size_t i = rows.size(); i-- > 0;) {
    if (i >= kAhead) __builtin_prefetch(&listed[rows[i - kAhead] & ~kUnread], 1);
    rows[i] = static_cast<uint32_t>(--listed[rows[i] & ~kUnread].start);
  }
}

}  // namespace

void GroupList() {
  BoardState& board = Board();
  board.Conversations.listed = {};  // much memory in a large archive
  if (!board.Conversations.isOn || board.ListIsPlaceholder || IsListGrowing()) return;
  core::GuardedRun(
      "GroupList",
      [&] {
        if (!search::AllConversations().IsComplete()) return;
        Grouping grouping;
        grouping.rows = KeysOf(board.ListRecordset);
        FindGroups(search::AllConversations(), grouping);
        FindPlaces(grouping);
        board.ListRecordset.Arrange(grouping.rows);
        board.Conversations.listed = std::move(grouping.listed);
        board.Found.ForgetCounts();
      },
      core::Report::kLog);
}

bool PrepareConversations(int64_t milliseconds) {
  return core::Guarded(
      "PrepareConversations", true, [&] { return search::AllConversations().Read(milliseconds); },
      core::Report::kLog);
}

}  // namespace tarnwick::board
