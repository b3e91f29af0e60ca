// SPDX-License-Identifier: MIT
// SPDX-FileCopyrightText: 2026 The Tarnwick maintainers
//
// One import from Outlook Express: discovery, a first pass over sent mail that learns the user's
// own addresses, and the main pass, which hands every message of every folder to the parser.
//
// The load command clears the flags before a run and the cancel flag after it, keeps the account of
// the load and the commit group in which the messages are written.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "intake/source.h"
#include "oe/announced.h"
#include "oe/dbx_read.h"
#include "oe/discovery.h"
#include "oe/store_walk.h"

namespace tarnwick::oe {

// The source label of everything taken in here.
inline constexpr const char* kApplication = "Outlook Express";

// Outlook Express as a source of a load: the routines below, in their order.
std::unique_ptr<intake::Source> MakeSource(const intake::ReadingRules& rules = intake::kDesigned);

// False where it is not known yet whose mail to read: no profile folder is chosen, or the chosen
// one holds no profile.
bool ProfileKnown();

// Runs the discovery; what it gives is kept and tells whether the passes below read anything. False
// without a box when ProfileKnown is false.
bool oeInitialize(const intake::ReadingRules& rules = intake::kDesigned);

// Tells the account of the load what the stores hold that the discovery found, and what of it will
// not be read, also after a discovery that ended early.
void AnnounceMessages(const intake::ReadingRules& rules = intake::kDesigned);

void CollectMeAddresses(const intake::ReadingRules& rules = intake::kDesigned);
void ImportOutlookExpress(const intake::ReadingRules& rules = intake::kDesigned);

// Every folder but drafts, deleted items and the outbox, and those of them that the rules name.
bool IsFolderToRead(const FolderRow& folder, const intake::ReadingRules& rules = intake::kDesigned);

// Keeps the sender of the message in TempMessageFile as one of the user's own addresses; read: what
// was read of it already.
void dbxFileMeAddress(const std::optional<SenderLines>& read = {});

// Moves the message in TempMessageFile to EmailFileFolder, under a name made of its subject.
void MsgToFiles();

}  // namespace tarnwick::oe
