// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/conversations.h"

#include <algorithm>
#include <array>

#include "core/guard.h"
#include "core/steps.h"
#include "database/recordset.h"
#include "intake/message_state.h"
#include "intake/thread_ids.h"
#include "platform/utf8.h"
#include "repository/repository.h"

namespace tarnwick::search {

namespace {

using repository::RepositoryDb;

// What a letter's subject says: letters of one subject are joined when both is true of one of them,
// or each of one.
constexpr uint8_t kUnnamed = 1;
constexpr uint8_t kReply = 2;
static_assert((kUnnamed | kReply) == HashGroups::kBothMarks &&
              KeySet::kHighestKey <= HashGroups::kHighestNumber);

struct Prefix {
  std::string_view text;
  bool isReply;
};
// What mail programs of several languages put before a subject.
constexpr std::array<Prefix, 12> kPrefixes = {{{"re", true},
                                               {"aw", true},
                                               {"antw", true},
                                               {"antwort", true},
                                               {"sv", true},
                                               {"odp", true},
                                               {"rif", true},
                                               {"ответ", true},
                                               {"fw", false},
                                               {"fwd", false},
                                               {"wg", false},
                                               {"tr", false}}};

void TrimFront(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

// "[2]" or "(2)" between "Re" and its colon.
void SkipNumber(std::string_view& text) {
  if (text.empty() || (text[0] != '[' && text[0] != '(')) return;
  size_t end = text.find_first_not_of("0123456789", 1);
  if (end == std::string_view::npos || end == 1) return;
  if (text[end] == ']' || text[end] == ')') text.remove_prefix(end + 1);
}

// Takes one such prefix away; nullptr where there is none.
const Prefix* TakePrefix(std::string_view& text) {
  for (const Prefix& prefix : kPrefixes) {
    if (!text.starts_with(prefix.text)) continue;
    std::string_view rest = text.substr(prefix.text.size());
    SkipNumber(rest);
    TrimFront(rest);
    if (!rest.starts_with(':')) continue;
    text = rest.substr(1);
    TrimFront(text);
    return &prefix;
  }
  return nullptr;
}

}  // namespace

Conversations& AllConversations() {
  static Conversations conversations;
  return conversations;
}

PlainSubject PlainSubjectOf(std::string_view subject) {
  PlainSubject plain;
  std::string folded = platform::FoldCase(subject);
  std::string_view rest = folded;
  TrimFront(rest);
  while (const Prefix* prefix = TakePrefix(rest)) plain.isReply = plain.isReply || prefix->isReply;
  // Folded headers leave more blanks than were written.
  bool isBlank = false;
  for (char c : rest) {
    bool isOne = c == ' ' || c == '\t' || c == '\r' || c == '\n';
    if (!isOne && isBlank && !plain.text.empty()) plain.text += ' ';
    if (!isOne) plain.text += c;
    isBlank = isOne;
  }
  return plain;
}

bool Conversations::Read(int64_t milliseconds) {
  return steps_.Run(
      milliseconds, [this] { return isUnfit_ || IsComplete(); },
      [this](int64_t rows) { ReadNext(rows); });
}

bool Conversations::IsComplete() {
  if (isUnfit_ || !RepositoryDb().IsOpen()) return false;
  newest_ = LastKey("Email");
  return newest_ <= last_ && groups_.IsJoined();
}

int Conversations::Percent() const {
  return newest_ <= 0 ? 100 : static_cast<int>(std::min(last_, newest_) * 100 / newest_);
}

void Conversations::ReadNext(int64_t rows) {
  if (newest_ <= last_ && !groups_.IsJoined()) return JoinNext(rows);
  ReserveByKey(sets_, newest_, KeySet::kHighestKey);
  RepositoryDb().ReadRows(NextRows("Thread, Subject, FromTo, State", "Email", last_, rows),
                          [&](const jet::PassingRow& row) {
                            last_ = row.Int(0);
                            isUnfit_ = isUnfit_ || last_ > KeySet::kHighestKey ||
                                       last_ > kKeysAtFirst + kSparsest * ++read_;
                            if (!isUnfit_ && last_ >= 0) Add(last_, row);
                          });
}

void Conversations::Add(int64_t message, const jet::PassingRow& row) {
  auto number = static_cast<uint32_t>(message);
  sets_.resize(size_t{number} + 1, kNone);
  sets_[number] = number;
  if (row.Text(1).empty()) unknown_.push_back(message);
  if (intake::StateOfStored(row.Text(4)).IsUnread()) unread_.Add(message);

  intake::ThreadIds ids = intake::ThreadOfStored(row.Text(1));
  if (ids.own != 0) groups_.Add(ids.own, number, HashGroups::kBothMarks);
  for (uint64_t hash : ids.answered) groups_.Add(hash, number, HashGroups::kBothMarks);
  AddBySubject(number, row, ids.own != 0, !ids.answered.empty());
}

void Conversations::AddBySubject(uint32_t message, const jet::PassingRow& row, bool isNamed,
                                 bool answers) {
  PlainSubject subject = PlainSubjectOf(row.Text(2));
  if (subject.text.empty() || row.Int(3) == 0) return;
  uint8_t marks = isNamed ? 0 : kUnnamed;
  if (subject.isReply) marks |= answers ? kReply : HashGroups::kBothMarks;
  // No identifier holds the end of a line.
  subject.text.append(1, '\n').append(std::to_string(row.Int(3)));
  groups_.Add(intake::ThreadHash(subject.text), message, marks);
}

// The last one has each message's way to the lowest key be a single step, in one pass from below.
void Conversations::JoinNext(int64_t pairs) {
  groups_.Join(pairs, [this](uint32_t a, uint32_t b) {
    a = Find(a);
    b = Find(b);
    sets_[std::max(a, b)] = std::min(a, b);
  });
  if (!groups_.IsJoined()) return;
  for (uint32_t& set : sets_) {
    if (set != kNone) set = sets_[set];
  }
}

// With ways that are halved as they are gone, that is near enough to constant time.
uint32_t Conversations::Find(uint32_t message) {
  while (sets_[message] != message) {
    sets_[message] = sets_[sets_[message]];
    message = sets_[message];
  }
  return message;
}

bool LearnThreads(std::vector<int64_t> messages) {
  bool isDone = core::Guarded("LearnThreads", false, [&] {
    jet::CommitGroup group(RepositoryDb());
    jet::Recordset email;
    email.Open("Email", RepositoryDb(), jet::CursorType::kKeyset, jet::LockType::kOptimistic,
               jet::CommandType::kTable);
    core::Steps steps(static_cast<int64_t>(messages.size()));
    for (int64_t message : messages) {
      jet::Recordset file;
      file.Open("SELECT TOP 1 FileBody FROM FileRepository WHERE FileID=" +
                    std::to_string(message) + " ORDER BY ID",
                RepositoryDb());
      std::string head = file.Eof() ? std::string() : file.Field(0).AsText();
      email.Find("ID = " + std::to_string(message));
      if (!email.Eof()) {
        email.SetField("Thread", jet::Bytes{intake::StoredThread(intake::ThreadOfHeaders(head))});
        email.Update();
        RepositoryDb().EndUnit();
      }
      if (!steps.Next()) return false;
    }
    group.End();
    return true;
  });
  AllConversations().Forget();
  return isDone;
}

}  // namespace tarnwick::search
