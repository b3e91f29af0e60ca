// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The command "Load from Mailer", without its window, and its sibling for single message files. The
// window and tarnwick-cli both run these.
#pragma once

#include <string>

#include "core/run_state.h"
#include "intake/header_parser.h"

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
};

struct LoadResult {
  bool ran = false;     // a mailer was read, however far
  bool failed = false;  // a mailer could not be read; the reason has been shown
  bool stopped = false;
  core::LoadCounts counts;
};

// One load run: asks before each mailer of a first load, finds the profile (or has it chosen),
// reads the mailers, and leaves the summary in the log and the status bar. The list is the caller's
// to bind anew.
LoadResult LoadFromMailer(const LoadOptions& options);

// The stop command: the run ends at the next message.
void StopLoad();

// "found N, stored N, already stored N, refused N, ignored N, unreadable N, not reached N"; scripts
// read it.
std::string CountsSummary(const core::LoadCounts& counts);

// Takes one message file in, whoever sent it: the person chose it. Shows "This email is in the
// repository." when it is there already.
intake::Outcome TakeTextFile(const std::string& path);

}  // namespace tarnwick::board
