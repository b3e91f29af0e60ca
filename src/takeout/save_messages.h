// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// Messages of the open repository saved as ordinary files that every mail program reads: a file for
// each (.eml), a mailbox file (mbox with ">From " quoting that can be undone exactly) or a Maildir.
// What is written is each message's file, byte for byte as it was received. The form of Outlook
// (.msg) is made of what is stored of a message.
//
// A run shows its progress, lets events run and hears the stop command. Nothing that is there
// already is replaced. Whatever happens, what bears its name is whole, and every message is
// accounted for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "takeout/message_writers.h"

namespace tarnwick::takeout {

struct SaveOrder {
  std::vector<int64_t> ids;  // in the order in which they are saved
  SaveFormat format = SaveFormat::kEml;
  bool folders = false;  // the folders that the messages lay in, each by itself
  std::string folder;    // where; made when it is missing
};

// The five others add up to selected.
struct SaveCounts {
  int64_t selected = 0;
  int64_t saved = 0;
  int64_t withoutFile = 0;  // the repository has no file of theirs
  int64_t failed = 0;       // the log says why
  int64_t notReached = 0;   // it was stopped, or the disk was full, before their turn

  // "selected 9, saved 6, no stored file 1, failed 1, not reached 1"
  std::string Line() const;
  // The same for a box.
  std::string Report(const std::string& folder) const;
};

// nullopt when nothing was begun: there is not enough room, or the folder can't be written, which
// has been reported. An error that ends the run has been shown by then.
std::optional<SaveCounts> SaveMessages(const SaveOrder& order);

// The folders that a message lay in, from the top, of what is stored of them.
std::vector<std::string> FolderPath(const std::string& application, const std::string& parent,
                                    const std::string& folder);

}  // namespace tarnwick::takeout
