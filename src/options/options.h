// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// The options, without their window. Each takes effect at once: it is stored in the parameter store
// and kept in the run state.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace tarnwick::options {

// A mailer that the load command can read, by the name that people know it by, and its option.
struct Mailer {
  std::string name;
  std::string option;
};
// Whether the load command reads the mailer of this option.
bool IsUsed(const std::string& option);
void SetUsed(const std::string& option, bool on);

// How mail is read (intake/reading_rules.h).
bool IsReadingComplete();
void SetCompleteReading(bool on);

// Whether the event log tells subjects and names of attached files.
void SetLogMailTexts(bool on);

// After so many minutes without use a protected repository is locked; 0: never.
int64_t LockMinutes();
void SetLockMinutes(int64_t minutes);

// The next load behaves as a first one: it asks before each mailer and reads every folder again.
// There is no way back.
void RequestFullLoad();

// What a folder holds as a mail owner's Windows profile.
struct ProfileSummary {
  std::vector<std::string> identities;     // of Outlook Express, as their owner named them
  int64_t folders = 0;                     // of all identities
  std::vector<std::string> outlookStores;  // file names
  std::vector<std::string> otherMailers;   // names
  bool IsEmpty() const {
    return identities.empty() && folders == 0 && outlookStores.empty() && otherMailers.empty();
  }
};

// Looks into a folder; knows the importers, which this room does not. Must not throw. May take a
// while on a large disk and lets events run meanwhile.
using ProfileReader = std::function<ProfileSummary(const std::string& folder)>;

// "" while none is chosen. The environment's TARNWICK_PROFILE stands above what is chosen.
std::string ProfileFolder();
bool IsProfileFixed();  // by the environment

// Takes a folder as the profile when there is mail in it. Otherwise says that there is none and
// leaves the former; false then.
bool ChooseProfile(const std::string& folder, const ProfileSummary& found);

}  // namespace tarnwick::options
