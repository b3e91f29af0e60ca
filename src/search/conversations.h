// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Which messages of the open repository belong to one conversation, in memory: some fifty bytes a
// message, read in steps when somebody wants it.
//
// The way is that of Jamie Zawinski's "message threading" (https://www.jwz.org/doc/threading.html):
// a letter belongs together with those that its References and In-Reply-To name, whether these are
// here or not. Here it is sets that are joined, not a tree that is built: letters that name each
// other in a circle are one conversation and no more, and each costs the same few joins whatever
// its headers hold (intake/thread_ids.h).
//
// Where headers are wanting, the subject tells, of letters with one correspondent: by the subject
// alone all letters called "Hello" would be one conversation. They are joined when one of them is a
// reply by its subject that names no letter, or when one is a reply and another has no Message-ID
// that a reply could name, as all that was written in Outlook Express.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "database/connection.h"
#include "intake/thread_ids.h"
#include "search/hash_numbers.h"
#include "search/mail_map.h"
#include "search/row_steps.h"

namespace tarnwick::search {

// A subject without what replying and forwarding put before it ("Re:", "AW:", "Fwd:", "Re[2]:"), in
// small letters.
struct PlainSubject {
  std::string text;
  bool isReply = false;  // there was something of the kind before it
};
PlainSubject PlainSubjectOf(std::string_view subject);

class Conversations {
 public:
  static constexpr uint32_t kNone = HashNumbers::kNone;

  // Reads on for some milliseconds; true when there is nothing left to read. Throws Error.
  bool Read(int64_t milliseconds);
  // True when every message there is now is in it. Throws Error.
  bool IsComplete();
  // How far it is, in hundredths.
  int Percent() const;
  void Forget() { *this = {}; }

  // A number that the messages of one conversation share, until the next Read; kNone for one that
  // is not known.
  uint32_t Of(int64_t message);
  // The same for many, in their order; quicker, for these are looked up side by side.
  std::vector<uint32_t> OfAll(const std::vector<int64_t>& messages);
  // Whether the mail program said that nobody had read it.
  bool IsUnread(int64_t message) const { return unread_.Holds(message); }
  // How many sets its numbers may name.
  size_t Sets() const { return above_.size(); }
  // The messages whose headers nobody has looked at, as former versions stored them.
  const std::vector<int64_t>& Unknown() const { return unknown_; }

 private:
  // What there is among the letters of one subject.
  enum Kind : uint8_t { kUnnamed = 1, kReply = 2, kJoined = 4, kListed = 8 };

  // What is read of a message.
  struct Letter {
    int64_t message = 0;
    intake::ThreadIds ids;
    uint64_t subject = 0;  // with its correspondent, as a hash; 0 where it tells nothing
    uint8_t kinds = 0;     // by the subject
  };

  uint32_t NewSet();
  uint32_t SetOf(uint64_t hash);
  uint32_t Find(uint32_t set);
  void Join(uint32_t a, uint32_t b);
  void ReadNext(int64_t rows);
  void Expect(int64_t message, const jet::PassingRow& row);
  void AddExpected();
  void Add(const Letter& letter);
  void AddBySubject(uint32_t set, uint64_t subject, uint8_t kinds);

  std::vector<uint32_t> above_;      // of each set the one it was joined with, or itself
  std::vector<uint32_t> ofMessage_;  // by keys
  HashNumbers ids_;
  // The letters of one subject that wait to be joined, the last of them in the table.
  HashNumbers subjects_;
  std::vector<uint32_t> waiting_;  // of each set the one before it
  std::vector<uint8_t> kinds_;     // of the last: those of all
  KeySet unread_;
  std::vector<Letter> expected_;  // read, but not added yet
  int64_t last_ = 0;
  int64_t newest_ = 0;
  std::vector<int64_t> unknown_;
  bool isUnfit_ = false;
  RowSteps steps_;
};

// Those of the open repository.
Conversations& AllConversations();

// Looks at the headers of these messages and stores what they tell, with progress, events and the
// stop command; begins to read all conversations anew. False when it was stopped or failed, which
// has been reported; what was done until then is kept.
bool LearnThreads(std::vector<int64_t> messages);

}  // namespace tarnwick::search
