// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The list by conversations (search/conversations.h): the letters of each stand together, in the
// order of the list, where the first of them would stand. It is the same list, of the same
// messages, and what works on the listed messages works on all of them.
#pragma once

#include <cstdint>
#include <vector>

namespace tarnwick::board {

struct ListedConversation {
  int start = 0;   // its first letter's place in the list, from 0
  int unread = 0;  // letters of it
};

struct ConversationState {
  bool isOn = false;
  // In the order of the list; empty while the list is not grouped.
  std::vector<ListedConversation> listed;
};

// Groups the list recordset, if that is asked for and can be done: not while the list grows, nor
// before the conversations are known. An error is logged, and the list stays as it is.
void GroupList();

// Reads on for some milliseconds; true when all conversations are known. An error is logged.
bool PrepareConversations(int64_t milliseconds);

}  // namespace tarnwick::board
