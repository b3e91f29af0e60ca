// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A merge: the messages of an export file are taken into the open repository one by one, as a load
// would, with identifiers of their own. Messages stream: memory does not grow with the file. See
// backup.h for what is required while it runs.
#pragma once

#include <cstdint>
#include <string>

#include "maintenance/result.h"

namespace tarnwick::maintenance {

// Messages that the repository has already.
enum class Duplicates { kAsk, kKeep, kSkip };
// Senders that neither a rule nor a contact knows.
enum class UnknownSenders { kAsk, kAccept, kRefuse };

struct MergeOptions {
  Duplicates duplicates = Duplicates::kAsk;
  UnknownSenders senders = UnknownSenders::kAsk;
};

struct MergeResult {
  Result result = Result::kFailed;
  int64_t imported = 0;
  int64_t ignored = 0;     // duplicates left out, and what the sender rules refused
  int64_t notReached = 0;  // behind the place where it was stopped or failed, or taken back
  bool diskIsFull = false;
};

// What was merged before a stop or a failure stays, and the message at the end says how much that
// is. The list is the caller's to query anew.
MergeResult twMakeMarge(const std::string& file, const MergeOptions& options = {});

}  // namespace tarnwick::maintenance
