// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The command "Load from Mailer", without its window, and its sibling for single message files. The
// window and tarnwick-cli both run these.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "board/sources.h"
#include "core/run_state.h"
#include "intake/load_account.h"

namespace tarnwick::board {

// How senders are judged that neither a rule nor a contact knows.
enum class SenderPolicy { kAsk, kAcceptAll, kKnownOnly };

struct LoadOptions {
  // Takes every mailer that the profile holds, without the question that begins a first load and
  // without changing the options.
  bool everyMailer = false;
  // As if nothing had been loaded yet (the options window's "Load from all folders").
  bool full = false;
  SenderPolicy senders = SenderPolicy::kAsk;
  // How the mail is read; as the options say without it.
  std::optional<intake::ReadingRules> rules = {};
  bool isPart = false;  // of a load of several: its end is told by who runs them
};

struct LoadResult {
  bool ran = false;     // the sources were asked, however far it came
  bool failed = false;  // a source could not be read, or the load could not go on; it was shown why
  bool stopped = false;
  core::LoadCounts counts;
};

// One load run: finds the profile (or has it chosen), asks before each mailer of a first load that
// the profile holds, reads them, and leaves the account in the log, in the accounts of the last
// loads (load_log.h) and, in one line, in the status bar, however it ended. The list is the
// caller's to bind anew.
LoadResult LoadFromMailer(const LoadOptions& options);
// The same from these sources, which have their rules.
LoadResult LoadFromMailer(const LoadOptions& options, const Sources& sources);

// Tells the person of a full disk, or that nothing new came.
void TellLoadEnd(bool hasNew);

// The stop command: the run ends at the next message.
void StopLoad();

using intake::CountsSummary;

struct TakeResult {
  int64_t stored = 0;
  int64_t alreadyStored = 0;
  int64_t unreadable = 0;
  int64_t notReached = 0;  // a full disk ended it before, or took them back
  // Message files that are not in the repository, other files and folders without mail.
  std::vector<std::string> notTaken;
};

// Takes message files in, whoever sent them: the person chose them. Shows "This email is in the
// repository." for one that is there already. Of a file or folder with the mail of another program
// (sources/mailbox.h), every letter is taken.
TakeResult TakeTextFiles(const std::vector<std::string>& paths);

}  // namespace tarnwick::board
