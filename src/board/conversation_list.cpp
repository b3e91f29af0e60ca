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

// So many steps ahead memory is asked for that is looked at in no order.
constexpr size_t kAhead = 16;

// Of each key the conversation it is listed in, by numbers from 0; gives these their letters as
// counts in start, and those that were not read.
std::vector<uint32_t> GroupsOf(const std::vector<int64_t>& keys,
                               std::vector<ListedConversation>& listed) {
  Conversations& all = search::AllConversations();
  std::vector<uint32_t> groups = all.OfAll(keys);
  std::vector<uint32_t> groupOfSet(all.Sets(), Conversations::kNone);
  for (size_t i = 0; i < keys.size(); ++i) {
    if (i + kAhead < keys.size() && groups[i + kAhead] != Conversations::kNone) {
      __builtin_prefetch(&groupOfSet[groups[i + kAhead]]);
    }
    auto next = static_cast<uint32_t>(listed.size());
    uint32_t group = next;  // on its own where nothing is known
    if (uint32_t set = groups[i]; set != Conversations::kNone) {
      if (groupOfSet[set] == Conversations::kNone) groupOfSet[set] = next;
      group = groupOfSet[set];
    }
    if (group == next) listed.emplace_back();
    ++listed[group].start;
    if (all.IsUnread(keys[i])) ++listed[group].unread;
    groups[i] = group;
  }
  return groups;
}

// The keys with those of one conversation together.
std::vector<int64_t> Grouped(const std::vector<int64_t>& keys,
                             std::vector<ListedConversation>& listed) {
  const std::vector<uint32_t> groups = GroupsOf(keys, listed);
  int place = 0;
  for (ListedConversation& each : listed) place += std::exchange(each.start, place);
  std::vector<int64_t> grouped(keys.size());
  for (size_t i = 0; i < keys.size(); ++i) {
    if (i + kAhead < keys.size()) __builtin_prefetch(&listed[groups[i + kAhead]], 1);
    grouped[static_cast<size_t>(listed[groups[i]].start++)] = keys[i];
  }
  // Each stands at its end by now, where the next one begins.
  place = 0;
  for (ListedConversation& each : listed) place = std::exchange(each.start, place);
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
        bool isSame = grouped == keys;
        keys = {};  // much memory in a large archive
        if (!isSame) board.ListRecordset.Hold(grouped);
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
