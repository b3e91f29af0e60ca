// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
#include "search/conversations.h"

#include <algorithm>
#include <array>
#include <random>
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

// Whoever writes letters chooses their identifiers, and could choose such as fall on one place of a
// table.
uint64_t Secret() {
  static const uint64_t secret = [] {
    std::random_device random;
    return (uint64_t{random()} << 32 | random()) | 1;
  }();
  return secret;
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

uint32_t& Conversations::Table::At(uint64_t hash) {
  if (2 * (used_ + 1) > slots_.size()) Grow();
  size_t mask = slots_.size() - 1;
  size_t at = hash * Secret() >> (64 - bits_);
  while (slots_[at].hash != 0 && slots_[at].hash != hash) at = (at + 1) & mask;
  if (slots_[at].hash == 0) {
    slots_[at].hash = hash;
    ++used_;
  }
  return slots_[at].number;
}

void Conversations::Table::Grow() {
  constexpr int kFirstBits = 10;
  std::vector<Slot> former = std::exchange(slots_, {});
  bits_ = bits_ == 0 ? kFirstBits : bits_ + 1;
  slots_.resize(size_t{1} << bits_);
  used_ = 0;
  for (const Slot& slot : former) {
    if (slot.hash != 0) At(slot.hash) = slot.number;
  }
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
        if (!isUnfit_ && last_ >= 0) Add(last_, row);
      });
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

void Conversations::Add(int64_t message, const jet::PassingRow& row) {
  intake::ThreadIds ids = intake::ThreadOfStored(row.Text(1));
  if (row.Text(1).empty()) unknown_.push_back(message);
  uint32_t set = ids.own != 0 ? SetOf(ids.own) : NewSet();
  for (uint64_t hash : ids.answered) Join(set, SetOf(hash));
  auto place = static_cast<size_t>(message);
  if (place >= ofMessage_.size()) ofMessage_.resize(place + 1, kNone);
  ofMessage_[place] = set;
  if (intake::StateOfStored(row.Text(4)).IsUnread()) unread_.Add(message);

  PlainSubject subject = PlainSubjectOf(row.Text(2));
  if (subject.text.empty() || row.Int(3) == 0) return;
  uint8_t kinds = 0;
  if (subject.isReply) kinds = ids.answered.empty() ? kReply | kJoined : kReply;
  if (ids.own == 0) kinds |= kUnnamed;
  uint32_t own = set;
  if ((kinds_[set] & kListed) != 0) {  // by a copy of the letter
    own = NewSet();
    Join(own, set);
  }
  subject.text.append(1, '\n').append(std::to_string(row.Int(3)));
  AddBySubject(own, intake::ThreadHash(subject.text), kinds);
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
