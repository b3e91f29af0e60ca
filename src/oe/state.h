// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// What the reading of Outlook Express stores keeps from call to call: the tables of a discovery,
// the reader's position and the account of a load. One instance, put back by ResetState().
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "intake/header_parser.h"
#include "oe/dbx_read.h"
#include "oe/discovery.h"
#include "platform/registry.h"

namespace tarnwick::oe {

// How the message read last ended that was not copied, and for an unreadable one why.
struct MessageEnding {
  intake::Outcome outcome = intake::Outcome::kUnreadable;
  std::string reason;
};

struct OeState {
  // Discovery (discovery.h).
  std::vector<std::string> Identities;
  std::vector<FolderFile> FolderFiles;
  std::array<std::vector<FolderRow>, kMaxFolderFiles> Folders;  // by folder file
  std::vector<std::string> MessageFiles;  // paths of the other *.dbx files of the stores
  std::unique_ptr<platform::Registry> OpenedRegistry;
  bool HasCopiedStores = false;  // *.dbx files without a registry, see platform/registry.h
  DiscoveryEnd End;
  std::vector<std::string> Forbidden;  // store folders and files that may not be read
  bool IsListDamaged = false;          // the folder list read last
  bool CanRead = false;                // what the last oeInitialize gave

  // Reader (dbx_read.h).
  DbxHeader Header;
  MessageInfo Info;
  InfoIndex Index;
  std::string EntryKey;       // of the message read last
  uint32_t LastChainEnd = 0;  // where the message before ended, also one of another file
  int IdStep = 0;
  MessageEnding Ending;  // of the message read last
  // Keys of former versions are looked for as well; for nothing in a repository that was empty.
  bool MayKnowFormerKeys = true;

  // One walk of a message tree.
  std::set<uint32_t> NodesRead;
  uint64_t ChainBudget = 0;  // bytes of blocks that this walk may still follow
  bool IsWalking = false;
};

OeState& State();
void ResetState();

// True once the stop command or the ask dialog's Cancel has ended the load.
bool IsStopped();

}  // namespace tarnwick::oe
