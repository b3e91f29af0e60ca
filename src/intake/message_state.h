// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the mail program that a message comes from knew of it: read, replied to, forwarded, flagged,
// a draft. Every source fills it in, and it is stored in Email.State.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tarnwick::intake {

struct MessageState {
  bool isKnown = false;  // whether the program says anything; without it nothing else is true
  bool isRead = false;
  bool isAnswered = false;
  bool isForwarded = false;
  bool isFlagged = false;
  bool isDraft = false;
  bool isDeleted = false;  // its owner deleted it, though its text is still there; not stored
  bool IsUnread() const { return isKnown && !isRead; }
  friend bool operator==(const MessageState&, const MessageState&) = default;
};

// A state that can be asked for, and how it stands in Email.State. The letters are embedded in
// every repository: do not change what one means. A text that has none of them says nothing.
struct StateMark {
  char letter;
  std::string_view word;  // as people name it in a search, and scripts get it
  bool MessageState::*member;
  bool value;
};
inline constexpr StateMark kStateMarks[] = {
    {'S', "read", &MessageState::isRead, true},
    {'U', "unread", &MessageState::isRead, false},
    {'R', "replied", &MessageState::isAnswered, true},
    {'P', "forwarded", &MessageState::isForwarded, true},
    {'F', "flagged", &MessageState::isFlagged, true},
    {'D', "draft", &MessageState::isDraft, true},
};

// The text for Email.State; "" when nothing is known.
std::string StoredState(const MessageState& state);
// What such a text says; letters that are not known here are passed over.
MessageState StateOfStored(std::string_view text);
// The words that fit; none when nothing is known.
std::vector<std::string> StateWords(const MessageState& state);

// Takes the state out of headers, line by line: X-Mozilla-Status (hexadecimal: 1 read, 2 answered,
// 4 flagged, 8 deleted, 1000 forwarded), Status (R read, O seen by the program) and X-Status (A
// answered, F flagged, T draft). Of each the first counts.
class StateHeaders {
 public:
  void Take(std::string_view line);
  const MessageState& State() const { return state_; }

 private:
  MessageState state_;
  unsigned seen_ = 0;
};
// The same of a whole header block, or a letter that begins with it.
MessageState StateOfHeaders(std::string_view headers);

// Headers that say a state to the programs that keep letters in mbox files, each line ended by
// lineEnd; "" when nothing is known.
std::string HeadersOfState(const MessageState& state, std::string_view lineEnd);

// The letters behind ":2," in a Maildir's file name, in their order.
std::string MaildirFlags(const MessageState& state);

}  // namespace tarnwick::intake
