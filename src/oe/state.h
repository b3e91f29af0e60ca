// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the reading of Outlook Express stores keeps from call to call: the tables of a discovery,
// the reader's position and the account of a load. One instance, put back by ResetState().
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "oe/dbx_read.h"
#include "oe/discovery.h"
#include "platform/registry.h"

namespace tarnwick::oe {

inline constexpr int kMostReports = 100'000;

struct OeState {
  // Discovery (discovery.h).
  std::vector<std::string> Identities;
  std::vector<FolderFile> FolderFiles;
  std::vector<std::vector<FolderRow>> Folders{kMaxFolderFiles};  // by folder file
  std::vector<std::string> MessageFiles;  // paths of the other *.dbx files of the stores
  std::unique_ptr<platform::Registry> OpenedRegistry;
  bool HasCopiedStores = false;   // *.dbx files without a registry, see platform/registry.h
  bool HasSeveralOwners = false;  // folders are labelled with their owners' names
  DiscoveryEnd End;
  std::vector<std::string> Remarks;    // what complete reading found damaged or missing
  std::vector<std::string> Forbidden;  // store folders and files that may not be read
  bool IsListDamaged = false;          // the folder list read last
  bool CanRead = false;                // what the last oeInitialize gave

  // Reader (dbx_read.h).
  DbxHeader Header;
  uint32_t LastChainEnd = 0;  // where the message before ended, also one of another file
  // Keys of former versions are looked for as well; for nothing in a repository that was empty.
  bool MayKnowFormerKeys = true;

  // One walk of a message tree.
  bool IsWalking = false;
  // What is damaged is reported one by one so many times, more than a designed walk comes to: the
  // log must not grow far beyond the file.
  int ReportsLeft = kMostReports;
};

OeState& State();
void ResetState();

// Whether this walk may report one thing more.
bool MayReport();

// True once the stop command or the ask dialog's Cancel has ended the load.
bool IsStopped();

}  // namespace tarnwick::oe
