// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "board/conversation_list.h"

#include <utility>

#include "board/list_query.h"
#include "core/guard.h"
#include "search/conversations.h"

namespace tarnwick::board {

namespace {

using search::Conversations;

// The keys with those of one conversation together.
std::vector<int64_t> Grouped(const std::vector<int64_t>& keys,
                             std::vector<ListedConversation>& listed) {
  Conversations& all = search::AllConversations();
  std::vector<uint32_t> groupOfSet(all.Sets(), Conversations::kNone);
  std::vector<uint32_t> groupOf;
  groupOf.reserve(keys.size());
  for (int64_t key : keys) {
    uint32_t set = all.Of(key);
    auto next = static_cast<uint32_t>(listed.size());
    uint32_t group = next;  // on its own where nothing is known
    if (set != Conversations::kNone) {
      if (groupOfSet[set] == Conversations::kNone) groupOfSet[set] = next;
      group = groupOfSet[set];
    }
    if (group == next) listed.emplace_back();
    ++listed[group].start;
    if (all.IsUnread(key)) ++listed[group].unread;
    groupOf.push_back(group);
  }
  int place = 0;
  std::vector<int> next;
  next.reserve(listed.size());
  for (ListedConversation& each : listed) {
    next.push_back(place);
    place += std::exchange(each.start, place);
  }
  std::vector<int64_t> grouped(keys.size());
  for (size_t i = 0; i < keys.size(); ++i) {
    grouped[static_cast<size_t>(next[groupOf[i]]++)] = keys[i];
  }
  return grouped;
}

}  // namespace

void GroupList() {
  BoardState& board = Board();
  board.Conversations.listed.clear();
  if (!board.Conversations.isOn || board.ListIsPlaceholder || IsListGrowing()) return;
  core::GuardedRun(
      "GroupList",
      [&] {
        if (!search::AllConversations().IsComplete()) return;
        std::vector<int64_t> keys = board.ListRecordset.Keys();
        std::vector<ListedConversation> listed;
        std::vector<int64_t> grouped = Grouped(keys, listed);
        if (grouped != keys) board.ListRecordset.Hold(grouped);
        board.Conversations.listed = std::move(listed);
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
