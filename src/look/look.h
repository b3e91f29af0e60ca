// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// A look at a disk, a folder or a single file: which mail lies there, whose it is and how much,
// before anything is loaded. Nothing is written; links are not followed, and of a file only as much
// is read as it takes to know it.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "sources/mailbox.h"

namespace tarnwick::look {

enum class State {
  kWhole,
  kDamaged,   // some of it; a load tells what
  kPassword,  // its owner will be asked for it
};

// Whether the repository holds it, by the letters that were tried: of each folder one or two.
enum class Stored { kNo, kPartly, kYes };

// Mail that one program keeps in one place for one person.
struct FoundMail {
  std::string program;   // "Outlook Express", "Thunderbird"
  std::string user;      // the Windows user, by the name of the folder with the settings; or ""
  std::string identity;  // the identity, account or store; where there is none the folder's name
  std::string place;     // the folder, with its separator, or file where it lies
  int64_t folders = 0;
  int64_t messages = 0;     // as the files themselves say, as far as they do
  bool isEstimate = false;  // messages: of a large file without a number of its own
  int firstYear = 0;        // 0: not known
  int lastYear = 0;
  uint64_t bytes = 0;
  State state = State::kWhole;
  std::string fault;  // why it can't be opened
  Stored stored = Stored::kNo;

  // What loads it: the option of its source (intake/source.h), and the profile folder to read, or
  // for mail of other programs the mailboxes.
  std::string option;
  std::string profile;
  std::vector<sources::Mailbox> mailboxes;
};

struct Found {
  std::vector<FoundMail> mail;         // in the order of the folders' names
  std::vector<std::string> forbidden;  // folders that may not be read
  int64_t foldersSeen = 0;
  int64_t filesSeen = 0;
  bool isStopped = false;
};

// Asked at each folder, with what was seen so far; its false ends the look.
using Progress = std::function<bool(const Found& soFar, const std::string& folder)>;

// Errors are logged; what can't be looked into is among what is found, with its fault. With
// ofRepository it is looked up what of it is stored. REQUIRES: then, a repository is open.
Found Look(const std::string& place, bool ofRepository, const Progress& progress);

}  // namespace tarnwick::look
