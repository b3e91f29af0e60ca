// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the whole program shares while it runs: the working folders, who and where the user is, the
// mailer options, and the counters and flags of a load. Members bear the names of the design. One
// instance, reached through State(), put back to its defaults by ResetState() (tests; a start).
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>

#include "core/user_interface.h"
#include "platform/date_time.h"

namespace tarnwick::core {

// How a message ended that a load came across. A load's total is their sum.
struct LoadCounts {
  int64_t found = 0;  // what the stores say they hold
  int64_t stored = 0;
  int64_t alreadyStored = 0;
  int64_t refused = 0;
  int64_t ignored = 0;
  int64_t unreadable = 0;
  int64_t notReached = 0;
};

struct RunState {
  // Progress entries in the event log; errors are always logged.
  bool LogEvents = true;
  // Words of the mail itself (subjects, names of files) in the event log, which lies in clear.
  bool LogMailTexts = true;

  // Absolute folder texts with their separator at the end.
  std::string AppFolder;
  std::string EmailFileFolder;  // scratch, emptied whenever a repository is opened
  std::string LogFolder;
  std::string LogFile;
  std::string TempMessageFile;  // one raw message at a time

  int32_t LocalZoneHours = 0;  // never negative, see startup.h
  std::array<std::string, 12> LocalMonthNames;
  std::string UserName;
  bool RepositoryIsEmpty = true;  // also while FullLoadAsked
  bool FullLoadAsked = false;     // by the options window, until the next load
  bool UseOutlookExpress = false;
  bool UseMSOutlook = false;
  bool ShowEmailText = false;
  std::string ProfileOfLoad;  // what one load reads instead of the chosen profile; "" for that

  // A load. StoredMessages counts what passed the sender rules in this run of the program.
  int64_t StoredMessages = 0;
  int64_t OutlookMessages = 0;
  std::optional<DateTime> LatestReceivedTime;
  bool StopFlag = false;          // the ask dialog's Cancel: nothing more is taken in
  bool ImportCancelFlag = false;  // the stop command
  bool NewMessageFlag = false;    // a message not yet in the repository was copied out
  SenderAnswer RunWideAnswer = SenderAnswer::kCancel;
  bool RefuseUnknownSenders = false;  // answers the ask dialog for scripts: known senders only
  LoadCounts Counts;

  // Boxes that come again and again in one load, by kind: how often, and whether they are silenced.
  struct RepeatedBox {
    int shown = 0;
    bool silenced = false;
  };
  bool LoadIsRunning = false;
  bool DiskIsFull = false;          // met in this load; nothing more is tried
  bool EndTellsOfFullDisk = false;  // what runs tells of it in its last box: none before
  int64_t ReportedErrors = 0;       // in this run of the program, shown or only logged
  std::string LastReportedError;
  std::map<std::string, RepeatedBox> RepeatedBoxes;

  UserInterface* Ui = nullptr;  // not owned; set before anything is shown
};

RunState& State();
void ResetState();  // keeps Ui

// Clears what belongs to one load: flags, counts, answers, silenced boxes.
void BeginLoadState();
void EndLoadState();

// True once nothing more is to be read: the stop command, the ask dialog's Cancel, a full disk.
bool IsLoadStopped();

}  // namespace tarnwick::core
