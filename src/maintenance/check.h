// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A check of the open repository: the engine's own look at every page of both database files, then
// each message by itself: its row can be read, its recipients are as many as it says, its
// attachment names no more, its original is there in an unbroken run, no error left it by half; and
// whether a restore was left unfinished. Nothing is changed. A page that cannot be read costs the
// messages on it and not the check. See backup.h for what is required while it runs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "maintenance/result.h"

namespace tarnwick::maintenance {

struct Finding {
  int64_t id = 0;  // the message's; 0 where it is the repository as a whole
  std::string what;
};

// "Message 17: " where it is one's, and what.
std::string TextOf(const Finding& finding);

struct CheckReport {
  int64_t messages = 0;                   // looked at
  std::vector<int64_t> sound;             // their identifiers, rising
  std::vector<Finding> damage;            // by identifier, the repository's own first
  int64_t leftovers = 0;                  // rows of messages that were deleted: harmless
  std::vector<std::string> formerCopies;  // files of earlier restores that nothing needs
  bool IsSound() const { return damage.empty(); }
  int64_t DamagedMessages() const { return messages - static_cast<int64_t>(sound.size()); }
};

// kDone: all was looked at, whatever was found. kStopped and kFailed: report holds what was found
// until then.
Result CheckRepository(CheckReport& report);

// The same for a window: shows what was found, the log has all of it.
Result CheckAndTell();

// What to say of one of formerCopies.
std::string CopyNote(const std::string& copy);

// Exports the messages that the check found sound, as ExportEmails does.
Result ExportSound(const CheckReport& report, const std::string& file);

}  // namespace tarnwick::maintenance
