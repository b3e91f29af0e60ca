// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Which messages of the open repository belong to one conversation, in memory: some thirty bytes a
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
#include "search/hash_groups.h"
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
  static constexpr uint32_t kNone = UINT32_MAX;

  // Reads on for some milliseconds; true when there is nothing left to read. Throws Error.
  bool Read(int64_t milliseconds);
  // True when every message there is now is in it. Throws Error.
  bool IsComplete();
  // How far it is, in hundredths.
  int Percent() const;
  void Forget() { *this = {}; }

  // A number that the messages of one conversation share, until the next Read: the lowest of their
  // keys. kNone for one that is not known. REQUIRES: it is complete.
  uint32_t Of(int64_t message) const {
    return message < 0 || message >= End() ? kNone : sets_[static_cast<size_t>(message)];
  }
  // All keys that it knows are below.
  int64_t End() const { return static_cast<int64_t>(sets_.size()); }
  // Says that Of will be asked for it soon, as memory is slow where the keys are in no order.
  void Expect(int64_t message) const {
    if (message >= 0 && message < End()) __builtin_prefetch(&sets_[static_cast<size_t>(message)]);
  }
  // Whether the mail program said that nobody had read it.
  bool IsUnread(int64_t message) const { return unread_.Holds(message); }
  // The messages whose headers nobody has looked at, as former versions stored them.
  const std::vector<int64_t>& Unknown() const { return unknown_; }

 private:
  void ReadNext(int64_t rows);
  void Add(int64_t message, const jet::PassingRow& row);
  void AddBySubject(uint32_t message, const jet::PassingRow& row, bool isNamed, bool answers);
  void JoinNext(int64_t pairs);
  uint32_t Find(uint32_t message);

  // By keys: of each message one of its conversation with a lower key, or itself; the lowest when
  // all is joined. kNone where there is no message.
  std::vector<uint32_t> sets_;
  // By the letters that are named, and by the subjects with their correspondents.
  HashGroups groups_;
  KeySet unread_;
  int64_t last_ = 0;
  int64_t newest_ = 0;
  int64_t read_ = 0;
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
