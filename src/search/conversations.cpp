// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/conversations.h"

#include <algorithm>
#include <array>
#include <utility>

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

// Letters whose hashes are waited for at once: the processor waits for some ten places of memory.
constexpr size_t kMostExpected = 16;

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

uint32_t Conversations::NewSet() {
  auto set = static_cast<uint32_t>(above_.size());
  above_.push_back(set);
  waiting_.push_back(kNone);
  kinds_.push_back(0);
  return set;
}

uint32_t Conversations::SetOf(uint64_t hash) {
  uint32_t& set = ids_.At(hash);
  if (set == kNone) set = NewSet();
  return set;
}

uint32_t Conversations::Find(uint32_t set) {
  while (above_[set] != set) {
    above_[set] = above_[above_[set]];
    set = above_[set];
  }
  return set;
}

// Below the older one: with the halved ways of Find that is near enough to constant time.
void Conversations::Join(uint32_t a, uint32_t b) {
  a = Find(a);
  b = Find(b);
  above_[std::max(a, b)] = std::min(a, b);
}

bool Conversations::Read(int64_t milliseconds) {
  return steps_.Run(
      milliseconds, [this] { return isUnfit_ || IsComplete(); },
      [this](int64_t rows) { ReadNext(rows); });
}

void Conversations::ReadNext(int64_t rows) {
  RepositoryDb().ReadRows(
      NextRows("Thread, Subject, FromTo, State", "Email", last_, rows),
      [&](const jet::PassingRow& row) {
        last_ = row.Int(0);
        isUnfit_ = isUnfit_ || last_ > KeySet::kHighestKey ||
                   last_ > kKeysAtFirst + kSparsest * static_cast<int64_t>(above_.size() + 1);
        if (!isUnfit_ && last_ >= 0) Expect(last_, row);
      });
  AddExpected();
}

bool Conversations::IsComplete() {
  if (isUnfit_ || !RepositoryDb().IsOpen()) return false;
  newest_ = LastKey("Email");
  return newest_ <= last_;
}

int Conversations::Percent() const {
  return newest_ <= 0 ? 100 : static_cast<int>(std::min(last_, newest_) * 100 / newest_);
}

uint32_t Conversations::Of(int64_t message) {
  auto place = static_cast<size_t>(message);
  if (message < 0 || place >= ofMessage_.size() || ofMessage_[place] == kNone) return kNone;
  return Find(ofMessage_[place]);
}

std::vector<uint32_t> Conversations::OfAll(const std::vector<int64_t>& messages) {
  auto placeOf = [&](size_t i) {
    auto place = i < messages.size() ? static_cast<size_t>(messages[i]) : SIZE_MAX;
    return std::min(place, ofMessage_.size());
  };
  std::vector<uint32_t> sets(messages.size(), kNone);
  for (size_t i = 0; i < messages.size(); i++) {
    // First the message's own set on its way, then, when that has come, the one above it.
    __builtin_prefetch(ofMessage_.data() + placeOf(i + 2 * kMostExpected));
    size_t next = placeOf(i + kMostExpected);
    if (next < ofMessage_.size() && ofMessage_[next] != kNone) {
      __builtin_prefetch(&above_[ofMessage_[next]]);
    }
    sets[i] = Of(messages[i]);
  }
  return sets;
}

void Conversations::Expect(int64_t message, const jet::PassingRow& row) {
  Letter& letter = expected_.emplace_back();
  letter.message = message;
  letter.ids = intake::ThreadOfStored(row.Text(1));
  if (row.Text(1).empty()) unknown_.push_back(message);
  if (intake::StateOfStored(row.Text(4)).IsUnread()) unread_.Add(message);

  PlainSubject subject = PlainSubjectOf(row.Text(2));
  if (!subject.text.empty() && row.Int(3) != 0) {
    if (subject.isReply) letter.kinds = letter.ids.answered.empty() ? kReply | kJoined : kReply;
    if (letter.ids.own == 0) letter.kinds |= kUnnamed;
    subject.text.append(1, '\n').append(std::to_string(row.Int(3)));
    letter.subject = intake::ThreadHash(subject.text);
  }
  ids_.Expect(letter.ids.own);
  for (uint64_t hash : letter.ids.answered) ids_.Expect(hash);
  subjects_.Expect(letter.subject);
  if (expected_.size() == kMostExpected) AddExpected();
}

void Conversations::AddExpected() {
  for (const Letter& letter : expected_) Add(letter);
  expected_.clear();
}

void Conversations::Add(const Letter& letter) {
  uint32_t set = letter.ids.own != 0 ? SetOf(letter.ids.own) : NewSet();
  for (uint64_t hash : letter.ids.answered) Join(set, SetOf(hash));
  auto place = static_cast<size_t>(letter.message);
  if (place >= ofMessage_.size()) ofMessage_.resize(place + 1, kNone);
  ofMessage_[place] = set;
  if (letter.subject == 0) return;
  uint32_t own = set;
  if ((kinds_[set] & kListed) != 0) {  // by a copy of the letter
    own = NewSet();
    Join(own, set);
  }
  AddBySubject(own, letter.subject, letter.kinds);
}

void Conversations::AddBySubject(uint32_t set, uint64_t subject, uint8_t kinds) {
  uint32_t& last = subjects_.At(subject);
  uint32_t before = std::exchange(last, set);
  uint8_t all = before == kNone ? kinds : kinds | kinds_[before];
  if ((all & kUnnamed) != 0 && (all & kReply) != 0) all |= kJoined;
  kinds_[set] = all | kListed;
  if ((all & kJoined) == 0) {
    waiting_[set] = before;
    return;
  }
  // Those that were joined already are one.
  for (uint32_t each = before; each != kNone; each = std::exchange(waiting_[each], kNone)) {
    Join(set, each);
  }
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
