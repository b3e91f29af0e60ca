// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "intake/message_state.h"

#include <algorithm>
#include <charconv>

#include "platform/utf8.h"

namespace tarnwick::intake {

namespace {

constexpr std::string_view kStateHeaders[] = {"x-mozilla-status", "status", "x-status"};
constexpr size_t kMozillaStatus = 0;

void Set(bool& mark, bool isSo) {
  mark = mark || isSo;
}

void TakeMozillaStatus(std::string_view value, MessageState& state) {
  unsigned flags = 0;
  auto [end, code] = std::from_chars(value.data(), value.data() + value.size(), flags, 16);
  if (code != std::errc() || end == value.data()) return;
  state.isKnown = true;
  Set(state.isRead, (flags & 0x0001U) != 0);
  Set(state.isAnswered, (flags & 0x0002U) != 0);
  Set(state.isFlagged, (flags & 0x0004U) != 0);
  Set(state.isDeleted, (flags & 0x0008U) != 0);
  Set(state.isForwarded, (flags & 0x1000U) != 0);
}

// Both headers: which of the letters stand in which differs from program to program. "D" says that
// a program is to delete the letter, and there is no program left that would.
void TakeStatus(std::string_view value, MessageState& state) {
  // Other programs keep words and numbers under these names.
  if (value.empty() || value.find_first_not_of("ADFNORTU") != std::string_view::npos) return;
  auto has = [&](char letter) { return value.find(letter) != std::string_view::npos; };
  state.isKnown = true;
  Set(state.isRead, has('R'));
  Set(state.isAnswered, has('A'));
  Set(state.isFlagged, has('F'));
  Set(state.isDraft, has('T'));
}

bool Fits(const StateMark& mark, const MessageState& state) {
  return state.isKnown && state.*mark.member == mark.value;
}

}  // namespace

std::string StoredState(const MessageState& state) {
  std::string text;
  for (const StateMark& mark : kStateMarks) {
    if (Fits(mark, state)) text += mark.letter;
  }
  return text;
}

MessageState StateOfStored(std::string_view text) {
  MessageState state;
  for (const StateMark& mark : kStateMarks) {
    if (text.find(mark.letter) == std::string_view::npos) continue;
    state.isKnown = true;
    if (mark.value) state.*mark.member = true;
  }
  return state;
}

std::vector<std::string> StateWords(const MessageState& state) {
  std::vector<std::string> words;
  for (const StateMark& mark : kStateMarks) {
    if (Fits(mark, state)) words.emplace_back(mark.word);
  }
  return words;
}

void StateHeaders::Take(std::string_view line) {
  size_t colon = line.find(':');
  if (colon == std::string_view::npos) return;
  const auto* name =
      std::find_if(std::begin(kStateHeaders), std::end(kStateHeaders), [&](std::string_view each) {
        return each.size() == colon && platform::SameWord(line.substr(0, colon), each);
      });
  if (name == std::end(kStateHeaders)) return;
  auto number = static_cast<size_t>(name - std::begin(kStateHeaders));
  if ((seen_ >> number & 1U) != 0) return;
  seen_ |= 1U << number;
  std::string_view value = line.substr(colon + 1);
  value.remove_prefix(std::min(value.find_first_not_of(" \t"), value.size()));
  value = value.substr(0, value.find_last_not_of(" \t\r") + 1);
  if (number == kMozillaStatus) {
    TakeMozillaStatus(value, state_);
  } else {
    TakeStatus(value, state_);
  }
}

MessageState StateOfHeaders(std::string_view headers) {
  StateHeaders state;
  while (!headers.empty()) {
    size_t end = std::min(headers.find('\n'), headers.size());
    std::string_view line = headers.substr(0, end);
    if (line.empty() || line == "\r") break;
    state.Take(line);
    headers.remove_prefix(std::min(end + 1, headers.size()));
  }
  return state.State();
}

std::string HeadersOfState(const MessageState& state, std::string_view lineEnd) {
  if (!state.isKnown) return {};
  std::string headers = "Status: ";
  headers.append(state.isRead ? "RO" : "O").append(lineEnd);
  std::string more;
  if (state.isAnswered) more += 'A';
  if (state.isFlagged) more += 'F';
  if (state.isDraft) more += 'T';
  if (!more.empty()) headers.append("X-Status: ").append(more).append(lineEnd);
  // Which has no letter for it.
  if (!state.isForwarded) return headers;
  unsigned flags =
      0x1000U | (state.isRead ? 1U : 0) | (state.isAnswered ? 2U : 0) | (state.isFlagged ? 4U : 0);
  char digits[8];
  auto [end, code] = std::to_chars(std::begin(digits), std::end(digits), flags, 16);
  headers.append("X-Mozilla-Status: ").append(digits, end).append(lineEnd);
  return headers;
}

std::string MaildirFlags(const MessageState& state) {
  std::string flags;
  if (state.isDraft) flags += 'D';
  if (state.isFlagged) flags += 'F';
  if (state.isForwarded) flags += 'P';
  if (state.isAnswered) flags += 'R';
  if (state.isRead) flags += 'S';
  return flags;
}

}  // namespace tarnwick::intake
